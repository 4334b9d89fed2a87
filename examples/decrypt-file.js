// Decrypts a file that encrypt-file.js made.
//
//   decrypt-file.js [--length N] ALG KEY IN OUT      ALG is AES or DES, KEY is hexadecimal
//
// --key-file FILE or --key-env NAME in place of KEY take it from a file or an environment variable.
// Without --length the output is whole blocks, with the zero bytes that filled the last one. A wrong
// key or a modified file is not detected and gives garbage; only the lengths of key and file are
// checked.
//
// An existing OUT is replaced only when the new file is complete; after a failure it is unchanged.
//
// Not with Wine: its ADODB.Stream reads and writes no files.

// Functions that the examples share.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
  WScript.ScriptFullName.replace(/[^\\\/]*$/, "shared.js")).ReadAll());

var WARNING = "block by block: patterns of the plaintext stay visible, and nothing is authenticated.";

function usage() {
  WScript.Echo("Usage: " + WScript.ScriptName + " [--length N] ALG KEY IN OUT");
  WScript.Echo("Decrypts the file IN to OUT. ALG is AES or DES; KEY is hexadecimal, 16, 24 or 32");
  WScript.Echo("bytes for AES, 8, 16 or 24 for DES. N is the length that encrypt-file.js printed:");
  WScript.Echo("the output is cut there.");
  WScript.Echo(KEY_USAGE);
  WScript.Echo("Beware: " + WARNING);
  WScript.Quit(2);
}

// The length to truncate to: the one given, else that of all blocks.
function plainLength(wanted, from, size, blockSize) {
  if (size % blockSize !== 0) {
    fail(from + ": " + size + " bytes are no ciphertext, which has whole blocks of " + blockSize);
  }
  if (wanted === null) return size;
  if (wanted > size || wanted <= size - blockSize && size > 0) {
    fail("--length " + wanted + " does not fit: the plaintext of " + from + " has " +
         (size > 0 ? size - blockSize + 1 + " to " : "") + size + " bytes");
  }
  return wanted;
}

function decryptFile(algorithm, key, from, to, wanted) {
  refuseSameFiles([from, key.file], [to]);
  var crypt = makeCrypt(algorithm, keyDigits(key)), length;
  withFiles(from, to, function (input) {
    length = plainLength(wanted, from, input.size, crypt.BlockSize);
    return length;
  }, function (input, output) {
    pump(input, output, function (bytes, isLast) { return crypt.Decrypt(bytes, isLast); });
  });
  return length;
}

function main() {
  var found = splitArguments(KEY_OPTIONS.concat("--length"), usage), words = found.words;
  var wanted = found["--length"], length;
  if (wanted !== undefined && !/^[0-9]{1,15}$/.test(wanted)) usage();
  var key = takeKey(found, 1, usage);
  if (words.length !== 3) usage();
  try {
    length = decryptFile(words[0], key, words[1], words[2],
                         wanted === undefined ? null : parseInt(wanted, 10));
  } catch (e) {
    complain(WScript.ScriptName + ": " + describe(e));
    complain(WScript.ScriptName + ": nothing was decrypted");
    WScript.Quit(1);
  }
  complain("Beware: " + WARNING);
  WScript.Echo("plain length: " + length);
}

main();
