// ToviStreamDigest as scripts use it.
function say() { WScript.Echo(Array.prototype.map.call(arguments, String).join(" ")); }
function attempt(what, f) {
  try { say(what, "->", f()); }
  catch (e) { say(what, "->", e.number, e.source ? e.source + ": " + e.description : ""); }
}
function bytes(text) {
  var a = new Uint8Array(text.length);
  for (var i = 0; i < text.length; i++) a[i] = text.charCodeAt(i);
  return a;
}
function list(a) { return Array.prototype.join.call(a, ","); }

var f = new ActiveXObject("Vardeko.crypt.ToviStreamDigest");
var s = WScript.StreamOf(f);
say("[" + f.ReadAlgorithm + "]", f.SeekingForbidden, f.codePage, f.ReadHashEnable);
attempt("Stream", function () { return f.Stream; });
attempt("ReadAlgorithm", function () { f.ReadAlgorithm = "sha256"; });
attempt("ReadReset", function () { f.ReadReset(); });
attempt("WriteKey", function () { return f.WriteKey; });
attempt("ReadValue", function () { return typeof f.ReadValue; });
attempt("an object without stream", function () {
  f.Stream = new ActiveXObject("Vardeko.crypt.HashObject");
});
attempt("Commit", function () { s.Commit(); });

// A sink without a stream behind it.
f.WriteAlgorithm = "SHA1";
s.Write(bytes("abc"));
say(f.WriteValue, f.writealgorithm, f.WriteHashEnable);

// In front of a stream.
var m = WScript.MemoryStream(bytes("what do ya want for nothing?"));
f.Stream = m;
f.ReadAlgorithm = "MD5";
f.ReadKey = "Jefe";
say(list(new Uint8Array(s.Read(3))), s.Position, s.Size);
attempt("Position", function () { s.Position = 0; });
f.SeekingForbidden = false;
s.Position = 3;
s.Read(1000);
say(f.ReadValue, new VBArray(f.ReadBinaryValue).ubound(), list(f.ReadKey));
f.ReadResetKey();
f.Stream.Position = 0;
var copy = WScript.MemoryStream();
say(s.CopyTo(copy), copy.Size, f.ReadValue);
f.ReadHashEnable = false;
f.ReadReset();
s.Position = 0;
say(s.Read().length, f.ReadHashEnable, f.ReadValue);

// A filter in front of a filter.
var g = new ActiveXObject("Vardeko.crypt.ToviStreamDigest.free");
g.ReadAlgorithm = "SHA256";
g.Stream = f;
f.SeekingForbidden = false;
s.Position = 0;
f.ReadAlgorithm = "SHA256";
WScript.StreamOf(g).Read();
say(g.ReadValue === f.ReadValue, g.ReadValue);
// And round.
f.Stream = g;
attempt("a ring", function () { WScript.StreamOf(g).Read(1); });
f.Stream = m;
say("done");
