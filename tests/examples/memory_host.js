// Runs an example as on a script host without WScript.OpenFile, whose files ADODB.Stream holds in
// memory. The files are those of a table here: FILES as name=text words before the example.
//
//   memory_host.js FAILING NAME=TEXT... -- EXAMPLE.js ARGUMENTS...
//
// FAILING names a method of ADODB.Stream that fails, or "none". Prints what the example prints,
// then the files in hexadecimal.

var files = {}, words = [], failing = WScript.Arguments(0), i = 1;
for (; WScript.Arguments(i) !== "--"; i++) {
  var word = WScript.Arguments(i).split("=");
  // huge is a size without content, 0x starts hexadecimal.
  files[word[0]] = word[1] === "huge" ? null
    : /^0x/.test(word[1]) ? Bytes.FromHex(word[1].substr(2)) : bytesOfText(word[1]);
}
var example = WScript.Arguments(i + 1);
for (i += 2; i < WScript.Arguments.length; i++) words.push(WScript.Arguments(i));

function bytesOfText(text) {
  var bytes = new Uint8Array(text.length);
  for (var j = 0; j < text.length; j++) bytes[j] = text.charCodeAt(j);
  return bytes;
}

function hexOfBytes(bytes) {
  var text = "";
  for (var j = 0; j < bytes.length; j++) text += (bytes[j] + 256).toString(16).substr(1);
  return text;
}

function nameOf(path) {
  return path.replace(/^c:\\work\\/i, "").toLowerCase();
}

function mayFail(method) {
  if (method === failing) throw new Error(-2146825284, method + " failed");
}

function FileSystemObject() {}
FileSystemObject.prototype = {
  FileExists: function (path) { return files.hasOwnProperty(nameOf(path)); },
  GetFile: function (path) {
    var bytes = files[nameOf(path)];
    return {Size: bytes === null ? 3000000000 : bytes.length};
  },
  GetAbsolutePathName: function (path) { return "C:\\Work\\" + nameOf(path); },
  GetParentFolderName: function (path) { return path.replace(/\\[^\\]*$/, ""); },
  BuildPath: function (folder, name) { return folder + "\\" + name; },
  GetTempName: function () { return "rad12345.tmp"; },
  DeleteFile: function (path) { delete files[nameOf(path)]; },
  MoveFile: function (from, to) {
    mayFail("MoveFile");
    if (this.FileExists(to)) throw new Error(58, "File already exists");
    files[nameOf(to)] = files[nameOf(from)];
    delete files[nameOf(from)];
  },
  OpenTextFile: function (path) {
    return {
      ReadAll: function () {
        return String.fromCharCode.apply(null, WScript.OpenFile(path).Read(65536));
      }
    };
  }
};

function Stream() {}
Stream.prototype = {
  Open: function () { mayFail("Open"); this.bytes = new Uint8Array(0); this.Position = 0; },
  Close: function () { this.bytes = null; },
  get Size() { return this.bytes.length; },
  get EOS() { return this.Position >= this.bytes.length; },
  LoadFromFile: function (path) {
    mayFail("LoadFromFile");
    if (!files[nameOf(path)]) throw new Error(1, "File could not be opened");
    this.bytes = files[nameOf(path)];
  },
  Read: function (n) {
    mayFail("Read");
    var part = this.bytes.subarray(this.Position, this.Position + n);
    this.Position += part.length;
    return part;
  },
  Write: function (bytes) {
    mayFail("Write");
    if (bytes.length === 0) throw new Error(1, "arguments are of the wrong type");
    var all = new Uint8Array(this.Position + bytes.length);
    all.set(this.bytes.subarray(0, this.Position));
    all.set(bytes, this.Position);
    this.bytes = all;
    this.Position = all.length;
  },
  SetEOS: function () { this.bytes = this.bytes.subarray(0, this.Position); },
  SaveToFile: function (path, options) {
    if (options === 1 && files.hasOwnProperty(nameOf(path))) throw new Error(1, "is there");
    // A full disk leaves a part.
    files[nameOf(path)] = this.bytes.subarray(0, failing === "SaveToFile" ? 1 : Infinity);
    mayFail("SaveToFile");
  }
};

var classes = {"Scripting.FileSystemObject": FileSystemObject, "ADODB.Stream": Stream};
function MemoryHostObject(name) {
  return classes[name] ? new classes[name]() : new ActiveXObject(name);
}

function Ended(status) {
  this.status = status;
}
function argument(j) {
  return words[j];
}
Object.defineProperty(argument, "length", {value: words.length});
var memoryHost = {
  Arguments: argument,
  ScriptName: example.replace(/^.*\//, ""),
  ScriptFullName: example,
  Echo: function (text) { WScript.Echo(text); },
  Quit: function (status) { throw new Ended(status); }
};

var text = String.fromCharCode.apply(null, WScript.OpenFile(example).Read(65536)), status = 0;
try {
  new Function("WScript", "ActiveXObject", text)(memoryHost, MemoryHostObject);
} catch (e) {
  if (!(e instanceof Ended)) throw e;
  status = e.status;
}
for (var name in files) {
  WScript.Echo(name + "=" + (files[name] === null ? "huge" : hexOfBytes(files[name])));
}
WScript.Quit(status);
