var o = new ActiveXObject("Fake.Object");
var values = [
  undefined, null, true, false, 0, -0, 1, -1, 2147483647, -2147483648, 2147483648, -2147483649, 1.5,
  1e300, "", "a\0b", "\u00e9\u20ac", "\ud83d\ude00", "\ud800", "\udc00x", new Date(2000, 0, 1, 12),
  new Date(1899, 11, 29, 18), new Uint8Array([1, 2, 3]), new Uint8Array(0), new ArrayBuffer(2),
  new Uint8Array([1, 2, 3]).subarray(1, 2), {}, [1], function () {}, /x/, new String("s"), o,
  WScript.MemoryStream(), new VBArray(new Uint8Array(4))
];
for (var i = 0; i < values.length; i++) WScript.Echo(i, o.Describe(values[i]));
WScript.Echo(isNaN(o.Same(NaN)), o.Same(Infinity));
try { o.Describe(Symbol("s")); } catch (e) { WScript.Echo(e.number, e.description); }
