var o = new ActiveXObject("Fake.Object");
var b = o.Make("bytes");
WScript.Echo(b instanceof Uint8Array, b.length, b[2], new VBArray(b).toArray(), new Uint8Array(b)[1]);
WScript.Echo(o.Describe(b), o.Describe(new VBArray(b)), o.Make("nobytes").length);
var from5 = o.Make("bytesfrom5"), v = new VBArray(from5);
WScript.Echo(v.lbound(), v.ubound(), v.getItem(6), o.Describe(from5), from5.length);
var table = o.Make("table"), t = new VBArray(table);
WScript.Echo(t.dimensions(), t.lbound(1), t.ubound(1), t.lbound(2), t.ubound(2));
WScript.Echo(t.getItem(2, 1), t.toArray().join(" "), o.Describe(table), typeof table);
WScript.Echo(new VBArray(o.Make("variants")).toArray());
try { t.getItem(1); } catch (e) { WScript.Echo(e.number, e.description); }
try { t.getItem(3, 0); } catch (e) { WScript.Echo(e.number, e.description); }
WScript.Echo(new VBArray(o.Same(table)).getItem(1, 2));
var kinds = ["shorts", "doubles", "decimals"];
for (var i in kinds) WScript.Echo(kinds[i], new VBArray(o.Make(kinds[i])).toArray());
var deep = new VBArray(o.Make("deep")), indices = [];
for (var d = 0; d < deep.dimensions(); ++d) indices.push(d);
WScript.Echo(d, deep.lbound(d), deep.getItem.apply(deep, indices), deep.toArray());
