function attempt(f) {
  try { f(); WScript.Echo("no error"); } catch (e) { WScript.Echo(e.number, e.description); }
}
attempt(function () { WScript.OpenFile("no/such/file"); });
attempt(function () { WScript.OpenFile(".", "w"); });
attempt(function () { WScript.OpenFile(""); });
attempt(function () { WScript.OpenFile("a\0b"); });
attempt(function () { WScript.OpenFile("x", "rb"); });
var f = WScript.OpenFile("new.bin", "w");
attempt(function () { f.Read(1); });
attempt(function () { f.Write("text"); });
attempt(function () { f.Write([1, 2]); });
attempt(function () { f.Seek(0, 3); });
attempt(function () { f.Seek(NaN); });
attempt(function () { f.Seek(-1); });
attempt(function () { f.Position = -1; });
attempt(function () { f.CopyTo(5); });
f.Close();
attempt(function () { f.Size; });
attempt(function () { WScript.MemoryStream("text"); });
attempt(function () { f.Read.call({}); });
attempt(function () { WScript.StreamOf({}); });
attempt(function () { WScript.StreamOf(1); });
WScript.Echo(WScript.StreamOf(WScript.MemoryStream(new Uint8Array(6))).Size);
