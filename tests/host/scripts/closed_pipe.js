// Prints until the pipe is closed, which is an error that a script can catch.
var line = "", said = "", i;
for (i = 0; i < 100; i++) line += "0123456789";
try {
  for (i = 0; i < 100000; i++) WScript.Echo(line);
} catch (e) {
  said = e.number + " " + e.description;
}
if (WScript.Arguments.length) throw new Error(said);
WScript.StdErr.WriteLine(said);
WScript.Quit(said === "-2147287011 The output cannot be written" ? 3 : 4);
