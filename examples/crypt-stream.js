// Encrypts or decrypts a file through an encrypting stream.
//
//   crypt-stream.js encrypt ALG KEY IN OUT
//   crypt-stream.js decrypt ALG KEY IN OUT [--length N]
//
// ALG is AES or DES; KEY is hexadecimal, of 16, 24 or 32 bytes for AES and 8, 16 or 24 for DES. A
// last partial block is filled up with zeros and stays so: encrypt prints the length of the plain
// file, and decrypt with --length N cuts its output to it.
//
// Block-by-block mode hides no patterns and authenticates nothing.

var PIECE = 1 << 20;
var BLOCK_SIZES = {AES: 16, DES: 8};

function usage() {
  WScript.Echo("Usage: " + WScript.ScriptName + " encrypt ALG KEY IN OUT");
  WScript.Echo("       " + WScript.ScriptName + " decrypt ALG KEY IN OUT [--length N]");
  WScript.Echo("ALG is AES or DES, KEY hexadecimal. encrypt prints the length of IN; N cuts OUT.");
  WScript.Echo("Block-by-block mode hides no patterns and authenticates nothing.");
  WScript.Quit(2);
}

function keyBytes(text) {
  if (!/^([0-9a-fA-F]{2})+$/.test(text)) throw new Error("the key is not hexadecimal");
  var bytes = new Uint8Array(text.length / 2);
  for (var i = 0; i < bytes.length; i++) bytes[i] = parseInt(text.substr(2 * i, 2), 16);
  return bytes;
}

// Gives one direction of a filter its algorithm and key.
function configure(filter, direction, algorithm, key) {
  filter[direction + "Algorithm"] = algorithm;
  try {
    filter[direction + "Key"] = keyBytes(key);
  } catch (e) {
    if (e.number !== (0x80070057 | 0)) throw e;
    throw new Error(algorithm + " takes no key of " + key.length / 2 + " bytes");
  }
}

// Writing encrypts: the filter stands in front of the output.
function encrypt(algorithm, key, input, output) {
  var filter = new ActiveXObject("Vardeko.crypt.ToviStreamCrypt");
  configure(filter, "Write", algorithm, key);
  filter.Stream = output;
  var into = WScript.StreamOf(filter);
  while (input.CopyTo(into, PIECE) > 0) {}
  filter.WriteFinalize();
  WScript.Echo(input.Size);
}

// Reading decrypts: the filter stands in front of the input.
function decrypt(algorithm, key, input, output) {
  var block = BLOCK_SIZES[algorithm];
  if (input.Size % block !== 0) {
    throw new Error("the input is not a multiple of " + block + " bytes");
  }
  var filter = new ActiveXObject("Vardeko.crypt.ToviStreamCrypt");
  configure(filter, "Read", algorithm, key);
  filter.Stream = input;
  var from = WScript.StreamOf(filter);
  while (from.CopyTo(output, PIECE) > 0) {}
}

function plainLength(args) {
  if (args.length === 5) return -1;
  if (args.length !== 7 || args(0) !== "decrypt" || args(5) !== "--length") usage();
  if (!/^[0-9]+$/.test(args(6))) usage();
  return Number(args(6));
}

function main() {
  var args = WScript.Arguments;
  if (typeof WScript.StreamOf === "undefined") {
    WScript.Echo("This script host offers scripts no streams.");
    WScript.Quit(2);
  }
  var work = {encrypt: encrypt, decrypt: decrypt}[args.length > 0 ? args(0) : ""];
  if (!work) usage();
  var length = plainLength(args);
  if (!BLOCK_SIZES.hasOwnProperty(args(1))) usage();
  try {
    if (args(3) === args(4)) throw new Error(args(3) + ": is both input and output");
    var input = WScript.OpenFile(args(3), "r");
    // A key that is refused must not cost the old content of the output.
    configure(new ActiveXObject("Vardeko.crypt.ToviStreamCrypt"), "Read", args(1), args(2));
    var output = WScript.OpenFile(args(4), "w");
    work(args(1), args(2), input, output);
    if (length > output.Size) throw new Error("the output has only " + output.Size + " bytes");
    if (length >= 0) output.Size = length;
    output.Close();
  } catch (e) {
    WScript.StdErr.WriteLine(WScript.ScriptName + ": " + (e.description || e.message));
    WScript.Quit(1);
  }
}

main();
