// A guided tour of the components. Prints the same on every host.
//
//   tour.js           the whole tour
//   tour.js list      the names of its stops
//   tour.js NAME...   these stops only

var stops = [];

function stop(name, title, walk) {
  stops.push({ name: name, title: title, walk: walk });
}

function say(text) {
  WScript.Echo("  " + text);
}

// What an error says of itself: what scripts get from a member that fails.
function sayError(what, member) {
  try {
    member();
    say(what + ": no error");
  } catch (e) {
    say(what + ": error " + e.number + ", " + e.description);
  }
}

stop("hash", "HashObject: message digests", function () {
  var hash = new ActiveXObject("Vardeko.crypt.HashObject");
  var algorithms = ["MD5", "SHA1", "SHA256"];
  for (var i = 0; i < algorithms.length; i++) {
    hash.InitHash(algorithms[i]);
    hash.HashData("abc");
    say(algorithms[i] + "(abc) = " + hash.Value);
    say("  digest of " + hash.HashSize + " bytes, blocks of " + hash.BlockSize);
  }

  hash.Reset();
  hash.HashUpdate("a");
  hash.HashUpdate("bc");
  hash.HashFinalize();
  say("in pieces   = " + hash.Value);
  hash.Reset();
  say("of nothing  = " + hash);

  // BinaryValue is a byte array: a value to hand to another member.
  hash.HashData("abc");
  var bytes = hash.BinaryValue;
  hash.HashData(bytes);
  say("hash of the hash = " + hash.Value);
});

stop("codepage", "HashObject: text becomes bytes through a code page", function () {
  var hash = new ActiveXObject("Vardeko.crypt.HashObject");
  hash.InitHash("MD5");
  say("codePage starts at " + hash.codePage);
  var pages = [65001, 1252, -1, -2];
  for (var i = 0; i < pages.length; i++) {
    hash.codePage = pages[i];
    hash.HashData("\u00e9");
    say("MD5 of e acute in code page " + pages[i] + " = " + hash.Value);
  }
  hash.codePage = 65001;
  hash.HashData("\u00e9", 1252);
  say("the same, 1252 for one call only = " + hash.Value);
});

stop("hmac", "HashObject: HMAC", function () {
  var hash = new ActiveXObject("Vardeko.crypt.HashObject");
  hash.InitHash("SHA256");
  hash.Key = "key";
  hash.HashData("The quick brown fox jumps over the lazy dog");
  say("HMAC-SHA256 = " + hash.Value);
  hash.HashData("The quick brown fox jumps over the lazy dog");
  say("once more   = " + hash.Value);
  // The key comes back as bytes; another object takes them.
  var other = new ActiveXObject("Vardeko.crypt.HashObject.free");
  other.InitHash("SHA256");
  other.Key = hash.Key;
  other.HashData("The quick brown fox jumps over the lazy dog");
  say("other object = " + other.Value);
  hash.ResetKey();
  hash.HashData("The quick brown fox jumps over the lazy dog");
  say("without key = " + hash.Value);
});

stop("errors", "Errors: number, description", function () {
  var hash = new ActiveXObject("Vardeko.crypt.HashObject");
  sayError("HashData without an algorithm", function () { hash.HashData("abc"); });
  sayError("InitHash(\"sha256\")", function () { hash.InitHash("sha256"); });
  sayError("InitHash(\"SHA256\")", function () { hash.InitHash("SHA256"); });
});

function isWanted(name) {
  if (WScript.Arguments.length === 0) return true;
  for (var i = 0; i < WScript.Arguments.length; i++) {
    if (WScript.Arguments(i) === name) return true;
  }
  return false;
}

function main() {
  var shown = 0, i;
  if (WScript.Arguments.length === 1 && WScript.Arguments(0) === "list") {
    for (i = 0; i < stops.length; i++) WScript.Echo(stops[i].name);
    return;
  }
  if (WScript.Arguments.length === 0) {
    WScript.Echo("Usage: tour.js [list | STOP...] - without arguments, here is the whole tour.");
  }
  for (i = 0; i < stops.length; i++) {
    if (!isWanted(stops[i].name)) continue;
    WScript.Echo(stops[i].title);
    stops[i].walk();
    shown++;
  }
  if (shown === 0) {
    WScript.Echo("There is no such stop; tour.js list names them.");
    WScript.Quit(2);
  }
}

main();
