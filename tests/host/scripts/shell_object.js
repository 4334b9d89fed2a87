// WScript.Shell, as it is on this system only.
function t(name, f) {
  var result;
  try {
    result = f();
  } catch (e) {
    result = "0x" + (e.number >>> 0).toString(16) + " " + e.description;
  }
  WScript.Echo(name + ": " + result);
}
function write(path, text) {
  var file = new ActiveXObject("ADODB.Stream");
  file.Charset = "us-ascii";
  file.Open();
  file.WriteText(text);
  file.SaveToFile(path, 2);
}
var shell = new ActiveXObject("wscript.shell.1"), process = shell.Environment("process");

WScript.Echo("-- refused");
t("Run", function () { shell.Run("true"); });
t("Exec", function () { shell.Exec("true"); });
t("Popup", function () { shell.Popup("text", 5, "title", 64); });
t("CreateShortcut", function () { shell.CreateShortcut("name.lnk"); });
t("RegRead", function () { shell.RegRead("HKCU\\Name"); });
t("RegWrite", function () { shell.RegWrite("HKCU\\Name", 1, "REG_DWORD"); });
t("RegDelete", function () { shell.RegDelete("HKCU\\Name"); });
t("LogEvent", function () { shell.LogEvent(4, "text"); });
t("AppActivate", function () { shell.AppActivate("title"); });
t("SendKeys", function () { shell.SendKeys("a"); });
t("Environment", function () { shell.Environment.Count(); });
t("Environment SYSTEM", function () { shell.Environment("System"); });
t("Environment USER", function () { shell.Environment("USER"); });
t("Environment VOLATILE", function () { shell.Environment("VOLATILE"); });
t("Environment of another type", function () { shell.Environment("OTHER"); });

WScript.Echo("-- variables");
process("Name_x") = "caf\u00e9 \u20ac";
t("text", function () { return escape(process("NAME_X")) + " " + escape(WScript.EnvironmentVariable("Name_x")); });
process("NAME_X") = "";
t("empty", function () { return "[" + process("Name_x") + "] " + (WScript.EnvironmentVariable("Name_x") === ""); });
t("no name", function () { process("") = "a"; });
t("a name with =", function () { process("a=b") = "a"; });
t("a zero in the name", function () { process("a\0") = "a"; });
t("a zero in the value", function () { process("name_x") = "a\0b"; });
t("removed of none", function () { return process.Remove("no such"); });
t("removed", function () { process.Remove("name_X"); return typeof WScript.EnvironmentVariable("Name_x"); });

WScript.Echo("-- folders");
var home = shell.CurrentDirectory, names = ["AllUsersDesktop", "AllUsersStartMenu", "AllUsersPrograms",
  "AllUsersStartup", "Desktop", "AppData", "PrintHood", "Templates", "Fonts", "NetHood", "StartMenu",
  "SendTo", "Recent", "Startup", "Favorites", "MyDocuments", "Programs", "Other"];
function list() {
  for (var i = 0; i < names.length; i++) {
    WScript.Echo(names[i] + ": " + shell.SpecialFolders(names[i]).replace(home, "~"));
  }
}
process("HOME") = home;
process.Remove("XDG_DATA_HOME");
process.Remove("XDG_CONFIG_HOME");
list();
names = ["Desktop", "AppData", "Templates", "Fonts", "MyDocuments"];
process("XDG_CONFIG_HOME") = home;
process("XDG_DATA_HOME") = "relative";
write("user-dirs.dirs", '# comment\nXDG_DESKTOP_DIR="$HOME/The \\"desk\\""\n XDG_TEMPLATES_DIR="/templates/"\n' +
  'XDG_DOCUMENTS_DIR="relative"\nXDG_DESKTOP="/wrong"\nXDG_DOCUMENTS_DIR=/unquoted\n');
list();
process("HOME") = "";
process.Remove("XDG_CONFIG_HOME");
list();
t("0", function () { return "[" + shell.SpecialFolders(0) + "]"; });
t("-1", function () { return shell.SpecialFolders(-1); });
t("18", function () { return shell.SpecialFolders.Item(18); });
var enumerated = 0;
for (var e = new Enumerator(shell.SpecialFolders); !e.atEnd(); e.moveNext()) enumerated++;
WScript.Echo("enumerated: " + enumerated + " " + shell.SpecialFolders.Count() + " " + shell.SpecialFolders.length);

WScript.Echo("-- current folder");
t("none", function () { shell.CurrentDirectory = home + "/none"; });
t("empty", function () { shell.CurrentDirectory = ""; });
t("a zero", function () { shell.CurrentDirectory = home + "\0"; });
t("a file", function () { shell.CurrentDirectory = home + "/user-dirs.dirs"; });
t("a long one", function () { shell.CurrentDirectory = new Array(6000).join("x"); });
// A file that is made goes where its name led when it was opened.
var made = WScript.OpenFile("made.txt", "w");
made.Write(new Uint8Array([0x6d]));
shell.CurrentDirectory = "/";
made.Close();
t("file", function () { return WScript.OpenFile(home + "/made.txt").Read().length; });
t("folder", function () { return shell.CurrentDirectory; });
t("separated by \\", function () { shell.CurrentDirectory = "\\usr\\share"; return shell.CurrentDirectory; });
