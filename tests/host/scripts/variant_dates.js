// Dates that automation gets.
var dates = new ActiveXObject("Scripting.Dictionary");
var date = new Date("Jan 2, 2003 10:20:30");
dates.Add("made", date.getVarDate());
dates.Add("as it is", date);
WScript.Echo(dates("made") instanceof Date, dates("made").getTime() === date.getTime(),
             dates("as it is").getTime() === date.getTime());
date.setFullYear(1999);
WScript.Echo(dates("made").getFullYear(), dates("as it is").getFullYear());
WScript.Echo(new Date(date.getVarDate()).getFullYear());
function failure(f) {
  try { return f(); } catch (e) { return e.number + " " + e.description; }
}
WScript.Echo(failure(function () { return new Date(NaN).getVarDate(); }));
WScript.Echo(failure(function () { return new Date(-6e13).getVarDate(); }));
WScript.Echo(failure(function () { return new Date(2.6e14).getVarDate(); }));
WScript.Echo(failure(function () { return Date.prototype.getVarDate.call({}); }));
WScript.Echo(failure(function () { return Date.prototype.getVarDate.call(null); }));
