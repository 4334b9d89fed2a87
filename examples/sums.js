// Writes and checks lists of digests, as sha256sum and its relatives do.
//
//   sums.js [--algorithm ALG] [--binary | --tag] [--output FILE] FILE...
//   sums.js [--algorithm ALG] --check [--ignore-missing] [--quiet] [--status] [--strict] [--warn] LIST...
//
// ALG is MD5, SHA1 or SHA256 (the default). A line has the digest, a space, a mark (a space for text, * for
// binary, which mean the same) and the name; --tag writes the form "SHA256 (name) = digest". A name with a line
// end or backslash is escaped, and its line then starts with a backslash. --output writes the list to a file,
// which replaces an old one only when it is complete. - is standard input.
//
// --check reads such lists, in both forms, and prints for each file "OK", "FAILED" or "FAILED open or read".
//   --ignore-missing   neither fails for missing files nor names them
//   --quiet            does not print OK
//   --status           prints nothing; the exit status tells
//   --strict           lines that are no list fail
//   --warn             names each of them
//
// The exit status is 0 if all is well, 1 if a file cannot be read or differs, or a list has no line of a digest,
// and 2 for a wrong call.
//
// Not with Wine: its ADODB.Stream reads and writes no files.

// Functions that the examples share.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
  WScript.ScriptFullName.replace(/[^\\\/]*$/, "shared.js")).ReadAll());

var DIGEST_DIGITS = {MD5: 32, SHA1: 40, SHA256: 64};
var BYTE_CODE_PAGE = 28591;  // each byte is the character of its number
var MOST_LIST = 64 * 1024 * 1024;
var CHECK_FLAGS = ["--ignore-missing", "--quiet", "--status", "--strict", "--warn"];
var WRITE_FLAGS = ["--binary", "--tag"];

function usage(status) {
  WScript.Echo("Usage: " + WScript.ScriptName + " [--algorithm ALG] [--binary | --tag] [--output LIST] FILE...");
  WScript.Echo("       " + WScript.ScriptName + " [--algorithm ALG] --check [--ignore-missing] [--quiet]");
  WScript.Echo("               [--status] [--strict] [--warn] LIST...");
  WScript.Echo("Writes a list of the digests of the files, or checks the files of lists. ALG is MD5, SHA1");
  WScript.Echo("or SHA256, which is the default.");
  WScript.Quit(status === undefined ? 2 : status);
}

// Names. A list has them as bytes, which are UTF-8 where they can be; a host that knows file names as bytes has
// the others as the surrogates U+DC80 to U+DCFF.

var UTF8_OR_BYTE = new RegExp(
  "[\\xc2-\\xdf][\\x80-\\xbf]|\\xe0[\\xa0-\\xbf][\\x80-\\xbf]|[\\xe1-\\xec\\xee\\xef][\\x80-\\xbf]{2}|" +
  "\\xed[\\x80-\\x9f][\\x80-\\xbf]|\\xf0[\\x90-\\xbf][\\x80-\\xbf]{2}|[\\xf1-\\xf3][\\x80-\\xbf]{3}|" +
  "\\xf4[\\x80-\\x8f][\\x80-\\xbf]{2}|[\\x80-\\xff]", "g");
var UNIT_BEYOND_ASCII = /[\ud800-\udbff][\udc00-\udfff]|[\u0080-\uffff]/g;

function nameOfBytes(text) {
  return text.replace(UTF8_OR_BYTE, function (part) {
    if (part.length === 1) return String.fromCharCode(0xDC00 + part.charCodeAt(0));
    return Bytes.ToText(Bytes.FromText(part, BYTE_CODE_PAGE));
  });
}

function bytesOfName(text) {
  return text.replace(UNIT_BEYOND_ASCII, function (part) {
    var unit = part.charCodeAt(0);
    if (part.length === 1 && unit >= 0xDC80 && unit <= 0xDCFF) return String.fromCharCode(unit - 0xDC00);
    return Bytes.ToText(Bytes.FromText(part), BYTE_CODE_PAGE);
  });
}

function escapedName(name) {
  return name.replace(/\\/g, "\\\\").replace(/\n/g, "\\n").replace(/\r/g, "\\r");
}

// The name that was escaped, null if no name is written so.
function unescapedName(text) {
  var wrong = false;
  var name = text.replace(/\\([\s\S]?)/g, function (all, c) {
    if (c === "n") return "\n";
    if (c === "r") return "\r";
    if (c !== "\\") wrong = true;
    return c;
  });
  return wrong ? null : name;
}

function systemPath(name) {
  return name === "-" && hasFileStreams() ? "/dev/stdin" : name;
}

// Digests.

function digestOf(hash, path) {
  hash.Reset();
  addFile(hash, systemPath(path));
  return hash.Value.toLowerCase();
}

function complainOf(path, error) {
  var text = describe(error);
  // The error of a stream names its file.
  if (text.indexOf(systemPath(path) + ": ") === 0) text = text.substr(systemPath(path).length + 2);
  complain(WScript.ScriptName + ": " + path + ": " + text);
}

// Writing.

function listLine(job, digest, name) {
  var escaped = escapedName(name), start = escaped !== name ? "\\" : "";
  if (job.flags["--tag"]) return start + job.algorithm + " (" + escaped + ") = " + digest;
  return start + digest + (job.flags["--binary"] ? " *" : "  ") + escaped;
}

// Calls print(line) for each file; returns whether all could be read.
function writeList(job, print) {
  var isWhole = true, i, digest;
  for (i = 0; i < job.names.length; i++) {
    try {
      digest = digestOf(job.hash, job.names[i]);
    } catch (e) {
      complainOf(job.names[i], e);
      isWhole = false;
      continue;
    }
    print(listLine(job, digest, job.names[i]));
  }
  return isWhole;
}

// A list without some of the files does not replace a whole one.
function writeListFile(job, path) {
  var lines = [], output, finished = false;
  refuseSameFiles(job.names, [path]);
  if (!writeList(job, function (line) { lines.push(bytesOfName(line) + "\n"); })) {
    fail(path + ": not written");
  }
  output = openOutput(path, Infinity);
  try {
    output.write(Bytes.FromText(lines.join(""), BYTE_CODE_PAGE));
    output.finish();
    finished = true;
  } finally {
    if (!finished) output.discard();
  }
}

// Checking.

// {digest, name} of a line of a list, null if it is none.
function parseLine(line, algorithm) {
  var text = line.replace(/^[ \t]+/, ""), isEscaped = text.charAt(0) === "\\", digits, found;
  if (isEscaped) text = text.substr(1);
  digits = "([0-9A-Fa-f]{" + DIGEST_DIGITS[algorithm] + "})";
  found = new RegExp("^" + algorithm + " ?\\(([\\s\\S]*)\\)[ \\t]*=[ \\t]*" + digits + "$").exec(text);
  if (found !== null) {
    found = {digest: found[2], name: found[1]};
  } else {
    found = new RegExp("^" + digits + "[ \\t]([ *]?)([\\s\\S]+)$").exec(text);
    if (found === null) return null;
    found = {digest: found[1], name: found[3]};
  }
  if (isEscaped) found.name = unescapedName(found.name);
  if (found.name === null) return null;
  found.digest = found.digest.toLowerCase();
  found.name = nameOfBytes(found.name);
  return found;
}

function readLines(path) {
  var input = openInput(systemPath(path)), parts = [], bytes;
  try {
    while ((bytes = input.read(PIECE)) !== null) {
      if (input.taken() > MOST_LIST) fail(path + ": is no list of digests");
      parts.push(Bytes.ToText(bytes, BYTE_CODE_PAGE));
    }
  } finally {
    input.close();
  }
  var lines = parts.join("").split("\n");
  if (lines[lines.length - 1] === "") lines.pop();
  return lines;
}

function isMissing(path) {
  if (hasFileStreams()) {
    try {
      WScript.OpenFile(path, "r").Close();
      return false;
    } catch (e) {
      return e.number === (0x80030002 | 0) || e.number === (0x80030003 | 0);
    }
  }
  return !new ActiveXObject("Scripting.FileSystemObject").FileExists(path);
}

function checkFile(job, entry, counts) {
  var flags = job.flags, shown = entry.name, digest = null;
  if (/[\n\r]/.test(shown)) shown = "\\" + escapedName(shown);
  try {
    digest = digestOf(job.hash, entry.name);
  } catch (e) {
    if (flags["--ignore-missing"] && isMissing(systemPath(entry.name))) return;
    complainOf(entry.name, e);
    counts.unread++;
    if (!flags["--status"]) WScript.Echo(shown + ": FAILED open or read");
    return;
  }
  if (digest !== entry.digest) {
    counts.different++;
    if (!flags["--status"]) WScript.Echo(shown + ": FAILED");
    return;
  }
  counts.equal++;
  if (!flags["--status"] && !flags["--quiet"]) WScript.Echo(shown + ": OK");
}

function warn(count, one, many) {
  if (count > 0) complain(WScript.ScriptName + ": WARNING: " + count + " " + (count === 1 ? one : many));
}

// Whether all files of the list are as it says.
function checkList(job, path) {
  var lines = readLines(path), counts = {lines: 0, wrong: 0, equal: 0, different: 0, unread: 0}, i, entry;
  for (i = 0; i < lines.length; i++) {
    var line = lines[i].replace(/\r$/, "");
    if (line.charAt(0) === "#" || line === "") continue;
    entry = parseLine(line, job.algorithm);
    if (entry === null || entry.name === "-" && path === "-") {
      counts.wrong++;
      if (job.flags["--warn"]) {
        complain(WScript.ScriptName + ": " + path + ": " + (i + 1) + ": improperly formatted " +
                 job.algorithm + " checksum line");
      }
      continue;
    }
    counts.lines++;
    checkFile(job, entry, counts);
  }
  if (counts.lines === 0) {
    complain(WScript.ScriptName + ": " + path + ": no properly formatted checksum lines found");
    return false;
  }
  if (!job.flags["--status"]) {
    warn(counts.wrong, "line is improperly formatted", "lines are improperly formatted");
    warn(counts.unread, "listed file could not be read", "listed files could not be read");
    warn(counts.different, "computed checksum did NOT match", "computed checksums did NOT match");
    if (job.flags["--ignore-missing"] && counts.equal === 0) {
      complain(WScript.ScriptName + ": " + path + ": no file was verified");
    }
  }
  return counts.different === 0 && counts.unread === 0 && counts.equal > 0 &&
         (counts.wrong === 0 || !job.flags["--strict"]);
}

function checkLists(job) {
  var isRight = true, i;
  for (i = 0; i < job.names.length; i++) {
    try {
      if (!checkList(job, job.names[i])) isRight = false;
    } catch (e) {
      complainOf(job.names[i], e);
      isRight = false;
    }
  }
  return isRight;
}

function refuseFlags(flags, refused) {
  for (var i = 0; i < refused.length; i++) {
    if (flags[refused[i]]) usage();
  }
}

function main() {
  offerHelp(usage);
  var found = splitArguments(["--algorithm", "--output"], usage), output = found["--output"], isRight;
  var flags = takeFlags(found, CHECK_FLAGS.concat(WRITE_FLAGS, "--check"));
  var job = {algorithm: found["--algorithm"] || "SHA256", flags: flags, names: found.words};
  if (job.names.length === 0 || !DIGEST_DIGITS.hasOwnProperty(job.algorithm)) usage();
  for (var i = 0; i < job.names.length; i++) {
    if (/^--/.test(job.names[i])) usage();
  }
  refuseFlags(flags, flags["--check"] ? WRITE_FLAGS : CHECK_FLAGS);
  if (flags["--check"] && output !== undefined || flags["--binary"] && flags["--tag"]) usage();
  job.hash = new ActiveXObject("Vardeko.crypt.HashObject");
  job.hash.InitHash(job.algorithm);
  try {
    if (output !== undefined) {
      writeListFile(job, output);
      isRight = true;
    } else {
      isRight = flags["--check"] ? checkLists(job)
        : writeList(job, function (line) { WScript.Echo(line); });
    }
  } catch (e) {
    complain(WScript.ScriptName + ": " + describe(e));
    isRight = false;
  }
  WScript.Quit(isRight ? 0 : 1);
}

main();
