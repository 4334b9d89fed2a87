// The members of the three standard streams; standard input is empty.
function attempt(name, f) {
  var said;
  try { said = f(); } catch (e) { said = "error " + (e.number >>> 0).toString(16) + " " + e.description; }
  WScript.Echo(name + ": " + said);
}
WScript.Echo(typeof WScript.StdIn, typeof WScript.stdout, typeof WScript.STDERR);
WScript.Echo(WScript.StdOut === WScript.StdOut, WScript.StdIn === WScript.stdin);
var names = ["Read", "ReadLine", "ReadAll", "Skip", "SkipLine", "Write", "WriteLine", "WriteBlankLines", "Close",
             "AtEndOfStream", "AtEndOfLine", "Line", "Column", "IsTerminal"], missing = [];
for (var i = 0; i < names.length; i++) if (!(names[i] in WScript.StdIn)) missing.push(names[i]);
WScript.Echo("missing: " + missing.join());
WScript.StdOut.Write("a");
WScript.StdOut.write("b\n", null);
WScript.StdOut.WriteLine();
WScript.StdOut.WriteBlankLines(2);
WScript.StdOut.WriteLine(1.5, true, [1, 2], undefined, "\u00e9\udcff");
WScript.StdOut.Write("\ud83d");
WScript.StdOut.WriteLine("\ude00");
WScript.Echo(WScript.StdOut.Line, WScript.StdOut.Column);
WScript.StdOut.Write("12\u20ac");
WScript.StdOut.WriteLine(" column " + WScript.StdOut.Column);
attempt("Read of output", function () { return WScript.StdOut.Read(1); });
attempt("AtEndOfStream of output", function () { return WScript.StdErr.AtEndOfStream; });
attempt("WriteLine to input", function () { return WScript.StdIn.WriteLine("x"); });
attempt("negative count", function () { return WScript.StdIn.Read(-1); });
attempt("no number", function () { return WScript.StdIn.Skip("x"); });
attempt("no lines", function () { return WScript.StdOut.WriteBlankLines(-1); });
attempt("end", function () {
  return [WScript.StdIn.AtEndOfStream, WScript.StdIn.AtEndOfLine, WScript.StdIn.Line, WScript.StdIn.Column];
});
attempt("none", function () { return "'" + WScript.StdIn.Read(0) + "'"; });
attempt("Read", function () { return WScript.StdIn.Read(1); });
attempt("ReadLine", function () { return WScript.StdIn.ReadLine(); });
attempt("ReadAll", function () { return WScript.StdIn.ReadAll(); });
attempt("Skip", function () { return WScript.StdIn.Skip(1); });
attempt("SkipLine", function () { return WScript.StdIn.SkipLine(); });
attempt("IsTerminal", function () {
  return [WScript.StdIn.IsTerminal, WScript.StdOut.IsTerminal, WScript.StdErr.IsTerminal];
});
attempt("assigned", function () { WScript.StdIn.Line = 3; });
WScript.StdIn.Close();
WScript.StdIn.Close();
attempt("closed ReadLine", function () { return WScript.StdIn.ReadLine(); });
attempt("closed Line", function () { return WScript.StdIn.Line; });
attempt("closed IsTerminal", function () { return WScript.StdIn.IsTerminal; });
WScript.StdOut.Close();
attempt("closed Write", function () { WScript.StdOut.Write("lost"); });
