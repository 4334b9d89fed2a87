// status: 1
// errors: .*bytes_error\.js\(14\): error 0x800A0005 \(-2146828283\): Bytes\.FromHex: "x" at character 2 is no hexadecimal digit
// An error of the library is where the script called it.
function place(work) {
  try {
    work();
  } catch (e) {
    return e.fileName.replace(/^.*\//, "") + " " + e.lineNumber + " " + (e instanceof Error);
  }
}
WScript.Echo(place(function () { Bytes.Slice("a", 1); }));
WScript.Echo(place(function () { [1].map(Bytes.ToHex); }));
WScript.Echo(place(Bytes.Random));
Bytes.FromHex("0x");
