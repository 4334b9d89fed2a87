// ADODB.Stream. It does not run under Wine's host, whose own class has no registered type library:
// every late-bound call of it fails.
// file: four.bin|abcd
function t(name, f) {
  var result;
  try {
    result = f();
  } catch (e) {
    result = "0x" + (e.number >>> 0).toString(16) + " " + e.description;
  }
  WScript.Echo(name + ": " + result);
}
function state(s) {
  return "size " + s.Size + ", position " + s.Position + ", EOS " + s.EOS + ", type " + s.Type +
    ", separator " + s.LineSeparator + ", state " + s.State + ", mode " + s.Mode + ", " + s.Charset;
}
function opened(charset) {
  var s = new ActiveXObject("ADODB.Stream");
  s.Open();
  if (charset) s.Charset = charset;
  return s;
}
// The bytes of a text stream in hexadecimal.
function hex(s) {
  var bytes, i, text = [];
  s.Position = 0;
  s.Type = 1;
  bytes = s.Read();
  s.Position = 0;
  s.Type = 2;
  for (i = 0; bytes !== null && i < bytes.length; i++) text.push((256 + bytes[i]).toString(16).substr(1));
  return text.join(" ");
}

WScript.Echo("-- closed");
var s = WScript.CreateObject("adodb.stream"), i, other;
WScript.Echo(s.Type + " " + s.LineSeparator + " " + s.State + " " + s.Mode + " " + s.Charset);
t("Size", function () { return s.Size; });
t("Position", function () { return s.Position; });
t("EOS", function () { return s.EOS; });
t("Close", function () { s.Close(); });
t("Read", function () { s.Read(); });
t("ReadText", function () { s.ReadText(); });
t("Write", function () { s.Write(new Uint8Array(1)); });
t("WriteText", function () { s.WriteText("a"); });
t("SkipLine", function () { s.SkipLine(); });
t("SetEOS", function () { s.SetEOS(); });
t("Flush", function () { s.Flush(); });
t("Cancel", function () { s.Cancel(); });
t("CopyTo", function () { s.CopyTo(opened()); });
t("LoadFromFile", function () { s.LoadFromFile("four.bin"); });
t("SaveToFile", function () { s.SaveToFile("new.bin"); });

WScript.Echo("-- arguments");
t("Type 3", function () { s.Type = 3; });
t("Mode 32", function () { s.Mode = 32; });
t("LineSeparator 5", function () { s.LineSeparator = 5; });
t("Charset none", function () { s.Charset = "nonsense"; });
t("Charset to be detected", function () { s.Charset = "_autodetect"; });
t("Charset utf-7", function () { s.Charset = "utf-7"; });
t("Open of a source", function () { s.Open("URL=http://host/file"); });
t("Open with a mode", function () { s.Open("", 64); });
t("still", function () { return s.State + s.Charset; });
t("Open", function () { s.Open(); return state(s); });
t("Open again", function () { s.Open(); });
t("Mode of an open one", function () { s.Mode = 1; });
t("Position -1", function () { s.Position = -1; });
t("Position none", function () { s.Position = "none"; });
t("Position of 2 GB", function () { s.Position = 2147483647; });
t("Size", function () { s.Size = 1; });
t("ReadText -3", function () { s.ReadText(-3); });
t("WriteText 2", function () { s.WriteText("a", 2); });
t("LoadFromFile of no name", function () { s.LoadFromFile(""); });
t("LoadFromFile of a zero", function () { s.LoadFromFile("four.bin\0"); });
t("SaveToFile 0", function () { s.SaveToFile("new.bin", 0); });
t("SaveToFile 3", function () { s.SaveToFile("new.bin", 3); });
t("CopyTo of no stream", function () { s.CopyTo(new ActiveXObject("Scripting.Dictionary")); });
t("CopyTo of itself", function () { s.CopyTo(s); });
t("CopyTo of nothing", function () { s.CopyTo(null); });
t("CopyTo of a closed one", function () { s.CopyTo(new ActiveXObject("ADODB.Stream")); });
t("CopyTo -2", function () { s.CopyTo(opened(), -2); });
t("Flush and Cancel", function () { s.Flush(); s.Cancel(); return state(s); });

WScript.Echo("-- text");
t("WriteText", function () { s.WriteText("ab\r\ncd\nx"); return state(s); });
t("Charset inside", function () { s.Charset = "utf-8"; });
t("Type inside", function () { s.Type = 1; });
t("Read", function () { s.Read(); });
t("Write", function () { s.Write(new Uint8Array(1)); });
s.Position = 0;
t("characters", function () { return s.ReadText(2) + " at " + s.Position; });
t("lines", function () { return "[" + s.ReadText(-2) + "][" + s.ReadText(-2) + "][" + s.ReadText(-2) + "]"; });
t("at the end", function () { return "[" + s.ReadText() + "][" + s.ReadText(3) + "]" + s.EOS; });
s.Position = 0;
s.LineSeparator = 10;
t("SkipLine", function () { s.SkipLine(); return s.ReadText(); });
t("SkipLine at the end", function () { s.SkipLine(); return s.Position; });
t("0 characters", function () { s.Position = 2; return "[" + s.ReadText(0) + "]" + s.Position; });
t("SetEOS", function () { s.Position = 6; s.SetEOS(); return state(s); });
t("a line is written", function () { s.WriteText("e", 1); return hex(s); });
t("beyond the end", function () { s.Position = 14; return s.Size + " " + hex(s); });
t("at the start again", function () { s.Position = 0; s.WriteText(12.5); return hex(s); });

WScript.Echo("-- character sets");
var text = "a\u00e4\u20ac\ud83d\ude00", sets = ["Unicode", "unicodeFFFE", "utf-8", "us-ascii", "ISO-8859-1",
  "windows-1252", "windows-1251", "ibm850", "koi8-r", "shift_jis", "gb18030", "big5", "euc-jp", "cp437"];
for (i = 0; i < sets.length; i++) {
  t(sets[i], function () {
    var one = opened(sets[i]), bytes, read;
    one.WriteText(text);
    bytes = hex(one);
    one.Position = 0;
    return one.Charset + " " + bytes + " | " + escape(one.ReadText());
  });
}
t("mark only", function () { var one = opened("utf-8"); one.WriteText(""); return hex(one); });
t("without a mark", function () {
  var one = opened();
  one.Type = 1;
  one.Write(new Uint8Array([0x61, 0, 0xff, 0xfe, 0x62]));
  one.Position = 0;
  one.Type = 2;
  return escape(one.ReadText());
});
t("ill-formed", function () {
  var one = opened("utf-8");
  one.Type = 1;
  one.Write(new Uint8Array([0xff, 0x61, 0xe2, 0x82, 0x62, 0xf0, 0x9f, 0x98]));
  one.Position = 0;
  one.Type = 2;
  return escape(one.ReadText(1)) + one.ReadText(1) + escape(one.ReadText(2)) + escape(one.ReadText());
});
// Characters and lines that blocks of bytes cut.
t("one by one", function () {
  var failures = 0;
  for (var j = 0; j < sets.length; j++) {
    var one = opened(sets[j]), whole, parts = "", part, lines, k;
    one.LineSeparator = j % 3 === 0 ? -1 : j % 3 === 1 ? 10 : 13;
    for (k = 0; k < 60; k++) one.WriteText(text + text + text + k, 1);
    one.Position = 0;
    whole = one.ReadText();
    one.Position = 0;
    while ((part = one.ReadText(k % 7 + 1)) !== "") parts += part;
    if (parts !== whole) failures++;
    one.Position = 0;
    lines = [];
    while (!one.EOS) lines.push(one.ReadText(-2));
    if (lines.length !== 60 || lines.join(["\r\n", "\n", "\r"][j % 3]) + ["\r\n", "\n", "\r"][j % 3] !== whole) failures++;
  }
  return failures + " differ";
});
t("a separator between blocks", function () {
  var failures = 0;
  for (var length = 120; length < 140; length++) {
    var one = opened("Unicode"), line = new Array(length + 1).join("\u0d0a");
    one.WriteText(line + "\r", 1);
    one.WriteText("second");
    one.Position = 0;
    if (one.ReadText(-2) !== line + "\r" || one.ReadText(-2) !== "second") failures++;
  }
  return failures + " differ";
});
// The bytes 61 0a 00 01 have the separator's 0a 00 inside.
t("a separator across characters", function () {
  var one = opened("Unicode");
  one.LineSeparator = 10;
  one.WriteText("\u0a61\u0100x", 1);
  one.Position = 0;
  return escape(one.ReadText(-2)) + " " + one.EOS;
});

WScript.Echo("-- bytes");
s = opened();
s.Type = 1;
t("Write", function () { s.Write(new Uint8Array([1, 2, 3, 4])); return state(s); });
t("ReadText", function () { s.ReadText(); });
t("WriteText", function () { s.WriteText("a"); });
t("SkipLine", function () { s.SkipLine(); });
t("Read at the end", function () { return s.Read() + " " + s.Read(1); });
s.Position = 1;
t("Read 2", function () { var b = s.Read(2); return b.length + ": " + b[0] + b[1] + ", " + s.Position; });
t("Read more", function () { return s.Read(100).length; });
t("Read -2", function () { s.Read(-2); });
t("Read 0", function () { s.Position = 0; return s.Read(0) + " " + s.Position; });
t("Write of a text", function () { s.Write("text"); });
t("Write of an object", function () { s.Write({}); });
t("overwriting", function () { s.Position = 2; s.Write(new Uint8Array([9])); return state(s); });
t("SetEOS", function () { s.SetEOS(); s.Position = 0; return s.Read().length; });
t("Write of nothing", function () { s.Write(new Uint8Array(0)); return s.Size; });

WScript.Echo("-- CopyTo");
t("without the mark", function () {
  var from = opened("utf-8"), to = opened();
  from.WriteText("\u00e4b");
  from.Position = 3;
  to.Type = 1;
  from.CopyTo(to);
  to.Position = 0;
  return Array.prototype.join.call(to.Read()) + " " + from.EOS;
});
t("characters as bytes", function () {
  var from = opened("utf-8"), to = opened();
  from.WriteText("\u00e4\u20acbc");
  from.Position = 0;
  to.Type = 1;
  from.CopyTo(to, 2);
  to.Position = 0;
  return Array.prototype.join.call(to.Read()) + " " + from.Position;
});
t("to another set", function () {
  var from = opened("utf-8"), to = opened("windows-1252");
  from.WriteText("\u00e4\u20acbc");
  from.Position = 0;
  from.CopyTo(to, 3);
  return hex(to) + ", " + from.ReadText();
});
t("bytes", function () {
  var from = opened(), to = opened();
  from.Type = to.Type = 1;
  from.Write(new Uint8Array(100000));
  to.Write(new Uint8Array([1, 2, 3]));
  to.Position = 1;
  from.Position = 10;
  from.CopyTo(to, 70000);
  return to.Size + " " + to.Position + " " + from.Position;
});
t("bytes to text", function () { s.CopyTo(opened()); });

WScript.Echo("-- files");
s = opened("utf-8");
t("SaveToFile", function () { s.WriteText("saved"); s.SaveToFile("new.txt"); return state(s); });
t("a file that exists", function () { s.SaveToFile("new.txt"); });
t("replaced", function () { s.Position = 0; s.SetEOS(); s.WriteText("again"); s.SaveToFile("new.txt", 2); return s.Position; });
t("no folder", function () { s.SaveToFile("none/new.txt"); });
t("a folder", function () { s.SaveToFile("/", 2); });
t("LoadFromFile", function () {
  var one = opened("utf-8");
  one.WriteText("what was there, and was longer");
  one.LoadFromFile("new.txt");
  return state(one) + ": " + one.ReadText();
});
t("a missing file", function () { s.LoadFromFile("none.bin"); });
t("a folder", function () { s.LoadFromFile("/"); });
t("unchanged", function () { return s.ReadText(); });
t("a device", function () { s.LoadFromFile("/dev/null"); return s.Size + " " + s.EOS; });
t("a large file", function () {
  var large = WScript.OpenFile("large.bin", "w");
  large.Size = 1073741825;
  large.Close();
  s.WriteText("kept");
  s.LoadFromFile("large.bin");
});
t("kept", function () { s.Position = 0; return s.ReadText(); });
t("separated by \\", function () { s.SaveToFile(".\\new.txt", 2); s.LoadFromFile(".\\new.txt"); return s.ReadText(); });
t("bytes of a file", function () { var one = opened(); one.Type = 1; one.LoadFromFile("four.bin"); return Array.prototype.join.call(one.Read()); });

WScript.Echo("-- modes");
s = new ActiveXObject("ADODB.Stream");
s.Mode = 1;
s.Open();
s.LoadFromFile("four.bin");
t("only reading", function () { s.Charset = "us-ascii"; return s.ReadText(); });
t("WriteText", function () { s.WriteText("a"); });
t("SetEOS", function () { s.SetEOS(); });
t("Position beyond the end", function () { s.Position = 9; return s.Position + " " + s.Size + " " + s.EOS; });
s.Close();
t("only writing", function () { s.Open("", 2); s.WriteText("a"); return s.Mode + " " + s.Size; });
t("ReadText", function () { s.ReadText(); });
t("CopyTo", function () { s.CopyTo(opened()); });
t("closed and opened", function () { s.Close(); s.Open(); return state(s); });
