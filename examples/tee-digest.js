// Copies a file to several places at once and prints the digest of what was written to each.
//
//   tee-digest.js ALG IN OUT...        ALG is MD5, SHA1 or SHA256
//
// Each output is written through its own digest filter, and the input is read through one. A digest that
// differs from the input's is reported on standard error, and the exit status is 1.
//
// Existing outputs are replaced when all of them are complete; after a failure they are unchanged.
//
// Only on mirolta-host: the platform's host has no streams of bytes.

// Functions that the examples share.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
  WScript.ScriptFullName.replace(/[^\\\/]*$/, "shared.js")).ReadAll());

var READ_AT_ONCE = 1 << 20;

function usage() {
  WScript.Echo("Usage: " + WScript.ScriptName + " ALG IN OUT...");
  WScript.Echo("Copies IN to every OUT and prints the digest of each. ALG is MD5, SHA1 or SHA256.");
  WScript.Quit(2);
}

function digesting(direction, algorithm, stream) {
  var filter = new ActiveXObject("Vardeko.crypt.ToviStreamDigest");
  filter[direction + "Algorithm"] = algorithm;
  if (stream !== null) filter.Stream = stream;
  return filter;
}

// Each output as {name, file, filter, stream}: the stream writes through the filter to the file.
function openOutputs(algorithm, names) {
  var outputs = [];
  for (var i = 0; i < names.length; i++) {
    var file = WScript.OpenFile(names[i], "w"), filter = digesting("Write", algorithm, file);
    outputs.push({name: names[i], file: file, filter: filter, stream: WScript.StreamOf(filter)});
  }
  return outputs;
}

function copyAll(input, outputs, path, size) {
  var report = progressOf(path, size), done = 0, bytes, i;
  while ((bytes = input.Read(READ_AT_ONCE)).length > 0) {
    for (i = 0; i < outputs.length; i++) outputs[i].stream.Write(bytes);
    done += bytes.length;
    report(done);
  }
  report();
}

function tee(algorithm, from, names) {
  refuseSameFiles([from], names);
  // Refuses an unknown algorithm before any file is opened.
  digesting("Read", algorithm, null);
  var file = WScript.OpenFile(from, "r");
  var source = digesting("Read", algorithm, file);
  // If the script fails, the host discards files that are not closed.
  var outputs = openOutputs(algorithm, names), status = 0, i;
  copyAll(WScript.StreamOf(source), outputs, from, file.Size);
  for (i = 0; i < outputs.length; i++) outputs[i].file.Close();
  for (i = 0; i < outputs.length; i++) {
    WScript.Echo(outputs[i].filter.WriteValue.toLowerCase() + "  " + names[i]);
    if (outputs[i].filter.WriteValue !== source.ReadValue) {
      complain(WScript.ScriptName + ": " + names[i] + ": differs from " + from);
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
  var names = [], status;
  for (var i = 2; i < WScript.Arguments.length; i++) names.push(WScript.Arguments(i));
  try {
    status = tee(WScript.Arguments(0), WScript.Arguments(1), names);
  } catch (e) {
    complain(WScript.ScriptName + ": " + describe(e));
    status = 1;
  }
  WScript.Quit(status);
}

main();
