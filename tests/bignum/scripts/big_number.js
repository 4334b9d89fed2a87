// PexBigNumber in a script: what fails, and that the script goes on with the number it had.
var n = new ActiveXObject("Vardeko.crypt.Number");
function attempt(name, f) {
  try {
    WScript.Echo(name + ":", f());
  } catch (e) {
    WScript.Echo(name + ": error", e.number, "[" + e.source + "]");
  }
}
attempt("text of zero", function () { return n.Value; });
attempt("hexadecimal text of zero", function () { return n.Hex; });
n.Value = "1,000";
attempt("Div by zero", function () { return n.Div(0); });
attempt("Mod by zero", function () { return n.Mod("0"); });
attempt("ModInv by zero", function () { return n.ModInv(null); });
attempt("ModExp by zero", function () { return n.ModExp(2, 0); });
attempt("truth as operand", function () { return n.Add(true); });
attempt("below zero as operand", function () { return n.Add(-1); });
attempt("new number of a truth", function () { return n.NewNumber(true); });
attempt("zero as an object", function () { return [n.Cmp(n.NewNumber()), n.Add(n.NewNumber()).Cmp(0)]; });
attempt("zero as a divisor", function () { return n.Div(n.NewNumber()); });
attempt("no random bytes", function () { return n.Random(0); });
attempt("value", function () { return n.Value; });
attempt("default member", function () { return "" + n; });
attempt("sum", function () { return n.Add(n).Value; });
attempt("bytes as operand", function () { return n.Add(new Uint8Array([1, 0])).Value; });
attempt("fraction as operand", function () { return n.Add(0.5 + 1e9).Value; });
n.Inc();
n.Dec(2);
attempt("stepped", function () { return n.Hex; });
attempt("order", function () { return [n.Cmp(998), n.Cmp(999), n.Cmp(1000)]; });
var below = n.Sub(2000);
attempt("below zero", function () { return [below.Value, below.Cmp(0)]; });
below.Value = "5";
attempt("still below zero", function () { return [below.Value, below.Cmp(0)]; });
n.Text = "AB";
attempt("letters", function () { return [n.Hex, n.Text, n.Text(-1).charCodeAt(0)]; });
n.Text(-2) = "AB";
attempt("letters of two bytes", function () { return [n.Hex, n.Text(-2)]; });
n.Random(4, true, true);
attempt("random", function () { return [n.Hex.length, n.Mod(2).Value, n.Cmp("3221225472")]; });
