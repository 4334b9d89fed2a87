// Decrypts a file that seal-file.js made.
//
//   open-file.js PASS IN OUT
//
// --key-file FILE or --key-env NAME instead of PASS read it from a file, without a final line end, or an
// environment variable. seal-file.js describes the format. The HMAC is checked before a byte is decrypted, and
// again while the file is: a file that anybody changed, at whatever time, gives no output. IN is read twice, so
// it cannot be a pipe.
//
// An existing OUT is replaced only when the new file is complete; after a failure it is unchanged.
//
// Not with Wine: its ADODB.Stream reads and writes no files.

// Functions that the examples share.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
  WScript.ScriptFullName.replace(/[^\\\/]*$/, "shared.js")).ReadAll());

function usage(status) {
  WScript.Echo("Usage: " + WScript.ScriptName + " PASS IN OUT");
  WScript.Echo("Decrypts the file IN, which seal-file.js made with the pass phrase PASS, to OUT, unless it");
  WScript.Echo("was changed.");
  WScript.Echo(KEY_USAGE.replace("KEY", "PASS"));
  WScript.Quit(status === undefined ? 2 : status);
}

function readHeader(input) {
  var header = input.size < SEAL_HEADER_BYTES ? null : input.read(SEAL_HEADER_BYTES);
  var hex = header === null ? "" : Bytes.ToHex(header);
  if (hex.length !== 2 * SEAL_HEADER_BYTES || hex.substr(0, 16) !== SEAL_MAGIC) {
    fail(input.path + ": was not made by seal-file.js");
  }
  if (input.size < SEAL_HEADER_BYTES + SEAL_CODE_BYTES) fail(input.path + ": is cut short");
  var iterations = parseInt(hex.substr(16, 8), 16);
  // Others would keep the script busy for hours.
  if (iterations < 1 || iterations > MOST_SEAL_ITERATIONS) fail(input.path + ": is damaged");
  return header;
}

// Passes the data in pieces to take(bytes), and fails unless the code at the end is right.
function readSealed(input, code, take) {
  var left = input.size - SEAL_HEADER_BYTES - SEAL_CODE_BYTES, bytes;
  while (left > 0) {
    bytes = input.read(Math.min(PIECE, left));
    if (bytes === null) fail(input.path + ": changed while it was read");
    left -= Bytes.Count(bytes);
    code.HashUpdate(bytes);
    take(bytes);
  }
  bytes = input.read(SEAL_CODE_BYTES);
  code.HashFinalize();
  if (bytes === null || !Bytes.Equal(bytes, code.BinaryValue)) {
    fail(input.path + ": the pass phrase is wrong, or the file was changed");
  }
}

function openFile(key, from, to) {
  refuseSameFiles([from, key.file], [to]);
  var secret = secretBytes(key), header, keys;
  return withFiles(from, to, function (input) {
    header = readHeader(input);
    keys = sealKeys(secret, header);
    readSealed(input, keys.code, function () {});
    input.rewind();
    input.read(SEAL_HEADER_BYTES);
    keys.code.Reset();
    keys.code.HashUpdate(header);
    return input.size;
  }, function (input, output) {
    var decrypt = counterMode(keys.crypt), report = progressOf(from, input.size);
    readSealed(input, keys.code, function (bytes) {
      output.write(decrypt(bytes));
      report(input.taken());
    });
    report();
  }) - SEAL_HEADER_BYTES - SEAL_CODE_BYTES;
}

function main() {
  offerHelp(usage);
  var found = splitArguments(KEY_OPTIONS, usage), key = takeKey(found, 0, usage), words = found.words;
  if (words.length !== 2) usage();
  try {
    WScript.Echo("opened " + openFile(key, words[0], words[1]) + " bytes");
  } catch (e) {
    complain(WScript.ScriptName + ": " + describe(e));
    WScript.Quit(1);
  }
}

main();
