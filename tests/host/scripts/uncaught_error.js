// status: 1
// errors: .*/scripts/uncaught_error\.js\(5\): error 0x80042777 \(-2147211401\): Boom, to the user\.
WScript.Echo("before");

function fail() { throw new Error(-2147211401, "Boom, to the user."); }
fail();
