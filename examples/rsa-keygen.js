// Makes an RSA key and writes it to a file.
//
//   rsa-keygen.js BITS OUT.json     BITS is a multiple of 16 from 64 to 16384
//
// The file holds the five numbers in hexadecimal: n and e, which everybody may know, and d, p and
// q, which nobody else may. A copy without those three serves rsa-encrypt.js as the public key.

var NO_PADDING =
  "Raw RSA has no padding: equal data gives equal results, and small data is unsafe.";

// Not every host has a standard error stream for scripts.
function complain(text) {
  var stream = null;
  try {
    stream = WScript.StdErr;
  } catch (e) {}
  if (stream) {
    stream.WriteLine(text);
  } else {
    WScript.Echo(text);
  }
}

function usage() {
  WScript.Echo("Usage: " + WScript.ScriptName + " BITS OUT.json");
  WScript.Echo("Makes an RSA key with a modulus of BITS bits, a multiple of 16 from 64 to 16384,");
  WScript.Echo("and writes it to the file OUT.json, which must not exist yet.");
  WScript.Echo(NO_PADDING);
  WScript.Quit(2);
}

function fail(text) {
  throw new Error(1, text);
}

var number = new ActiveXObject("Vardeko.crypt.Number");

function hexOf(bytes) {
  number.Binary = bytes;
  return number.Hex;
}

function exists(path) {
  if (typeof WScript.OpenFile === "undefined") {
    return new ActiveXObject("Scripting.FileSystemObject").FileExists(path);
  }
  try {
    WScript.OpenFile(path, "r").Close();
    return true;
  } catch (e) {
    return e.number !== (0x80030002 | 0);
  }
}

function writeText(path, text) {
  if (typeof WScript.OpenFile === "undefined") {
    var file = new ActiveXObject("Scripting.FileSystemObject").CreateTextFile(path, false);
    file.Write(text);
    file.Close();
    return;
  }
  var stream = WScript.OpenFile(path, "w");
  number.Text = text;
  stream.Write(number.Binary);
  stream.Commit();
  stream.Close();
}

function keyText(rsa, bits) {
  var numbers = {n: rsa.Modulus, e: rsa.PublicExp, d: rsa.SecretExp, p: rsa.P, q: rsa.Q};
  var text = "{\n  \"bits\": " + bits;
  for (var name in numbers) text += ",\n  \"" + name + "\": \"" + hexOf(numbers[name]) + "\"";
  return text + "\n}\n";
}

function makeKey(bits, path) {
  if (exists(path)) fail(path + ": is there already, and may be a key that is still needed");
  WScript.Echo("Making an RSA key of " + bits + " bits; nothing more is said until it is done.");
  var rsa = new ActiveXObject("Vardeko.crypt.RSA");
  var start = new Date().getTime();
  rsa.CreateRandKeys(bits / 8, true);
  var seconds = (new Date().getTime() - start) / 1000;
  writeText(path, keyText(rsa, bits));
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
    complain(WScript.ScriptName + ": " + (e.description || e.message || "error " + e.number));
    WScript.Quit(1);
  }
  WScript.Echo(NO_PADDING);
}

main();
