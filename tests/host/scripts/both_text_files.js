// Text files: modes, line ends, errors. Wine's errors have no texts, so only numbers are printed.
function attempt(name, f) {
  var said;
  try { said = f(); } catch (e) { said = "error " + (e.number >>> 0).toString(16); }
  if (typeof said === "string") said = said.replace(/\r/g, "<CR>").replace(/\n/g, "<LF>");
  WScript.Echo(name + ": " + said);
}
var fso = new ActiveXObject("Scripting.FileSystemObject"), file;
function write(name, text) {
  var f = fso.CreateTextFile(name);
  f.Write(text);
  f.Close();
}
function read(name, format) {
  var f = fso.OpenTextFile(name, 1, false, format || 0), text = f.ReadAll();
  f.Close();
  return text;
}
write("a.txt", "one\r\ntwo\nthree\rfour\r\n\r\nlast");
attempt("whole", function () { return read("a.txt"); });
file = fso.OpenTextFile("a.txt");
attempt("Read 3", function () { return file.Read(3); });
attempt("Read 1", function () { return file.Read(1); });
attempt("ReadLine", function () { return file.ReadLine(); });
attempt("ReadLine", function () { return file.ReadLine(); });
attempt("not at the end", function () { return file.AtEndOfStream; });
attempt("ReadLine", function () { return file.ReadLine(); });
attempt("empty line", function () { return file.ReadLine(); });
attempt("last line", function () { return file.ReadLine(); });
attempt("at the end", function () { return file.AtEndOfStream; });
attempt("ReadLine at the end", function () { return file.ReadLine(); });
attempt("Read at the end", function () { return file.Read(1); });
attempt("ReadAll at the end", function () { return file.ReadAll(); });
attempt("Write to a file for reading", function () { file.Write("x"); });
file.Close();
file = fso.OpenTextFile("a.txt");
attempt("Read of none", function () { return file.Read(0); });
attempt("Read of more than there is", function () { return file.Read(100); });
file.Close();
// wine leaves out: it has no positions
file = fso.OpenTextFile("a.txt");
function place() {
  return [file.Line, file.Column, file.AtEndOfLine, file.AtEndOfStream].join();
}
attempt("at first", place);
attempt("Skip", function () { file.Skip(3); return place(); });
attempt("SkipLine", function () { file.SkipLine(); return place(); });
attempt("ReadAll", function () { file.ReadAll(); return place(); });
attempt("negative count", function () { return file.Read(-1); });
file.Close();
attempt("ReadLine of a closed file", function () { return file.ReadLine(); });
attempt("mode 3", function () { fso.OpenTextFile("a.txt", 3); });
// wine continues

file = fso.CreateTextFile("b.txt");
file.WriteLine("line");
file.WriteLine("");
file.WriteLine();
file.Write(1.5);
file.Write("end");
attempt("Read of a file for writing", function () { return file.Read(1); });
attempt("end of a file for writing", function () { return file.AtEndOfStream; });
file.Close();
file.Close();
attempt("written", function () { return read("b.txt"); });
// wine leaves out: it has no WriteBlankLines
file = fso.CreateTextFile("f.txt");
file.WriteBlankLines(2);
file.Close();
attempt("blank lines", function () { return read("f.txt"); });
// wine continues
file = fso.OpenTextFile("b.txt", 8);
file.WriteLine("+");
file.Close();
attempt("appended", function () { return read("b.txt"); });
file = fso.OpenTextFile("b.txt", 2);
file.Write("new");
file.Close();
attempt("replaced", function () { return read("b.txt"); });
file = fso.OpenTextFile("c.txt", 8, true);
file.Write("created by appending");
file.Close();
attempt("appended to none", function () { return read("c.txt"); });
file = fso.OpenTextFile("d.txt", 2, true);
file.Write("created");
file.Close();
attempt("written to none", function () { return read("d.txt"); });
write("e.txt", "");
attempt("ReadAll of an empty file", function () { return read("e.txt"); });

attempt("no overwriting", function () { fso.CreateTextFile("a.txt", false); });
attempt("missing", function () { fso.OpenTextFile("none.txt"); });
attempt("missing, to be written", function () { fso.OpenTextFile("none.txt", 2); });
attempt("missing, to be appended", function () { fso.OpenTextFile("none.txt", 8); });
attempt("missing folder", function () { fso.OpenTextFile("none/none.txt"); });
attempt("missing folder to write in", function () { fso.CreateTextFile("none\\none.txt"); });
attempt("missing folder to append in", function () { fso.OpenTextFile("none\\none.txt", 8, true); });
attempt("folder", function () { fso.OpenTextFile("."); });
attempt("folder to be written", function () { fso.CreateTextFile("."); });
attempt("no name", function () { fso.OpenTextFile(""); });

file = fso.CreateTextFile("wide.txt", true, true);
file.WriteLine("h\u00e9\u20ac");
file.Close();
attempt("wide", function () { return read("wide.txt", -1) === "h\u00e9\u20ac\r\n"; });
attempt("detected", function () { return read("wide.txt", -2) === "h\u00e9\u20ac\r\n"; });
file = fso.OpenTextFile("wide.txt", 8, false, -1);
file.Write("\u4e2d");
file.Close();
attempt("wide, appended", function () { return read("wide.txt", -1) === "h\u00e9\u20ac\r\n\u4e2d"; });
