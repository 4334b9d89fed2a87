// Encrypts or decrypts a file by a stream filter.
//
//   crypt-stream.js encrypt ALG KEY IN OUT
//   crypt-stream.js decrypt ALG KEY IN OUT [--length N]
//
// ALG is AES or DES; KEY is hexadecimal, of 16, 24 or 32 bytes for AES and 8, 16 or 24 for DES.
// --key-file FILE or --key-env NAME in place of KEY take it from a file or an environment variable.
// An incomplete last block is filled with zeros, which decryption does not remove: encrypt prints the
// length of the plain file, and decrypt with --length N truncates its output to it.
//
// An existing OUT is replaced only when the new file is complete; after a failure it is unchanged.
// ECB mode leaves patterns visible; nothing is authenticated, and a wrong key is not detected.
//
// Only on mirolta-host: the platform's host has no streams of bytes.

// Functions that the examples share.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
  WScript.ScriptFullName.replace(/[^\\\/]*$/, "shared.js")).ReadAll());

var BLOCK_SIZES = {AES: 16, DES: 8};
var WRONG_KEY_LENGTH = 0x80070057 | 0;

function usage() {
  WScript.Echo("Usage: " + WScript.ScriptName + " encrypt ALG KEY IN OUT");
  WScript.Echo("       " + WScript.ScriptName + " decrypt ALG KEY IN OUT [--length N]");
  WScript.Echo("ALG is AES or DES, KEY hexadecimal. encrypt prints the length of IN; N cuts OUT.");
  WScript.Echo(KEY_USAGE);
  WScript.Echo("Block-by-block mode hides no patterns and authenticates nothing.");
  WScript.Quit(2);
}

// A filter over `stream` with algorithm and key for one direction.
function filterOf(direction, algorithm, digits, stream) {
  var filter = new ActiveXObject("Vardeko.crypt.ToviStreamCrypt");
  filter[direction + "Algorithm"] = algorithm;
  try {
    filter[direction + "Key"] = Bytes.FromHex(digits);
  } catch (e) {
    if (e.number !== WRONG_KEY_LENGTH) throw e;
    fail(algorithm + " takes no key of " + digits.length / 2 + " bytes");
  }
  if (stream !== null) filter.Stream = stream;
  return filter;
}

// Writing encrypts: the filter is over the output.
function encrypt(job, input, output) {
  var filter = filterOf("Write", job.algorithm, job.digits, output);
  copyStream(input, WScript.StreamOf(filter), job.from, input.Size);
  try {
    filter.WriteFinalize();
  } catch (e) {
    fail(job.to + ": " + describe(e));
  }
}

// Reading decrypts: the filter is over the input.
function decrypt(job, input, output) {
  var filter = filterOf("Read", job.algorithm, job.digits, input);
  copyStream(WScript.StreamOf(filter), output, job.from, input.Size);
  if (job.length > output.Size) fail(job.to + " would have only " + output.Size + " bytes");
  if (job.length >= 0) output.Size = job.length;
}

function run(work, job) {
  var block = BLOCK_SIZES[job.algorithm], size;
  refuseSameFiles([job.from, job.key.file], [job.to]);
  job.digits = keyDigits(job.key);
  // Refuses a key before any file is opened.
  filterOf("Read", job.algorithm, job.digits, null);
  var input = WScript.OpenFile(job.from, "r"), output;
  size = input.Size;
  if (work === decrypt && size % block !== 0) {
    fail(job.from + ": is not a multiple of " + block + " bytes");
  }
  output = WScript.OpenFile(job.to, "w");
  try {
    work(job, input, output);
    output.Close();
  } finally {
    // After a failure the old file stays.
    output.Discard();
  }
  return size;
}

function main() {
  if (typeof WScript.StreamOf === "undefined") {
    WScript.Echo("This script host offers scripts no streams.");
    WScript.Quit(2);
  }
  var found = splitArguments(KEY_OPTIONS.concat("--length"), usage), words = found.words;
  var length = found["--length"], key = takeKey(found, 2, usage), size;
  var work = {encrypt: encrypt, decrypt: decrypt}[words[0]];
  if (words.length !== 4 || !work || !BLOCK_SIZES.hasOwnProperty(words[1])) usage();
  if (length !== undefined && (work !== decrypt || !/^[0-9]{1,15}$/.test(length))) usage();
  try {
    size = run(work, {
      algorithm: words[1], key: key, from: words[2], to: words[3],
      length: length === undefined ? -1 : Number(length)
    });
    if (work === encrypt) WScript.Echo(size);
  } catch (e) {
    complain(WScript.ScriptName + ": " + describe(e));
    WScript.Quit(1);
  }
}

main();
