// Encrypts a file with AES or DES in ECB mode.
//
//   encrypt-file.js ALG KEY IN OUT      ALG is AES or DES, KEY is hexadecimal
//
// Other users can see command lines: --key-file FILE or --key-env NAME instead of KEY read it from a
// file or an environment variable. The output is the ciphertext only: the file's length rounded up to
// whole blocks, the last block filled with zero bytes. The length of the file is printed, for
// decrypt-file.js --length. With a key of 16 or 24 bytes DES is triple DES.
//
// An existing OUT is replaced only when the new file is complete; after a failure it is unchanged.
//
// Not with Wine: its ADODB.Stream reads and writes no files.

// Functions that the examples share.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
  WScript.ScriptFullName.replace(/[^\\\/]*$/, "shared.js")).ReadAll());

var WARNING = "block by block: patterns of the plaintext stay visible, and nothing is authenticated.";

function usage() {
  WScript.Echo("Usage: " + WScript.ScriptName + " ALG KEY IN OUT");
  WScript.Echo("Encrypts the file IN to OUT. ALG is AES or DES; KEY is hexadecimal, 16, 24 or 32");
  WScript.Echo("bytes for AES, 8, 16 or 24 for DES. Prints the length of IN.");
  WScript.Echo(KEY_USAGE);
  WScript.Echo("Beware: " + WARNING);
  WScript.Quit(2);
}

function encryptFile(algorithm, key, from, to) {
  refuseSameFiles([from, key.file], [to]);
  var crypt = makeCrypt(algorithm, keyDigits(key));
  return withFiles(from, to, function () { return Infinity; }, function (input, output) {
    pump(input, output, function (bytes, isLast) { return crypt.Encrypt(bytes, isLast); });
  });
}

function main() {
  var found = splitArguments(KEY_OPTIONS, usage), words = found.words, length;
  var key = takeKey(found, 1, usage);
  if (words.length !== 3) usage();
  try {
    length = encryptFile(words[0], key, words[1], words[2]);
  } catch (e) {
    complain(WScript.ScriptName + ": " + describe(e));
    complain(WScript.ScriptName + ": nothing was encrypted");
    WScript.Quit(1);
  }
  complain("Beware: " + WARNING);
  WScript.Echo("plain length: " + length);
}

main();
