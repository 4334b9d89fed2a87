// Members with type information, in a script that computes keys and compiles code.
var h = new ActiveXObject("Vardeko.crypt.HashObject"), n = new ActiveXObject("Vardeko.crypt.Number");
function attempt(f) {
  try { return f(); } catch (e) { return e.number + " " + e.description; }
}
h.InitHash("SHA256");
h.HashData("abc");
n.Value = 65;
// The text calls these only; a key that the script computes reads them.
WScript.Echo(h.HashSize(), h["Hash" + "Size"], n.Text(65001), n["Te" + "xt"] === n.Text());
// The text reads these only; a key that the script computes calls them.
WScript.Echo(h.BlockSize, h["Block" + "Size"](), (h.BlockSize), h["Block" + "Size"]);
// A method that the text calls only: with a computed key it needs its object.
h.HashUpdate("x");
var update = h["Hash" + "Update"], other = new ActiveXObject("Vardeko.crypt.HashObject");
other.InitHash("MD5");
WScript.Echo(typeof update, attempt(function () { return update("y"); }));
WScript.Echo(typeof update.call(h, "y"), typeof update.call(other, "y"), attempt(function () { update.call(n, "y"); }));
WScript.Echo(attempt(function () { update.call({}, 1); }), attempt(function () { update.call(Object.create(h), 1); }));
other = null;
// A property that the text reads only is still one that can be called in compiled code.
WScript.Echo(h.codePage);
WScript.Echo(eval("h.codePage()"), h.codePage);
(function () { var local = 7; WScript.Echo(eval("local"), typeof eval, (0, eval)("typeof local")); })();
WScript.Echo(new Function("o", "return o.HashSize")(h), Function("o", "return o.HashSize()")(h));
WScript.Echo(Function.length, Function.name, Function.prototype.constructor === Function,
             attempt instanceof Function, (function () {}).constructor === Function,
             Object.keys(this).join().indexOf("eval"));
var indirect = eval;
WScript.Echo(indirect("1 + 1"), typeof new Function(), Function.prototype === Object.getPrototypeOf(attempt));
eval = 5;
WScript.Echo(eval, typeof this["ev" + "al"]);
