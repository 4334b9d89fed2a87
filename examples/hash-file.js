// Prints the digests of files, as sha256sum and its sisters do.
//
//   hash-file.js ALG FILE...        ALG is MD5, SHA1 or SHA256
//
// A file is read in pieces, so its size does not matter; above 16 MB the progress is shown on
// standard error. A file that cannot be read is named there, the others go on, and the exit status
// is then 1.

var PIECE = 1 << 20;
var LARGE = 16 * 1024 * 1024;

function usage() {
  WScript.Echo("Usage: " + WScript.ScriptName + " ALG FILE...");
  WScript.Echo("Prints the digest of each file. ALG is MD5, SHA1 or SHA256.");
  WScript.Quit(2);
}

// Not every host has a standard error stream for scripts.
function offersStdErr() {
  try {
    return typeof WScript.StdErr === "object" && WScript.StdErr !== null;
  } catch (e) {
    return false;
  }
}
var hasStdErr = offersStdErr();

function complain(text) {
  if (hasStdErr) {
    WScript.StdErr.WriteLine(text);
  } else {
    WScript.Echo(text);
  }
}

// Opens a file as an object with size, read(n) and close(); read gives null at the end.
function openFile(path) {
  if (typeof WScript.OpenFile !== "undefined") {
    var stream = WScript.OpenFile(path, "r");
    return {
      size: stream.Size,
      read: function (n) { var bytes = stream.Read(n); return bytes.length > 0 ? bytes : null; },
      close: function () { stream.Close(); }
    };
  }
  var binary;
  try {
    binary = new ActiveXObject("ADODB.Stream");
  } catch (e) {
    throw new Error(e.number, "this script host offers no way to read bytes of a file");
  }
  binary.Type = 1;
  binary.Open();
  binary.LoadFromFile(path);
  return {
    size: binary.Size,
    read: function (n) { return binary.EOS ? null : binary.Read(n); },
    close: function () { binary.Close(); }
  };
}

function showProgress(path, done, size, shown) {
  var percent = Math.floor(done / size * 100);
  if (percent !== shown) WScript.StdErr.Write("\r" + path + ": " + percent + " %");
  return percent;
}

function hashFile(hash, path) {
  var file = openFile(path);
  try {
    var showsProgress = hasStdErr && file.size > LARGE;
    var done = 0, shown = -1, bytes;
    hash.Reset();
    while ((bytes = file.read(PIECE)) !== null) {
      hash.HashUpdate(bytes);
      done = Math.min(done + PIECE, file.size);
      if (showsProgress) shown = showProgress(path, done, file.size, shown);
    }
    if (showsProgress) WScript.StdErr.Write("\n");
    return hash.Value.toLowerCase();
  } finally {
    file.close();
  }
}

// A name with a line end or a backslash is written with escapes, and the line starts with one.
function outputLine(digest, path) {
  var escaped = path.replace(/\\/g, "\\\\").replace(/\n/g, "\\n").replace(/\r/g, "\\r");
  return (escaped !== path ? "\\" : "") + digest + "  " + escaped;
}

function main() {
  if (WScript.Arguments.length < 2) usage();
  var hash = new ActiveXObject("Vardeko.crypt.HashObject");
  var status = 0;
  try {
    hash.InitHash(WScript.Arguments(0));
  } catch (e) {
    complain(WScript.ScriptName + ": " + WScript.Arguments(0) + ": " + e.description);
    WScript.Quit(2);
  }
  for (var i = 1; i < WScript.Arguments.length; i++) {
    var path = WScript.Arguments(i);
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
