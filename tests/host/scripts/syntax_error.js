// status: 1
// The report is in the file with the extension errors.

WScript.Echo("never printed");
var x = = 1;
