// Derives a key from a pass phrase by PBKDF2 with HMAC (RFC 8018, section 5.2).
//
//   derive-key.js ALG PASS SALT ITERATIONS BYTES
//
// ALG is MD5, SHA1 or SHA256; SALT is hexadecimal, or "new" for 16 random bytes, which are then printed
// first. Prints BYTES bytes of the key in hexadecimal. The pass phrase is encoded as UTF-8. Other users can
// see command lines: --key-file FILE or --key-env NAME instead of PASS read it from a file, without a final
// line end, or an environment variable.
//
// Each iteration makes guessing a pass phrase as much slower as it makes this script. Use a salt of its own
// for each key, 16 bytes or more.

// Functions that the examples share.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
  WScript.ScriptFullName.replace(/[^\\\/]*$/, "shared.js")).ReadAll());

var NEW_SALT_BYTES = 16;
var MOST_ITERATIONS = 100000000;
var MOST_KEY_BYTES = 65536;

function usage(status) {
  WScript.Echo("Usage: " + WScript.ScriptName + " ALG PASS SALT ITERATIONS BYTES");
  WScript.Echo("Prints a key of BYTES bytes derived from the pass phrase PASS by PBKDF2. ALG is MD5, SHA1");
  WScript.Echo("or SHA256; SALT is hexadecimal, or new for random bytes, which are printed.");
  WScript.Echo(KEY_USAGE.replace("KEY", "PASS"));
  WScript.Quit(status === undefined ? 2 : status);
}

function main() {
  offerHelp(usage);
  var found = splitArguments(KEY_OPTIONS, usage), key = takeKey(found, 1, usage), words = found.words;
  if (words.length !== 4) usage();
  var iterations = takeWhole(words[2], 1, MOST_ITERATIONS, usage);
  var count = takeWhole(words[3], 1, MOST_KEY_BYTES, usage), salt, isNew = words[1] === "new";
  try {
    if (!isOneOf(words[0], ["MD5", "SHA1", "SHA256"])) {
      fail(words[0] + ": use MD5, SHA1 or SHA256 (case-sensitive)");
    }
    salt = isNew ? Bytes.Random(NEW_SALT_BYTES) : Bytes.FromHex(words[1]);
    var derived = deriveKey(words[0], secretBytes(key), salt, iterations, count);
    if (isNew) WScript.Echo("salt: " + Bytes.ToHex(salt));
    WScript.Echo((isNew ? "key: " : "") + Bytes.ToHex(derived));
  } catch (e) {
    complain(WScript.ScriptName + ": " + describe(e));
    WScript.Quit(1);
  }
}

main();
