// VBArray: every member, and what it is not made of.
var dictionary = new ActiveXObject("Scripting.Dictionary");
dictionary.Add("a", 1);
dictionary.Add("b", "two");
dictionary.Add("c", new Date(0));
var items = new VBArray(dictionary.Items());
WScript.Echo(items.dimensions(), items.lbound(), items.ubound(), items.lbound(1), items.ubound(1));
WScript.Echo(items.getItem(0), items.getItem(1), items.getItem(2) instanceof Date, items.getItem(1.9), items.getItem("1"));
WScript.Echo(new VBArray(dictionary.Keys()).toArray().join(), items.toArray().length, items.toArray() instanceof Array);
var bytes = new VBArray(new Uint8Array([1, 2, 3]));
WScript.Echo(bytes.toArray(), bytes.ubound(), bytes.getItem(2));
WScript.Echo(new VBArray(new ActiveXObject("Scripting.Dictionary").Keys()).toArray().length,
             new VBArray(new ActiveXObject("Scripting.Dictionary").Keys()).ubound());
function failure(f) {
  try { return f(); } catch (e) { return e.number + " " + e.description; }
}
WScript.Echo(failure(function () { return items.getItem(3); }));
WScript.Echo(failure(function () { return items.getItem(-1); }));
WScript.Echo(failure(function () { return items.getItem(); }));
WScript.Echo(failure(function () { return items.getItem(0, 0); }));
WScript.Echo(failure(function () { return items.getItem(1e300); }));
WScript.Echo(failure(function () { return items.lbound(0); }));
WScript.Echo(failure(function () { return items.ubound(2); }));
WScript.Echo(failure(function () { return items.ubound(-1); }));
WScript.Echo(failure(function () { return new VBArray([1, 2]); }));
WScript.Echo(failure(function () { return new VBArray(dictionary); }));
WScript.Echo(failure(function () { return new VBArray("abc"); }));
WScript.Echo(failure(function () { return new VBArray(bytes); }));
WScript.Echo(failure(function () { return items.toArray.call(dictionary); }));
