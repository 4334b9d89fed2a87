var o = new ActiveXObject("Fake.Object");
WScript.Echo(o.Count(), o.count(1), o.COUNT(1, undefined, null));
WScript.Echo(o.ReadOnly, o.ReadOnly(), o["ReadOnly"]);
WScript.Echo(o.NoSuch, typeof o.NoSuch, "Count" in o, "NoSuch" in o);
var method = o.Count;
WScript.Echo(typeof method, method(1, 2, 3), method.call(null, 1), o.Count.apply(o, [1, 2]));
function tail() { return o.Count(1); }
function computed(name) { return o[name](1, 2); }
WScript.Echo(tail(), computed("Count"), [5].map(function (x) { return o.Count(x, x); }), eval("o.Count(1)"));
o.Item(1) = 10;
WScript.Echo(o.Item(1), o["Item"](1));
var before = o.Lookups;
for (var i = 0; i < 50; i++) o.Count(i);
WScript.Echo(o.Lookups - before);
o.PutKind = 1;
WScript.Echo(o.PutKind);
o.PutKind = o;
WScript.Echo(o.PutKind);
o.PutKind = {};
WScript.Echo(o.PutKind);
o.PutKind = new Uint8Array(1);
WScript.Echo(o.PutKind);
o.Value = o.Child;
WScript.Echo(o.Value.Count(1, 2));
var keys = [];
for (var key in o) keys.push(key);
WScript.Echo(keys.length, Object.keys(o).length);
WScript.Echo(new ActiveXObject("{3b1f6a52-77c0-4d0e-8e21-6b9d401cf3a8}").Count(1));
