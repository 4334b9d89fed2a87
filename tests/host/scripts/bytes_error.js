// status: 1
// The report is in the file with the extension errors.
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
