// Files through both filters and back, for sizes around blocks and pieces.
function say() { WScript.Echo(Array.prototype.map.call(arguments, String).join(" ")); }
function pattern(count) {
  var a = new Uint8Array(count);
  for (var i = 0; i < count; i++) a[i] = (i * 11 + (i >> 9)) & 255;
  return a;
}
function same(a, b) {
  if (a.length !== b.length) return false;
  for (var i = 0; i < a.length; i++) if (a[i] !== b[i]) return false;
  return true;
}
function digest(stream, direction) {
  var f = new ActiveXObject("Vardeko.crypt.ToviStreamDigest");
  f[direction + "Algorithm"] = "MD5";
  f.Stream = stream;
  return f;
}
var ciphers = {AES: [16, "0123456789abcdef0123456789abcdef"], DES: [8, "01234567"]};
var sizes = [0, 1, 15, 16, 17, 1023, 1024, 1025, (1 << 20) + 3];
var hash = new ActiveXObject("Vardeko.crypt.HashObject");
hash.InitHash("MD5");
for (var algorithm in ciphers) {
  for (var i = 0; i < sizes.length; i++) {
    var plain = pattern(sizes[i]), block = ciphers[algorithm][0];
    var c = new ActiveXObject("Vardeko.crypt.ToviStreamCrypt");
    c.ReadAlgorithm = c.WriteAlgorithm = algorithm;
    c.ReadKey = c.WriteKey = ciphers[algorithm][1];
    // plain -> digest -> cipher -> digest -> file
    var file = WScript.OpenFile("cipher.bin", "w"), below = digest(file, "Write");
    c.Stream = below;
    var above = digest(c, "Write");
    var into = WScript.StreamOf(above);
    for (var at = 0; at < plain.length; at += 30000) into.Write(plain.subarray(at, at + 30000));
    c.WriteFinalize();
    file.Close();
    var written = [above.WriteValue, below.WriteValue];
    // file -> digest -> cipher -> file
    below = digest(WScript.OpenFile("cipher.bin"), "Read");
    c.Stream = below;
    var out = WScript.OpenFile("plain.bin", "w+");
    WScript.StreamOf(c).CopyTo(out);
    var padded = out.Size;
    out.Size = plain.length;
    out.Position = 0;
    var back = out.Read(plain.length);
    hash.HashData(plain);
    say(algorithm, sizes[i], same(back, plain),
        padded === Math.ceil(sizes[i] / block) * block,
        written[0] === hash.Value, below.ReadValue === written[1]);
  }
}
