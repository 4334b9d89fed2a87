// Encrypts a file so that it cannot be read or changed without the pass phrase.
//
//   seal-file.js [--iterations N] PASS IN OUT
//
// Other users can see command lines: --key-file FILE or --key-env NAME instead of PASS read it from a file,
// without a final line end, or an environment variable. A file of 32 random bytes (random-bytes.js) needs few
// iterations, a pass phrase as many as one can wait for. open-file.js decrypts. OUT contains, with big-endian
// numbers:
//
//   8 bytes     "MIROSEAL"
//   4 bytes     N, the iterations
//   16 bytes    a random salt
//   the data    IN encrypted by AES in counter mode, from counter 0
//   32 bytes    the HMAC of all before by SHA-256
//
// PBKDF2 with HMAC-SHA256 derives 64 bytes from pass phrase and salt: a key of 32 bytes for AES and one of 32
// bytes for the HMAC. The length of IN stays visible.
//
// Counter mode is made of the classes' block-by-block encryption, which must not be used alone for data: equal
// blocks give equal blocks. Nor must counter mode be used without the HMAC, or twice with a key.
//
// An existing OUT is replaced only when the new file is complete; after a failure it is unchanged.
//
// Not with Wine: its ADODB.Stream reads and writes no files.

// Functions that the examples share.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
  WScript.ScriptFullName.replace(/[^\\\/]*$/, "shared.js")).ReadAll());

var USUAL_ITERATIONS = 200000;

function usage(status) {
  WScript.Echo("Usage: " + WScript.ScriptName + " [--iterations N] PASS IN OUT");
  WScript.Echo("Encrypts the file IN to OUT by AES and authenticates it, with keys derived from the pass");
  WScript.Echo("phrase PASS in N iterations, " + USUAL_ITERATIONS + " unless given.");
  WScript.Echo(KEY_USAGE.replace("KEY", "PASS"));
  WScript.Quit(status === undefined ? 2 : status);
}

function sealFile(key, iterations, from, to) {
  refuseSameFiles([from, key.file], [to]);
  var secret = secretBytes(key);
  return withFiles(from, to, function () { return Infinity; }, function (input, output) {
    var header = Bytes.Concat(Bytes.FromHex(SEAL_MAGIC), bigEndian(iterations, 4),
                              Bytes.Random(SEAL_SALT_BYTES));
    var keys = sealKeys(secret, header), encrypt = counterMode(keys.crypt);
    output.write(header);
    pump(input, output, function (bytes) {
      var encrypted = encrypt(bytes);
      keys.code.HashUpdate(encrypted);
      return encrypted;
    });
    keys.code.HashFinalize();
    output.write(keys.code.BinaryValue);
  });
}

function main() {
  offerHelp(usage);
  var found = splitArguments(KEY_OPTIONS.concat("--iterations"), usage);
  var iterations = found["--iterations"], key = takeKey(found, 0, usage), words = found.words;
  if (words.length !== 2) usage();
  iterations = iterations === undefined ? USUAL_ITERATIONS
    : takeWhole(iterations, 1, MOST_SEAL_ITERATIONS, usage);
  try {
    WScript.Echo("sealed " + sealFile(key, iterations, words[0], words[1]) + " bytes");
  } catch (e) {
    complain(WScript.ScriptName + ": " + describe(e));
    WScript.Quit(1);
  }
}

main();
