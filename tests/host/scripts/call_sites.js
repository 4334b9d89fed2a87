// Calls and reads of a property are distinguished in every form. Value takes an argument in a call.
var o = new ActiveXObject("Fake.Object"), name = "Value", n = 0;
o.Value = 3;
function check(got, expected) {
  n++;
  if (got !== expected) WScript.Echo(n, got, "expected", expected);
}
var called = "value with 3:1", read = 3;
check(o.Value(1), called);
check(o["Value"](1), called);
check(o[name](1), called);
check((o.Value)(1), called);
check(((o[name]))(1), called);
check(o
  .Value
  (1), called);
check((function () { return o.Value(1); })(), called);
check((function () { var r = o.Value; return r; })(), read);
check((function (o, name) { return o[name](1); })(o, name), called);
check(eval("o.Value(1)"), called);
check(eval("o.Value"), read);
check(new Function("o", "return o.Value(1)")(o), called);
check(new Function("o", "return o.Value")(o), read);
check(o.Value, read);
check((0, o.Value), read);
check(o.Value + 1, 4);
check(o.Value === 3 ? o.Value(1) : 0, called);
check([o.Value, o.Value(1)].join(), "3,value with 3:1");
check({ a: o.Value }.a, read);
check(String(o.Value), "3");
check(String(o.Value(o.Value - 2)), called);
check(o.Same(o).Value(1), called);
check(o.Same(o).Value, read);
check(new (function () { this.a = o.Value(1); })().a, called);
check((function () { try { return o.Value(1); } finally { o.Value; } })(), called);
check((function () { for (var i in { a: 1 }) { if (true) (name) = "Value"; return o[name](1); } })(), called);
check((function () { switch (o.Value) { case 3: return o.Value(1); } })(), called);
check((function () { with ({ p: o }) { return p.Value(1); } })(), called);
check((function () { with ({ p: o }) { return p.Value; } })(), read);
check(typeof o.Value, "number");
check(delete { a: o.Value }.a, true);
check(o.Value++, 3);
check(o.Value, 4);
o.Value = 3;
check((o.Value += 1), 4);
o.Value = 3;
check((function () { return arguments[0].Value(1); })(o), called);
check([o][0].Value(1), called);
check([1].map(function (x) { return o.Value(x); })[0], called);
check(Reflect.get(o, "Value"), read);
// More constants and registers than the operands of an instruction can address
var body = "var t = 0;";
for (var i = 0; i < 600; i++) body += "var v" + i + " = " + (i + 0.5) + "; t += '" + i + "'.length;";
check(new Function("o", body + "return o.Value(1)")(o), called);
check(new Function("o", body + "return o.Value")(o), read);
check(new Function("o", body + "v599 = 'Value'; return o[v599](1)")(o), called);
check(new Function("o", body + "v599 = 'Value'; var p = o; return p[v599]")(o), read);
// Valid statements whose parenthesis follows a condition
var a, b = {}, c = "c";
if (true) (a) = 1;
for (i = 0; i < 3; i++) (b.c) = i;
for (var k in { x: 1 }) (b[k]) = a;
while (b.c) (b.c) = 0;
do (a) = 2; while (false) (b.d) = 5;
with (b) (c) = 7;
label: for (;;) { break label
(a) = 8; }
debugger
(b.e) = 9;
check([a, b.c, b.d, b.e, b.x].join(), "2,7,5,9,1");
WScript.Echo(n);
