// Creates an RSA key and writes it to a file.
//
//   rsa-keygen.js BITS OUT.json     BITS is a multiple of 16 from 64 to 16384
//
// The file contains the five numbers in hexadecimal: n and e, which are public, and d, p and q, which
// are secret. Only its owner may read or write it, if the script host can set that. A copy without d,
// p and q is the public key for rsa-encrypt.js.

// Functions that the examples share.
function sharedFunctions() {
  var path = WScript.ScriptFullName.replace(/[^\\\/]*$/, "shared.js");
  if (typeof WScript.OpenFile === "undefined") {
    return new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(path).ReadAll();
  }
  return String.fromCharCode.apply(null, WScript.OpenFile(path, "r").Read(65536));
}
eval(sharedFunctions());

var ALREADY_THERE = 0x80030050 | 0;
var NO_PADDING =
  "Raw RSA has no padding: equal data gives equal results, and small data is unsafe.";

function usage() {
  WScript.Echo("Usage: " + WScript.ScriptName + " BITS OUT.json");
  WScript.Echo("Makes an RSA key with a modulus of BITS bits, a multiple of 16 from 64 to 16384,");
  WScript.Echo("and writes it to the file OUT.json, which must not exist yet.");
  WScript.Echo(NO_PADDING);
  WScript.Quit(2);
}

// The key file, which must not exist yet, with write(text) and discard().
function newKeyFile(path) {
  if (!hasFileStreams()) {
    var files = new ActiveXObject("Scripting.FileSystemObject");
    if (files.FileExists(path)) refuseKeyFile(path);
    return {
      write: function (text) {
        var file = files.CreateTextFile(path, false);
        file.Write(text);
        file.Close();
        complain("Beware: whoever may read the folder may read the key. Protect " + path + ".");
      },
      discard: function () {}
    };
  }
  var stream;
  try {
    stream = WScript.OpenFile(path, "wx", true);
  } catch (e) {
    if (e.number === ALREADY_THERE) refuseKeyFile(path);
    throw e;
  }
  return {
    write: function (text) {
      var number = newNumber();
      number.Text = text;
      stream.Write(number.Binary);
      stream.Close();
    },
    discard: function () { stream.Discard(); }
  };
}

function refuseKeyFile(path) {
  fail(path + ": is there already, and may be a key that is still needed");
}

function keyText(rsa, bits) {
  var numbers = {n: rsa.Modulus, e: rsa.PublicExp, d: rsa.SecretExp, p: rsa.P, q: rsa.Q};
  var text = "{\n  \"bits\": " + bits;
  for (var name in numbers) text += ",\n  \"" + name + "\": \"" + hexOf(numbers[name]) + "\"";
  return text + "\n}\n";
}

function makeKey(bits, path) {
  var file = newKeyFile(path), written = false;
  try {
    WScript.Echo("Making an RSA key of " + bits + " bits; nothing more is said until it is done.");
    var rsa = new ActiveXObject("Vardeko.crypt.RSA");
    var start = new Date().getTime();
    rsa.CreateRandKeys(bits / 8, true);
    var seconds = (new Date().getTime() - start) / 1000;
    file.write(keyText(rsa, bits));
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
