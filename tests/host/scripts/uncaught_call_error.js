// status: 1
// The report is in the file with the extension errors.
var o = new ActiveXObject("Fake.Object");
WScript.Echo("before");

o.Fail(-2147211401, "Algorithm not found.", "A Class");
