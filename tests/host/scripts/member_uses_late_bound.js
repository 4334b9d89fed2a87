// Members without type information. The script compiles no code: the host knows its calls and reads
// by its text.
var o = new ActiveXObject("Fake.Object"), p = new ActiveXObject("Fake.Object");
// Only called
o.Item(1) = 10;
p.Item(1) = 20;
WScript.Echo(o.Item(1), p.Item(1), o.item(1), o.ReadOnly(), o.Count(1, 2), p.Count());
// Only read
WScript.Echo(o.Live, o.Lookups, p.Lookups, o.LIVE);
// Both
var describe = o.Describe;
WScript.Echo(describe(1), o.Describe(2), describe.call(null, 3));
o.Value = 3;
WScript.Echo(o.Value, o.Value(1));
for (var i = 0; i < 3; i++) WScript.Echo(o.PutKind, o.Count(i));
// Many objects, so that the addresses of names and objects are reused
for (i = 0; i < 3000; i++) {
  var c = o.Child, name = "Name" + i;
  if (c.Count(1) !== 1 || c[name] !== undefined) WScript.Echo("child", i);
}
c = null;
WScript.Echo(o.Live);
