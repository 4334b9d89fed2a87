// Enumerator on a collection of an automation object.
var dictionary = new ActiveXObject("Scripting.Dictionary");
dictionary.Add("a", 1);
dictionary.Add("b", 2);
dictionary.Add("c", 3);
function walk(e) {
  var items = [];
  for (; !e.atEnd(); e.moveNext()) items.push(e.item());
  return items.join();
}
var e = new Enumerator(dictionary);
WScript.Echo(walk(e), String(e.atEnd()), typeof e.item());
e.moveNext();
e.moveNext();
WScript.Echo(String(e.atEnd()), typeof e.item());
e.moveFirst();
WScript.Echo(e.item(), e.item(), String(e.atEnd()), walk(e));
e.moveFirst();
e.moveNext();
e.moveFirst();
WScript.Echo(walk(e));
var one = new Enumerator(dictionary), other = new Enumerator(dictionary);
one.moveNext();
WScript.Echo(one.item(), other.item());
WScript.Echo(typeof e.moveFirst(), typeof e.moveNext(), String(e instanceof Enumerator),
             String(e.constructor === Enumerator));
function number(f) {
  try { f(); } catch (x) { return x.number; }
  return "no error";
}
WScript.Echo(number(function () { Enumerator.prototype.atEnd.call({}); }),
             number(function () { Enumerator.prototype.item.call(5); }),
             number(function () { Enumerator.prototype.moveNext.call(dictionary); }));
function fails(f) { return String(number(f) < 0); }
WScript.Echo(fails(function () { new Enumerator([1, 2]); }), fails(function () { new Enumerator({}); }),
             fails(function () { new Enumerator(null); }), fails(function () { new Enumerator(5); }),
             fails(function () { new Enumerator("abc"); }), fails(function () { new Enumerator(WScript); }));
WScript.Echo(walk(new Enumerator(new ActiveXObject("Scripting.Dictionary"))) === "" ? "empty" : "full");
// wine leaves out: it reports E_INVALIDARG and E_NOTIMPL, and ends at an Enumerator of nothing
WScript.Echo(number(function () { new Enumerator([1, 2]); }), number(function () { new Enumerator(null); }),
             number(function () { new Enumerator(WScript); }));
WScript.Echo(String(new Enumerator().atEnd()), typeof new Enumerator().item());
// wine continues
