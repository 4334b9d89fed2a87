// Prints random bytes, or writes them to a file.
//
//   random-bytes.js [--base64] COUNT
//   random-bytes.js --output FILE COUNT
//
// The bytes come from the system's cryptographic random source. Without an option they are printed in
// hexadecimal. FILE, of the bytes themselves, must not exist yet; only its owner may read it, if the script
// host can set that.
//
// Not with Wine: its ADODB.Stream writes no files.

// Functions that the examples share.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
  WScript.ScriptFullName.replace(/[^\\\/]*$/, "shared.js")).ReadAll());

var MOST_BYTES = 1 << 20;

function usage(status) {
  WScript.Echo("Usage: " + WScript.ScriptName + " [--base64 | --output FILE] COUNT");
  WScript.Echo("Prints COUNT random bytes, up to " + MOST_BYTES + ", in hexadecimal or base64, or writes them");
  WScript.Echo("to the file FILE, which must not exist yet.");
  WScript.Quit(status === undefined ? 2 : status);
}

function main() {
  offerHelp(usage);
  var found = splitArguments(["--output"], usage), flags = takeFlags(found, ["--base64"]);
  var path = found["--output"];
  if (found.words.length !== 1 || path !== undefined && flags["--base64"]) usage();
  var count = takeWhole(found.words[0], 1, MOST_BYTES, usage), file, bytes, written = false;
  try {
    if (path === undefined) {
      bytes = Bytes.Random(count);
      WScript.Echo(flags["--base64"] ? Bytes.ToBase64(bytes) : Bytes.ToHex(bytes));
      return;
    }
    file = openSecretOutput(path);
    try {
      file.write(Bytes.Random(count));
      written = true;
    } finally {
      if (!written) file.discard();
    }
  } catch (e) {
    complain(WScript.ScriptName + ": " + describe(e));
    WScript.Quit(1);
  }
}

main();
