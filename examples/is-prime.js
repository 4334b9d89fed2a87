// Tests numbers for primality.
//
//   is-prime.js NUMBER...       decimal, or hexadecimal with 0x
//
// After trial division by small primes follows the Miller-Rabin test, with the first 13 primes as
// bases, which is deterministic below 3.3 * 10^24, and with random bases above. A composite number
// passes those with a probability below 1 in 4^ROUNDS. An argument that is not a number is reported,
// the others are still tested, and the exit status is 1.

var PRIMES = [2, 3, 5, 7, 11, 13, 17, 19, 23, 29, 31, 37, 41];
var SURE_BELOW = "3317044064679887385961981";
var ROUNDS = 32;
var DIGITS_AT_ONCE = 1000;

var maker = new ActiveXObject("Vardeko.crypt.Number");

function usage() {
  WScript.Echo("Usage: " + WScript.ScriptName + " NUMBER...");
  WScript.Echo("Tells whether each number, decimal or behind 0x hexadecimal, is a prime.");
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

// n - 1 = odd * 2^twos
function split(n) {
  var odd = n.Sub(1), twos = 0;
  while (odd.Mod(2).Cmp(0) === 0) {
    odd = odd.Div(2);
    twos++;
  }
  return {odd: odd.Binary, twos: twos, last: n.Sub(1).Binary};
}

// Whether base, from 2 to n - 2, is a witness that the odd number n is composite.
function isWitness(base, n, parts) {
  var power = base.ModExp(parts.odd, n.Binary);
  if (power.Cmp(1) === 0 || power.Cmp(parts.last) === 0) return false;
  for (var i = 1; i < parts.twos; i++) {
    power = power.ModExp(2, n.Binary);
    if (power.Cmp(parts.last) === 0) return false;
  }
  return true;
}

// A base from 2 to n - 2 for n > 41.
function randomBase(n) {
  var base = maker.NewNumber();
  base.Random(Math.ceil(n.Hex.length / 2) + 8);
  return base.Mod(n.Sub(3).Binary).Add(2);
}

function verdict(n) {
  var i;
  if (n.Cmp(2) < 0) return "is not prime";
  for (i = 0; i < PRIMES.length; i++) {
    if (n.Cmp(PRIMES[i]) === 0) return "is prime";
    if (n.Mod(PRIMES[i]).Cmp(0) === 0) return "is not prime: " + PRIMES[i] + " divides it";
  }
  var parts = split(n);
  for (i = 0; i < PRIMES.length; i++) {
    if (isWitness(maker.NewNumber(PRIMES[i]), n, parts)) return "is not prime";
  }
  if (n.Cmp(SURE_BELOW) < 0) return "is prime";
  for (i = 0; i < ROUNDS; i++) {
    if (isWitness(randomBase(n), n, parts)) return "is not prime";
  }
  return "is prime, almost certainly";
}

function main() {
  var words = WScript.Arguments;
  if (words.length === 0) usage();
  var status = 0;
  for (var i = 0; i < words.length; i++) {
    try {
      WScript.Echo(words(i) + " " + verdict(read(words(i))));
    } catch (e) {
      complain(WScript.ScriptName + ": " + (e.description || e.message || "error " + e.number));
      status = 1;
    }
  }
  WScript.Quit(status);
}

main();
