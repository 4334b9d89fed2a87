// Prints the HMAC of a file or a text, in hexadecimal.
//
//   hmac.js ALG KEY FILE            ALG is MD5, SHA1 or SHA256
//   hmac.js ALG KEY -t TEXT
//   hmac.js ALG KEY                 the empty message
//
// Key and text are taken as UTF-8. The file is read in pieces.

var UTF8 = 65001;
var PIECE = 1 << 20;

function usage() {
  WScript.Echo("Usage: " + WScript.ScriptName + " ALG KEY [FILE | -t TEXT]");
  WScript.Echo("Prints the HMAC of a file or a text. ALG is MD5, SHA1 or SHA256.");
  WScript.Quit(2);
}

function complain(text) {
  var stream = null;
  try { stream = WScript.StdErr; } catch (e) { stream = null; }
  if (stream) {
    stream.WriteLine(text);
  } else {
    WScript.Echo(text);
  }
}

function addFile(hash, path) {
  if (typeof WScript.OpenFile === "undefined") {
    throw new Error(1, path + ": this script host offers no way to read bytes of a file");
  }
  var file = WScript.OpenFile(path, "r");
  try {
    for (;;) {
      var bytes = file.Read(PIECE);
      if (bytes.length === 0) break;
      hash.HashUpdate(bytes);
    }
  } finally {
    file.Close();
  }
}

function main() {
  var words = WScript.Arguments;
  var hasText = words.length > 2 && words(2) === "-t";
  if (words.length < 2 || (hasText ? words.length !== 4 : words.length > 3)) usage();
  try {
    var hash = new ActiveXObject("Vardeko.crypt.HashObject");
    hash.InitHash(words(0));
    // The key is turned into bytes when it is set.
    hash.codePage = UTF8;
    hash.Key = words(1);
    if (hasText) {
      hash.HashUpdate(words(3));
    } else if (words.length > 2) {
      addFile(hash, words(2));
    }
    WScript.Echo(hash.Value.toLowerCase());
  } catch (e) {
    complain(WScript.ScriptName + ": " + (e.description || e.message));
    WScript.Quit(1);
  }
}

main();
