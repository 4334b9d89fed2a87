// status: 1
// The report is in the file with the extension errors.
WScript.Echo("before");

function fail() { throw new Error(-2147211401, "Boom, to the user."); }
fail();
