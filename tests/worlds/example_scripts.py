"""Runs every example on both hosts: output, status and the files that it writes are the same.

  example_scripts.py EXAMPLES HOST SCRATCH

ROWS has the runs, at least one for each file of the folder. All runs of a host are in one folder, one
after the other. An example that the platform's host cannot run says so in its head:

  // Only on mirolta-host: REASON

Its runs must differ there, and are not compared.
"""
import pathlib
import re
import sys

import worlds

AES_KEY = "603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4"
DES_KEY = "0123456789abcdef23456789abcdef01456789abcdef0123"
MODULUS = "0xf123456789abcdef0fedcba987654321123456789abcdef0123456789abcdef1"
FILES = {
    "plain": bytes(range(256)) * 5 + b"the end",
    "empty": b"",
    "key.txt": b"0123456789abcdef\r\n",
}
# Of 256 secret exponents one has a byte less.
KEY_OF_512_BITS = (
    rb'\{\n  "bits": 512,\n  "n": "[89a-f][0-9a-f]{127}",\n  "e": "([0-9a-f]{2})+",\n'
    rb'  "d": "([0-9a-f]{2}){48,64}",\n  "p": "[89a-f][0-9a-f]{63}",\n  "q": "[89a-f][0-9a-f]{63}"\n\}\n')
MARK = re.compile(r"^// (Only on mirolta-host|Not with Wine): *(.*)$", re.MULTILINE)


class Row:
    """One run. `names` are the files that it writes. Files with random content are not compared, but for their
    length or, where that is random too, what they match: the runs that read them show that they are right. Lines
    that match `unlike` are left out."""

    def __init__(self, example, *arguments, names=(), of_files=False, is_random=False, unlike=None,
                 environment=None, shape=None):
        self.example = example
        self.arguments = arguments
        self.names = names
        self.of_files = of_files
        self.is_random = is_random
        self.shape = re.compile(shape) if shape else None
        self.unlike = re.compile(unlike) if unlike else None
        self.environment = environment

    def is_same_file(self, native, wine):
        """Whether two files are as alike as this run's may be; None for one that is not there."""
        if native is None or wine is None:
            return False
        if self.shape:
            return all(self.shape.fullmatch(data) for data in (native, wine))
        return len(native) == len(wine) if self.is_random else native == wine

    def lines(self, run):
        """What the run said. Not every host has a standard error stream."""
        lines = (run.output + run.errors).splitlines()
        return [line for line in lines if not (self.unlike and self.unlike.search(line))]


ROWS = [
    Row("shared.js"),
    Row("tour.js"),
    Row("tour.js", "list"),
    Row("tour.js", "none"),
    Row("bignum-calc.js"),
    Row("bignum-calc.js", "2^521 - 1", "gcd(2^60, 6^30) % 1009", "30!", "3^(2^200) % (10^40 + 7)",
        "(-7) % 3", "1 / 0", "2 +"),
    Row("bignum-calc.js", "--hex", "0xFFFFFFFFFFFFFFFF * 0x10001"),
    Row("factorial.js"),
    Row("factorial.js", "200"),
    Row("is-prime.js"),
    Row("is-prime.js", "2", "91", "1000000007", "0xFFFFFFFFFFFFFFC5",
        "170141183460469231731687303715884105727", "x"),
    Row("power-mod.js"),
    Row("power-mod.js", "3", "0x10000000000000001", "1000000000000000003"),
    Row("power-mod.js", "0x123456789abcdef0123456789abcdef", "0xfedcba987654321fedcba", MODULUS),
    Row("hash-file.js"),
    *(Row("hash-file.js", algorithm, "plain", "empty", of_files=True)
      for algorithm in ("MD5", "SHA1", "SHA256")),
    Row("hmac.js"),
    *(Row("hmac.js", algorithm, "key", "plain", of_files=True)
      for algorithm in ("MD5", "SHA1", "SHA256")),
    Row("hmac.js", "SHA256", "key", "-t", "what do ya want for nothing?"),
    Row("hmac.js", "--key-file", "key.txt", "SHA256", "plain", of_files=True),
    Row("hmac.js", "--key-env", "THE_KEY", "MD5", "-t", "text", environment={"THE_KEY": "secret"}),
    Row("encrypt-file.js"),
    Row("encrypt-file.js", "AES", AES_KEY, "plain", "aes", names=["aes"],
        of_files=True),
    Row("encrypt-file.js", "DES", DES_KEY, "plain", "des", names=["des"],
        of_files=True),
    Row("encrypt-file.js", "--key-file", "key.txt", "DES", "empty", "nothing", names=["nothing"],
        of_files=True),
    Row("encrypt-file.js", "AES", "00", "plain", "no-file"),
    Row("decrypt-file.js"),
    Row("decrypt-file.js", "AES", AES_KEY, "aes", "aes-back", names=["aes-back"],
        of_files=True),
    Row("decrypt-file.js", "--length", "1287", "DES", DES_KEY, "des", "des-back", names=["des-back"],
        of_files=True),
    Row("derive-key.js"),
    Row("derive-key.js", "SHA1", "password", "73616c74", "2", "20", unlike=r"^Beware|^hide it"),
    Row("derive-key.js", "SHA256", "--key-env", "THE_KEY", "73616c74", "1", "40",
        environment={"THE_KEY": "secret"}),
    Row("derive-key.js", "SHA1", "password", "7", "2", "20"),
    Row("selftest.js", unlike=r"^(digest|cipher) filter|^[0-9]+ cases, 0 failed"),
    Row("rsa-keygen.js"),
    Row("rsa-keygen.js", "512", "rsa.json", names=["rsa.json"], shape=KEY_OF_512_BITS,
        unlike=r"^Done in [0-9.]+ s\. |^Beware: whoever may read the folder"),
    Row("rsa-encrypt.js"),
    Row("rsa-encrypt.js", "rsa.json", "plain", "rsa", names=["rsa"], of_files=True,
        is_random=True),
    Row("rsa-decrypt.js"),
    Row("rsa-decrypt.js", "rsa.json", "rsa", "rsa-back", names=["rsa-back"],
        of_files=True),
    Row("sums.js"),
    *(Row("sums.js", "--algorithm", algorithm, "plain", "empty", of_files=True)
      for algorithm in ("MD5", "SHA1", "SHA256")),
    Row("sums.js", "--output", "list", "plain", "empty", names=["list"], of_files=True),
    Row("sums.js", "--check", "list", of_files=True),
    Row("show-bytes.js"),
    Row("show-bytes.js", "--escapes", "a\\u20ac\\u00e9\\u4e00\\0b", "65001", "1252", "-1", "-2", "99999"),
    Row("show-bytes.js", "--type", "integer", "-255", "20127"),
    Row("derive-key.js"),
    Row("derive-key.js", "SHA1", "--key-env", "THE_KEY", "73616c74", "50", "40",
        environment={"THE_KEY": "secret"}),
    Row("random-bytes.js"),
    Row("random-bytes.js", "20", unlike=r"^[0-9a-f]{40}$"),
    Row("random-bytes.js", "--output", "random", "20", names=["random"], of_files=True, is_random=True),
    Row("seal-file.js"),
    Row("seal-file.js", "--iterations", "3", "--key-file", "key.txt", "plain", "sealed", names=["sealed"],
        of_files=True, is_random=True),
    Row("open-file.js"),
    Row("open-file.js", "--key-file", "key.txt", "sealed", "opened", names=["opened"], of_files=True),
    # The stream filters are not tested there.
    Row("selftest.js", unlike=r"^(digest|cipher) filter |^[0-9]+ cases, 0 failed$"),
    Row("selftest.js", "--help"),
    Row("crypt-stream.js"),
    Row("crypt-stream.js", "encrypt", "AES", AES_KEY, "plain", "aes-stream"),
    Row("digest-while-copy.js"),
    Row("digest-while-copy.js", "plain", "copied"),
    Row("tee-digest.js"),
    Row("tee-digest.js", "SHA256", "plain", "one", "two"),
]
# Files of one run that must have the content of another.
COPIES = [("aes-back", "plain", 1287), ("des-back", "plain", 1287), ("rsa-back", "plain", 1287),
          ("opened", "plain", 1287)]


def content(path):
    return path.read_bytes() if path.exists() else None


def check(examples, host, scratch, rows=None, copies=None):
    examples = pathlib.Path(examples)
    rows = ROWS if rows is None else rows
    copies = COPIES if copies is None else copies
    report = worlds.Report()
    marks = {}
    for path in sorted(examples.glob("*.js")):
        found = MARK.findall(path.read_text("utf-8"))
        marks[path.name] = found[0][0] if found else None
        own = [row for row in rows if row.example == path.name]
        if not own:
            report.fail(path.name, "has no row in tests/worlds/example_scripts.py")
        if len(found) > 1 or found and not found[0][1]:
            report.fail(path.name, "more than one mark, or one without a reason")
        if marks[path.name] == "Not with Wine" and not any(row.of_files for row in own):
            report.fail(path.name, "a mark, and no run to which it applies")

    folders, runs = {}, {}
    for world in ("native", "wine"):
        folders[world] = worlds.new_folder(pathlib.Path(scratch) / world)
        for name, data in FILES.items():
            (folders[world] / name).write_bytes(data)
        runs[world] = [worlds.Run(" ".join([row.example, *row.arguments]), examples / row.example,
                                  folders[world], row.arguments, row.environment) for row in rows]
    worlds.run_natively(host, runs["native"])
    worlds.run_by_wine(scratch, runs["wine"])

    for row, native, wine in zip(rows, runs["native"], runs["wine"]):
        is_same = (native.status, row.lines(native)) == (wine.status, row.lines(wine))
        for name in row.names:
            native_file, wine_file = (content(folders[world] / name) for world in ("native", "wine"))
            if native_file is None:
                report.fail(native.name, f"writes no {name}")
            elif not row.is_same_file(native_file, wine_file):
                is_same = False
        mark = marks[row.example]
        if mark == "Only on mirolta-host" or mark == "Not with Wine" and row.of_files:
            if is_same:
                report.needless(native.name, "is the same with Wine, so the mark is not needed")
        elif not is_same:
            report.fail(native.name, f"status {wine.status} with Wine, natively {native.status}; "
                                     f"or other text, or other files ({' '.join(row.names)})")
            print("---- Wine", *row.lines(wine), "---- native", *row.lines(native), "----", sep="\n")
    for name, original, count in copies:
        if (content(folders["native"] / name) or b"")[:count] != content(folders["native"] / original):
            report.fail(name, f"is not {original}")
    report.end(f"{len(rows)} runs of {len(marks)} examples; marked: "
               f"{', '.join(name for name in marks if marks[name])}")


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    check(*sys.argv[1:])
