// Prints BASE to the power EXPONENT modulo MODULUS.
//
//   power-mod.js BASE EXPONENT MODULUS      decimal, or hexadecimal with 0x

var DIVISION_BY_ZERO = -2147352558;
var DIGITS_AT_ONCE = 1000;

var maker = new ActiveXObject("Vardeko.crypt.Number");

function usage() {
  WScript.Echo("Usage: " + WScript.ScriptName + " BASE EXPONENT MODULUS");
  WScript.Echo("Prints BASE to the power EXPONENT modulo MODULUS. The numbers are whole and not");
  WScript.Echo("below zero, decimal or behind 0x hexadecimal.");
  WScript.Quit(2);
}

// Some hosts have no standard error stream.
function complain(text) {
  var stream = null;
  try {
    stream = WScript.StdErr;
  } catch (e) {}
  if (stream) {
    stream.WriteLine(text);
  } else {
    WScript.Echo(text);
  }
}

// Long texts are read in parts: conversion of very long decimal text may lose its highest byte.
function decimal(digits) {
  if (digits.length <= DIGITS_AT_ONCE) return maker.NewNumber(digits);
  var low = DIGITS_AT_ONCE, scale = "1";
  while (scale.length <= low) scale += "0";
  var high = decimal(digits.substr(0, digits.length - low));
  return high.Mul(scale).Add(digits.substr(digits.length - low));
}

function read(text) {
  if (/^[0-9]+$/.test(text)) return decimal(text);
  if (!/^0[xX][0-9a-fA-F]+$/.test(text)) throw new Error(1, "cannot read the number " + text);
  var number = maker.NewNumber();
  number.Hex = text.substr(2);
  return number;
}

function main() {
  var words = WScript.Arguments;
  if (words.length !== 3) usage();
  try {
    // Operands are passed as bytes: an object would be read as its decimal text, which may lose the
    // highest byte of a very long number.
    var result = read(words(0)).ModExp(read(words(1)).Binary, read(words(2)).Binary);
    WScript.Echo(result.Cmp(0) === 0 ? "0" : result.Value);
  } catch (e) {
    complain(WScript.ScriptName + ": " +
             (e.number === DIVISION_BY_ZERO ? "the modulus is zero" : e.description || e.message));
    WScript.Quit(1);
  }
}

main();
