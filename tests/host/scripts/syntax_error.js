// status: 1
// errors: .*/scripts/syntax_error\.js\(5\): error 0x800A03EA \(-2146827286\): SyntaxError: .*

WScript.Echo("never printed");
var x = = 1;
