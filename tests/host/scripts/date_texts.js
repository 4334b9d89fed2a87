// Texts that are no dates; some of them other hosts read without an end.
function repeated(text, count) { return new Array(count + 1).join(text); }
var texts = [
  "Jan 1/2/2000", "5 1/2/2000", "0000001/2/2003", "1/2/2003 (", "1/2/2003 )",
  "1/2/2003 (()", "99999999999/1/2003", "1/99999999999999999999/2003",
  "Jan 2, 2003 4", "1/2", "1//2003", "1/2/", "/", "10:", "1/2/2003 10:", "1/2/2003 10:20:", "am 1/2/2003",
  "1/2/2003 10:20 am pm", "1/2/2003 10:20 utc gmt", "1/2/2003 +0100", "1/2/2003 10:20 +", "bc 1/2/2003",
  "1/2/2003 bc ad", "\u0000", "1/2/2003\u0000", "\u00e91/2/2003", "\ud8001/2/2003", "J\u00e4n 2, 2003",
  repeated("1", 100000), repeated("(", 100000), repeated(" ", 100000), repeated("monday ", 10000),
  repeated("1/2/2003 ", 10000)
];
for (var i = 0; i < texts.length; i++) {
  var time = Date.parse(texts[i]);
  if (time === time || new Date(texts[i]).getTime() === 0) WScript.Echo(texts[i].substr(0, 40), time);
}
WScript.Echo(Date.parse(repeated("monday ", 10000) + repeated("(", 10000) + repeated(")", 10000) + "1/2/2003"));
WScript.Echo(Date.parse("999999/999999/999999 999999:999999:999999 +999999"));
WScript.Echo(Date.parse(), Date.parse(null), Date.parse(20030102), Date.parse({ toString: function () { return "1/2/2003"; } }));
try { Date.parse({ toString: function () { throw new Error(5, "own"); } }); } catch (e) { WScript.Echo(e.number); }
WScript.Echo(new Date("Jan 2 2003 10:20:30 est").getTime(), new Date("2003-01-02").getTime(), new Date("+002003-01-02").getTime());
