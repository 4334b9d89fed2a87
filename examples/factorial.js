// Prints N! = 1 * 2 * ... * N.
//
//   factorial.js N          N from 0 to 50000

var MOST = 50000;
var WORD = 2147483647;

function main() {
  var words = WScript.Arguments;
  if (words.length !== 1 || !/^[0-9]{1,9}$/.test(words(0)) || Number(words(0)) > MOST) {
    WScript.Echo("Usage: " + WScript.ScriptName + " N");
    WScript.Echo("Prints the factorial of N, a whole number from 0 to " + MOST + ".");
    WScript.Quit(2);
  }
  var last = Number(words(0));
  var result = new ActiveXObject("Vardeko.crypt.Number");
  result.Value = 1;
  // Factors are combined while their product is exact in a number of the script.
  var factors = 1;
  for (var i = 2; i <= last; i++) {
    if (factors * i > WORD) {
      result = result.Mul(factors);
      factors = 1;
    }
    factors *= i;
  }
  WScript.Echo(result.Mul(factors).Value);
}

main();
