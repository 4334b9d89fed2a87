// Decrypts a file that rsa-encrypt.js made.
//
//   rsa-decrypt.js KEY.json IN OUT      KEY.json comes from rsa-keygen.js
//
// What the file looks like is said in rsa-encrypt.js. The AES key comes out of raw RSA, which has
// no padding: that it has the right length is all that can be checked, and that the file is what
// its sender wrote cannot be checked at all.

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
  WScript.Echo("Decrypts the file IN, which rsa-encrypt.js made, to OUT.");
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

// What stands before the data: the length of the plain file and of the encrypted key.
function readHeader(input, path) {
  var bytes = input.read(20);
  var hex = bytes === null ? "" : hexOf(bytes);
  if (hex.length !== 40 || hex.substr(0, 16) !== MAGIC) {
    fail(path + ": was not made by rsa-encrypt.js");
  }
  var header = {
    length: parseInt(hex.substr(16, 16), 16),
    keyBytes: parseInt(hex.substr(32, 8), 16)
  };
  header.blocks = Math.ceil(header.length / AES_BLOCK) * AES_BLOCK;
  if (header.keyBytes === 0 || input.size !== 20 + header.keyBytes + header.blocks) {
    fail(path + ": is cut short or damaged");
  }
  return header;
}

function unwrapKey(rsa, wrapped, keyFile) {
  var key = rsa.DecryptPQ(wrapped);
  if (hexOf(key).length !== 2 * AES_KEY_BYTES) fail(keyFile + ": is not the key for this file");
  return key;
}

function decryptFile(keyFile, from, to) {
  if (from === to || keyFile === to) fail(to + ": is an input too");
  var rsa = readKey(keyFile, {e: "PublicExp", d: "SecretExp", p: "P", q: "Q"});
  var input = openInput(from), output = null, finished = false, header;
  try {
    header = readHeader(input, from);
    var crypt = new ActiveXObject("Vardeko.crypt.Symmetric");
    crypt.Init("AES");
    crypt.Key = unwrapKey(rsa, input.read(header.keyBytes), keyFile);
    output = openOutput(to);
    pump(input, header.blocks, output, from,
         function (bytes, isLast) { return crypt.Decrypt(bytes, isLast); });
    output.finish(header.blocks, header.length);
    finished = true;
  } finally {
    input.close();
    if (output !== null && !finished) output.abandon();
  }
  return header.length;
}

function main() {
  var words = WScript.Arguments;
  if (words.length !== 3) usage();
  try {
    WScript.Echo("decrypted " + decryptFile(words(0), words(1), words(2)) + " bytes");
  } catch (e) {
    complain(WScript.ScriptName + ": " + describe(e));
    WScript.Quit(1);
  }
  complain("Beware: " + NO_PADDING);
}

main();
