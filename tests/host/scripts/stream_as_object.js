var o = new ActiveXObject("Fake.Object");
var s = WScript.MemoryStream(new Uint8Array([72, 105, 33, 33]));
o.Held = s;
WScript.Echo(o.ReadAll(s), s.Position, o.Held.Size);
s.Close();
WScript.Echo(o.Held.Size, o.Held.Seek(2), WScript.StreamOf(o.Held).Read().length);
function attempt(f) {
  try { f(); WScript.Echo("no error"); } catch (e) { WScript.Echo(e.number, e.description); }
}
attempt(function () { o.Held = s; });
attempt(function () { o.ReadAll(s); });
attempt(function () { o.ReadAll(o); });
attempt(function () { WScript.StreamOf(o); });
