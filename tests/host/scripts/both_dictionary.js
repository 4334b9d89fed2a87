// Scripting.Dictionary. The platform's own object is described in its scripting runtime's reference.
// Texts of errors are left out: Wine has none. So are keys that Wine refuses (booleans, null), and
// assignments to d(key), which Wine's engine refuses.
function numberOf(f) {
  try {
    f();
  } catch (e) {
    return "0x" + (e.number >>> 0).toString(16);
  }
  return "no error";
}
function list(array) {
  return new VBArray(array).toArray().join();
}

var d = new ActiveXObject("Scripting.Dictionary");
WScript.Echo("new: " + d.Count + " keys, mode " + d.CompareMode);
d.Add("one", 1);
d.add("two", "second");
d.ADD("", "empty text");
WScript.Echo("count: " + d.Count);
WScript.Echo("exists: " + d.Exists("one") + " " + d.Exists("One") + " " + d.Exists(""));
WScript.Echo("items: " + d.Item("one") + ", " + d("two") + ", " + d.Item(""));
WScript.Echo("added twice: " + numberOf(function () { d.Add("one", 2); }));
WScript.Echo("still: " + d("one"));

WScript.Echo("missing: " + d.Item("three") + ", then exists: " + d.Exists("three"));
d.Item("three") = 3;
d.Item("four") = 4;
WScript.Echo("assigned: " + d.Item("three") + " " + d.Item("four"));
WScript.Echo("keys: " + list(d.Keys()));
WScript.Echo("items: " + list(d.Items()));
WScript.Echo("bounds: " + new VBArray(d.Keys()).lbound() + " to " + new VBArray(d.Keys()).ubound());

WScript.Echo("mode with keys: " + numberOf(function () { d.CompareMode = 1; }));
WScript.Echo("existing key: " + numberOf(function () { d.Key("one") = "two"; }));
WScript.Echo("its own key: " + numberOf(function () { d.Key("one") = "one"; }));
d.Key("four") = "five";
WScript.Echo("renamed: " + d.Exists("four") + " " + d.Item("five"));
d.Key("none") = "six";
WScript.Echo("key of none: " + d.Exists("none") + " " + d.Exists("six") + " " + d.Item("six"));
WScript.Echo("reading Key: " + (numberOf(function () { return "" + d.Key("one"); }) != "no error"));

d.Remove("two");
WScript.Echo("removed: " + d.Exists("two") + " " + d.Count);
WScript.Echo("removed again: " + numberOf(function () { d.Remove("two"); }));
d.Add("two", 2);
WScript.Echo("keys: " + list(d.Keys()));
d.RemoveAll();
WScript.Echo("all removed: " + d.Count + " " + list(d.Keys()) + list(d.Items()));

d.CompareMode = 1;
d.Add("Letter Case", 1);
WScript.Echo("text mode: " + d.Exists("lETTER cASE") + " " + d.Exists("Letter  Case") + " " + d.CompareMode);
WScript.Echo("added twice: " + numberOf(function () { d.Add("LETTER CASE", 2); }));
WScript.Echo("keys: " + list(d.Keys()));
d.RemoveAll();
d.CompareMode = 2;
WScript.Echo("mode: " + d.CompareMode);
WScript.Echo("mode of text: " + (numberOf(function () { d.CompareMode = "x"; }) != "no error"));
d.CompareMode = 0;

d.Add(1, "number");
d.Add("1", "text");
d.Add(1.5, "fraction");
d.Add(4294967296, "large");
d.Add(-1, "negative");
d.Add(0, "zero");
WScript.Echo("numbers: " + d(1) + " " + d("1") + " " + d(1.5) + " " + d(4294967296) + " " + d(-1) + " " + d(0));
WScript.Echo("half and half: " + d.Item(0.5 + 0.5) + " " + d.Exists(2) + " " + d.Exists("1.5"));
WScript.Echo("negative zero: " + numberOf(function () { d.Add(-0.0, 1); }));
WScript.Echo("not a number: " + numberOf(function () { d.Add(NaN, 1); }));

var object = { name: "an object" }, other = { name: "an object" }, inner = new ActiveXObject("Scripting.Dictionary");
d.Add(object, "by identity");
d.Add(object.constructor, "a function");
d.Add(inner, "a dictionary");
WScript.Echo("objects: " + d(object) + " " + d.Exists(other) + " " + d(Object) + " " + d(inner));
WScript.Echo("added twice: " + numberOf(function () { d.Add(object, 1); }));
inner.Add("inside", 5);
d.Item("inner") = inner;
WScript.Echo("item object: " + d.Item("inner").Item("inside") + " " + d.Item("inner").Count);
d.Item("plain") = object;
WScript.Echo("same object: " + (d.Item("plain") === object));
d.Remove(object);
WScript.Echo("removed: " + d.Exists(object) + " " + d.Count);
