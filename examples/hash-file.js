// Prints the digests of files, in the format of sha256sum.
//
//   hash-file.js ALG FILE...        ALG is MD5, SHA1 or SHA256
//
// A file is read in pieces, so its size does not matter; above 16 MB the progress is shown on
// standard error if that is a terminal. A file that cannot be read is reported there, the others are
// still read, and the exit status is 1.
//
// Not with Wine: its ADODB.Stream reads no files.

// Functions that the examples share.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
  WScript.ScriptFullName.replace(/[^\\\/]*$/, "shared.js")).ReadAll());

function usage() {
  WScript.Echo("Usage: " + WScript.ScriptName + " ALG FILE...");
  WScript.Echo("Prints the digest of each file. ALG is MD5, SHA1 or SHA256.");
  WScript.Quit(2);
}

function hashFile(hash, path) {
  hash.Reset();
  addFile(hash, path);
  return hash.Value.toLowerCase();
}

// A name with a line end or backslash is escaped, and the line then starts with a backslash.
function outputLine(digest, path) {
  var isPlain = path.indexOf("\\") < 0 && path.indexOf("\n") < 0 && path.indexOf("\r") < 0;
  if (isPlain) return digest + "  " + path;
  var escaped = path.replace(/\\/g, "\\\\").replace(/\n/g, "\\n").replace(/\r/g, "\\r");
  return "\\" + digest + "  " + escaped;
}

function main() {
  var words = WScript.Arguments, count = words.length;
  if (count < 2) usage();
  var hash = new ActiveXObject("Vardeko.crypt.HashObject");
  var status = 0;
  try {
    hash.InitHash(words(0));
  } catch (e) {
    complain(WScript.ScriptName + ": " + words(0) + ": " + e.description);
    WScript.Quit(2);
  }
  for (var i = 1; i < count; i++) {
    var path = words(i);
    try {
      WScript.Echo(outputLine(hashFile(hash, path), path));
    } catch (e2) {
      var text = e2.description || e2.message;
      if (text.indexOf(path) !== 0) text = path + ": " + text;
      complain(WScript.ScriptName + ": " + text);
      status = 1;
    }
  }
  WScript.Quit(status);
}

main();
