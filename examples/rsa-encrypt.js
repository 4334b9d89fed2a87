// Encrypts a file for the owner of an RSA key.
//
//   rsa-encrypt.js KEY.json IN OUT      KEY.json comes from rsa-keygen.js; n and e are enough
//
// The file is encrypted by AES with a random key, and that key by RSA. OUT contains, with big-endian
// numbers:
//
//   8 bytes    "MIROLRSA"
//   8 bytes    the length of IN
//   4 bytes    k, the length of the encrypted AES key
//   k bytes    the AES key, 32 bytes, as a number raised to e modulo n
//   the rest   IN encrypted by AES in ECB mode, the last block filled with zero bytes
//
// For demonstration only: raw RSA has no padding, AES in ECB mode leaves patterns visible, and nothing
// is authenticated.
//
// An existing OUT is replaced only when the new file is complete; after a failure it is unchanged.
//
// Not with Wine: its ADODB.Stream reads and writes no files.

// Functions that the examples share.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
  WScript.ScriptFullName.replace(/[^\\\/]*$/, "shared.js")).ReadAll());

var MAGIC = "4d49524f4c525341";
var AES_KEY_BYTES = 32;
var NO_PADDING =
  "raw RSA has no padding, AES works block by block, and nothing is authenticated.";

function usage() {
  WScript.Echo("Usage: " + WScript.ScriptName + " KEY.json IN OUT");
  WScript.Echo("Encrypts the file IN to OUT with a random AES key, which goes along encrypted by");
  WScript.Echo("RSA.");
  WScript.Echo("Beware: " + NO_PADDING);
  WScript.Quit(2);
}

// The top two bits of the key are always set, so that it keeps its length as a number.
function randomKey() {
  var key = new ActiveXObject("Vardeko.crypt.Number");
  key.Random(AES_KEY_BYTES, true);
  return key.Binary;
}

function encryptFile(keyFile, from, to) {
  refuseSameFiles([keyFile, from], [to]);
  var rsa = readRsaKey(keyFile, {n: "Modulus", e: "PublicExp"});
  if (rsa.BlockSize < AES_KEY_BYTES) fail(keyFile + ": the modulus is too short for an AES key");
  var key = randomKey();
  var crypt = new ActiveXObject("Vardeko.crypt.Symmetric");
  crypt.Init("AES");
  crypt.Key = key;
  var wrapped = Bytes.ToHex(rsa.Encrypt(key));
  return withFiles(from, to, function () { return Infinity; }, function (input, output) {
    output.write(Bytes.FromHex(MAGIC + fixedHex(input.size, 16) + fixedHex(wrapped.length / 2, 8) +
                         wrapped));
    pump(input, output, function (bytes, isLast) { return crypt.Encrypt(bytes, isLast); });
  });
}

function main() {
  var words = WScript.Arguments;
  if (words.length !== 3) usage();
  try {
    WScript.Echo("encrypted " + encryptFile(words(0), words(1), words(2)) + " bytes");
  } catch (e) {
    complain(WScript.ScriptName + ": " + describe(e));
    WScript.Quit(1);
  }
  complain("Beware: " + NO_PADDING);
}

main();
