// Error and its kin: the constructor with a number, the members, and the numbers of the language.
function show(what, e) {
  WScript.Echo(what + ": " + e.number + "|" + e.description + "|" + e.message + "|" + e.name + "|" +
               (e instanceof Error));
}
show("nothing", new Error());
show("text", new Error("text"));
show("number", new Error(5));
show("number and text", new Error(5, "text"));
show("text and number", new Error("text", 5));
show("number as text", new Error("5"));
show("fraction", new Error(5.5));
show("negative", new Error(-2146823281));
show("beyond 31 bits", new Error(4000000000, "x"));
show("null", new Error(null));
show("true", new Error(true));
show("null as text", new Error(1, null));
show("NaN", new Error(NaN, "x"));
show("object", new Error({}, "x"));
show("called", Error(7, "called"));
show("TypeError", new TypeError(5, "text"));
show("TypeError without number", new TypeError("text"));
show("RangeError", new RangeError(7, "x"));
show("SyntaxError", new SyntaxError("x"));
var e = new Error(3, "d");
e.message = "m";
show("new message", e);
e.description = "other";
show("new description", e);
e.number = 44;
e.name = "Own";
show("new number and name", e);
e = new Error(1, "with");
var keys = 0;
for (var key in e) keys++;
WScript.Echo(String(e.hasOwnProperty("number")), String(e.hasOwnProperty("description")),
             String(e.hasOwnProperty("message")), String(e.hasOwnProperty("name")));
WScript.Echo(String(new Error().constructor === Error), String(new TypeError().constructor === TypeError));
try {
  try { throw new Error(11, "thrown"); } catch (x) { throw x; }
} catch (x) { show("thrown twice", x); }

function numberOf(what, f) {
  try { f(); WScript.Echo(what + ": no error"); } catch (x) { WScript.Echo(what + ": " + x.number); }
}
numberOf("undefined name", function () { return undefinedName; });
numberOf("member of null", function () { return null.x; });
numberOf("member of undefined", function () { var u; u.x = 1; });
numberOf("no such method", function () { var o = {}; o.x(); });
numberOf("in", function () { return "x" in 5; });
numberOf("new object", function () { var o = {}; new o(); });
numberOf("array length", function () { return new Array(-1); });
numberOf("radix", function () { return (1).toString(99); });
numberOf("eval", function () { eval("("); });
numberOf("decodeURI", function () { decodeURI("%"); });
numberOf("number method", function () { Number.prototype.toString.call({}); });
numberOf("date method", function () { Date.prototype.getTime.call({}); });
numberOf("Function.apply", function () { Function.prototype.apply.call({}); });
numberOf("no such class", function () { new ActiveXObject("No.Such.Class"); });
numberOf("VBArray", function () { new VBArray(5); });
numberOf("VBArray of nothing", function () { new VBArray(); });
numberOf("VBArray.toArray", function () { VBArray.prototype.toArray.call({}); });
// wine leaves out: it reports E_FAIL, or the number of a missing member
numberOf("number called", function () { var f = 5; f(); });
numberOf("number called directly", function () { (5)(); });
numberOf("regular expression", function () { new RegExp("("); });
numberOf("quantifier", function () { new RegExp("*"); });
// wine continues
