// Shows the bytes that the classes make of a value.
//
//   show-bytes.js [--type TYPE] [--escapes] VALUE [CODEPAGE...]
//
// TYPE is text (the default), integer, real, boolean, date, null or empty; VALUE is the value in the
// notation of scripts, and is left out for null and empty. --escapes reads \uXXXX, \xXX, \n, \r, \t, \0 and \\
// in a text. Without CODEPAGE the system's character set (0), UTF-8, Windows-1252 and both orders of UTF-16
// are shown.
//
// The bytes are those of data, as HashData, Encrypt and the other members take it. A text in a key differs
// only below 0, where it is always little-endian, and in its zero characters, which do not end it.

// Functions that the examples share.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
  WScript.ScriptFullName.replace(/[^\\\/]*$/, "shared.js")).ReadAll());

var CODE_PAGES = [0, 65001, 1252, -1, -2];

function usage(status) {
  WScript.Echo("Usage: " + WScript.ScriptName + " [--type TYPE] [--escapes] VALUE [CODEPAGE...]");
  WScript.Echo("Prints the bytes that the classes make of the value under each code page. TYPE is text,");
  WScript.Echo("integer, real, boolean, date, null or empty; --escapes reads \\uXXXX and the like.");
  WScript.Quit(status === undefined ? 2 : status);
}

var ESCAPES = {n: "\n", r: "\r", t: "\t", "0": "\u0000", "\\": "\\"};

function unescaped(text) {
  return text.replace(/\\(u[0-9A-Fa-f]{4}|x[0-9A-Fa-f]{2}|[\s\S]|$)/g, function (all, code) {
    if (code.length > 1) return String.fromCharCode(parseInt(code.substr(1), 16));
    if (!ESCAPES.hasOwnProperty(code)) fail("cannot read the escape " + all);
    return ESCAPES[code];
  });
}

function wholeNumber(text) {
  if (!/^-?[0-9]{1,10}$/.test(text)) fail(text + ": is no integer");
  return Number(text);
}

// The types and their values.
var TYPES = {
  text: function (text) { return text; },
  integer: wholeNumber,
  real: function (text) {
    if (!/^-?[0-9.]+([eE][-+]?[0-9]+)?$/.test(text) || isNaN(Number(text))) fail(text + ": is no number");
    return Number(text);
  },
  boolean: function (text) {
    if (text !== "true" && text !== "false") fail(text + ": is neither true nor false");
    return text === "true";
  },
  date: function (text) {
    var date = new Date(text);
    if (isNaN(date.getTime())) fail(text + ": is no date");
    // Automation has a type for dates, which this method gives where a Date is another object.
    return typeof date.getVarDate === "undefined" ? date : date.getVarDate();
  },
  "null": function () { return null; },
  empty: function () { return undefined; }
};

// The data as a cipher takes it: encrypted and decrypted again, it is followed by the pad, and two kinds
// of pad tell where that starts.
function bytesOfData(value, codePage) {
  var crypt = new ActiveXObject("Vardeko.crypt.Symmetric"), results = [], i, end;
  crypt.Init("AES");
  crypt.Key = Bytes.FromHex("00000000000000000000000000000000");
  crypt.codePage = codePage;
  for (i = 0; i < 2; i++) {
    crypt.PadType = i;
    results.push(Bytes.ToHex(crypt.Decrypt(crypt.Encrypt(value))));
  }
  end = results[0].length;
  while (end > 0 && results[0].charAt(end - 1) !== results[1].charAt(end - 1)) end -= 2;
  return Bytes.FromHex(results[0].substr(0, end));
}

function spaced(bytes) {
  return Bytes.ToHex(bytes).replace(/(..)(?=.)/g, "$1 ");
}

// What became of a text, if not all of it can be read back.
function remark(value, bytes, codePage) {
  if (typeof value !== "string") return "";
  var back;
  try {
    back = Bytes.ToText(bytes, codePage);
  } catch (e) {
    return "";
  }
  if (back === value) return "";
  var end = value.indexOf("\u0000");
  if (end >= 0 && back === value.substr(0, end)) return "   (ends at the zero character)";
  if (Bytes.Count(bytes) === 0) return "   (no such code page)";
  return "   (not all characters are in this code page)";
}

function show(value, codePages) {
  var lines = ["code page  bytes"];
  for (var i = 0; i < codePages.length; i++) {
    var bytes = bytesOfData(value, codePages[i]), name = String(codePages[i]);
    while (name.length < 9) name = " " + name;
    lines.push(name + "  " + Bytes.Count(bytes) + ": " + spaced(bytes) +
               remark(value, bytes, codePages[i]));
  }
  for (i = 0; i < lines.length; i++) WScript.Echo(lines[i]);
}

function main() {
  offerHelp(usage);
  var found = splitArguments(["--type"], usage), flags = takeFlags(found, ["--escapes"]);
  var words = found.words, type = found["--type"] || "text", codePages = [], i, value;
  if (!TYPES.hasOwnProperty(type)) usage();
  if (type === "null" || type === "empty") words.unshift("");
  if (words.length === 0) usage();
  try {
    for (i = 1; i < words.length; i++) codePages.push(wholeNumber(words[i]));
    value = TYPES[type](flags["--escapes"] ? unescaped(words[0]) : words[0]);
    show(value, codePages.length > 0 ? codePages : CODE_PAGES);
  } catch (e) {
    complain(WScript.ScriptName + ": " + describe(e));
    WScript.Quit(1);
  }
}

main();
