// Copies a file and prints its MD5, SHA1 and SHA256 digests, all in one pass.
//
//   digest-while-copy.js IN OUT
//
// Three digest filters are chained, so that the data passes through each. The
// output is that of md5sum, sha1sum and sha256sum on IN. The file is copied in pieces, so its size
// does not matter; above 16 MB the progress is shown on standard error if that is a terminal.
//
// An existing OUT is replaced only when the new file is complete; after a failure it is unchanged.
//
// Only on mirolta-host: the platform's host has no streams of bytes.

// Functions that the examples share.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
  WScript.ScriptFullName.replace(/[^\\\/]*$/, "shared.js")).ReadAll());

var ALGORITHMS = ["MD5", "SHA1", "SHA256"];

// The filters, from the one over `source` to the one that is copied from.
function digestingFilters(source) {
  var filters = [], below = source;
  for (var i = 0; i < ALGORITHMS.length; i++) {
    var filter = new ActiveXObject("Vardeko.crypt.ToviStreamDigest");
    filter.Stream = below;
    filter.ReadAlgorithm = ALGORITHMS[i];
    filters.push(filter);
    below = filter;
  }
  return filters;
}

// Returns the filters that the file passed through.
function copyFile(from, to) {
  refuseSameFiles([from], [to]);
  var input = WScript.OpenFile(from, "r");
  var filters = digestingFilters(input);
  var output = WScript.OpenFile(to, "w");
  try {
    copyStream(WScript.StreamOf(filters[filters.length - 1]), output, from, input.Size);
    output.Close();
  } finally {
    // After a failure the old file stays.
    output.Discard();
  }
  return filters;
}

function main() {
  if (typeof WScript.StreamOf === "undefined") {
    WScript.Echo("This script host offers scripts no streams.");
    WScript.Quit(2);
  }
  if (WScript.Arguments.length !== 2) {
    WScript.Echo("Usage: " + WScript.ScriptName + " IN OUT");
    WScript.Echo("Copies IN to OUT and prints the MD5, SHA1 and SHA256 digests of IN.");
    WScript.Quit(2);
  }
  var from = WScript.Arguments(0), filters;
  try {
    filters = copyFile(from, WScript.Arguments(1));
    for (var i = 0; i < filters.length; i++) {
      WScript.Echo(filters[i].ReadValue.toLowerCase() + "  " + from);
    }
  } catch (e) {
    complain(WScript.ScriptName + ": " + describe(e));
    WScript.Quit(1);
  }
}

main();
