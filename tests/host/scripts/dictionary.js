// What both_dictionary.js leaves out: texts of errors, kinds of keys, letter case beyond ASCII, the
// place of a renamed key, and many keys.
function errorOf(f) {
  try {
    f();
  } catch (e) {
    return "0x" + (e.number >>> 0).toString(16) + " " + e.description + " (" + e.source + ")";
  }
  return "no error";
}
function list(array) {
  return new VBArray(array).toArray().join();
}

var d = WScript.CreateObject("scripting.dictionary");
d("a") = 1;
d("b") = 2;
WScript.Echo(errorOf(function () { d.Add("a", 1); }));
WScript.Echo(errorOf(function () { d.Remove("c"); }));
WScript.Echo(errorOf(function () { d.CompareMode = 1; }));
WScript.Echo(errorOf(function () { d.Add(new Uint8Array(3), 1); }));
WScript.Echo(errorOf(function () { d.Exists(NaN); }));
WScript.Echo(errorOf(function () { d.Add("c"); }));
WScript.Echo(errorOf(function () { d.Nothing(); }));
d.Key("a") = "first";
WScript.Echo(list(d.Keys()) + " " + list(d.Items()));
d.RemoveAll();
WScript.Echo(errorOf(function () { d.CompareMode = -1; }) + ", " + d.CompareMode);

var keys = [null, undefined, true, false, 1, -1, 0, "", "1", new Date(1), new Date(0), 1 / 0, -1 / 0,
  9223372036854775808, 18446744073709551616, 1e300, {}, function () {}];
for (var i = 0; i < keys.length; i++) d.Add(keys[i], i);
for (i = 0; i < keys.length; i++) {
  if (d.Item(keys[i]) !== i) WScript.Echo("key " + i + " has item " + d.Item(keys[i]));
}
WScript.Echo(d.Count + " of " + keys.length + " kinds of keys");
WScript.Echo(d.Exists(new Date(1)) + " " + d.Exists(new Date(2)));
d(new Date(1)) = "a date";
WScript.Echo(d(new Date(1)) + " " + d.Count);

d.RemoveAll();
d.CompareMode = 1;
d.Add("\u00c4\u03a3", 1);
WScript.Echo(d.Exists("\u00e4\u03c3") + " " + d.Exists("\u00e4\u03c2") + " " + d.Exists("a\u03c3"));
d.RemoveAll();
d.CompareMode = 0;
d.Add("a\0b", 1);
d.Add("\ud800", 2);
WScript.Echo(d.Exists("a") + " " + d.Exists("a\0b") + " " + d.Exists("\ud801"));
d("array") = new Uint8Array([1, 2, 3]);
WScript.Echo(d("array")[2]);

d.RemoveAll();
for (i = 0; i < 20000; i++) d.Add("key " + i, i);
for (i = 0; i < 20000; i += 1000) if (d("key " + i) !== i) WScript.Echo("wrong: " + i);
// The time of a look-up does not depend on the number of keys: the least of several, because of
// other processes.
function timeOf(dictionary) {
  var least = 1e9, started, turn, j;
  for (turn = 0; turn < 5; turn++) {
    started = new Date();
    for (j = 0; j < 500; j++) dictionary.Exists("key 19999");
    least = Math.min(least, new Date() - started);
  }
  return least;
}
var small = new ActiveXObject("Scripting.Dictionary");
small.Add("key 19999", 1);
WScript.Echo(String(timeOf(d) < 5 * timeOf(small) + 50));
for (i = 0; i < 20000; i += 2) d.Remove("key " + i);
WScript.Echo(d.Count + " " + new VBArray(d.Keys()).getItem(9999));
