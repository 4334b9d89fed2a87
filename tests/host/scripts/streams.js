function list(bytes) { return Array.prototype.join.call(bytes, ","); }
var m = WScript.MemoryStream(new Uint8Array([1, 2, 3, 4, 5]));
WScript.Echo(m.Size, m.Position, list(m.Read(2)), m.Position);
WScript.Echo(m.Seek(-1, 2), m.Seek(-2, 1), m.Seek(3), list(m.Read(100)), m.Read(5).length);
WScript.Echo(m.Write(new Uint8Array([9, 8])), m.Size);
m.Position = 0;
WScript.Echo(list(m.Read()), m.Read(0).length);
m.Size = 3;
m.Position = 0;
WScript.Echo(list(m.Read()));
WScript.Echo(WScript.MemoryStream().Size, WScript.MemoryStream(null).Read(1).length);

var f = WScript.OpenFile("made.bin", "w+");
f.Write(new Uint8Array([65, 66, 10]).subarray(1));
f.Write(new Uint8Array([67, 68]).buffer);
f.Position = 0;
WScript.Echo(list(f.Read()), f.Size);
f.Close();
f = WScript.OpenFile("made.bin", "r+");
f.Seek(0, 2);
f.Write(new Uint8Array([69]));
f.Commit();
f.Close();
f.Close();
f = WScript.OpenFile("made.bin");
var copy = WScript.MemoryStream();
WScript.Echo(f.CopyTo(copy, 3), f.CopyTo(copy), copy.Size);
copy.Position = 0;
WScript.Echo(list(copy.Read()), f instanceof Object);
f = WScript.OpenFile("made.bin", "w");
WScript.Echo(f.Size);
f.Discard();
var name = "\udcff\u00e9\ud83d\ude00";
f = WScript.OpenFile(name, "w");
f.Write(new Uint8Array(4));
f.Close();
WScript.Echo(WScript.OpenFile(name).Size);

// Files are read to their end or to the count, whatever their size, and then on from there.
function readParts(size, count) {
  var bytes = new Uint8Array(size), i, part, parts = [], isEqual = true, at = 0;
  for (i = 0; i < size; i++) bytes[i] = i % 251;
  var file = WScript.OpenFile("parts.bin", "w");
  file.Write(bytes);
  file.Close();
  file = WScript.OpenFile("parts.bin");
  do {
    part = file.Read(count);
    parts.push(part.length);
    for (i = 0; i < part.length; i++) isEqual = isEqual && part[i] === bytes[at + i];
    at += part.length;
    isEqual = isEqual && file.Position === at;
  } while (part.length > 0);
  file.Close();
  return parts.join() + " " + isEqual;
}
WScript.Echo(readParts(0, 5), readParts(1, 1), readParts(16383), readParts(16384), readParts(16385));
WScript.Echo(readParts(16384, 16384), readParts(16385, 16384), readParts(16390, 16385), readParts(70000, 40000));
f = WScript.OpenFile("parts.bin");
WScript.Echo(f.Read(600 * 1024 * 1024).length, f.Read(0).length);
f.Position = 5;
WScript.Echo(list(f.Read(3)), f.Position, f.Read(0).length, f.Read(4).buffer.byteLength);
f.Close();
