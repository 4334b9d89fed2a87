// WScript.Shell: what is the same on both systems. Wine lacks most of it: assigning variables, their
// number, folders by name. Left out for the systems' own: texts of errors, paths.
function failure(f) {
  try {
    f();
  } catch (e) {
    return "0x" + (e.number >>> 0).toString(16);
  }
  return "no error";
}
var shell = WScript.CreateObject("WScript.Shell"), process = shell.Environment("PROCESS");
WScript.Echo("variable: " + (process("PATH").length > 1) + " " + (process.Item("path") === process("PATH")));
WScript.Echo("none: [" + process("NO_SUCH_VARIABLE") + "][" + process("") + "]");
WScript.Echo("types in any case: " + (shell.environment("process").item("Path") === process("PATH")));

var texts = ["%NO_SUCH_VARIABLE%", "%%", "100 %", "%", "a % b % c", "%NO_SUCH_VARIABLE%PATH%", "%=%", "plain"];
for (var i = 0; i < texts.length; i++) {
  WScript.Echo("expanded: " + shell.ExpandEnvironmentStrings(texts[i]));
}
// The text that Wine returns has a zero at its end.
var expanded = shell.ExpandEnvironmentStrings("<%path%%PATH%>");
WScript.Echo("paths: " + (expanded.indexOf("<" + process("PATH") + process("PATH") + ">") === 0));

var folder = shell.CurrentDirectory;
WScript.Echo("missing folder: " + failure(function () { shell.CurrentDirectory = folder + "/no-such-folder"; }));
WScript.Echo("unchanged: " + (shell.CurrentDirectory === folder));
shell.CurrentDirectory = "..";
WScript.Echo("parent: " + (folder.indexOf(shell.CurrentDirectory) === 0 && shell.CurrentDirectory !== folder));
shell.CurrentDirectory = folder;
WScript.Echo("back: " + (shell.CurrentDirectory === folder));
// wine leaves out: these members are not implemented
process.Item("A_VARIABLE") = "one";
process("Another") = 12;
WScript.Echo("assigned: " + process("a_variable") + " " + process("ANOTHER") + " " + typeof process("Another"));
process.Item("a_VARIABLE") = "two";
WScript.Echo("assigned again: " + process.Item("A_VARIABLE") + " " + shell.ExpandEnvironmentStrings("[%A_Variable%]"));
var count = process.Count();
WScript.Echo("count: " + (count > 2) + " " + (process.length === count));
process.Remove("A_Variable");
WScript.Echo("removed: [" + process("A_VARIABLE") + "] " + (count - process.length));
var found = [], all = 0;
for (var e = new Enumerator(process); !e.atEnd(); e.moveNext()) {
  all++;
  if (/^another=/i.test(e.item())) found.push(e.item());
}
WScript.Echo("enumerated: " + found.join() + " " + (all === process.Count()));
WScript.Echo("unknown folder: [" + shell.SpecialFolders("No such folder") + "]");
var folders = shell.SpecialFolders;
WScript.Echo("documents: " + (folders("MyDocuments") === folders.Item("mydocuments")) + " " + typeof folders("MyDocuments"));
WScript.Echo("folders: " + (folders.Count() === folders.length) + " " + typeof folders(0) + " " + failure(function () { folders(1000); }));
// wine continues
