// Copies a file and prints its MD5, SHA1 and SHA256 digests, all in one pass.
//
//   digest-while-copy.js IN OUT
//
// Three digesting streams stand one in front of the other; what is copied passes through each. The
// output is that of md5sum, sha1sum and sha256sum on IN. The file is copied in pieces, so its size
// does not matter; above 16 MB the progress is shown on standard error.

var ALGORITHMS = ["MD5", "SHA1", "SHA256"];
var PIECE = 1 << 20;
var LARGE = 16 * 1024 * 1024;

function fail(status, text) {
  WScript.StdErr.WriteLine(text);
  WScript.Quit(status);
}

// The filters from the one in front of `source` to the one that the copy is taken from.
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

function copy(source, size, to, path) {
  var done = 0, count, shown = -1;
  while ((count = source.CopyTo(to, PIECE)) > 0) {
    done += count;
    var percent = Math.floor(done / size * 100);
    if (size > LARGE && percent !== shown) {
      shown = percent;
      WScript.StdErr.Write("\r" + path + ": " + percent + " %");
    }
  }
  if (shown >= 0) WScript.StdErr.Write("\n");
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
  var from = WScript.Arguments(0), to = WScript.Arguments(1);
  if (from === to) fail(2, WScript.ScriptName + ": " + from + ": cannot be copied to itself");
  try {
    var input = WScript.OpenFile(from, "r");
    var output = WScript.OpenFile(to, "w");
    var filters = digestingFilters(input);
    copy(WScript.StreamOf(filters[filters.length - 1]), input.Size, output, from);
    output.Close();
    for (var i = 0; i < filters.length; i++) {
      WScript.Echo(filters[i].ReadValue.toLowerCase() + "  " + from);
    }
  } catch (e) {
    fail(1, WScript.ScriptName + ": " + (e.description || e.message));
  }
}

main();
