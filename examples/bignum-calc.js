// A calculator for integers of arbitrary size: one expression per argument, one result per line.
//
//   bignum-calc.js [--hex] EXPRESSION...
//
// Numbers are decimal, or hexadecimal with 0x. Operators by increasing precedence: + -, then * / %,
// then signs, then ^ (right-associative), then ! (factorial); also (...) and gcd(a, b). Division
// truncates towards zero, and the remainder has the sign of the dividend. a ^ b % m with b >= 0 and
// m > 0 is computed as a modular power, so b may be huge. --hex prints hexadecimal.
//
// If an expression cannot be computed the reason is printed, the others are still computed, and the
// exit status is 1.

var DIVISION_BY_ZERO = -2147352558;
var MOST_BITS = 4000000;
var MOST_FACTORIAL = 100000;
var DIGITS_AT_ONCE = 1000;

// Some hosts have no standard error stream.
function offersStdErr() {
  try {
    return typeof WScript.StdErr === "object" && WScript.StdErr !== null;
  } catch (e) {
    return false;
  }
}
var hasStdErr = offersStdErr();

function complain(text) {
  if (hasStdErr) {
    WScript.StdErr.WriteLine(text);
  } else {
    WScript.Echo(text);
  }
}

function usage() {
  WScript.Echo("Usage: " + WScript.ScriptName + " [--hex] EXPRESSION...");
  WScript.Echo("Prints the value of each expression of whole numbers, decimal or behind 0x");
  WScript.Echo("hexadecimal, with + - * / % ^ ! ( ) and gcd(a, b). --hex: results in hexadecimal.");
  WScript.Quit(2);
}

function fail(text) {
  throw new Error(1, text);
}

// Numbers. An operand loses its sign when it is read, so a value here is {minus, size}, where size is
// a PexBigNumber that is never negative. Operands are passed as bytes: an object would be read as its
// decimal text, which may lose the highest byte of a very long number.

var maker = new ActiveXObject("Vardeko.crypt.Number");

function isZero(number) {
  return number.Cmp(0) === 0;
}

// Takes the result of an operation; the object itself would keep its sign.
function make(minus, number) {
  var size = maker.NewNumber(number.Binary);
  return {minus: minus && !isZero(size), size: size};
}

function small(n) {
  return {minus: false, size: maker.NewNumber(n)};
}

// Long texts are read in parts: conversion of very long decimal text may lose its highest byte.
function decimal(digits) {
  if (digits.length <= DIGITS_AT_ONCE) return maker.NewNumber(digits);
  var low = Math.floor(digits.length / 2);
  var high = decimal(digits.substr(0, digits.length - low));
  var shifted = high.Mul(tenTo(low).Binary);
  return shifted.Add(decimal(digits.substr(digits.length - low)).Binary);
}

function tenTo(n) {
  return powerOf(maker.NewNumber(10), n);
}

function hexadecimal(digits) {
  var number = maker.NewNumber();
  number.Hex = digits;
  return number;
}

// The text of zero cannot be read.
function textOf(value, inHex) {
  if (isZero(value.size)) return inHex ? "0x0" : "0";
  return (value.minus ? "-" : "") + (inHex ? "0x" + value.size.Hex : value.size.Value);
}

function add(a, b) {
  if (a.minus === b.minus) return make(a.minus, a.size.Add(b.size.Binary));
  var difference = a.size.Sub(b.size.Binary);
  return make((difference.Cmp(0) < 0) !== a.minus, difference);
}

function negate(a) {
  return {minus: !a.minus && !isZero(a.size), size: a.size};
}

function multiply(a, b) {
  return make(a.minus !== b.minus, a.size.Mul(b.size.Binary));
}

function divide(a, b) {
  return make(a.minus !== b.minus, a.size.Div(b.size.Binary));
}

function remainder(a, b) {
  return make(a.minus, a.size.Mod(b.size.Binary));
}

function greatestCommonDivisor(a, b) {
  return make(false, a.size.GCD(b.size.Binary));
}

function bitsOf(number) {
  if (isZero(number)) return 0;
  var hex = number.Hex;
  return (hex.length - 1) * 4 + parseInt(hex.charAt(0), 16).toString(2).length;
}

// number^n for a small n >= 0, by squaring.
function powerOf(number, n) {
  var result = maker.NewNumber(1);
  for (;;) {
    if (n % 2 === 1) result = result.Mul(number.Binary);
    n = Math.floor(n / 2);
    if (n === 0) return result;
    number = number.Mul(number.Binary);
  }
}

function isOdd(number) {
  return !isZero(number.Mod(2));
}

function power(a, b) {
  if (b.minus) fail("the exponent of ^ is below zero");
  var minus = a.minus && isOdd(b.size);
  // Powers of 0 and 1 are short whatever the exponent.
  if (a.size.Cmp(1) <= 0) return isZero(b.size) ? small(1) : {minus: minus, size: a.size};
  if (b.size.Cmp(MOST_BITS) > 0 || (bitsOf(a.size) - 1) * number(b.size) > MOST_BITS) {
    fail("the result of ^ would have more than " + MOST_BITS + " bits");
  }
  return make(minus, powerOf(a.size, number(b.size)));
}

// The value as a number of the script, if it is small enough.
function number(size) {
  return isZero(size) ? 0 : Number(size.Value);
}

function powerModulo(a, b, m) {
  return make(a.minus && isOdd(b.size), a.size.ModExp(b.size.Binary, m.size.Binary));
}

function product(first, last) {
  if (last - first < 8) {
    var result = maker.NewNumber(first);
    for (var i = first + 1; i <= last; i++) result = result.Mul(i);
    return result;
  }
  var middle = Math.floor((first + last) / 2);
  return product(first, middle).Mul(product(middle + 1, last).Binary);
}

function factorial(a) {
  if (a.minus) fail("there is no factorial of a number below zero");
  if (a.size.Cmp(MOST_FACTORIAL) > 0) fail("! takes numbers up to " + MOST_FACTORIAL);
  return make(false, product(1, Math.max(1, number(a.size))));
}

// Expressions. A parser is {text, at}; it returns trees of function names and operands.

function peek(parser) {
  while (/^\s$/.test(parser.text.charAt(parser.at))) parser.at++;
  return parser.text.charAt(parser.at);
}

function unexpected(parser) {
  var c = peek(parser);
  fail(c === "" ? "something is missing at the end"
                : "cannot read \"" + c + "\" at character " + (parser.at + 1));
}

function expect(parser, c) {
  if (peek(parser) !== c) unexpected(parser);
  parser.at++;
}

function takeDigits(parser, isDigit) {
  var start = parser.at;
  while (isDigit.test(parser.text.charAt(parser.at))) parser.at++;
  if (parser.at === start) unexpected(parser);
  return parser.text.substring(start, parser.at);
}

function parseNumber(parser) {
  var isHex = /^0[xX]/.test(parser.text.substr(parser.at, 2));
  if (isHex) parser.at += 2;
  var digits = takeDigits(parser, isHex ? /^[0-9a-fA-F]$/ : /^[0-9]$/);
  return {value: {minus: false, size: isHex ? hexadecimal(digits) : decimal(digits)}};
}

function parseOperand(parser) {
  var c = peek(parser);
  if (/^[0-9]$/.test(c)) return parseNumber(parser);
  var tree;
  if (c === "(") {
    parser.at++;
    tree = parseSum(parser);
    expect(parser, ")");
    return tree;
  }
  if (parser.text.substr(parser.at, 3) !== "gcd") unexpected(parser);
  parser.at += 3;
  expect(parser, "(");
  tree = {apply: "gcd", left: parseSum(parser), right: null};
  expect(parser, ",");
  tree.right = parseSum(parser);
  expect(parser, ")");
  return tree;
}

function parsePower(parser) {
  var tree = parseOperand(parser);
  while (peek(parser) === "!") {
    parser.at++;
    tree = {apply: "!", left: tree};
  }
  if (peek(parser) !== "^") return tree;
  parser.at++;
  return {apply: "^", left: tree, right: parseSigned(parser)};
}

function parseSigned(parser) {
  var c = peek(parser);
  if (c !== "-" && c !== "+") return parsePower(parser);
  parser.at++;
  var tree = parseSigned(parser);
  return c === "+" ? tree : {apply: "negate", left: tree};
}

// Operands with operators of equal precedence between them.
function parseRow(parser, operators, parseOne) {
  var tree = parseOne(parser);
  for (var c = peek(parser); c !== "" && operators.indexOf(c) >= 0; c = peek(parser)) {
    parser.at++;
    tree = {apply: c, left: tree, right: parseOne(parser)};
  }
  return tree;
}

function parseProduct(parser) {
  return parseRow(parser, "*/%", parseSigned);
}

function parseSum(parser) {
  return parseRow(parser, "+-", parseProduct);
}

function parse(text) {
  var parser = {text: text, at: 0};
  var tree = parseSum(parser);
  if (peek(parser) !== "") unexpected(parser);
  return tree;
}

var FUNCTIONS = {
  "+": add,
  "-": function (a, b) { return add(a, negate(b)); },
  "*": multiply,
  "/": divide,
  "%": remainder,
  "^": power,
  "!": factorial,
  "gcd": greatestCommonDivisor,
  "negate": negate
};

function evaluate(tree) {
  if (tree.value) return tree.value;
  if (tree.apply === "%" && tree.left.apply === "^") {
    var base = evaluate(tree.left.left), exponent = evaluate(tree.left.right);
    var modulus = evaluate(tree.right);
    // A zero modulus fails here as it does below.
    if (!exponent.minus && !modulus.minus) return powerModulo(base, exponent, modulus);
    return remainder(power(base, exponent), modulus);
  }
  var left = evaluate(tree.left);
  return FUNCTIONS[tree.apply](left, tree.right ? evaluate(tree.right) : null);
}

function describe(error) {
  if (error.number === DIVISION_BY_ZERO) return "division by zero";
  return error.description || error.message || "error " + error.number;
}

function main() {
  var first = WScript.Arguments.length > 0 && WScript.Arguments(0) === "--hex" ? 1 : 0;
  if (WScript.Arguments.length === first) usage();
  var status = 0;
  for (var i = first; i < WScript.Arguments.length; i++) {
    var text = WScript.Arguments(i);
    try {
      WScript.Echo(textOf(evaluate(parse(text)), first === 1));
    } catch (e) {
      complain(WScript.ScriptName + ": " + text + ": " + describe(e));
      status = 1;
    }
  }
  WScript.Quit(status);
}

main();
