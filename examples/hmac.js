// Prints the HMAC of a file or a text, in hexadecimal.
//
//   hmac.js ALG KEY FILE            ALG is MD5, SHA1 or SHA256
//   hmac.js ALG KEY -t TEXT
//   hmac.js ALG KEY                 the empty message
//
// --key-file FILE or --key-env NAME in place of KEY take it from a file or an environment variable;
// the key is then the bytes of the file, without a final line end. KEY and text are encoded as UTF-8.
// The file is read in pieces.
//
// Not with Wine: its ADODB.Stream reads no files.

// Functions that the examples share.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
  WScript.ScriptFullName.replace(/[^\\\/]*$/, "shared.js")).ReadAll());

var UTF8 = 65001;

function usage() {
  WScript.Echo("Usage: " + WScript.ScriptName + " ALG KEY [FILE | -t TEXT]");
  WScript.Echo("Prints the HMAC of a file or a text. ALG is MD5, SHA1 or SHA256.");
  WScript.Echo(KEY_USAGE);
  WScript.Quit(2);
}

function main() {
  var found = splitArguments(KEY_OPTIONS.concat("-t"), usage), words = found.words;
  var key = takeKey(found, 1, usage), text = found["-t"];
  if (words.length < 1 || words.length > (text === undefined ? 2 : 1)) usage();
  try {
    var hash = new ActiveXObject("Vardeko.crypt.HashObject");
    hash.InitHash(words[0]);
    // The key is converted to bytes when it is set.
    hash.codePage = UTF8;
    hash.Key = keyValue(key);
    if (text !== undefined) {
      hash.HashUpdate(text);
    } else if (words.length > 1) {
      addFile(hash, words[1]);
    }
    WScript.Echo(hash.Value.toLowerCase());
  } catch (e) {
    complain(WScript.ScriptName + ": " + describe(e));
    WScript.Quit(1);
  }
}

main();
