// Functions that the examples share: messages, options, keys, files. Each example evaluates this
// file; it runs on every script host.
//
// On hosts with WScript.OpenFile, files of any size are read and written in pieces, and a new file
// replaces the old one only when it is complete. On others ADODB.Stream holds the whole file in memory,
// which limits its size.

// Where Bytes is not built in it is read from the library.
if (!("Bytes" in this)) {
  eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
    WScript.ScriptFullName.replace(/[^\\\/]*$/, "..\\lib\\bytes.js")).ReadAll());
}

var PIECE = 1 << 19;
var COPIED_AT_ONCE = 1 << 20;
var LARGE = 16 * 1024 * 1024;
var MOST_IN_MEMORY = 256 * 1024 * 1024;
var MOST_KEY_TEXT = 65536;
var CIPHER_KEY_BYTES = {AES: "16, 24 or 32", DES: "8, 16 or 24"};
var ALREADY_THERE = 0x80030050 | 0;
var KEY_OPTIONS = ["--key-file", "--key-env"];
var KEY_USAGE = "In place of KEY: --key-file FILE or --key-env NAME, an environment variable.";

// Messages.

function fail(text) {
  throw new Error(1, text);
}

function describe(error) {
  return error.description || error.message || "error " + error.number;
}

// Some hosts have no standard error stream.
function standardError() {
  try {
    return WScript.StdErr || null;
  } catch (e) {
    return null;
  }
}

function complain(text) {
  var stream = standardError();
  if (stream !== null) {
    stream.WriteLine(text);
  } else {
    WScript.Echo(text);
  }
}

function isTerminal(stream) {
  try {
    return stream !== null && stream.IsTerminal === true;
  } catch (e) {
    return false;
  }
}

function showNothing() {}

// Returns a function that shows the progress of long work on a terminal. It is called with the count
// of bytes done, and at the end without an argument.
function progressOf(path, size) {
  if (size <= LARGE) return showNothing;
  var stream = standardError(), shown = -1;
  if (!isTerminal(stream)) return showNothing;
  return function (done) {
    if (done === undefined) {
      stream.Write("\n");
      return;
    }
    var percent = Math.min(100, Math.floor(done / size * 100));
    if (percent !== shown) stream.Write("\r" + path + ": " + percent + " %");
    shown = percent;
  };
}

// Copies a stream to its end and shows the progress: that of `size` bytes of the file `path`.
function copyStream(from, to, path, size) {
  var report = progressOf(path, size), done = 0, count;
  while ((count = from.CopyTo(to, COPIED_AT_ONCE)) > 0) {
    done += count;
    report(done);
  }
  report();
}

// Arguments.

// Prints the usage and ends the script if help is asked for.
function offerHelp(usage) {
  for (var i = 0; i < WScript.Arguments.length; i++) {
    if (WScript.Arguments(i) === "--help") usage(0);
  }
}

// Takes the flags, options without a value, out of the words: true for each that is there.
function takeFlags(found, flags) {
  var rest = [], taken = {}, i;
  for (i = 0; i < found.words.length; i++) {
    if (isOneOf(found.words[i], flags)) {
      taken[found.words[i]] = true;
    } else {
      rest.push(found.words[i]);
    }
  }
  found.words = rest;
  return taken;
}

// A whole number from `least` to `most` in decimal, or usage().
function takeWhole(text, least, most, usage) {
  if (!/^[0-9]{1,15}$/.test(text) || Number(text) < least || Number(text) > most) usage();
  return Number(text);
}

// Splits the arguments into words and values of the given options. Calls usage() for an option without
// a value.
function splitArguments(options, usage) {
  var found = {words: []}, all = WScript.Arguments;
  for (var i = 0; i < all.length; i++) {
    if (!isOneOf(all(i), options)) {
      found.words.push(all(i));
    } else if (i + 1 === all.length || found.hasOwnProperty(all(i))) {
      usage();
    } else {
      found[all(i)] = all(i + 1);
      i++;
    }
  }
  return found;
}

function isOneOf(text, list) {
  for (var i = 0; i < list.length; i++) {
    if (list[i] === text) return true;
  }
  return false;
}

// Takes the key out of the arguments: {text} of the word at `index`, {file} or {variable}.
function takeKey(found, index, usage) {
  var file = found["--key-file"], variable = found["--key-env"];
  if (file !== undefined && variable !== undefined) usage();
  if (file !== undefined) return {file: file};
  if (variable !== undefined) return {variable: variable};
  if (found.words.length <= index) usage();
  return {text: found.words.splice(index, 1)[0]};
}

function environmentVariable(name) {
  var text = typeof WScript.EnvironmentVariable !== "undefined"
    ? WScript.EnvironmentVariable(name)
    : new ActiveXObject("WScript.Shell").Environment("PROCESS")(name);
  if (!text) fail("the environment variable " + name + " is not set");
  return text;
}

// The hexadecimal digits of a key, without the white space around those of a file.
function keyDigits(key) {
  var text = key.text;
  if (key.variable !== undefined) text = environmentVariable(key.variable);
  if (key.file !== undefined) text = readText(key.file).replace(/^\s+|\s+$/g, "");
  if (!/^([0-9A-Fa-f][0-9A-Fa-f])*$/.test(text)) fail("the key is not whole bytes in hexadecimal");
  return text;
}

// A key of arbitrary bytes: text, or the bytes of a file without a final line end.
function keyValue(key) {
  if (key.variable !== undefined) return environmentVariable(key.variable);
  if (key.file === undefined) return key.text;
  var input = openInput(key.file), bytes, hex;
  try {
    bytes = input.size > MOST_KEY_TEXT ? null : input.read(MOST_KEY_TEXT);
  } finally {
    input.close();
  }
  if (bytes === null) fail(key.file + ": is no key file");
  hex = Bytes.ToHex(bytes);
  return Bytes.Slice(bytes, 0, (/0d0a$/.test(hex) ? -2 : /0a$/.test(hex) ? -1 : undefined));
}

// The bytes of a pass phrase, of which text is encoded as UTF-8. Warns if other users could see it.
function secretBytes(key) {
  var value = keyValue(key);
  if (key.text !== undefined) {
    complain("Beware: other users can see a pass phrase on the command line; --key-file and --key-env");
    complain("hide it.");
  }
  var bytes = key.file === undefined ? Bytes.FromText(value) : value;
  if (Bytes.Count(bytes) === 0) fail("the pass phrase is empty");
  return bytes;
}

// A cipher object with algorithm and key.
function makeCrypt(algorithm, hex) {
  var crypt = new ActiveXObject("Vardeko.crypt.Symmetric");
  try {
    crypt.Init(algorithm);
  } catch (e) {
    fail(algorithm + ": " + describe(e) + " Use AES or DES (case-sensitive).");
  }
  try {
    crypt.Key = Bytes.FromHex(hex);
  } catch (e2) {
    fail("a key of " + hex.length / 2 + " bytes does not fit " + algorithm + ", which takes " +
         CIPHER_KEY_BYTES[algorithm] + " bytes");
  }
  return crypt;
}

// Keys from pass phrases.

// `count` bytes of a key, derived from a secret by PBKDF2 with HMAC (RFC 8018, section 5.2). The sums are
// computed on words of 32 bits, which every script host can do.
function deriveKey(algorithm, secret, salt, iterations, count) {
  var hash = new ActiveXObject("Vardeko.crypt.HashObject"), hex = "", block, i, sum;
  hash.InitHash(algorithm);
  hash.Key = secret;
  for (block = 1; hex.length < 2 * count; block++) {
    hash.HashUpdate(salt);
    hash.HashUpdate(bigEndian(block, 4));
    hash.HashFinalize();
    sum = wordsOf(hash.Value);
    for (i = 1; i < iterations; i++) {
      hash.HashData(hash.BinaryValue);
      addWords(sum, hash.Value);
    }
    hash.Reset();
    for (i = 0; i < sum.length; i++) hex += fixedHex(sum[i] < 0 ? sum[i] + 0x100000000 : sum[i], 8);
  }
  return Bytes.FromHex(hex.substr(0, 2 * count));
}

function wordsOf(hex) {
  var words = [];
  for (var i = 0; i < hex.length; i += 8) words.push(parseInt(hex.substr(i, 8), 16));
  return words;
}

// Adds hexadecimal words bit by bit, without carries.
function addWords(sum, hex) {
  for (var i = 0; i < sum.length; i++) sum[i] ^= parseInt(hex.substr(8 * i, 8), 16);
}

function fixedHex(n, digits) {
  var text = n.toString(16);
  while (text.length < digits) text = "0" + text;
  return text;
}

function bigEndian(n, count) {
  return Bytes.FromHex(fixedHex(n, 2 * count));
}

// Files.

var HAS_FILE_STREAMS = typeof WScript.OpenFile !== "undefined";

function hasFileStreams() {
  return HAS_FILE_STREAMS;
}

function isSameFile(a, b) {
  if (a === b) return true;
  if (hasFileStreams()) return WScript.IsSameFile(a, b);
  try {
    var files = new ActiveXObject("Scripting.FileSystemObject");
    return files.GetAbsolutePathName(a).toLowerCase() === files.GetAbsolutePathName(b).toLowerCase();
  } catch (e) {
    return false;
  }
}

// Refuses an output that is also an input or another output, by whatever name.
function refuseSameFiles(inputs, outputs) {
  for (var i = 0; i < outputs.length; i++) {
    for (var j = 0; j < inputs.length; j++) {
      if (inputs[j] !== undefined && isSameFile(inputs[j], outputs[i])) {
        fail(outputs[i] + ": is both input and output");
      }
    }
    for (j = 0; j < i; j++) {
      if (isSameFile(outputs[j], outputs[i])) fail(outputs[i] + ": is to be written twice");
    }
  }
}

function openBinary() {
  try {
    var binary = new ActiveXObject("ADODB.Stream");
    binary.Type = 1;
    binary.Open();
    return binary;
  } catch (e) {
    fail("this script host has neither WScript.OpenFile nor ADODB.Stream, so it cannot use files");
  }
}

function loadBinary(path) {
  var files = new ActiveXObject("Scripting.FileSystemObject");
  if (files.FileExists(path) && files.GetFile(path).Size > MOST_IN_MEMORY) {
    fail(path + ": has more than 256 MB, and this script host holds files in memory as a whole");
  }
  var binary = openBinary();
  try {
    binary.LoadFromFile(path);
  } catch (e) {
    fail(path + ": " + describe(e));
  }
  return binary;
}

// A file that is read in pieces. Its functions are shared: a run may read thousands of files.
function FileInput(path) {
  this.path = path;
  this.stream = WScript.OpenFile(path, "r");
  this.size = this.stream.Size;
  this.done = 0;
}
FileInput.prototype = {
  read: function (n) {
    var bytes = this.stream.Read(n);
    this.done += bytes.length;
    return bytes.length > 0 ? bytes : null;
  },
  taken: function () { return this.done; },
  rewind: function () {
    this.stream.Seek(0);
    this.done = 0;
  },
  close: function () { this.stream.Close(); }
};

// The file to read: path and size; read(n), null at the end; taken(), how many bytes were read; rewind(), to
// read it again; close().
function openInput(path) {
  if (hasFileStreams()) return new FileInput(path);
  var binary = loadBinary(path);
  return {
    path: path,
    size: binary.Size,
    read: function (n) { return binary.EOS ? null : binary.Read(n); },
    taken: function () { return binary.Position; },
    rewind: function () { binary.Position = 0; },
    close: function () { binary.Close(); }
  };
}

// Whether the bytes that were read last, a piece at most, end the file.
function isAtEnd(stream, bytes) {
  return HAS_FILE_STREAMS ? bytes.length < PIECE : stream.EOS;
}

// Adds a file to a digest. The progress is shown if it has more than one piece: a run may read thousands
// of small files.
function addFile(hash, path) {
  var stream = HAS_FILE_STREAMS ? WScript.OpenFile(path, "r") : loadBinary(path);
  var report = null, isLast, bytes;
  try {
    do {
      bytes = stream.Read(PIECE);
      // ADODB.Stream has no bytes to read at its end, a file stream an array without elements.
      if (bytes !== null) hash.HashUpdate(bytes);
      isLast = isAtEnd(stream, bytes);
      if (!isLast && report === null) report = progressOf(path, stream.Size);
      if (report !== null) report(stream.Position);
    } while (!isLast);
    if (report !== null) report();
  } finally {
    stream.Close();
  }
}

function readText(path) {
  var file = openInput(path), bytes;
  try {
    if (file.size > MOST_KEY_TEXT) fail(path + ": is no key file");
    bytes = file.read(MOST_KEY_TEXT);
  } finally {
    file.close();
  }
  return bytes === null ? "" : Bytes.ToText(bytes);
}

// An RSA object with those numbers of a key file that `properties` names.
function readRsaKey(path, properties) {
  var text = readText(path);
  var rsa = new ActiveXObject("Vardeko.crypt.RSA");
  for (var name in properties) {
    var found = new RegExp("\"" + name + "\"\\s*:\\s*\"([0-9a-fA-F]+)\"").exec(text);
    if (found === null) fail(path + ": has no number " + name);
    rsa[properties[name]] = Bytes.FromHex((found[1].length % 2 === 0 ? "" : "0") + found[1]);
  }
  return rsa;
}

// Writes the content of an ADODB.Stream to a temporary file and renames it to `path`.
function saveBinary(binary, path) {
  var files = new ActiveXObject("Scripting.FileSystemObject");
  var folder = files.GetParentFolderName(files.GetAbsolutePathName(path));
  var temporary = files.BuildPath(folder, files.GetTempName());
  try {
    binary.SaveToFile(temporary, 1);
    if (files.FileExists(path)) files.DeleteFile(path);
  } catch (e) {
    if (files.FileExists(temporary)) files.DeleteFile(temporary);
    fail(path + ": " + describe(e));
  }
  try {
    files.MoveFile(temporary, path);
  } catch (e2) {
    fail(path + ": " + describe(e2) + " (the result is in " + temporary + ")");
  }
}

// The file to write: write(bytes), finish() and discard(). It is truncated to `most` bytes. finish()
// replaces the old file, discard() keeps it.
function openOutput(path, most) {
  var done = 0;
  if (hasFileStreams()) {
    var stream = WScript.OpenFile(path, "w");
    return {
      write: function (bytes) {
        var part = bytes.length > most - done ? bytes.subarray(0, most - done) : bytes;
        if (stream.Write(part) !== part.length) fail(path + ": not all bytes could be written");
        done += part.length;
      },
      finish: function () { stream.Close(); },
      discard: function () { stream.Discard(); }
    };
  }
  var binary = openBinary();
  return {
    write: function (bytes) { binary.Write(bytes); },
    finish: function () {
      if (binary.Size > most) {
        binary.Position = most;
        binary.SetEOS();
      }
      saveBinary(binary, path);
      binary.Close();
    },
    discard: function () { binary.Close(); }
  };
}

function refuseSecretOutput(path) {
  fail(path + ": is there already, and may be a key that is still needed");
}

// The file for a secret, which must not exist yet and which only its owner may read, if the script host can
// set that: write(bytes) or writeText(text), of ASCII, which is called once, and discard().
function openSecretOutput(path) {
  if (!hasFileStreams()) {
    var files = new ActiveXObject("Scripting.FileSystemObject");
    var warning = "Beware: whoever may read the folder may read the secret. Protect " + path + ".";
    if (files.FileExists(path)) refuseSecretOutput(path);
    return {
      write: function (bytes) {
        var binary = openBinary();
        binary.Write(bytes);
        saveBinary(binary, path);
        binary.Close();
        complain(warning);
      },
      writeText: function (text) {
        var file = files.CreateTextFile(path, false);
        file.Write(text);
        file.Close();
        complain(warning);
      },
      discard: function () {}
    };
  }
  var stream;
  try {
    stream = WScript.OpenFile(path, "wx", true);
  } catch (e) {
    if (e.number === ALREADY_THERE) refuseSecretOutput(path);
    throw e;
  }
  return {
    write: function (bytes) {
      stream.Write(bytes);
      stream.Close();
    },
    writeText: function (text) { this.write(Bytes.FromText(text)); },
    discard: function () { stream.Discard(); }
  };
}

// Calls work(input, output) with the files. The output is truncated to most(input) bytes and replaces
// the old file unless work fails.
function withFiles(from, to, most, work) {
  var input = openInput(from), output = null, finished = false;
  try {
    output = openOutput(to, most(input));
    work(input, output);
    output.finish();
    finished = true;
  } finally {
    input.close();
    if (output !== null && !finished) output.discard();
  }
  return input.size;
}

// Writes the rest of the input to the output in pieces, each through transform(bytes, isLast).
function pump(input, output, transform) {
  var report = progressOf(input.path, input.size);
  var bytes = input.read(PIECE), next;
  while (bytes !== null) {
    next = input.read(PIECE);
    report(input.taken());
    output.write(transform(bytes, next === null));
    bytes = next;
  }
  report();
  if (input.taken() !== input.size) fail(input.path + ": changed while it was read");
}

// Counter mode (NIST SP 800-38A, section 6.5), which the cipher does not offer: the blocks of a counter are
// encrypted, and the data is added to them bit by bit. Returns transform(bytes) for the pieces of a file,
// whole blocks except for the last, which encrypts and decrypts. The counter starts at 0, so a key must
// serve for one file only.
function counterMode(crypt) {
  var next = 0, blocks = null;
  return function (bytes) {
    var count = Bytes.Count(bytes), wanted = Math.ceil(count / 16);
    blocks = counterBlocks(next, wanted, blocks);
    next += wanted;
    return Bytes.Xor(bytes, Bytes.Slice(crypt.Encrypt(blocks), 0, count));
  };
}

// The counters from `first` on, each a block of 16 bytes. `used`, an earlier result, is written again where
// scripts can write bytes.
function counterBlocks(first, count, used) {
  var text = [], i, at;
  if (!hasFileStreams()) {
    for (i = 0; i < count; i++) text.push(fixedHex(first + i, 32));
    return Bytes.FromHex(text.join(""));
  }
  if (used === null || used.length !== 16 * count) used = new Uint8Array(16 * count);
  for (i = 0, at = 10; i < count; i++, at += 16) {
    used[at] = Math.floor((first + i) / 0x10000000000);
    used[at + 1] = Math.floor((first + i) / 0x100000000);
    used[at + 2] = first + i >>> 24;
    used[at + 3] = first + i >>> 16;
    used[at + 4] = first + i >>> 8;
    used[at + 5] = first + i;
  }
  return used;
}

// Sealed files, as seal-file.js describes them.

var SEAL_MAGIC = "4d49524f5345414c";
var SEAL_SALT_BYTES = 16;
var SEAL_HEADER_BYTES = 8 + 4 + SEAL_SALT_BYTES;
var SEAL_CODE_BYTES = 32;
var MOST_SEAL_ITERATIONS = 10000000;

// The cipher and the HMAC of a file with this header, which the code covers.
function sealKeys(secret, header) {
  var hex = Bytes.ToHex(header), keys, crypt, code;
  keys = deriveKey("SHA256", secret, Bytes.Slice(header, 12), parseInt(hex.substr(16, 8), 16), 64);
  crypt = new ActiveXObject("Vardeko.crypt.Symmetric");
  crypt.Init("AES");
  crypt.Key = Bytes.Slice(keys, 0, 32);
  code = new ActiveXObject("Vardeko.crypt.HashObject");
  code.InitHash("SHA256");
  code.Key = Bytes.Slice(keys, 32);
  code.HashUpdate(header);
  return {crypt: crypt, code: code};
}
