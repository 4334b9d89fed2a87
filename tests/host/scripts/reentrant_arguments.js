// An argument is an object whose conversion runs a script that closes the stream: each call ends in
// the error of a closed stream.
var path = "file";
var fso = new ActiveXObject("Scripting.FileSystemObject");
function closing(stream, value) {
  function convert() {
    if (stream.State !== 0) stream.Close();
    return value;
  }
  return { valueOf: convert, toString: convert };
}
function attempt(name, f) {
  try {
    f();
    WScript.Echo(name + ": no error");
  } catch (e) {
    WScript.Echo(name + ": 0x" + (e.number >>> 0).toString(16), e.message);
  }
}

var text = fso.CreateTextFile(path, true);
text.Write("abc");
text.Close();
function reader() { return fso.OpenTextFile(path); }
attempt("TextStream.Read", function () { var t = reader(); t.Read(closing(t, 1)); });
attempt("TextStream.Skip", function () { var t = reader(); t.Skip(closing(t, 1)); });
attempt("TextStream.Write", function () {
  var t = fso.CreateTextFile(path, true);
  t.Write(closing(t, "x"));
});
attempt("TextStream.WriteBlankLines", function () {
  var t = fso.CreateTextFile(path, true);
  t.WriteBlankLines(closing(t, 1));
});

function memory() { return WScript.MemoryStream(new Uint8Array(8)); }
attempt("MemoryStream.Read", function () { var m = memory(); m.Read(closing(m, 1)); });
attempt("MemoryStream.Seek", function () { var m = memory(); m.Seek(closing(m, 1)); });
attempt("MemoryStream.Position", function () { var m = memory(); m.Position = closing(m, 1); });
attempt("MemoryStream.Size", function () { var m = memory(); m.Size = closing(m, 1); });
attempt("MemoryStream.CopyTo", function () { var m = memory(); m.CopyTo(memory(), closing(m, 1)); });
attempt("MemoryStream.CopyTo, destination", function () {
  var m = memory(), to = memory();
  m.CopyTo(to, closing(to, 1));
});

function opened(type) {
  var stream = new ActiveXObject("ADODB.Stream");
  stream.Type = type;
  stream.Open();
  return stream;
}
attempt("Stream.Read", function () { var s = opened(1); s.Read(closing(s, 1)); });
attempt("Stream.Position", function () { var s = opened(1); s.Position = closing(s, 1); });
attempt("Stream.ReadText", function () { var s = opened(2); s.ReadText(closing(s, 1)); });
attempt("Stream.WriteText", function () { var s = opened(2); s.WriteText(closing(s, "x")); });
attempt("Stream.WriteText, options", function () { var s = opened(2); s.WriteText("x", closing(s, 1)); });
attempt("Stream.CopyTo", function () { var s = opened(1); s.CopyTo(opened(1), closing(s, 1)); });
attempt("Stream.CopyTo, destination", function () {
  var s = opened(2), to = opened(2);
  s.CopyTo(to, closing(to, 1));
});
attempt("Stream.LoadFromFile", function () { var s = opened(1); s.LoadFromFile(closing(s, path)); });
attempt("Stream.SaveToFile", function () { var s = opened(1); s.SaveToFile(closing(s, path), 2); });
attempt("Stream.SaveToFile, options", function () { var s = opened(1); s.SaveToFile(path, closing(s, 2)); });
