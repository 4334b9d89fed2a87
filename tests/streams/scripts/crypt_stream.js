// ToviStreamCrypt as scripts use it.
function say() { WScript.Echo(Array.prototype.map.call(arguments, String).join(" ")); }
function attempt(what, f) {
  try { say(what, "->", f()); }
  catch (e) { say(what, "->", e.number, e.source ? e.source + ": " + e.description : ""); }
}
function pattern(count) {
  var a = new Uint8Array(count);
  for (var i = 0; i < count; i++) a[i] = (i * 7 + (i >> 8)) & 255;
  return a;
}
function same(a, b) {
  if (a.length !== b.length) return false;
  for (var i = 0; i < a.length; i++) if (a[i] !== b[i]) return false;
  return true;
}

var c = new ActiveXObject("Vardeko.crypt.ToviStreamCrypt");
var s = WScript.StreamOf(c);
say("[" + c.ReadAlgorithm + "]", c.ReadDecrypt, c.WriteDecrypt, c.ReadPadType,
    c.SeekingForbidden);
attempt("ReadAlgorithm", function () { c.ReadAlgorithm = "aes"; });
attempt("ReadKey", function () { c.ReadKey = "0123456789abcdef"; });
attempt("WritePadType", function () { c.WritePadType = 1; });
attempt("Stream", function () { return c.Stream; });
attempt("a write without stream", function () { s.Write(pattern(3)); });
attempt("WriteFinalize without stream", function () { c.WriteFinalize(); });

var m = WScript.MemoryStream();
c.Stream = m;
c.WriteAlgorithm = "AES";
attempt("a write without key", function () { s.Write(pattern(16)); });
attempt("a key of 5 bytes", function () { c.WriteKey = "12345"; });
c.WriteKey = "0123456789abcdef";
say(s.Write(pattern(20)), m.Size, c.WriteAlgorithm);
c.WriteFinalize();
say(m.Size);

var e = new ActiveXObject("Vardeko.crypt.Symmetric");
e.Init("AES");
e.Key = "0123456789abcdef";
m.Position = 0;
say(same(m.Read(), new Uint8Array(e.Encrypt(pattern(20), true))));

// Reading decrypts; the pad stays.
c.ReadAlgorithm = "AES";
c.ReadKey = c.WriteKey;
m.Position = 0;
var plain = s.Read(4096);
say(plain.length, same(plain.subarray(0, 20), pattern(20)), plain[20], plain[31]);

// Whole blocks only, then what finalizing gives.
m = WScript.MemoryStream(pattern(20));
c.Stream = m;
c.ReadDecrypt = false;
c.ReadPadType = 0x141;
var lengths = [s.Read(4096).length, s.Read(4096).length];
c.ReadFinalize();
lengths.push(s.Read(4096).length, s.Read(4096).length);
say(lengths.join(" "));
c.ReadPadType = -2;
m.Position = 0;
s.Read(4096);
attempt("a refused pad", function () { c.ReadFinalize(); });
attempt("too much at once", function () { s.Write(new Uint8Array(1048833)); });
say("done");
