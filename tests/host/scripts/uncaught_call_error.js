// status: 1
// errors: .*/scripts/uncaught_call_error\.js\(6\): error 0x80042777 \(-2147211401\): A Class: Algorithm not found\.
var o = new ActiveXObject("Fake.Object");
WScript.Echo("before");

o.Fail(-2147211401, "Algorithm not found.", "A Class");
