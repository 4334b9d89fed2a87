// Encrypts a file for the owner of an RSA key.
//
//   rsa-encrypt.js KEY.json IN OUT      KEY.json comes from rsa-keygen.js; n and e are enough
//
// The file goes through AES under a random key, and that key through RSA. OUT holds, numbers most
// significant byte first:
//
//   8 bytes    "MIROLRSA"
//   8 bytes    the length of IN
//   4 bytes    k, the length of the encrypted AES key
//   k bytes    the AES key, 32 bytes, as a number raised to e modulo n
//   the rest   IN through AES, block by block, the last block filled with zero bytes
//
// Neither layer is fit for more than a demonstration: raw RSA has no padding, AES block by block
// leaves patterns visible, and nothing is authenticated.

var PIECE = 1 << 19;
var LARGE = 16 * 1024 * 1024;
var MOST_KEY_TEXT = 65536;
var MAGIC = "4d49524f4c525341";
var AES_KEY_BYTES = 32;
var AES_BLOCK = 16;
var NO_PADDING =
  "raw RSA has no padding, AES works block by block, and nothing is authenticated.";

function usage() {
  WScript.Echo("Usage: " + WScript.ScriptName + " KEY.json IN OUT");
  WScript.Echo("Encrypts the file IN to OUT with a random AES key, which goes along encrypted by");
  WScript.Echo("RSA.");
  WScript.Echo("Beware: " + NO_PADDING);
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

function fail(text) {
  throw new Error(1, text);
}

function describe(error) {
  return error.description || error.message || "error " + error.number;
}

var number = new ActiveXObject("Vardeko.crypt.Number");

// Bytes and hexadecimal digits by way of a number, whose first byte must not be zero.
function hexOf(bytes) {
  number.Binary = bytes;
  return number.Cmp(0) === 0 ? "" : number.Hex;
}

function bytesOf(hex) {
  number.Hex = hex;
  return number.Binary;
}

// Opens a stream of bytes for hosts without WScript.OpenFile; it lies in memory as a whole.
function openBinary() {
  var binary;
  try {
    binary = new ActiveXObject("ADODB.Stream");
  } catch (e) {
    fail("this script host has neither WScript.OpenFile nor ADODB.Stream, so it cannot use files");
  }
  binary.Type = 1;
  binary.Open();
  return binary;
}

// The file to read: size, read(n), which gives null at the end, and close().
function openInput(path) {
  if (typeof WScript.OpenFile !== "undefined") {
    var stream = WScript.OpenFile(path, "r");
    return {
      size: stream.Size,
      read: function (n) { var bytes = stream.Read(n); return bytes.length > 0 ? bytes : null; },
      close: function () { stream.Close(); }
    };
  }
  var binary = openBinary();
  binary.LoadFromFile(path);
  return {
    size: binary.Size,
    read: function (n) { return binary.EOS ? null : binary.Read(n); },
    close: function () { binary.Close(); }
  };
}

// The file to write: write(bytes), finish(written, kept), which keeps this many of the bytes that
// must have been written, and abandon(), after which it holds nothing that could be taken for a
// result.
function openOutput(path) {
  if (typeof WScript.OpenFile !== "undefined") {
    var stream = WScript.OpenFile(path, "w");
    return {
      write: function (bytes) {
        if (stream.Write(bytes) !== bytes.length) fail("not all bytes could be written");
      },
      finish: function (written, kept) {
        if (stream.Size !== written) fail("the input changed while it was read");
        if (kept !== written) stream.Size = kept;
        stream.Commit();
        stream.Close();
      },
      abandon: function () {
        try {
          stream.Size = 0;
          complain(path + ": could not be finished and was emptied");
        } catch (e) {
          complain(path + ": could not be finished; what is there is no result");
        }
        stream.Close();
      }
    };
  }
  var binary = openBinary();
  return {
    write: function (bytes) { binary.Write(bytes); },
    finish: function (written, kept) {
      if (binary.Size !== written) fail("the input changed while it was read");
      binary.Position = kept;
      binary.SetEOS();
      binary.SaveToFile(path, 2);
      binary.Close();
    },
    abandon: function () { binary.Close(); }
  };
}

function readText(path) {
  var file = openInput(path), bytes;
  try {
    if (file.size > MOST_KEY_TEXT) fail(path + ": is no key file");
    bytes = file.read(MOST_KEY_TEXT);
  } finally {
    file.close();
  }
  if (bytes === null) return "";
  number.Binary = bytes;
  return number.Text;
}

// Puts the numbers named, as far as the file has them, into a new object and returns it.
function readKey(path, properties) {
  var text = readText(path);
  var rsa = new ActiveXObject("Vardeko.crypt.RSA");
  for (var name in properties) {
    var found = new RegExp("\"" + name + "\"\\s*:\\s*\"([0-9a-fA-F]+)\"").exec(text);
    if (found === null) fail(path + ": has no number " + name);
    rsa[properties[name]] = bytesOf(found[1]);
  }
  return rsa;
}

function showProgress(path, done, size, shown) {
  var percent = Math.floor(done / size * 100);
  if (percent !== shown) WScript.StdErr.Write("\r" + path + ": " + percent + " %");
  return percent;
}

// Sends the rest of the input, size bytes, in pieces through transform(bytes, isLast) to output.
// No piece is empty, and none gives an empty result, which not every stream takes.
function pump(input, size, output, path, transform) {
  var showsProgress = hasStdErr && size > LARGE;
  var done = 0, shown = -1, bytes;
  while ((bytes = input.read(PIECE)) !== null) {
    done = Math.min(done + PIECE, size);
    output.write(transform(bytes, done === size));
    if (showsProgress) shown = showProgress(path, done, size, shown);
  }
  if (showsProgress) WScript.StdErr.Write("\n");
}

function fixedHex(n, digits) {
  var text = n.toString(16);
  while (text.length < digits) text = "0" + text;
  return text;
}

// The two top bits of the key are always set, so that it keeps its length as a number.
function randomKey() {
  var key = new ActiveXObject("Vardeko.crypt.Number");
  key.Random(AES_KEY_BYTES, true);
  return key.Binary;
}

function encryptFile(keyFile, from, to) {
  if (from === to || keyFile === to) fail(to + ": is an input too");
  var rsa = readKey(keyFile, {n: "Modulus", e: "PublicExp"});
  if (rsa.BlockSize < AES_KEY_BYTES) fail(keyFile + ": the modulus is too short for an AES key");
  var key = randomKey();
  var crypt = new ActiveXObject("Vardeko.crypt.Symmetric");
  crypt.Init("AES");
  crypt.Key = key;
  var wrapped = hexOf(rsa.Encrypt(key));
  if (wrapped.length % 2 !== 0) wrapped = "0" + wrapped;
  var input = openInput(from), output = null, finished = false;
  try {
    output = openOutput(to);
    output.write(bytesOf(MAGIC + fixedHex(input.size, 16) + fixedHex(wrapped.length / 2, 8) +
                         wrapped));
    pump(input, input.size, output, from,
         function (bytes, isLast) { return crypt.Encrypt(bytes, isLast); });
    var written = 20 + wrapped.length / 2 + Math.ceil(input.size / AES_BLOCK) * AES_BLOCK;
    output.finish(written, written);
    finished = true;
  } finally {
    input.close();
    if (output !== null && !finished) output.abandon();
  }
  return input.size;
}

function main() {
  var words = WScript.Arguments;
  if (words.length !== 3) usage();
  try {
    WScript.Echo("encrypted " + encryptFile(words(0), words(1), words(2)) + " bytes");
  } catch (e) {
    complain(WScript.ScriptName + ": " + describe(e));
    WScript.Quit(1);
  }
  complain("Beware: " + NO_PADDING);
}

main();
