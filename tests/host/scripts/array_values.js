var a = new VBArray(new Uint8Array([7, 8, 9]));
WScript.Echo(a.dimensions(), a.lbound(), a.lbound(1), a.ubound(), a.ubound(1), a.getItem(2));
WScript.Echo(a.toArray() instanceof Array, a.toArray(), a instanceof VBArray);
WScript.Echo(new VBArray(new Uint8Array(0)).toArray().length, new VBArray(new Uint8Array(0)).ubound());
function attempt(f) {
  try { f(); WScript.Echo("no error"); } catch (e) { WScript.Echo(e.number, e.description); }
}
attempt(function () { new VBArray([1, 2]); });
attempt(function () { new VBArray(); });
attempt(function () { VBArray.prototype.toArray.call({}); });
attempt(function () { VBArray.prototype.toArray.call(5); });
attempt(function () { a.getItem(3); });
attempt(function () { a.getItem(); });
attempt(function () { a.getItem(0, 0); });
attempt(function () { a.lbound(2); });
attempt(function () { a.ubound(0); });
