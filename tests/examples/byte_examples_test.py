"""The examples on bytes, keys, lists of digests and sealed files, compared with other implementations."""
import base64
import hashlib
import hmac
import os
import pathlib
import re
import signal
import stat
import subprocess
import unittest

from runner import EXAMPLES, SANITIZED, HostTest, limit_files

NEW_EXAMPLES = ("sums.js", "show-bytes.js", "selftest.js", "derive-key.js", "random-bytes.js", "seal-file.js",
                "open-file.js")

# A row of the self-test, and a text before or at the end of which a digit of its vectors can be spoiled:
# after a quotation mark the next one, else the last one of the text.
SELF_TEST_ROWS = {
    "bytes": 'var coded = ["", "',
    "MD5": "7707d6ae4e027c70eea2a935c2296f21",
    "SHA1": "34aa973cd4c4daa4f61eeb2bdbad27316534016f",
    "SHA256": "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0",
    "HMAC-MD5": 'var HMAC_MD5 = [\n    "',
    "HMAC-SHA1": 'var HMAC_SHA1 = [\n    "',
    "HMAC-SHA256": 'var HMAC_SHA256 = [\n    "',
    "AES-128": 'var AES_128 = [\n    "',
    "AES-192": 'var AES_192 = [\n    "',
    "AES-256": 'var AES_256 = [\n    "',
    "DES": 'var DES = [\n    "',
    "triple DES, 2 keys": 'var DES_2_KEYS = [\n    "',
    "triple DES, 3 keys": 'var DES_3_KEYS = [\n    "',
    "big numbers": "37975227936943673922808872755445627854565536638199",
    "number theory": "2b8324804fc1df0b2b4d00993dfbd7a72f431806ad2fe478c4ee1b274a0ea0b0",
    "RSA": "cC4hiUPoj9Eetdgtv3hF80EGrhuB",
    "RSA keys": "2000009000009 353023016129",
}
UNSPOILED_ROWS = ("random numbers", "digest filter", "cipher filter")

# RFC 6070, section 2, but for its longest case; RFC 7914, section 11.
PBKDF2_VECTORS = (
    ("SHA1", b"password", b"salt", 1, "0c60c80f961f0e71f3a9b524af6012062fe037a6"),
    ("SHA1", b"password", b"salt", 2, "ea6c014dc72d6f8ccd1ed92ace1d41f0d8de8957"),
    ("SHA1", b"password", b"salt", 4096, "4b007901b765489abead49d926f721d065a429c1"),
    ("SHA1", b"passwordPASSWORDpassword", b"saltSALTsaltSALTsaltSALTsaltSALTsalt", 4096,
     "3d2eec4fe41c849b80c8d83662c0e44a8b291a964cf2f07038"),
    ("SHA1", b"pass\0word", b"sa\0lt", 4096, "56fa6aa75548099dcc37d7f03425e0c3"),
    ("SHA256", b"passwd", b"salt", 1,
     "55ac046e56e3089fec1691c22544b605f94185216dde0465e68b9d57c20dacbc"
     "49ca9cccf179b645991664b39d77ef317c71b845b1e30bd509112041d3a19783"),
)

ODD_NAMES = (b"plain", b"two words", b" lead", b"trail ", b"new\nline", b"back\\slash", b"cr\rx", b"*star",
             b"\xff\xfebad", b"\xc3\xa9", b"\xed\xa0\x80", b"#hash", b"-dash", b"a(b) = c", b"\xf0\x9f\x98\x80",
             b"tab\there", b"\\", b"nul\\n")


class ByteExampleTest(HostTest):
    def example(self, name, *words, **options):
        return self.run_host(EXAMPLES / name, *words, **options)

    def expect(self, run, status, output=None, errors="(?s).*"):
        self.assertEqual(run.returncode, status, run)
        if output is not None:
            self.assertEqual(run.stdout, output, run)
        self.assertRegex(run.stderr, errors, run)


class Usage(ByteExampleTest):
    def test_help(self):
        for name in NEW_EXAMPLES:
            with self.subTest(name):
                run = self.example(name, "--help")
                self.expect(run, 0, errors="^$")
                self.assertTrue(run.stdout.startswith("Usage: " + name), run)

    def test_wrong_calls(self):
        for words in (
                ["sums.js"], ["sums.js", "--check"], ["sums.js", "--algorithm", "SHA512", "x"],
                ["sums.js", "--check", "--tag", "x"], ["sums.js", "--quiet", "x"], ["sums.js", "--nonsense", "x"],
                ["sums.js", "--check", "--output", "y", "x"], ["sums.js", "--binary", "--tag", "x"],
                ["sums.js", "x", "--output"],
                ["show-bytes.js"], ["show-bytes.js", "--type", "object", "x"], ["show-bytes.js", "--type"],
                ["selftest.js", "MD5"],
                ["derive-key.js"], ["derive-key.js", "SHA1", "p", "00", "0", "16"],
                ["derive-key.js", "SHA1", "p", "00", "1", "0"], ["derive-key.js", "SHA1", "p", "00", "x", "16"],
                ["derive-key.js", "SHA1", "p", "00", "100000001", "16"],
                ["derive-key.js", "SHA1", "p", "00", "1", "65537"],
                ["random-bytes.js"], ["random-bytes.js", "0"], ["random-bytes.js", "x"],
                ["random-bytes.js", "1048577"], ["random-bytes.js", "--base64", "--output", "x", "1"],
                ["seal-file.js"], ["seal-file.js", "p", "in"],
                ["seal-file.js", "--iterations", "0", "p", "in", "out"],
                ["seal-file.js", "--iterations", "10000001", "p", "in", "out"],
                ["seal-file.js", "--key-env", "K", "p", "in", "out"],
                ["open-file.js"], ["open-file.js", "p", "in"], ["open-file.js", "p", "in", "out", "more"]):
            with self.subTest(words):
                run = self.example(*words)
                self.expect(run, 2, errors="^$")
                self.assertTrue(run.stdout.startswith("Usage: " + words[0]), run)
                self.assertEqual(self.names(), [])


class SelfTest(ByteExampleTest):
    def rows(self, run):
        """The results by the names of the rows."""
        found = {}
        for line in run.stdout.splitlines()[1:]:
            row = re.match(r"^(.{18,}?) +(\d+)  (passed|\d+ FAILED)$", line)
            if row is None:
                break
            found[row[1].rstrip()] = (int(row[2]), row[3])
        return found

    def test_every_algorithm_passes(self):
        run = self.example("selftest.js")
        self.expect(run, 0, errors="^$")
        rows = self.rows(run)
        self.assertEqual(set(rows), set(SELF_TEST_ROWS) | set(UNSPOILED_ROWS))
        for name, (cases, result) in rows.items():
            self.assertGreater(cases, 3, name)
            self.assertEqual(result, "passed", name)
        total = sum(cases for cases, _ in rows.values())
        self.assertTrue(run.stdout.endswith(f"\n{total} cases, 0 failed\n"), run)

    def spoiled(self, text):
        """The self-test with another digit there."""
        script = (EXAMPLES / "selftest.js").read_text()
        self.assertEqual(script.count(text), 1, text)
        at = script.index(text) + len(text) - (0 if text.endswith('"') else 1)
        digit = script[at]
        spoiled = script[:at] + ("1" if digit != "1" else "2") + script[at + 1:]
        path = self.folder / "selftest.js"
        path.write_text(spoiled)
        return path

    def test_a_wrong_result_fails_its_row(self):
        for name, text in SELF_TEST_ROWS.items():
            with self.subTest(name):
                run = self.run_host(self.spoiled(text))
                self.expect(run, 1, errors="^$")
                failed = {row for row, (_, result) in self.rows(run).items() if result != "passed"}
                self.assertIn(name, failed)
                self.assertLessEqual(failed, {name, "digest filter", "cipher filter"})
                self.assertIn(f"\n{name}, ", run.stdout)
                self.assertNotIn(" 0 failed\n", run.stdout)


class DerivedKeys(ByteExampleTest):
    def test_published_keys(self):
        for algorithm, secret, salt, iterations, key in PBKDF2_VECTORS:
            with self.subTest(secret=secret, iterations=iterations):
                self.write("secret", secret)
                run = self.example("derive-key.js", algorithm, "--key-file", "secret", salt.hex(), iterations,
                                   len(key) // 2)
                self.expect(run, 0, key + "\n", "^$")

    def test_peer(self):
        for algorithm in ("MD5", "SHA1", "SHA256"):
            for count in (1, 15, 16, 17, 32, 33, 100):
                with self.subTest(algorithm, count=count):
                    run = self.example("derive-key.js", algorithm, "--key-env", "P", "00ff", 3, count,
                                       env={"P": "p\u00e4ss"})
                    key = hashlib.pbkdf2_hmac(algorithm.lower(), "p\u00e4ss".encode(), b"\0\xff", 3, count)
                    self.expect(run, 0, key.hex() + "\n", "^$")

    def test_a_pass_phrase_on_the_command_line_is_warned_of(self):
        run = self.example("derive-key.js", "SHA256", "p", "00", 1, 8)
        self.expect(run, 0, hashlib.pbkdf2_hmac("sha256", b"p", b"\0", 1, 8).hex() + "\n",
                    "^Beware: other users can see a pass phrase")

    def test_a_new_salt(self):
        salts = set()
        for _ in range(2):
            run = self.example("derive-key.js", "SHA256", "--key-env", "P", "new", 2, 16, env={"P": "x"})
            self.expect(run, 0, errors="^$")
            salt, key = re.fullmatch("salt: ([0-9a-f]{32})\nkey: ([0-9a-f]{32})\n", run.stdout).groups()
            self.assertEqual(key, hashlib.pbkdf2_hmac("sha256", b"x", bytes.fromhex(salt), 2, 16).hex())
            salts.add(salt)
        self.assertEqual(len(salts), 2)

    def test_wrong_input(self):
        for words, text in ((("sha256", "p", "00", 1, 8), "sha256: use MD5, SHA1 or SHA256"),
                            (("SHA1", "p", "0", 1, 8), "odd number of hexadecimal digits"),
                            (("SHA1", "p", "0g", 1, 8), '"g" at character 2'),
                            (("SHA1", "", "00", 1, 8), "the pass phrase is empty"),
                            (("SHA1", "--key-file", "missing", "00", 1, 8), "missing: File not found"),
                            (("SHA1", "--key-env", "NO_SUCH", "00", 1, 8), "NO_SUCH is not set")):
            with self.subTest(words):
                self.expect(self.example("derive-key.js", *words), 1, "", text)
        for content, text in ((b"", "is no key file"), (b"\n", "the pass phrase is empty")):
            self.write("secret", content)
            self.expect(self.example("derive-key.js", "SHA1", "--key-file", "secret", "00", 1, 8), 1, "", text)


class RandomBytes(ByteExampleTest):
    def test_forms(self):
        for count in (1, 2, 31, 1000):
            run = self.example("random-bytes.js", count)
            self.assertRegex(run.stdout, "^([0-9a-f]{2}){%d}\n$" % count)
            run = self.example("random-bytes.js", "--base64", count)
            self.assertEqual(len(base64.b64decode(run.stdout, validate=False)), count)
            self.example("random-bytes.js", "--output", f"file{count}", count)
            self.assertEqual(len(self.read(f"file{count}")), count)

    def test_every_call_gives_others(self):
        runs = {self.example("random-bytes.js", 16).stdout for _ in range(5)}
        self.assertEqual(len(runs), 5)

    def test_the_file(self):
        self.addCleanup(os.umask, os.umask(0))
        self.expect(self.example("random-bytes.js", "--output", "key", 32), 0, "", "^$")
        self.assertEqual(stat.S_IMODE((self.folder / "key").stat().st_mode), 0o600)
        old = self.read("key")
        self.expect(self.example("random-bytes.js", "--output", "key", 32), 1, "", "key: is there already")
        self.assertEqual(self.read("key"), old)
        run = self.example("random-bytes.js", "--output", "new", 4096, preexec_fn=limit_files(16))
        self.expect(run, 1, "", "new: Disk full")
        self.assertEqual(self.names(), ["key"])


class ShownBytes(ByteExampleTest):
    TEXT = "a\u20ac\u00e9\u4e00\U0001f600"

    def shown(self, *words):
        run = self.example("show-bytes.js", *words)
        self.expect(run, 0, errors="^$")
        lines = run.stdout.splitlines()
        self.assertEqual(lines[0], "code page  bytes")
        found = {}
        for line in lines[1:]:
            page, count, digits, remark = re.fullmatch(
                r" *(-?\d+)  (\d+): ((?:[0-9a-f]{2}(?: [0-9a-f]{2})*)?)(?:   \((.*)\))?", line).groups()
            found[int(page)] = (bytes.fromhex(digits), remark)
            self.assertEqual(len(bytes.fromhex(digits)), int(count))
        return found

    def test_text(self):
        lost = "not all characters are in this code page"
        found = self.shown(self.TEXT)
        self.assertEqual(found, {
            0: (self.TEXT.encode(), None), 65001: (self.TEXT.encode(), None),
            1252: (self.TEXT.encode("cp1252", "replace").replace(b"??", b"?")[:4] + found[1252][0][4:], lost),
            -1: (self.TEXT.encode("utf-16-le"), None), -2: (self.TEXT.encode("utf-16-be"), None)})
        self.assertEqual(self.shown("\u00e9", 850, 932), {850: (b"\x82", None), 932: (b"?", lost)})
        self.assertEqual(self.shown("", 65001), {65001: (b"", None)})

    def test_whole_blocks_and_zeros(self):
        for text in ("x" * 15, "x" * 16, "x" * 17, "x" * 5000):
            self.assertEqual(self.shown(text, 65001), {65001: (text.encode(), None)})
        self.assertEqual(self.shown("--escapes", "a\\u0100", -1, -2),
                         {-1: (b"a\0\0\1", None), -2: (b"\0a\1\0", None)})

    def test_escapes(self):
        self.assertEqual(self.shown("--escapes", "\\u20ac\\x41\\n\\\\", 65001),
                         {65001: (b"\xe2\x82\xacA\n\\", None)})
        self.assertEqual(self.shown("\\n", 65001), {65001: (b"\\n", None)})
        self.assertEqual(self.shown("--escapes", "a\\0b", 65001), {65001: (b"a", "ends at the zero character")})
        for text in ("\\q", "\\u12", "\\"):
            self.expect(self.example("show-bytes.js", "--escapes", text), 1, "", "cannot read the escape")

    def test_unknown_code_page(self):
        self.assertEqual(self.shown("a", 12345), {12345: (b"", "no such code page")})
        self.expect(self.example("show-bytes.js", "a", "UTF-8"), 1, "", "UTF-8: is no integer")

    def test_types(self):
        for kind, value, expected in (("integer", "255", b"255"), ("integer", "-1", b"-1"), ("real", "1.5", b"1.5"),
                                      ("real", "1e3", b"1000"), ("boolean", "true", b"-1"),
                                      ("boolean", "false", b"0"), ("text", "1.50", b"1.50")):
            with self.subTest(kind, value=value):
                self.assertEqual(self.shown("--type", kind, value, 20127), {20127: (expected, None)})
        self.assertEqual(self.shown("--type", "empty", 0), {0: (b"", None)})
        self.assertEqual(self.shown("--type", "date", "2020-01-02T00:00:00", 20127)[20127][1], None)
        self.expect(self.example("show-bytes.js", "--type", "null"), 1, "", "Type mismatch")
        for kind, value, text in (("integer", "1.5", "is no integer"), ("real", "1.5.5", "is no number"),
                                  ("boolean", "yes", "is neither true nor false"), ("date", "never", "is no date")):
            self.expect(self.example("show-bytes.js", "--type", kind, value), 1, "", text)


class Sums(ByteExampleTest):
    PROGRAMS = {"MD5": "md5sum", "SHA1": "sha1sum", "SHA256": "sha256sum"}

    def setUp(self):
        super().setUp()
        for count, name in enumerate(ODD_NAMES):
            (self.folder / os.fsdecode(name)).write_bytes(b"x" * count)
        self.odd = [os.fsdecode(name) for name in ODD_NAMES]

    def raw(self, *words):
        """The status, output and errors of the example, as bytes."""
        process = self.start([EXAMPLES / "sums.js", *words])
        output, errors = process.communicate(timeout=60)
        return process.returncode, output, errors

    def peer(self, algorithm, *words):
        run = subprocess.run([self.PROGRAMS[algorithm], *words], cwd=self.folder, capture_output=True)
        return run.returncode, run.stdout, run.stderr

    def test_lists(self):
        for algorithm in self.PROGRAMS:
            for flag, peer_flag in ((None, "--text"), ("--binary", "--binary"), ("--tag", "--tag")):
                with self.subTest(algorithm, flag=flag):
                    words = ["--algorithm", algorithm] + ([flag] if flag else [])
                    found = self.raw(*words, *self.odd)
                    self.assertEqual(found, self.peer(algorithm, peer_flag, "--", *self.odd))
                    self.assertEqual(self.raw(*words, "--output", "list", *self.odd), (0, b"", b""))
                    self.assertEqual(self.read("list"), found[1])

    def check(self, content, *flags, algorithm="SHA256", folder_list="list"):
        """Checks a list as the peer does: status, output and warnings are the same."""
        self.write(folder_list, content)
        status, output, errors = self.raw("--algorithm", algorithm, "--check", *flags, folder_list)
        peer_status, peer_output, peer_errors = self.peer(algorithm, "--check", *flags, folder_list)
        self.assertEqual((status, output), (peer_status, peer_output), errors + peer_errors)
        warnings = [re.findall(rb"(?:WARNING|improperly|no file was verified).*", text)
                    for text in (errors, peer_errors)]
        self.assertEqual(*warnings)
        return status, output, errors

    def test_checks(self):
        # Versions of the peer differ in which names they print escaped.
        names = [name for name in self.odd if not set(name) & {"\\", "\r"}]
        for algorithm, program in self.PROGRAMS.items():
            for flag in ("--text", "--binary", "--tag"):
                whole = subprocess.run([program, flag, "--", *names], cwd=self.folder, capture_output=True).stdout
                with self.subTest(algorithm, flag=flag):
                    status, output, errors = self.check(whole, algorithm=algorithm)
                    self.assertEqual((status, output.count(b": OK\n"), errors), (0, len(names), b""))

    def test_escaped_names(self):
        for flag in ("--text", "--tag"):
            whole = subprocess.run(["sha256sum", flag, "--", "cr\rx", "back\\slash", "new\nline", "nul\\n"],
                                   cwd=self.folder, capture_output=True).stdout
            if b"cr\\r" not in whole:  # an old peer, which does not escape it
                whole = whole.replace(whole.splitlines(keepends=True)[0], b"")
            self.write("list", whole)
            status, output, errors = self.raw("--check", "list")
            self.assertEqual((status, errors), (0, b""), output)
            self.assertIn(b"back\\slash: OK\n\\new\\nline: OK\nnul\\n: OK\n", output)

    def test_what_is_wrong_in_a_list(self):
        good = hashlib.sha256(b"").hexdigest().encode() + b"  plain\n"
        other = b"0" + good[1:]
        missing = good.replace(b"plain", b"missing")
        folder = good.replace(b"plain", b".")
        for content in (good, other, missing, folder, good + other, good + missing, good + b"junk\n",
                        b"junk\n", b"",
                        b"# comment\n" + good, b"\n" + good, good[:-1], good[:-1] + b"\r\n",
                        good.upper()[:64] + good[64:],
                        good.replace(b"  ", b" *"), good.replace(b"  ", b" "), good.replace(b"  ", b"\t "),
                        b" \t" + good, good[1:], b"a" + good, good.replace(b"  ", b"--"), good[:66] + b"\n",
                        b"\\" + good, b"\\" + good.replace(b"plain", b"pl\\ain"),
                        b"\\" + good.replace(b"n", b"n\\"),
                        b"SHA256 (plain) = " + good[:64] + b"\n", b"SHA256(plain)= " + good[:64] + b"\n",
                        b"SHA1 (plain) = " + good[:64] + b"\n", b"SHA256 (plain) " + good[:64] + b"\n",
                        b"SHA256 (plain) = " + other[:64] + b"\n",
                        good + good + other + missing + b"x\ny\n" + missing):
            for flags in ((), ("--quiet",), ("--status",), ("--warn",), ("--strict",), ("--ignore-missing",),
                          ("--ignore-missing", "--quiet"), ("--ignore-missing", "--strict", "--warn")):
                with self.subTest(content, flags=flags):
                    self.check(content, *flags)

    def test_status_is_silent(self):
        good = hashlib.sha256(b"").hexdigest().encode() + b"  plain\n"
        self.write("list", good + b"0" + good[1:])
        self.assertEqual(self.raw("--check", "--status", "list"), (1, b"", b""))

    def test_several_lists(self):
        good = hashlib.sha256(b"").hexdigest().encode() + b"  plain\n"
        self.write("good", good)
        self.write("bad", b"0" + good[1:])
        self.assertEqual(self.raw("--check", "bad", "good")[:2], (1, b"plain: FAILED\nplain: OK\n"))
        status, output, errors = self.raw("--check", "missing", "good")
        self.assertEqual((status, output), (1, b"plain: OK\n"))
        self.assertIn(b"sums.js: missing: File not found", errors)

    def test_files_that_cannot_be_read(self):
        status, output, errors = self.raw("plain", "missing", "two words")
        self.assertEqual(status, 1)
        self.assertEqual(output.count(b"\n"), 2)
        self.assertIn(b"sums.js: missing: File not found", errors)
        # Half a list does not replace a whole one.
        self.write("list", b"old")
        status, output, errors = self.raw("--output", "list", "plain", "missing")
        self.assertEqual((status, output, self.read("list")), (1, b"", b"old"))
        self.assertIn(b"list: not written", errors)
        self.assertIn(b"plain: is both input and output", self.raw("--output", "plain", "plain")[2])
        run = self.example("sums.js", "--output", "list", *self.odd[:4], preexec_fn=limit_files(100))
        self.expect(run, 1, "", "list: Disk full")
        self.assertEqual(self.read("list"), b"old")

    def test_standard_input(self):
        words = "$MIROLTA_TEST_HOST " + str(EXAMPLES / "sums.js")
        run = subprocess.run(["sh", "-c", f"printf abc | {words} - | tee list | {words} --check -"],
                             cwd=self.folder, capture_output=True, text=True)
        self.assertEqual(self.read("list").decode(), hashlib.sha256(b"abc").hexdigest() + "  -\n")
        self.assertIn("no properly formatted checksum lines found", run.stderr)


class SealedFiles(ByteExampleTest):
    HEADER, CODE = 28, 32
    SECRET = {"P": "p\u00e4ss phrase"}

    def seal(self, *words, env=None, **options):
        return self.example("seal-file.js", "--key-env", "P", "--iterations", "3", *words,
                            env=env or self.SECRET, **options)

    def open(self, *words, env=None, **options):
        return self.example("open-file.js", "--key-env", "P", *words, env=env or self.SECRET, **options)

    def keys(self, sealed, secret=None, iterations=3):
        return hashlib.pbkdf2_hmac("sha256", secret or self.SECRET["P"].encode(), sealed[12:self.HEADER],
                                   iterations, 64)

    def counter_mode(self, key, data):
        """The peer's counter mode."""
        run = subprocess.run(["openssl", "enc", "-aes-256-ctr", "-K", key.hex(), "-iv", "00" * 16],
                             input=data, capture_output=True, check=True)
        return run.stdout

    def test_every_length(self):
        for length in (0, 1, 15, 16, 17, 1000, (1 << 19) - 1, 1 << 19, (1 << 19) + 1, (1 << 21) + 5):
            with self.subTest(length):
                plain = os.urandom(length)
                self.write("plain", plain)
                self.expect(self.seal("plain", "sealed"), 0, f"sealed {length} bytes\n", "^$")
                sealed = self.read("sealed")
                self.assertEqual(len(sealed), self.HEADER + length + self.CODE)
                self.assertEqual(sealed[:12], b"MIROSEAL\0\0\0\3")
                keys = self.keys(sealed)
                self.assertEqual(self.counter_mode(keys[:32], sealed[self.HEADER:-self.CODE]), plain)
                self.assertEqual(hmac.new(keys[32:], sealed[:-self.CODE], "sha256").digest(), sealed[-self.CODE:])
                self.expect(self.open("sealed", "back"), 0, f"opened {length} bytes\n", "^$")
                self.assertEqual(self.read("back"), plain)

    def test_a_file_that_another_program_sealed(self):
        header = b"MIROSEAL" + (5).to_bytes(4, "big") + bytes(16)
        keys = self.keys(header, b"\0secret\n", 5)
        body = header + self.counter_mode(keys[:32], b"text")
        self.write("sealed", body + hmac.new(keys[32:], body, "sha256").digest())
        self.write("key", b"\0secret\n\n")
        self.expect(self.example("open-file.js", "--key-file", "key", "sealed", "back"), 0, "opened 4 bytes\n", "^$")
        self.assertEqual(self.read("back"), b"text")

    def test_every_file_has_its_own_keys(self):
        self.write("plain", bytes(100))
        for name in ("one", "two"):
            self.expect(self.seal("plain", name), 0)
        self.assertNotEqual(self.read("one")[12:], self.read("two")[12:])
        # The keystream does not repeat within a file.
        data = self.read("one")[self.HEADER:-self.CODE]
        self.assertEqual(len({data[i:i + 16] for i in range(0, 96, 16)}), 6)

    @unittest.skipIf(SANITIZED, "minutes in such a build, which runs the same code with few iterations")
    def test_usual_iterations(self):
        self.write("plain", b"x")
        run = self.example("seal-file.js", "pass", "plain", "sealed")
        self.expect(run, 0, "sealed 1 bytes\n", "^Beware: other users can see a pass phrase")
        self.assertEqual(int.from_bytes(self.read("sealed")[8:12], "big"), 200000)
        run = self.example("open-file.js", "pass", "sealed", "back")
        self.expect(run, 0, "opened 1 bytes\n", "^Beware")

    def refused(self, text, *words, env=None, **options):
        """Nothing is opened, and the old file stays."""
        self.write("out", b"old")
        before = self.names()
        run = self.open(*(words or ("sealed", "out")), env=env, **options)
        self.expect(run, 1, "", text)
        self.assertEqual(self.read("out"), b"old")
        self.assertEqual(self.names(), before)

    def test_a_changed_file_is_refused(self):
        self.write("plain", b"attack at dawn")
        self.expect(self.seal("plain", "sealed"), 0)
        sealed = self.read("sealed")
        wrong = "sealed: the pass phrase is wrong, or the file was changed"
        for at in (*range(8), 11, 12, 27, 28, 41, 42, len(sealed) - 1):
            with self.subTest(at):
                self.write("sealed", sealed[:at] + bytes([sealed[at] ^ 1]) + sealed[at + 1:])
                self.refused("was not made by seal-file.js" if at < 8 else wrong)
        for cut in (1, 14, 15, 40, len(sealed)):
            with self.subTest(cut=cut):
                self.write("sealed", sealed[:-cut])
                left = len(sealed) - cut
                self.refused("was not made by seal-file.js" if left < self.HEADER else
                             "is cut short" if left < self.HEADER + self.CODE else wrong)
        self.write("sealed", sealed + b"x")
        self.refused(wrong)
        for iterations in (0, 10000001, 0xFFFFFFFF):
            self.write("sealed", sealed[:8] + iterations.to_bytes(4, "big") + sealed[12:])
            self.refused("is damaged")
        self.write("sealed", sealed)
        self.refused(wrong, env={"P": "p\u00e4ss phrase "})
        self.expect(self.open("sealed", "out"), 0)

    def test_a_file_that_changes_between_the_passes_is_refused(self):
        # A pipe cannot be read a second time.
        self.write("plain", bytes(10))
        self.expect(self.seal("plain", "sealed"), 0)
        words = f"$MIROLTA_TEST_HOST {EXAMPLES}/open-file.js --key-env P /dev/stdin out"
        run = subprocess.run(["sh", "-c", f"cat sealed | {words}"], cwd=self.folder, capture_output=True,
                             env={**os.environ, **self.SECRET})
        self.assertEqual(run.returncode, 1, run)
        self.assertNotIn("out", self.names())

    def test_files_that_fail(self):
        self.write("plain", bytes(1 << 20))
        self.expect(self.seal("plain", "sealed"), 0)
        self.refused("missing: File not found", "missing", "out")
        self.refused("sealed: is both input and output", "sealed", "./sealed")
        self.refused("out: Disk full", preexec_fn=limit_files(4096))
        self.refused("out: Disk full", fails={"FAIL_FSYNC": "1"})
        self.refused("sealed: A disk error", fails={"FAIL_READ_AFTER": "1500000"})
        self.refused("P is not set", env={"P": ""})
        for words, text in ((("missing", "out"), "missing: File not found"),
                            (("plain", "./plain"), "./plain: is both input and output")):
            self.expect(self.seal(*words), 1, "", text)
        self.expect(self.seal("plain", "out", preexec_fn=limit_files(4096)), 1, "", "out: Disk full")
        self.expect(self.seal("plain", "out", fails={"FAIL_READ_AFTER": "800000"}), 1, "", "plain: A disk error")
        self.assertEqual(self.read("out"), b"old")

    def test_interrupts(self):
        self.write("plain", b"x")
        self.write("out", b"old")
        process = self.start([EXAMPLES / "seal-file.js", "--iterations", "10000000", "--key-env", "P", "plain",
                              "out"], env=self.SECRET)
        self.wait_for(self.has_temporary, process)
        self.interrupt(process, signal.SIGTERM)
        self.assertEqual(process.returncode, -signal.SIGTERM)
        self.assertEqual(self.names(), ["out", "plain"])
        self.assertEqual(self.read("out"), b"old")


if __name__ == "__main__":
    unittest.main()
