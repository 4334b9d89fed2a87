// Decrypts a file written by rsa-encrypt.js.
//
//   rsa-decrypt.js KEY.json IN OUT      KEY.json comes from rsa-keygen.js
//
// rsa-encrypt.js describes the format of the file. The AES key is decrypted by raw RSA, which has no
// padding: only its length can be checked, and a modified file is not detected.
//
// An existing OUT is replaced only when the new file is complete; after a failure it is unchanged.
//
// Not with Wine: its ADODB.Stream reads and writes no files.

// Functions that the examples share.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
  WScript.ScriptFullName.replace(/[^\\\/]*$/, "shared.js")).ReadAll());

var MAGIC = "4d49524f4c525341";
var AES_KEY_BYTES = 32;
var AES_BLOCK = 16;
var NO_PADDING =
  "raw RSA has no padding, AES works block by block, and nothing is authenticated.";

function usage() {
  WScript.Echo("Usage: " + WScript.ScriptName + " KEY.json IN OUT");
  WScript.Echo("Decrypts the file IN, which rsa-encrypt.js made, to OUT.");
  WScript.Echo("Beware: " + NO_PADDING);
  WScript.Quit(2);
}

// The header: the length of the plain file and of the encrypted key.
function readHeader(input, path) {
  var bytes = input.read(20);
  var hex = bytes === null ? "" : Bytes.ToHex(bytes);
  if (hex.length !== 40 || hex.substr(0, 16) !== MAGIC) {
    fail(path + ": was not made by rsa-encrypt.js");
  }
  var header = {
    length: parseInt(hex.substr(16, 16), 16),
    keyBytes: parseInt(hex.substr(32, 8), 16)
  };
  header.blocks = Math.ceil(header.length / AES_BLOCK) * AES_BLOCK;
  if (header.keyBytes === 0 || input.size !== 20 + header.keyBytes + header.blocks) {
    fail(path + ": is cut short or damaged");
  }
  return header;
}

function unwrapKey(rsa, wrapped, keyFile) {
  var key = rsa.DecryptPQ(wrapped);
  if (Bytes.ToHex(key).length !== 2 * AES_KEY_BYTES) fail(keyFile + ": is not the key for this file");
  return key;
}

function decryptFile(keyFile, from, to) {
  refuseSameFiles([keyFile, from], [to]);
  var rsa = readRsaKey(keyFile, {e: "PublicExp", d: "SecretExp", p: "P", q: "Q"});
  var crypt = new ActiveXObject("Vardeko.crypt.Symmetric"), length = 0;
  crypt.Init("AES");
  withFiles(from, to, function (input) {
    var header = readHeader(input, from);
    crypt.Key = unwrapKey(rsa, input.read(header.keyBytes), keyFile);
    length = header.length;
    return length;
  }, function (input, output) {
    pump(input, output, function (bytes, isLast) { return crypt.Decrypt(bytes, isLast); });
  });
  return length;
}

function main() {
  var words = WScript.Arguments;
  if (words.length !== 3) usage();
  try {
    WScript.Echo("decrypted " + decryptFile(words(0), words(1), words(2)) + " bytes");
  } catch (e) {
    complain(WScript.ScriptName + ": " + describe(e));
    WScript.Quit(1);
  }
  complain("Beware: " + NO_PADDING);
}

main();
