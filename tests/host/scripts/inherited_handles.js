// An object that inherits from an object of the host is no handle: it cannot be used in its place, and
// its end frees nothing.
var fake = new ActiveXObject("Fake.Object");
function attempt(f) {
  try { return f(); } catch (e) { return e.number + " " + e.description; }
}
function heirsOf(object) {
  function F() {}
  F.prototype = object;
  var set = {};
  Object.setPrototypeOf(set, object);
  var called = function () {};
  Object.setPrototypeOf(called, object);
  return [Object.create(object), new F(), Object.create(Object.create(object)), set, called,
          Object.setPrototypeOf([], object)];
}
// Runs `use` on every heir and drops the heirs; all of them must give `answer`.
function tryHeirs(name, object, use, answer) {
  var heirs = heirsOf(object), odd = [];
  for (var i = 0; i < heirs.length; i++) {
    var got = attempt(function () { return use(heirs[i]); });
    if (got !== answer) odd.push(i + ": " + got);
  }
  heirs = null;
  WScript.Echo(name, odd.length ? odd.join("; ") : "nothing inherited");
}
var noMember = "-2146827850 Object doesn't support this property or method";

// A stream. If an heir freed its slot, one of the next streams would get it.
var first = WScript.OpenFile("first.bin", "w+");
var write = first.Write, close = first.Close;
tryHeirs("Size", first, function (x) { return x.Size; }, noMember);
tryHeirs("Position", first, function (x) { x.Position = 1; }, noMember);
tryHeirs("Write", first, function (x) { write.call(x, new Uint8Array([33])); }, noMember);
tryHeirs("Close", first, function (x) { close.call(x); }, noMember);
tryHeirs("CopyTo", first, function (x) { WScript.MemoryStream().CopyTo(x); }, "-2147352571 Type mismatch");
tryHeirs("StreamOf", first, function (x) { WScript.StreamOf(x); }, "-2147467262 No such interface supported");
tryHeirs("argument", first, function (x) { return fake.Describe(x); }, "9");
var others = [];
for (var i = 0; i < 20; i++) others.push(WScript.OpenFile("other" + i + ".bin", "w+"));
first.Write(new Uint8Array([65, 66, 67]));
for (i = 0; i < 20; i++) others[i].Write(new Uint8Array([i]));
WScript.Echo(first.Size, first.Position);
for (i = 0; i < 20; i++) if (others[i].Size !== 1) WScript.Echo("other", i, others[i].Size);
first.Close();
first = WScript.OpenFile("first.bin");
WScript.Echo(Array.prototype.join.call(first.Read(), ","));

// A script's proxy of a stream forwards reads; it is no stream itself.
var proxy = new Proxy(first, {});
WScript.Echo(proxy.Size, attempt(function () { write.call(proxy, new Uint8Array(1)); }), fake.Describe(proxy));
proxy = null;

// A stream whose prototype is another one keeps its own file, and its name in errors.
others[3].Close();
var second = WScript.OpenFile("other3.bin");
Object.setPrototypeOf(second, first);
WScript.Echo(second.Size, attempt(function () { second.Write(new Uint8Array(1)); }));
var unnamed = WScript.MemoryStream();
Object.setPrototypeOf(unnamed, first);
WScript.Echo(unnamed.Size, attempt(function () { unnamed.Seek(-5); }));
unnamed = second = null;
WScript.Echo(first.Size);

// Automation objects
var child = fake.Child;
tryHeirs("object", child, function (x) { return fake.Describe(x) === "9" && fake.Same(x) === x; }, true);
WScript.Echo(child.Count(1, 2), fake.Live);

// An object without IDispatch, and an array
var plain = fake.Make("plainobject"), table = fake.Make("table");
tryHeirs("unknown", plain, function (x) { return fake.Describe(x); }, "9");
tryHeirs("array", table, function (x) { return fake.Describe(x); }, "9");
tryHeirs("VBArray of an array", table, function (x) { return new VBArray(x).ubound(); }, "-2146823275 VBArray expected");
WScript.Echo(fake.Describe(plain), fake.Describe(table), new VBArray(table).getItem(2, 1));

// VBArray and a byte array's lower bound
var reader = new VBArray(table);
tryHeirs("VBArray", reader, function (x) { return reader.ubound.call(x); }, "-2146823275 VBArray expected");
tryHeirs("VBArray as argument", reader, function (x) { return fake.Describe(x); }, "9");
WScript.Echo(reader.ubound());
var from5 = fake.Make("bytesfrom5"), bytes = new Uint8Array(2);
Object.setPrototypeOf(bytes, from5);
WScript.Echo(fake.Describe(from5), fake.Describe(bytes));

// The reference that an assignment with arguments uses
fake.Item(1) = 7;
var place = fake["Item()="](1);
tryHeirs("place", place, function (x) { return x.value; }, noMember);
tryHeirs("place to assign to", place, function (x) { x.value = 9; }, noMember);
WScript.Echo(place.value, fake.Item(1));

// A function whose prototype is another function does not use its cached opcodes.
function calls(o) { return o.Value(1); }
function reads(o) { var kept = o.Value; return kept; }
fake.Value = 3;
calls(fake);
Object.setPrototypeOf(reads, calls);
WScript.Echo(reads(fake), calls(fake));
function readsFirst(o) { var kept = o.Value; return kept; }
function callsThen(o) { return o.Value(1); }
readsFirst(fake);
Object.setPrototypeOf(callsThen, readsFirst);
WScript.Echo(callsThen(fake), readsFirst(fake));

// The opcodes of a frozen function are cached too.
var frozen = Object.freeze(function (o) { return o.Value(1); });
WScript.Echo(frozen(fake), frozen(fake));

// WScript's own objects
WScript.Echo(typeof Object.create(WScript).Echo, WScript.Arguments.length);
