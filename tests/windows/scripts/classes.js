// Every class as JScript and the native host see it; the last line says that the script got there.
function say() {
  var line = [];
  for (var i = 0; i < arguments.length; i++) line.push(String(arguments[i]));
  WScript.Echo(line.join(" "));
}
function attempt(what, member) {
  try {
    member();
    say(what + ": no error");
  } catch (e) {
    // Only the module's own failures have a text of their own.
    var own = e.number >= -2147211403 && e.number <= -2147211398;
    say(what + ":", e.number, own ? e.description : "");
  }
}
function hex(value) {
  var number = new ActiveXObject("Vardeko.crypt.Number");
  number.Binary = value;
  return number.Hex;
}
function fromHex(text) {
  var number = new ActiveXObject("Vardeko.crypt.Number");
  number.Hex = text;
  return number.Binary;
}

var stems = ["HashObject", "Symmetric", "Number", "RSA", "ToviStreamDigest", "ToviStreamCrypt"];
for (var i = 0; i < stems.length; i++) {
  var forms = ["", ".1", ".free", ".free.1"];
  for (var k = 0; k < forms.length; k++) {
    var made = new ActiveXObject("Vardeko.crypt." + stems[i] + forms[k]);
    say(stems[i] + forms[k], made.codePage === undefined ? "" : made.codePage);
  }
}

say("-- digests");
var hash = new ActiveXObject("Vardeko.crypt.HashObject");
attempt("HashUpdate", function () { hash.HashUpdate("abc"); });
attempt("Key", function () { hash.Key = "k"; });
attempt("InitHash", function () { hash.InitHash("sha1"); });
say("[" + hash.Value + "]", hash.codePage);
hash.InitHash("SHA1");
hash.HashData("abc");
say(hash, hash.Value, hash.value, hash.HASHSIZE);
say(hex(hash.BinaryValue));
hash.Key = fromHex("0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b0b");
hash.HashData("Hi There");
say(hash.Value, hex(hash.Key));
hash.ResetKey();
hash.HashData("\u20ac", 65001);
say(hash.Value);
hash.HashData("\u20ac", -1);
say(typeof hash.Value, hash.Value.length);
hash.HashData(12.5);
var of_number = hash.Value;
hash.HashData("12.5");
say(of_number === hash.Value);

say("-- ciphers");
var crypt = new ActiveXObject("Vardeko.crypt.Symmetric");
attempt("Encrypt", function () { crypt.Encrypt("x"); });
attempt("Init", function () { crypt.Init("aes"); });
crypt.Init("AES");
attempt("Encrypt", function () { crypt.Encrypt("x"); });
attempt("Key", function () { crypt.Key = "short"; });
crypt.Key = fromHex("102030405060708090a0b0c0d0e0f00");
say(crypt.BlockSize, crypt.PadType, crypt.codePage);
crypt.Key = fromHex("2b7e151628aed2a6abf7158809cf4f3c");
var block = crypt.Encrypt(fromHex("6bc1bee22e409f96e93d7e117393172a"));
say(hex(block));
say(hex(crypt.Decrypt(block)));
crypt.PadType = 3;
crypt.Encrypt("seven", false);
say(hex(crypt.Encrypt("teen bytes!!")));
crypt.Init("DES");
crypt.Key = fromHex("133457799bbcdff1");
say(crypt.BlockSize, hex(crypt.Encrypt(fromHex("123456789abcdef"))));

say("-- numbers");
var n = new ActiveXObject("Vardeko.crypt.Number");
attempt("Value of zero", function () { return n.Value.length; });
n.Value = "340282366920938463463374607431768211456";
say(n, n.Hex, n.Cmp(5), n.Cmp(n));
say(n.Add(1), n.Sub("1"), n.Mul(n));
say(n.Div(1000007), n.Mod(1000007), n.GCD("1000000"));
n.Inc();
n.Inc(9);
n.Dec(2);
say(n.Value, n.Hex);
say(n.NewNumber(17).ModExp(65537, "1000000007"), n.NewNumber(3).ModInv(11));
n.Text = "abc";
say(n.Hex, n.Text);
n.Text(65001) = "\u20ac";
say(n.Hex, n.Text(65001) === "\u20ac");
attempt("Div", function () { n.Div(0); });
attempt("Value", function () { n.Value = "12x"; });
n.Random(16, true);
say(n.Hex.length);

say("-- keys");
var rsa = new ActiveXObject("Vardeko.crypt.RSA");
attempt("Encrypt", function () { rsa.Encrypt("x"); });
rsa.CreateKeys("c0000000000000000000000000000000", "f0000000000000000000000000000000");
say(hex(rsa.Modulus), hex(rsa.PublicExp), rsa.BlockSize);
say(hex(rsa.P), hex(rsa.Q));
var cipher = rsa.Encrypt(fromHex("123456789abcdef"));
say(hex(rsa.Decrypt(cipher)), hex(rsa.DecryptPQ(cipher)));
var other = new ActiveXObject("Vardeko.crypt.RSA.free");
other.Modulus = rsa.Modulus;
other.PublicExp = rsa.PublicExp;
say(hex(other.Encrypt(fromHex("123456789abcdef"))) === hex(cipher));
rsa.Reset();
attempt("Decrypt", function () { rsa.Decrypt(cipher); });

say("-- filters");
var digest = new ActiveXObject("Vardeko.crypt.ToviStreamDigest");
attempt("Stream", function () { return digest.Stream; });
attempt("Stream", function () { digest.Stream = hash; });
attempt("ReadAlgorithm", function () { digest.ReadAlgorithm = "md5"; });
digest.ReadAlgorithm = "MD5";
say("[" + digest.ReadAlgorithm + "][" + digest.WriteAlgorithm + "]", digest.ReadHashEnable,
    digest.WriteHashEnable, digest.SeekingForbidden);
say(digest.ReadValue);
digest.ReadKey = "Jefe";
say(hex(digest.ReadKey));
var filter = new ActiveXObject("Vardeko.crypt.ToviStreamCrypt");
filter.Stream = digest;
say(filter.Stream.ReadAlgorithm, filter.ReadDecrypt, filter.WriteDecrypt, filter.ReadPadType);
filter.WriteAlgorithm = "DES";
filter.WriteKey = fromHex("133457799bbcdff1");
filter.WritePadType = -1;
filter.ReadDecrypt = false;
say(hex(filter.WriteKey), filter.WritePadType, filter.ReadDecrypt);
filter.WriteResetKey();
attempt("WriteFinalize", function () { filter.WriteFinalize(); });

say("-- calls");
attempt("no such member", function () { hash.NoSuch(); });
attempt("too few arguments", function () { hash.HashData(); });
say("the end");
