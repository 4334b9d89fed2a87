// Wine changes the case of ASCII only, so that this is no script of both hosts.
// Texts of ASCII take another way than others, and so do long ones.
var mixed = "AZaz09@[`{ \u0000!";
WScript.Echo(mixed.toLowerCase() === "azaz09@[`{ \u0000!", mixed.toUpperCase() === "AZAZ09@[`{ \u0000!");
WScript.Echo("".toLowerCase() === "", "".toUpperCase() === "", "ABC".toLowerCase(), "abc".toUpperCase(5));
WScript.Echo("\u00C4\u00D6A\u03A9".toLowerCase() === "\u00E4\u00F6a\u03C9");
WScript.Echo("\u00E4\u00F6a\u03C9".toUpperCase() === "\u00C4\u00D6A\u03A9");
var i, text, lower;
for (i = 250; i < 260; i++) {
  text = new Array(i).join("X") + "Y";
  lower = new Array(i).join("x") + "y";
  if (text.toLowerCase() !== lower || lower.toUpperCase() !== text) WScript.Echo("wrong at " + i);
}
WScript.Echo(new String("Ab").toLowerCase(), String.prototype.toUpperCase.call(12 + "e"));
WScript.Echo(String.prototype.toLowerCase.call(true),
             String.prototype.toUpperCase.call({ toString: function () { return "obj"; } }));
WScript.Echo(String.prototype.toLowerCase.length, typeof "".toUpperCase);
var seen = [];
for (var name in "ab") seen.push(name);
WScript.Echo(seen.join().indexOf("Case"));
