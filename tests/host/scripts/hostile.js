// Nothing that a script does to the host's objects may crash the host.
var o = new ActiveXObject("Fake.Object"), n = 0;
function attempt(f) {
  n++;
  try { WScript.Echo(n, typeof f()); } catch (e) { WScript.Echo(n, "" + e); }
}
attempt(function () { return Object.freeze(o).Count(1); });
attempt(function () { return Object.setPrototypeOf(o, null).Count(1); });
attempt(function () { return JSON.stringify({ a: o }); });
attempt(function () { with (o) { return Count(1, 2, 3); } });
attempt(function () { return Reflect.get(o, "Count")(1); });
attempt(function () { return Reflect.construct(o, []); });
attempt(function () { return o.Count.apply(null, new Array(100000)); });
attempt(function () { return Function.prototype.apply.call(o, null, new Array(70000)); });
attempt(function () { return o[Symbol("x")]; });
attempt(function () { o[Symbol("x")] = 1; });
attempt(function () { return o["()="]; });
function assignmentAccess(which) {
  return Object.getOwnPropertyDescriptor(Object.getPrototypeOf(o["Item()="](1)), "value")[which];
}
attempt(function () { return assignmentAccess("get").call({}); });
attempt(function () { return assignmentAccess("set").call(5, 1); });
attempt(function () { WScript.Echo({ toString: function () { throw 1; } }); });
attempt(function () { WScript.Echo = 5; });
attempt(function () {
  var s = WScript.MemoryStream(new Uint8Array(10));
  return s.Read({ valueOf: function () { s.Close(); return 5; } });
});
attempt(function () { var s = WScript.MemoryStream(new Uint8Array(100)); return s.CopyTo(s); });
attempt(function () {
  return VBArray.prototype.getItem.apply(new VBArray(new Uint8Array(3)), new Array(200));
});
attempt(function () { var v = {}; v.valueOf = function () { return o.DefaultOf(v); }; return o.DefaultOf(v); });
attempt(function () { o.Value = o; return "" + o; });
o.Value = 0;
attempt(function () { return o.DefaultOf(new Proxy({}, { get: function () { throw new Error("trap"); } })); });
attempt(function () { return new ActiveXObject({ toString: function () { throw new Error("text"); } }); });
attempt(function () { throw new Proxy(new Error("proxied"), {}); });
attempt(function () {
  o.CallBack(function () {
    var e = new Error("x");
    Object.defineProperty(e, "number", { get: function () { throw 1; } });
    throw e;
  });
});
attempt(function () { Object.prototype.value = 3; Object.prototype.handle = 5; return o.Count(1); });
attempt(function () {
  var r = { toString: function () { WScript.Echo(r); } };
  WScript.Echo(r);
});
attempt(function () {
  var s = WScript.MemoryStream(), r = { valueOf: function () { return s.Seek(r); } };
  return s.Seek(r);
});
attempt(function () { return WScript.OpenFile("\ud800\udfff\udc00", "w+").Size; });
attempt(function () { return o["\ud800"]; });
attempt(function () { return o.Describe("\udc00\ud800"); });
for (var i = 0; i < 2000; i++) { var x = o.Child; x = o.Make("bytes"); x = o.Make("table"); }
x = null;
WScript.Echo(o.Live);
