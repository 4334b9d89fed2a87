// RSACrypt in a script: a key of 1024 bits, the ends of what it encrypts, and both ways back.
var rsa = new ActiveXObject("Vardeko.crypt.RSA");
var maker = new ActiveXObject("Vardeko.crypt.Number");
function hex(bytes) {
  return maker.NewNumber(bytes).Hex;
}
function attempt(name, f) {
  try {
    WScript.Echo(name + ":", f());
  } catch (e) {
    // Only the class's own messages have a source; the other texts are the host's.
    WScript.Echo(name + ": error " + e.number + (e.source ? " " + e.description + " " + e.source : ""));
  }
}
attempt("without a key", function () { return rsa.Encrypt(1); });
attempt("no size", function () { return rsa.CreateRandKeys(0); });
attempt("one byte, exact", function () { return rsa.CreateRandKeys(1, true); });
attempt("one byte", function () { rsa.CreateRandKeys(1); return hex(rsa.P) + " " + hex(rsa.Q); });

rsa.Reset();
rsa.CreateRandKeys(128, true);
attempt("bytes", function () { return [rsa.Modulus.length, rsa.BlockSize, hex(rsa.PublicExp)]; });
var n = maker.NewNumber(rsa.Modulus);
attempt("n is p * q", function () { return n.Cmp(maker.NewNumber(rsa.P).Mul(rsa.Q).Binary); });
attempt("the modulus itself", function () { return rsa.Encrypt(rsa.Modulus); });
n.Dec();
var encrypted = rsa.Encrypt(n.Binary);
attempt("n - 1 comes back", function () {
  return [hex(rsa.Decrypt(encrypted)) === n.Hex, hex(rsa.DecryptPQ(encrypted)) === n.Hex];
});
encrypted = rsa.Encrypt("0x12 34 56");
attempt("text is hexadecimal", function () {
  return [hex(rsa.Decrypt(encrypted)), hex(rsa.DecryptPQ(encrypted))];
});
attempt("a truth", function () { return rsa.Encrypt(true); });
attempt("below zero", function () { return rsa.Encrypt(-1); });

var other = new ActiveXObject("Vardeko.crypt.RSA.free");
other.PublicExp = rsa.PublicExp;
other.SecretExp = rsa.SecretExp;
attempt("no modulus", function () { return other.Decrypt(encrypted); });
other.P = rsa.P;
other.Q = rsa.Q;
attempt("no modulus, by primes", function () { return hex(other.DecryptPQ(encrypted)); });
other.P = 1;
attempt("one as a prime", function () { return other.DecryptPQ(encrypted); });
other.Modulus = rsa.Modulus;
other.SecretExp = 0;
attempt("secret exponent zero", function () { return hex(other.Decrypt(encrypted)); });
rsa.Reset();
attempt("after Reset", function () { return [rsa.Modulus.length, rsa.BlockSize]; });

rsa.PublicExp = 4;
rsa.CreateKeys("f4240", "1e8480");
attempt("from given numbers", function () {
  return [hex(rsa.P), hex(rsa.Q), hex(rsa.Modulus), hex(rsa.PublicExp), hex(rsa.SecretExp)];
});
