var o = new ActiveXObject("Fake.Object");
o.Value = 5;
WScript.Echo(o(), o + 1, String(o), +o, o == 5, o.valueOf() === 5, o.toString() === "5", o(7));
WScript.Echo(o.DefaultOf(o));
o.Value = "text";
WScript.Echo(o, o + "!", [o, o].join("-"));
WScript.Echo(o.DefaultOf({ valueOf: function () { return 42; } }));
WScript.Echo(o.DefaultOf({ toString: function () { return "by toString"; } }));
WScript.Echo(o.DefaultOf([1, 2]), o.DefaultOf(new String("s")), o.DefaultOf(new Boolean(true)));
WScript.Echo(typeof o.DefaultOf({ valueOf: function () { return null; } }), o.DefaultOf({}));
function attempt(f) {
  try { f(); WScript.Echo("no error"); } catch (e) { WScript.Echo(e, e.number, e.description); }
}
attempt(function () { o.DefaultOf({ valueOf: function () { throw new RangeError("inner"); } }); });
attempt(function () { o.DefaultOf({ valueOf: function () { throw "a text"; } }); });
attempt(function () { o.DefaultOf({ valueOf: function () { o.Fail(-2147211401, "deep", "src"); } }); });
attempt(function () { o.DefaultOf({ valueOf: function () { return {}; }, toString: null }); });
var itself = new ActiveXObject("Fake.Object");
attempt(function () { itself.Value = itself.Child; return String(itself.Value); });
