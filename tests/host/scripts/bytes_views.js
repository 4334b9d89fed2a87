// An array of wider elements that passes for a Uint8Array has more bytes than elements: the bytes
// behind a shorter array are not read.
var wide = new Uint16Array(1000);
wide.__proto__ = Uint8Array.prototype;
WScript.Echo(wide instanceof Uint8Array, wide.length);
function attempt(name, f) {
  try {
    WScript.Echo(name + ": " + f().length);
  } catch (e) {
    WScript.Echo(name + ": 0x" + (e.number >>> 0).toString(16));
  }
}
attempt("Xor", function () { return Bytes.Xor(wide, new Uint8Array(1000)); });
attempt("Equal", function () { return Bytes.Equal(wide, new Uint8Array(1000)); });
attempt("Xor of bytes", function () { return Bytes.Xor(new Uint8Array(1000), new Uint8Array(1000)); });
