// Copies a file to several places at once and prints the digest of what each of them was given.
//
//   tee-digest.js ALG IN OUT...        ALG is MD5, SHA1 or SHA256
//
// Each output is written through a digesting stream of its own, and the input is read through one;
// a digest that differs from the input's is named on standard error, and the exit status is then 1.

var PIECE = 1 << 20;

function usage() {
  WScript.Echo("Usage: " + WScript.ScriptName + " ALG IN OUT...");
  WScript.Echo("Copies IN to every OUT and prints the digest of each. ALG is MD5, SHA1 or SHA256.");
  WScript.Quit(2);
}

function complain(text) {
  WScript.StdErr.WriteLine(WScript.ScriptName + ": " + text);
}

function digesting(direction, algorithm, stream) {
  var filter = new ActiveXObject("Vardeko.crypt.ToviStreamDigest");
  filter[direction + "Algorithm"] = algorithm;
  if (stream !== null) filter.Stream = stream;
  return filter;
}

function tee(algorithm, from, names) {
  // An unknown algorithm must not cost the old content of the outputs.
  digesting("Read", algorithm, null);
  var source = digesting("Read", algorithm, WScript.OpenFile(from, "r"));
  var outputs = [], streams = [], i, bytes;
  for (i = 0; i < names.length; i++) {
    if (names[i] === from) throw new Error(from + ": is both input and output");
  }
  for (i = 0; i < names.length; i++) {
    outputs.push(digesting("Write", algorithm, WScript.OpenFile(names[i], "w")));
    streams.push(WScript.StreamOf(outputs[i]));
  }
  var input = WScript.StreamOf(source);
  while ((bytes = input.Read(PIECE)).length > 0) {
    for (i = 0; i < streams.length; i++) streams[i].Write(bytes);
  }
  var status = 0;
  for (i = 0; i < outputs.length; i++) {
    WScript.Echo(outputs[i].WriteValue.toLowerCase() + "  " + names[i]);
    if (outputs[i].WriteValue !== source.ReadValue) {
      complain(names[i] + ": differs from " + from);
      status = 1;
    }
  }
  return status;
}

function main() {
  if (typeof WScript.StreamOf === "undefined") {
    WScript.Echo("This script host offers scripts no streams.");
    WScript.Quit(2);
  }
  if (WScript.Arguments.length < 3) usage();
  var names = [];
  for (var i = 2; i < WScript.Arguments.length; i++) names.push(WScript.Arguments(i));
  try {
    WScript.Quit(tee(WScript.Arguments(0), WScript.Arguments(1), names));
  } catch (e) {
    complain(e.description || e.message);
    WScript.Quit(1);
  }
}

main();
