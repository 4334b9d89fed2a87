var o = new ActiveXObject("Fake.Object");
WScript.Echo(o.Live, o.Child.Child.Live > 1, o.Live);
(function () { for (var i = 0; i < 1000; i++) { var c = o.Child; } })();
WScript.Echo(o.Live);
var method = o.Child.Count;
WScript.Echo(o.Live, method(1));
method = null;
WScript.Echo(o.Live);
// What automation held for the engine's garbage is garbage itself only when that is collected.
(function () {
  var held = { child: o.Child }, holder = { child: o.Child };
  held.itself = held;
  holder.itself = holder;
  holder.child.Value = held;
})();
WScript.Echo(o.Live);
CollectGarbage();
WScript.Echo(o.Live);
o.Value = { back: o };
WScript.Echo("cycles end with the engine");
