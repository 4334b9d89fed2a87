// Every use of a closed stream is the same error.
var fake = new ActiveXObject("Fake.Object"), open = WScript.MemoryStream(new Uint8Array(4));
function closed(stream) { stream.Close(); return stream; }
function makeFile() { return WScript.OpenFile("closed.bin", "w+"); }
function makeOther() { return WScript.StreamOf(WScript.MemoryStream(new Uint8Array(2))); }
var uses = {
  Read: function (s) { s.Read(1); },
  "Read of nothing": function (s) { s.Read(0); },
  Write: function (s) { s.Write(new Uint8Array(1)); },
  "Write of no bytes": function (s) { s.Write("text"); },
  Seek: function (s) { s.Seek(0); },
  "Seek to nowhere": function (s) { s.Seek(NaN); },
  "CopyTo another": function (s) { s.CopyTo(open); },
  "CopyTo itself": function (s) { s.CopyTo(s); },
  "CopyTo it": function (s) { open.CopyTo(s); },
  "CopyTo as many": function (s) { open.CopyTo(open, s); },
  Commit: function (s) { s.Commit(); },
  Size: function (s) { return s.Size; },
  "Size =": function (s) { s.Size = 1; },
  Position: function (s) { return s.Position; },
  "Position =": function (s) { s.Position = 1; },
  "position of another": function (s) { open.Position = s; },
  "bytes of another": function (s) { open.Write(s); },
  StreamOf: function (s) { WScript.StreamOf(s); },
  MemoryStream: function (s) { WScript.MemoryStream(s); },
  OpenFile: function (s) { WScript.OpenFile(s); },
  "mode of OpenFile": function (s) { WScript.OpenFile("closed.bin", s); },
  Echo: function (s) { WScript.Echo(s); },
  StdOut: function (s) { WScript.StdOut.Write(s); },
  StdErr: function (s) { WScript.StdErr.WriteLine("x", s); },
  Sleep: function (s) { WScript.Sleep(s); },
  Quit: function (s) { WScript.Quit(s); },
  Arguments: function (s) { WScript.Arguments(s); },
  CreateObject: function (s) { WScript.CreateObject(s); },
  ActiveXObject: function (s) { new ActiveXObject(s); },
  VBArray: function (s) { new VBArray(s); },
  "argument of a member": function (s) { fake.Same(s); },
  "one of many": function (s) { fake.Count(1, s, 2); },
  "property assigned": function (s) { fake.Held = s; },
  "property with arguments": function (s) { fake.Item(1) = s; },
  "index of a property": function (s) { fake.Item(s) = 1; },
  "what a callback returns": function (s) { fake.CallBack(function () { return s; }); },
  "reading it": function (s) { fake.ReadAll(s); },
  "number of an element": function (s) { return new VBArray(fake.Make("table")).getItem(s, 1); },
  "a bound": function (s) { return new VBArray(fake.Make("table")).lbound(s); },
  toString: function (s) { s.toString(); },
  "text": function (s) { return "" + s; },
  "number": function (s) { return +s; },
  "equal to a text": function (s) { return s == "x"; },
  "less than a number": function (s) { return s < 1; },
  "name of an error": function (s) { new Error(1, s); }
};
var count = 0;
for (var name in uses) {
  var makers = [makeFile, WScript.MemoryStream, makeOther];
  for (var i = 0; i < makers.length; i++) {
    var said = "nothing";
    try { uses[name](closed(makers[i]())); } catch (e) { said = e.number + " " + e.description; }
    if (said !== "-2146824584 The stream is closed") WScript.Echo(name, i, said);
    else count++;
  }
}
WScript.Echo(count);
// What does not use the stream works.
var s = closed(makeFile());
s.Close();
WScript.Echo(s === s, s == open, typeof s, s instanceof Object, !s, "Size" in s, JSON.stringify(s));
WScript.Echo(open, open == "[object Object]", open.toString());
