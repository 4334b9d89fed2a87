"""What is measured of scripts: calls, which have the same text on every script host, and whole programs."""
import dataclasses
import os
import pathlib

EXAMPLE = pathlib.Path(__file__).resolve().parents[1] / "examples" / "hash-file.js"
HASH = 'var o = new ActiveXObject("Vardeko.crypt.HashObject"); o.InitHash("SHA256"); o.HashData("abc");'
BYTES = HASH + " var a = o.BinaryValue; o.Reset();"
NUMBER = 'var o = new ActiveXObject("Vardeko.crypt.Number"); o.Value = 7;'
NODE_HASH = 'var o = require("crypto").createHash("sha256");'

PRODUCT = """
function result(last, one, times) {
  var product = one, factors = 1, i;
  for (i = 2; i <= last; i++) {
    if (factors * i > 2147483647) {
      product = times(product, factors);
      factors = 1;
    }
    factors *= i;
  }
  return times(product, factors);
}
"""
POWER = """
function result(exponent, one, times) {
  var power = one, bit;
  for (bit = 0x40000000; bit >= 1; bit /= 2) {
    power = times(power, power);
    if (exponent & bit) power = times(power, 2);
  }
  return power;
}
"""
NUMBERS = """
var o = new ActiveXObject("Vardeko.crypt.Number").NewNumber(1);
// An object would be read as decimal text, of which more than 100,000 digits may lose the first.
function times(a, b) { return a.Mul(typeof b === "number" ? b : b.Binary); }
"""
NODE_NUMBERS = """
var o = 1n;
function times(a, b) { return a * BigInt(b); }
"""


@dataclasses.dataclass
class Call:
    """A call of scripts. `work` is the body of a loop over i, with the object o, the argument a and the variable
    x; `idle` is what of it is not the call, and its time is subtracted."""
    name: str
    setup: str
    work: str
    idle: str = "x = i;"
    output: str = "x"  # equal on the script hosts
    node: tuple = ()  # setup and work of a counterpart
    required: float = 3
    stretch: float = 0


CALLS = [
    Call("property read", HASH, "x = o.codePage;",
         node=('var o = require("crypto").createSecretKey(Buffer.alloc(16));', "x = o.symmetricKeySize;")),
    Call("property set", HASH, "o.codePage = i; x = i;", output="o.codePage >= 0"),
    Call("text read, 64 characters", HASH, "x = o.Value;"),
    Call("byte array read, 32 bytes", HASH, "x = o.BinaryValue;", output="o.Value"),
    Call("method without arguments", HASH, "o.Reset(); x = i;", output="o.Value"),
    Call("method with a number", NUMBER, "x = o.Cmp(7);"),
    Call("method with an object", NUMBER + " var a = o.NewNumber(7);", "x = o.Cmp(a);"),
    Call("method with text, 19 characters", BYTES, 'o.HashUpdate("The quick brown fox"); x = i;', output="o.HashSize",
         node=(NODE_HASH, 'o.update("The quick brown fox"); x = i;')),
    Call("method with a byte array, 32 bytes", BYTES, "o.HashUpdate(a); x = i;", output="o.HashSize",
         node=(NODE_HASH + " var a = Buffer.alloc(32);", "o.update(a); x = i;")),
    Call("method that returns an object", NUMBER, "x = o.Add(7);", output="x.Value"),
    Call("object made and released", "var o = null;", 'x = new ActiveXObject("Vardeko.crypt.HashObject");',
         output="x.codePage", node=('var o = require("crypto");', 'x = o.createHash("sha256");')),
    Call("factorial of 100000 as text", PRODUCT + NUMBERS, "x = String(result(100000, o, times).Value);",
         output="x.length + x.substr(0, 40)", required=1),
    Call("2 to the power 10000000 as text", POWER + NUMBERS, "x = String(result(10000000, o, times).Value);",
         output="x.length + x.substr(0, 40)", required=1,
         node=(POWER + NODE_NUMBERS, "x = String(result(10000000, o, times));")),
]


@dataclasses.dataclass
class Program:
    """A program that hashes files; its peers print the same digests."""
    name: str
    count: int
    size: int  # of each file
    required: float
    stretch: float = 1.0

    def write_files(self, folder):
        """The names of the files, of other random bytes each; those that are there already are kept."""
        folder.mkdir(parents=True, exist_ok=True)
        paths = [folder / f"{number}" for number in range(self.count)]
        for path in paths:
            if not path.exists() or path.stat().st_size != self.size:
                path.write_bytes(os.urandom(self.size))
        return [str(path) for path in paths]

    @staticmethod
    def commands(host):
        return {"ours": [host, str(EXAMPLE), "SHA256"], "openssl dgst": ["openssl", "dgst", "-sha256"],
                "sha256sum": ["sha256sum"]}


PROGRAMS = [
    Program("SHA-256 of a file of 300 MB", 1, 300_000_000, 0.95),
    Program("SHA-256 of 10000 files of 1 KB", 10000, 1000, 0.9),
]
