// Values too large for the memory of the process: each use is an error, and the script continues.
function attempt(name, f) {
  var said = "no error";
  try { f(); } catch (e) { said = e.number + " " + e.description.slice(0, 60); }
  WScript.Echo(name, said);
}
var o = new ActiveXObject("Fake.Object"), text = "\u00e9\ud800", i;
for (i = 0; i < 23; i++) text += text;
WScript.Echo(text.length);
attempt("Echo", function () { WScript.Echo(text); });
attempt("StdErr", function () { WScript.StdErr.Write(text); });
attempt("CreateObject", function () { WScript.CreateObject(text); });
attempt("OpenFile", function () { WScript.OpenFile(text); });
attempt("member", function () { return o[text]; });
attempt("argument", function () { return o.Count(text, text, text, text); });
attempt("property", function () { o.Value = text; o.Value = text; });
attempt("thrown", function () { o.CallBack(function () { throw new Error(text); }); });
attempt("MemoryStream", function () {
  var s = WScript.MemoryStream();
  s.Size = 1e9;
});
attempt("concatenated", function () { text + text + text + text + text + text; });
text = null;
WScript.Echo(o.Count(1), o.Live);
