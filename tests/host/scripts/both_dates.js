// Texts of dates that the language reads.
var texts = [
  "1/2/2003", "1/2/03", "01/02/2003 10:20", "1/2/2003 10:20:30", "1/2/2003 10:20:30 PM",
  "1/2/2003 12:00 AM", "12:30 PM 1/2/2003", "13:30 PM 1/2/2003", "1/2/2003,10:20", "1-2-2003",
  "2003/1/2", "2003/01/02 03:04:05", "32/1/2003", "13/1/2003", "2/30/2003", "1/2/2003 25:00",
  "1/2/99", "1/2/49", "1/2/1", "1/2/100", "1/2/2003 (a (nested) comment) 4:05",
  "Jan 2, 2003", "2 Jan 2003", "jan 2 2003", "January 2, 2003 5:06:07", "sept 5, 2003",
  "se 5, 2003", "ju 5, 2003", "ma 5, 2003", "mon 1/2/2003", "Jan 2, 100 BC", "Jan 2, 100 AD",
  "Thu, 2 Jan 2003 10:20:30 GMT", "Thu Jan 2 10:20:30 UTC 2003",
  "Thu Jan 2 10:20:30 UTC+0200 2003", "Thu Jan 02 2003 10:20:30 GMT+0100",
  "Jan 2, 2003 10:20 +0300", "Feb 29, 1900", "Feb 29, 2000", "12/31/1969 23:59:59 GMT",
  "Jan 2003", "Jan 2", "10:20", "", "x", "s 5, 2003", "1/2/2003 10:20:30.5", "1 2 2003",
  "5 PM 1/2/2003", "Jan Feb 2, 2003", "1/2/2003 10:20 11:21", "+1/2/2003"
];
for (var i = 0; i < texts.length; i++) {
  var time = Date.parse(texts[i]);
  WScript.Echo(texts[i] + ": " + time);
  var made = new Date(texts[i]).getTime();
  if (String(made) !== String(time)) WScript.Echo("new Date gives " + made);
}
var date = new Date("Jan 2, 2003 10:20:30 GMT");
WScript.Echo(String(date instanceof Date), String(date.constructor === Date),
             Object.prototype.toString.call(date), Date.length);
WScript.Echo(String(Date.prototype === date.constructor.prototype), typeof Date(), typeof Date("1/2/2003"));
WScript.Echo(new Date(2003, 0, 2).getTime(), new Date(5).getTime(), Date.UTC(2003, 0, 2),
             String(new Date().getTime() > 1e12), String(new Date(date).getTime()));
WScript.Echo(new Date(date.toString()).getTime(), new Date(date.toUTCString()).getTime());
WScript.Echo(String(new Date(NaN).getTime()), String(new Date(undefined).getTime()), new Date(null).getTime());
// wine leaves out: it has no such zones, takes Z for another, and knows no ISO 8601
WScript.Echo(Date.parse("Jan 2 2003 10:20:30 EST"), Date.parse("Jan 2 2003 10:20:30 PDT"),
             Date.parse("Jan 2, 2003 10:20 Z"), Date.parse("2003-01-02T03:04:05.678Z"));
WScript.Echo(typeof Date.now(), Date.prototype.propertyIsEnumerable("getVarDate"));
// wine continues
