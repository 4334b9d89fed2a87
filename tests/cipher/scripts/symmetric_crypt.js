function hexOf(bytes) {
  var text = "";
  for (var i = 0; i < bytes.length; i++) text += (bytes[i] + 256).toString(16).substr(1);
  return "[" + text + "]";
}
function attempt(f) {
  try { f(); WScript.Echo("no error"); } catch (e) { WScript.Echo(e.number, e.description); }
}

var crypt = new ActiveXObject("Vardeko.crypt.Symmetric.free");
attempt(function () { crypt.Encrypt("abc"); });
attempt(function () { return crypt.PadType; });
attempt(function () { crypt.Init("aes"); });
attempt(function () { crypt.Init("AES"); });
attempt(function () { crypt.Encrypt("abc"); });
attempt(function () { crypt.Key = "12345678901234567890"; });
attempt(function () { crypt.Key = null; });
WScript.Echo(typeof crypt.Key, crypt.BlockSize, crypt.PadType, crypt.codePage);

// The key as bytes, the data in every form.
crypt.Key = new Uint8Array([0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15]);
WScript.Echo(hexOf(crypt.Key));
var block = new Uint8Array(16);
for (var i = 0; i < 16; i++) block[i] = i * 0x11;
WScript.Echo(hexOf(crypt.Encrypt(block)));
WScript.Echo(hexOf(crypt.Decrypt(crypt.Encrypt(block))));
WScript.Echo(hexOf(crypt.Decrypt(crypt.Encrypt("abc"))));
WScript.Echo(hexOf(crypt.Decrypt(crypt.Encrypt(255))));
WScript.Echo(hexOf(crypt.Encrypt("")), hexOf(crypt.Encrypt(new Uint8Array(0))));
attempt(function () { crypt.Encrypt(null); });

// An object is its default value; here the digest as text.
var hash = new ActiveXObject("Vardeko.crypt.HashObject");
hash.InitHash("MD5");
WScript.Echo(hexOf(crypt.Decrypt(crypt.Encrypt(hash))));

// In pieces, and what Reset drops.
WScript.Echo(hexOf(crypt.Encrypt("12345", false)), hexOf(crypt.Decrypt(crypt.Encrypt("678"))));
crypt.Encrypt("dropped", false);
crypt.Reset(12345);
WScript.Echo(hexOf(crypt.Encrypt("", true)));

crypt.PadType = -2;
attempt(function () { crypt.Encrypt("abc"); });
crypt.PadType = 0x141;
WScript.Echo(hexOf(crypt.Decrypt(crypt.Encrypt(""))));
crypt.Init("AES");
WScript.Echo(crypt.PadType);
crypt.Key = "0123456789abcdef";
crypt.ResetKey();
WScript.Echo(typeof crypt.Key);
attempt(function () { crypt.Decrypt("abc"); });
