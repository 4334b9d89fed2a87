// Creates an RSA key and writes it to a file.
//
//   rsa-keygen.js BITS OUT.json     BITS is a multiple of 16 from 64 to 16384
//
// The file contains the five numbers in hexadecimal: n and e, which are public, and d, p and q, which
// are secret. Only its owner may read or write it, if the script host can set that. A copy without d,
// p and q is the public key for rsa-encrypt.js.

// Functions that the examples share.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
  WScript.ScriptFullName.replace(/[^\\\/]*$/, "shared.js")).ReadAll());

var NO_PADDING =
  "Raw RSA has no padding: equal data gives equal results, and small data is unsafe.";

function usage() {
  WScript.Echo("Usage: " + WScript.ScriptName + " BITS OUT.json");
  WScript.Echo("Makes an RSA key with a modulus of BITS bits, a multiple of 16 from 64 to 16384,");
  WScript.Echo("and writes it to the file OUT.json, which must not exist yet.");
  WScript.Echo(NO_PADDING);
  WScript.Quit(2);
}

function keyText(rsa, bits) {
  var numbers = {n: rsa.Modulus, e: rsa.PublicExp, d: rsa.SecretExp, p: rsa.P, q: rsa.Q};
  var text = "{\n  \"bits\": " + bits;
  for (var name in numbers) text += ",\n  \"" + name + "\": \"" + Bytes.ToHex(numbers[name]) + "\"";
  return text + "\n}\n";
}

function makeKey(bits, path) {
  var file = openSecretOutput(path), written = false;
  try {
    WScript.Echo("Making an RSA key of " + bits + " bits; nothing more is said until it is done.");
    var rsa = new ActiveXObject("Vardeko.crypt.RSA");
    var start = new Date().getTime();
    rsa.CreateRandKeys(bits / 8, true);
    var seconds = (new Date().getTime() - start) / 1000;
    file.writeText(keyText(rsa, bits));
    written = true;
  } finally {
    if (!written) file.discard();
  }
  WScript.Echo("Done in " + seconds.toFixed(2) + " s. " + path + " holds the secret key.");
}

function main() {
  var words = WScript.Arguments;
  if (words.length !== 2 || !/^[0-9]{1,5}$/.test(words(0))) usage();
  var bits = Number(words(0));
  if (bits % 16 !== 0 || bits < 64 || bits > 16384) usage();
  try {
    makeKey(bits, words(1));
  } catch (e) {
    complain(WScript.ScriptName + ": " + describe(e));
    WScript.Quit(1);
  }
  WScript.Echo(NO_PADDING);
}

main();
