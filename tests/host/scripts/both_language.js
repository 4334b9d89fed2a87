// arguments: one|two words|three%
// status: 3
// What scripts of every host rely on: the language, output and arguments.
WScript.Echo("text", 1, 1.5, [1, 2].join("+"));
// wine leaves out: Echo without arguments is an error there
WScript.Echo();
// wine continues
WScript.Echo(WScript.Arguments.length, WScript.Arguments.Count());
for (var i = 0; i < WScript.Arguments.length; i++) {
  WScript.Echo(WScript.Arguments(i) + "|" + WScript.Arguments.Item(i));
}
WScript.Echo(WScript.ScriptName, WScript.ScriptFullName.length > WScript.ScriptName.length);
try {
  undefinedFunction();
} catch (e) {
  WScript.Echo(e instanceof Error, typeof e.message);
} finally {
  WScript.Echo("finally");
}
WScript.Echo("a-b-c".split("-").length, "abc".replace(/b/g, "[$&]"), parseInt("0x1F", 16));
// wine leaves out: it has no streams of bytes
WScript.Echo(typeof WScript.MemoryStream, WScript.MemoryStream().Size);
// wine continues
WScript.Quit(3);
WScript.Echo("not reached");
