// status: 7
try {
  WScript.Echo("before");
  WScript.Quit(7);
} catch (e) {
  WScript.Echo("caught");
} finally {
  WScript.Echo("finally");
}
