// A tour of the components. The output is the same on every host.
//
//   tour.js           the whole tour
//   tour.js list      the names of its sections
//   tour.js NAME...   these sections only

var stops = [];

function stop(name, title, walk) {
  stops.push({ name: name, title: title, walk: walk });
}

function say(text) {
  WScript.Echo("  " + text);
}

// The status and text of an error that a member raised.
function sayError(what, member) {
  try {
    member();
    say(what + ": no error");
  } catch (e) {
    say(what + ": error " + e.number + ", " + e.description);
  }
}

// Byte arrays print as hexadecimal through a big number, on every host; leading zero bytes are lost.
function hex(bytes) {
  var number = new ActiveXObject("Vardeko.crypt.Number");
  number.Binary = bytes;
  return number.Hex;
}

// For statuses without a text of the module: hosts have different texts.
function sayNumber(what, member) {
  try {
    member();
    say(what + ": no error");
  } catch (e) {
    say(what + ": error " + e.number);
  }
}

stop("hash", "HashObject: message digests", function () {
  var hash = new ActiveXObject("Vardeko.crypt.HashObject");
  var algorithms = ["MD5", "SHA1", "SHA256"];
  for (var i = 0; i < algorithms.length; i++) {
    hash.InitHash(algorithms[i]);
    hash.HashData("abc");
    say(algorithms[i] + "(abc) = " + hash.Value);
    say("  digest of " + hash.HashSize + " bytes, blocks of " + hash.BlockSize);
  }

  hash.Reset();
  hash.HashUpdate("a");
  hash.HashUpdate("bc");
  hash.HashFinalize();
  say("in pieces   = " + hash.Value);
  hash.Reset();
  say("of nothing  = " + hash);

  // BinaryValue is a byte array, which other members accept.
  hash.HashData("abc");
  var bytes = hash.BinaryValue;
  hash.HashData(bytes);
  say("hash of the hash = " + hash.Value);
});

stop("codepage", "HashObject: text becomes bytes through a code page", function () {
  var hash = new ActiveXObject("Vardeko.crypt.HashObject");
  hash.InitHash("MD5");
  say("codePage starts at " + hash.codePage);
  var pages = [65001, 1252, -1, -2];
  for (var i = 0; i < pages.length; i++) {
    hash.codePage = pages[i];
    hash.HashData("\u00e9");
    say("MD5 of e acute in code page " + pages[i] + " = " + hash.Value);
  }
  hash.codePage = 65001;
  hash.HashData("\u00e9", 1252);
  say("the same, 1252 for one call only = " + hash.Value);
});

stop("hmac", "HashObject: HMAC", function () {
  var hash = new ActiveXObject("Vardeko.crypt.HashObject");
  hash.InitHash("SHA256");
  hash.Key = "key";
  hash.HashData("The quick brown fox jumps over the lazy dog");
  say("HMAC-SHA256 = " + hash.Value);
  hash.HashData("The quick brown fox jumps over the lazy dog");
  say("once more   = " + hash.Value);
  // The key reads as bytes, which another object accepts.
  var other = new ActiveXObject("Vardeko.crypt.HashObject.free");
  other.InitHash("SHA256");
  other.Key = hash.Key;
  other.HashData("The quick brown fox jumps over the lazy dog");
  say("other object = " + other.Value);
  hash.ResetKey();
  hash.HashData("The quick brown fox jumps over the lazy dog");
  say("without key = " + hash.Value);
});

stop("cipher", "SymmetricCryptObject: AES and DES, block by block", function () {
  var crypt = new ActiveXObject("Vardeko.crypt.Symmetric");
  crypt.Init("AES");
  crypt.Key = "sixteen byte key";
  var sealed = crypt.Encrypt("attack at dawn");
  say("AES, blocks of " + crypt.BlockSize + " = " + hex(sealed));
  // The pad is not removed: the result is whole blocks.
  say("decrypted = " + hex(crypt.Decrypt(sealed)));
  // In pieces: false for all but the last.
  var number = new ActiveXObject("Vardeko.crypt.Number");
  number.Binary = crypt.Encrypt("attack ", false);
  say("a piece short of a block gives nothing yet: " + (number.Cmp(0) === 0));
  say("in pieces = " + hex(crypt.Encrypt("at dawn", true)));
  crypt.PadType = 65;
  say("padded with A = " + hex(crypt.Encrypt("attack at dawn")));
  crypt.Init("DES");
  crypt.Key = "twenty-four bytes of key";
  say("triple DES, blocks of " + crypt.BlockSize + " = " + hex(crypt.Encrypt("attack at dawn")));
  sayNumber("a key of 5 bytes", function () { crypt.Key = "short"; });
  sayError("Encrypt without a key", function () { crypt.Encrypt("attack at dawn"); });
});

stop("number", "PexBigNumber: integers of any size", function () {
  var n = new ActiveXObject("Vardeko.crypt.Number");
  n.Value = "170141183460469231731687303715884105727";
  say("2^127 - 1 = " + n.Value + " = 0x" + n.Hex);
  say("squared = " + n.Mul(n).Value);
  say("divided by 10^9 + 7 = " + n.Div("1000000007").Value);
  say("the remainder = " + n.Mod("1000000007").Value);
  say("gcd with 6 to the 20th = " + n.GCD("3656158440062976").Value);
  say("3 to that power modulo 10^9 + 7 = " + n.NewNumber(3).ModExp(n, "1000000007").Value);
  say("the inverse of 3 modulo 2^127 - 1 = " + n.NewNumber(3).ModInv(n).Value);
  n.Text = "Mirolta";
  say("text as a number = " + n.Value + ", and back = " + n.Text);
  n.Inc();
  say("one more = " + n.Value);
  n.Random(32, true, true);
  say("a random odd number of 32 bytes has " + n.Hex.length + " hexadecimal digits");
  sayNumber("division by zero", function () { n.Div(0); });
});

stop("rsa", "RSACrypt: keys and raw RSA", function () {
  var rsa = new ActiveXObject("Vardeko.crypt.RSA");
  // From fixed numbers, so that the output is always the same: not a key to use.
  rsa.CreateKeys("123456789abcdef0", "fedcba9876543210");
  say("p = " + hex(rsa.P) + ", q = " + hex(rsa.Q));
  say("modulus = " + hex(rsa.Modulus) + ", public exponent = " + hex(rsa.PublicExp));
  say("a message may have " + rsa.BlockSize + " bytes");
  var sealed = rsa.Encrypt("c0ffee");
  say("c0ffee encrypted = " + hex(sealed));
  say("decrypted = " + hex(rsa.Decrypt(sealed)));
  say("with the primes = " + hex(rsa.DecryptPQ(sealed)));
  sayError("the modulus as data", function () { rsa.Encrypt(rsa.Modulus); });
  rsa.CreateRandKeys(64, true);
  say("a random modulus of 64 bytes has " + hex(rsa.Modulus).length + " hexadecimal digits");
  rsa.Reset();
  sayError("Encrypt without a key", function () { rsa.Encrypt("c0ffee"); });
});

stop("streams", "ToviStreamDigest and ToviStreamCrypt: filters in front of a stream", function () {
  var digest = new ActiveXObject("Vardeko.crypt.ToviStreamDigest");
  var crypt = new ActiveXObject("Vardeko.crypt.ToviStreamCrypt");
  digest.WriteAlgorithm = "SHA1";
  say("writes are digested with " + digest.WriteAlgorithm + ": " + digest.WriteHashEnable);
  say("of nothing = " + digest.WriteValue);
  crypt.ReadAlgorithm = "AES";
  crypt.ReadKey = "sixteen byte key";
  say("reads go through " + crypt.ReadAlgorithm + " with key " + hex(crypt.ReadKey));
  // A filter is a stream itself, so filters can be chained.
  crypt.Stream = digest;
  say("bound: " + (crypt.Stream !== null));
  say("seeking forbidden: " + crypt.SeekingForbidden);
  sayError("Stream of an unbound filter", function () { return digest.Stream; });
  sayError("a number as a stream", function () {
    digest.Stream = new ActiveXObject("Vardeko.crypt.Number");
  });
});

stop("errors", "Errors: number, description", function () {
  var hash = new ActiveXObject("Vardeko.crypt.HashObject");
  sayError("HashData without an algorithm", function () { hash.HashData("abc"); });
  sayError("InitHash(\"sha256\")", function () { hash.InitHash("sha256"); });
  sayError("InitHash(\"SHA256\")", function () { hash.InitHash("SHA256"); });
});

function isWanted(name) {
  if (WScript.Arguments.length === 0) return true;
  for (var i = 0; i < WScript.Arguments.length; i++) {
    if (WScript.Arguments(i) === name) return true;
  }
  return false;
}

function main() {
  var shown = 0, i;
  if (WScript.Arguments.length === 1 && WScript.Arguments(0) === "list") {
    for (i = 0; i < stops.length; i++) WScript.Echo(stops[i].name);
    return;
  }
  if (WScript.Arguments.length === 0) {
    WScript.Echo("Usage: tour.js [list | STOP...] - without arguments, here is the whole tour.");
  }
  for (i = 0; i < stops.length; i++) {
    if (!isWanted(stops[i].name)) continue;
    WScript.Echo(stops[i].title);
    stops[i].walk();
    shown++;
  }
  if (shown === 0) {
    WScript.Echo("There is no such stop; tour.js list names them.");
    WScript.Quit(2);
  }
}

main();
