// Encrypts a file with AES or DES, block by block.
//
//   encrypt-file.js ALG KEY IN OUT      ALG is AES or DES, KEY is hexadecimal
//
// The output is exactly the ciphertext: the file's length rounded up to whole blocks, the last block
// filled with zero bytes. The file's own length is printed; decrypt-file.js --length takes it. A key
// of 16 or 24 bytes makes DES triple DES.

var PIECE = 1 << 20;
var LARGE = 16 * 1024 * 1024;
var KEY_BYTES = { AES: "16, 24 or 32", DES: "8, 16 or 24" };
var WARNING = "block by block: patterns of the plaintext stay visible, and nothing is authenticated.";

function usage() {
  WScript.Echo("Usage: " + WScript.ScriptName + " ALG KEY IN OUT");
  WScript.Echo("Encrypts the file IN to OUT. ALG is AES or DES; KEY is hexadecimal, 16, 24 or 32");
  WScript.Echo("bytes for AES, 8, 16 or 24 for DES. Prints the length of IN.");
  WScript.Echo("Beware: " + WARNING);
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

// The file to write: write(bytes), finish(written, kept), which keeps this many of the bytes that must
// have been written, and abandon(), after which it holds nothing that could be taken for a result.
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

// An object with algorithm and key. The bytes of the key go in as the 16-bit units of a text, which
// the object takes as they are when its code page is negative: so the script needs no byte arrays.
function makeCrypt(algorithm, hex) {
  if (!/^([0-9A-Fa-f][0-9A-Fa-f])*$/.test(hex)) fail("the key is not whole bytes in hexadecimal");
  var crypt = new ActiveXObject("Vardeko.crypt.Symmetric");
  try {
    crypt.Init(algorithm);
  } catch (e) {
    fail(algorithm + ": " + describe(e) + " AES and DES are known, written exactly so.");
  }
  var size = hex.length / 2;
  var units = "";
  for (var i = 0; i + 4 <= hex.length; i += 4) {
    units += String.fromCharCode(parseInt(hex.substr(i + 2, 2) + hex.substr(i, 2), 16));
  }
  crypt.codePage = -1;
  try {
    if (size % 2 !== 0) fail("");
    crypt.Key = units;
  } catch (e2) {
    fail("a key of " + size + " bytes does not fit " + algorithm + ", which takes " +
         KEY_BYTES[algorithm] + " bytes");
  }
  return crypt;
}

function showProgress(path, done, size, shown) {
  var percent = Math.floor(done / size * 100);
  if (percent !== shown) WScript.StdErr.Write("\r" + path + ": " + percent + " %");
  return percent;
}

// Sends the input in pieces through transform(bytes, isLast) to the output.
function pump(input, output, path, transform) {
  var showsProgress = hasStdErr && input.size > LARGE;
  var done = 0, shown = -1, bytes;
  while ((bytes = input.read(PIECE)) !== null) {
    output.write(transform(bytes, false));
    done = Math.min(done + PIECE, input.size);
    if (showsProgress) shown = showProgress(path, done, input.size, shown);
  }
  output.write(transform("", true));
  if (showsProgress) WScript.StdErr.Write("\n");
}

function encryptFile(algorithm, key, from, to) {
  var crypt = makeCrypt(algorithm, key);
  if (from === to) fail(from + ": input and output are the same file");
  var input = openInput(from), output = null, finished = false;
  try {
    output = openOutput(to);
    pump(input, output, from, function (bytes, isLast) { return crypt.Encrypt(bytes, isLast); });
    var written = Math.ceil(input.size / crypt.BlockSize) * crypt.BlockSize;
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
  if (words.length !== 4) usage();
  var length;
  try {
    length = encryptFile(words(0), words(1), words(2), words(3));
  } catch (e) {
    complain(WScript.ScriptName + ": " + describe(e));
    complain(WScript.ScriptName + ": nothing was encrypted");
    WScript.Quit(1);
  }
  complain("Beware: " + WARNING);
  WScript.Echo("plain length: " + length);
}

main();
