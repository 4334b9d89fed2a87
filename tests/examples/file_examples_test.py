"""What the examples do with files and keys when something goes wrong, each in each way."""
import errno
import hashlib
import hmac
import os
import pathlib
import re
import signal
import stat
import struct
import subprocess
import unittest

from runner import EXAMPLES, SANITIZED, HostTest, limit_files

AES = "000102030405060708090a0b0c0d0e0f"
SIZE = 1 << 20  # a multiple of both block sizes
LONG = 17 << 20  # progress is shown from 16 MB on

# The examples that read IN and write OUT, with their arguments. KEY.json is an RSA key, WRAPPED
# what rsa-encrypt.js made of SIZE bytes with it.
WRITERS = {
    "encrypt-file.js": ("AES", AES, "IN", "OUT"),
    "decrypt-file.js": ("AES", AES, "IN", "OUT"),
    "crypt-stream.js encrypt": ("AES", AES, "IN", "OUT"),
    "crypt-stream.js decrypt": ("AES", AES, "IN", "OUT"),
    "digest-while-copy.js": ("IN", "OUT"),
    "tee-digest.js": ("SHA256", "IN", "OUT"),
    "seal-file.js --iterations 1": ("pass", "IN", "OUT"),
    "rsa-encrypt.js": ("KEY.json", "IN", "OUT"),
    "rsa-decrypt.js": ("KEY.json", "IN", "OUT"),
}
READERS = {"hash-file.js": ("SHA256", "IN"), "hmac.js": ("SHA256", "secret", "IN"), "sums.js": ("IN",)}
KEYED = {name: row for name, row in WRITERS.items() if AES in row}

WRAPPED_HEADER = 20 + 128  # of a key of 1024 bits


def setUpModule():
    """One key and one encrypted file serve all tests."""
    maker = HostTest()
    maker.setUp()
    unittest.addModuleCleanup(maker.doCleanups)
    global KEY, OTHER_KEY, WRAPPED
    KEY = make_key(maker, "key.json")
    OTHER_KEY = make_key(maker, "other.json")
    # Zero bytes in front make the wrapped key shorter, seldom.
    while True:
        maker.write("plain", bytes(SIZE))
        run = maker.run_host(EXAMPLES / "rsa-encrypt.js", "key.json", "plain", "wrapped")
        maker.assertEqual(run.returncode, 0, run)
        WRAPPED = maker.read("wrapped")
        if len(WRAPPED) == WRAPPED_HEADER + SIZE:
            return


def make_key(maker, name):
    run = maker.run_host(EXAMPLES / "rsa-keygen.js", "1024", name)
    maker.assertEqual(run.returncode, 0, run)
    return maker.read(name)


class ExampleTest(HostTest):
    def setUp(self):
        super().setUp()
        self.write("KEY.json", KEY)
        self.write("out", b"old")
        self.files = {"KEY.json", "out"}

    def content(self, example):
        """An input of the example."""
        return WRAPPED if example == "rsa-decrypt.js" else bytes(SIZE)

    def command(self, example, row, source="in", target="out"):
        script, *words = example.split()
        names = {"IN": source, "OUT": target}
        return [EXAMPLES / script, *words, *(names.get(word, word) for word in row)]

    def add(self, name, content):
        self.write(name, content)
        self.files.add(name)

    def expect_old(self):
        self.assertEqual(self.read("out"), b"old")
        self.assertEqual(set(self.names()), self.files)

    def expect_failure(self, run, text, status=1):
        self.assertEqual(run.returncode, status, run)
        self.assertIn(text, run.stderr, run)
        self.expect_old()

    def each(self, rows):
        for example, row in rows.items():
            self.add("in", self.content(example))
            yield example, row


class Outputs(ExampleTest):
    def test_success_replaces(self):
        for example, row in self.each(WRITERS):
            run = self.run_host(*self.command(example, row))
            self.assertEqual(run.returncode, 0, run)
            self.assertNotEqual(self.read("out"), b"old")
            self.assertEqual(set(self.names()), self.files)
            self.write("out", b"old")

    def test_the_same_file(self):
        os.symlink("in", self.folder / "link")
        os.symlink(".", self.folder / "here")
        os.mkfifo(self.folder / "pipe")
        self.files |= {"link", "here", "pipe", "hard"}
        for example, row in self.each(WRITERS):
            (self.folder / "hard").unlink(missing_ok=True)
            os.link(self.folder / "in", self.folder / "hard")
            # An open pipe would wait for its other end.
            for source, target in (("in", "in"), ("in", "./in"), ("./in", "in"), ("in", "link"),
                                   ("link", "in"), ("in", "here/in"), ("in", "hard"),
                                   ("in", str(self.folder / "in")), ("pipe", "./pipe")):
                run = self.run_host(*self.command(example, row, source, target))
                self.expect_failure(run, f"{target}: is both input and output")
                self.assertEqual(self.read("in"), self.content(example))

    def test_a_key_file_as_output(self):
        self.add("key", AES.encode())
        os.symlink("KEY.json", self.folder / "key-link")
        self.files.add("key-link")
        for example, row in self.each(WRITERS):
            if AES in row:
                words = self.command(example, row, target="./key")
                place = words.index(AES)
                words[place:place + 1] = ["--key-file", "key"]
                self.expect_failure(self.run_host(*words), "./key: is both input and output")
                self.assertEqual(self.read("key"), AES.encode())
            elif "KEY.json" in row:
                run = self.run_host(*self.command(example, row, target="key-link"))
                self.expect_failure(run, "key-link: is both input and output")
                self.assertEqual(self.read("KEY.json"), KEY)

    def test_one_output_twice(self):
        self.add("in", b"x")
        for names in (("out", "./out"), ("new", "./new")):
            run = self.run_host(EXAMPLES / "tee-digest.js", "MD5", "in", *names)
            self.expect_failure(run, f"{names[1]}: is to be written twice")

    def test_a_full_disk(self):
        for example, row in self.each(WRITERS):
            run = self.run_host(*self.command(example, row), preexec_fn=limit_files(4096))
            self.expect_failure(run, ": out: Disk full")
            self.assertEqual(run.stdout, "")
            # A file that was not there does not appear.
            run = self.run_host(*self.command(example, row, target="new"),
                                preexec_fn=limit_files(4096))
            self.expect_failure(run, ": new: Disk full")
            full = self.device("full")
            run = self.run_host(*self.command(example, row, target=full))
            self.expect_failure(run, f": {full}: Disk full")

    def test_a_disk_that_is_full_at_the_last_block(self):
        self.add("in", bytes(1030))
        for example in ("encrypt-file.js", "crypt-stream.js encrypt"):
            run = self.run_host(*self.command(example, WRITERS[example]),
                                preexec_fn=limit_files(1024))
            self.expect_failure(run, ": out: Disk full")

    def test_a_disk_that_is_full_in_the_end(self):
        for example, row in self.each(WRITERS):
            run = self.run_host(*self.command(example, row), fails={"FAIL_FSYNC": "1"})
            self.expect_failure(run, ": out: Disk full")
            self.assertEqual(run.stdout, "")

    def test_one_of_several_outputs_fails(self):
        self.add("in", bytes(SIZE))
        full = self.device("full")
        run = self.run_host(EXAMPLES / "tee-digest.js", "MD5", "in", "out", full, "new")
        self.expect_failure(run, f": {full}: Disk full")

    def test_a_read_that_fails(self):
        for example, row in self.each(WRITERS):
            run = self.run_host(*self.command(example, row, source="/proc/self/mem"))
            self.expect_failure(run, ": /proc/self/mem: ")
            run = self.run_host(*self.command(example, row), fails={"FAIL_READ_AFTER": "800000"})
            self.expect_failure(run, ": in: A disk error occurred during a read operation")
            self.assertEqual(run.stdout, "")
            run = self.run_host(*self.command(example, row, source="missing"))
            self.expect_failure(run, ": missing: File not found")
            run = self.run_host(*self.command(example, row, source="."))
            self.expect_failure(run, ": .: Permission denied")
            run = self.run_host(*self.command(example, row, target="missing/out"))
            self.expect_failure(run, ": missing/out: File not found")

    def test_interrupts(self):
        os.mkfifo(self.folder / "pipe")
        self.files.add("pipe")
        with open(self.folder / "large", "wb") as large:
            length = 8 << 30
            large.write(WRAPPED[:8] + struct.pack(">Q", length) + WRAPPED[16:WRAPPED_HEADER])
            large.truncate(WRAPPED_HEADER + length)
        self.files.add("large")
        for number in (signal.SIGINT, signal.SIGTERM):
            for example, row in WRITERS.items():
                with self.subTest(example, signal=number):
                    if example == "rsa-decrypt.js":
                        process = self.start(self.command(example, row, source="large"))
                        self.wait_for(self.has_temporary, process)
                        self.interrupt(process, number)
                    else:
                        process = self.start(self.command(example, row, source="pipe"))
                        with open(self.folder / "pipe", "wb") as pipe:
                            pipe.write(bytes(3 << 20))
                            self.wait_for(self.has_temporary, process)
                            self.interrupt(process, number)
                    self.assertEqual(process.returncode, -number)
                    self.expect_old()


class WrongKeys(ExampleTest):
    def test_lengths_and_digits(self):
        for example, row in self.each(KEYED):
            for key, text in (("00", "1 bytes"), (AES + "00", "17 bytes"), ("xyz", "hexadecimal"),
                              (AES[1:], "hexadecimal"), ("", "0 bytes")):
                words = [key if word == AES else word for word in row]
                run = self.run_host(*self.command(example, words))
                self.expect_failure(run, text)
                self.assertEqual(run.stdout, "")

    def test_unknown_algorithms(self):
        for example, row in self.each({**KEYED, "tee-digest.js": WRITERS["tee-digest.js"]}):
            run = self.run_host(*self.command(example, ["ROT13", *row[1:]]))
            self.assertIn(run.returncode, (1, 2))
            self.expect_old()

    def test_rsa_number_beyond_the_modulus(self):
        self.add("in", WRAPPED[:20] + bytes(128 * [255]) + WRAPPED[WRAPPED_HEADER:])
        run = self.run_host(*self.command("rsa-decrypt.js", WRITERS["rsa-decrypt.js"]))
        self.expect_failure(run, ": KEY.json: is not the key for this file")

    def test_rsa(self):
        self.add("in", WRAPPED)
        self.add("other.json", OTHER_KEY)
        self.add("broken.json", KEY[:100])
        self.add("empty.json", b"")
        for key, text in (("other.json", ": other.json: is not the key for this file"),
                          ("broken.json", ": broken.json: has no number"),
                          ("empty.json", ": empty.json: has no number"),
                          ("missing", ": missing: File not found"),
                          ("/proc/self/mem", ": /proc/self/mem: A disk error")):
            for example in ("rsa-decrypt.js", "rsa-encrypt.js"):
                if example == "rsa-encrypt.js" and key == "other.json":
                    continue  # as good a key as any
                row = [key, "IN", "OUT"]
                self.expect_failure(self.run_host(*self.command(example, row)), text)


class KeySources(ExampleTest):
    def test_ciphers(self):
        self.add("key", b" " + AES.encode() + b"\r\n")
        for example, row in self.each(KEYED):
            results = []
            words = self.command(example, row)
            place = words.index(AES)
            for source in ([AES], ["--key-file", "key"], ["--key-env", "THE_KEY"]):
                run = self.run_host(*words[:place], *source, *words[place + 1:],
                                    env={"THE_KEY": AES})
                self.assertEqual(run.returncode, 0, run)
                results.append((run.stdout, self.read("out")))
                self.write("out", b"old")
            self.assertEqual(results[1:], [results[0]] * 2)

    def test_hmac(self):
        for key in (b"secret", b"\0\0 \xff key\n\n", b"k\0", b"key\r\n", b"\n\0", b"key\r\n\n"):
            self.write("key", key)
            bare = key[:-2] if key.endswith(b"\r\n") else key[:-1] if key.endswith(b"\n") else key
            run = self.run_host(EXAMPLES / "hmac.js", "SHA256", "--key-file", "key", "-t", "text")
            self.assertEqual(run.stdout, hmac.new(bare, b"text", hashlib.sha256).hexdigest() + "\n")
        run = self.run_host(EXAMPLES / "hmac.js", "--key-env", "THE_KEY", "MD5",
                            env={"THE_KEY": "se\u00e9cret"})
        expected = hmac.new("se\u00e9cret".encode(), b"", "md5").hexdigest()
        self.assertEqual(run.stdout, expected + "\n")

    def test_a_key_from_a_pipe(self):
        run = subprocess.run(["sh", "-c", f"printf secret | $MIROLTA_TEST_HOST {EXAMPLES}/hmac.js "
                              "SHA1 --key-file /dev/stdin"], capture_output=True, text=True)
        self.assertEqual(run.stdout, hmac.new(b"secret", b"", "sha1").hexdigest() + "\n")

    def test_missing_keys(self):
        self.add("empty", b"")
        rows = {**KEYED, "hmac.js": READERS["hmac.js"]}
        for example, row in self.each(rows):
            words = self.command(example, row)
            place = words.index("secret" if example == "hmac.js" else AES)
            for source, text, status in (
                    (["--key-file", "missing"], ": missing: File not found", 1),
                    (["--key-file", "/proc/self/mem"], ": /proc/self/mem: A disk error", 1),
                    (["--key-env", "NO_SUCH_KEY"], "NO_SUCH_KEY is not set", 1),
                    (["--key-env", "THE_KEY", "--key-file", "key"], "", 2)):
                run = self.run_host(*words[:place], *source, *words[place + 1:])
                self.expect_failure(run, text, status)
            run = self.run_host(*words[:place], *words[place + 1:], "--key-file")
            self.expect_failure(run, "", 2)
        run = self.run_host(EXAMPLES / "hmac.js", "SHA1", "--key-file", "empty")
        self.expect_failure(run, "empty: is no key file")


class SecretKeys(ExampleTest):
    def keygen(self, bits, name, **options):
        return self.run_host(EXAMPLES / "rsa-keygen.js", bits, name, **options)

    def test_only_the_owner_may_read_one(self):
        self.addCleanup(os.umask, os.umask(0))
        self.assertEqual(self.keygen("128", "new").returncode, 0)
        self.assertEqual(stat.S_IMODE((self.folder / "new").stat().st_mode), 0o600)

    def test_what_is_there_stays(self):
        os.symlink("nowhere", self.folder / "link")
        self.files.add("link")
        for name in ("out", "./out", "link"):
            self.expect_failure(self.keygen("128", name), f"{name}: is there already")

    def test_a_full_disk(self):
        self.expect_failure(self.keygen("128", "new", preexec_fn=limit_files(16)),
                            ": new: Disk full")
        self.expect_failure(self.keygen("128", "new", fails={"FAIL_FSYNC": "1"}),
                            ": new: Disk full")
        self.expect_failure(self.keygen("128", "missing/new"), ": missing/new: File not found")

    def test_interrupts(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            process = self.start([EXAMPLES / "rsa-keygen.js", "16384", "new"])
            self.wait_for(self.has_temporary, process)
            self.interrupt(process, number)
            self.assertEqual(process.returncode, -number)
            self.expect_old()


class LongWork(ExampleTest):
    def make_input(self, example, size):
        """A file of zeros, on the disk in name only."""
        with open(self.folder / "in", "wb") as file:
            if example == "rsa-decrypt.js":
                file.write(WRAPPED[:8] + struct.pack(">Q", size) + WRAPPED[16:WRAPPED_HEADER])
                size += WRAPPED_HEADER
            file.truncate(size)
        self.files.add("in")

    def read_terminal(self, main):
        """All that was written to a terminal whose other end is closed, piece by piece."""
        shown = b""
        try:
            while piece := os.read(main, 65536):
                shown += piece
        except OSError as error:  # there is no more
            self.assertEqual(error.errno, errno.EIO)
        os.close(main)
        return shown.decode()

    def test_progress_is_for_terminals(self):
        for example, row in {**WRITERS, **READERS}.items():
            with self.subTest(example):
                self.make_input(example, LONG)
                run = self.run_host(*self.command(example, row, target=self.device("null")))
                self.assertEqual(run.returncode, 0, run)
                self.assertNotIn("%", run.stderr)
                main, terminal = os.openpty()
                run = self.run_host(*self.command(example, row, target=self.device("null")),
                                    stderr=terminal)
                os.close(terminal)
                self.assertEqual(run.returncode, 0, run)
                shown = self.read_terminal(main)
                self.assertIn("\rin: 100 %\r\n", shown)
                self.assertNotIn("101 %", shown)

    @unittest.skipIf(SANITIZED, "a sanitizer's own memory is in the count")
    def test_memory_does_not_grow_with_the_file(self):
        for example, row in {**WRITERS, **READERS}.items():
            with self.subTest(example):
                self.make_input(example, 200 << 20)
                process = self.start(self.command(example, row, target=self.device("null")),
                                     stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                _, status, usage = os.wait4(process.pid, 0)
                process.returncode = os.waitstatus_to_exitcode(status)
                self.assertEqual(process.returncode, 0)
                self.assertLess(usage.ru_maxrss, 64 << 10)  # in KiB


class MemoryHost(HostTest):
    """Script hosts without file streams, played by memory_host.js."""

    OLD = ["in=text", "out=old", "key=" + AES]
    OLD_FILES = "in=74657874\nout=6f6c64\nkey=" + AES.encode().hex() + "\n"

    def run_there(self, failing, example, *words, files=None, **options):
        return self.run_host(pathlib.Path(__file__).with_name("memory_host.js"), failing,
                             *(files or self.OLD), "--", EXAMPLES / example, *words, **options)

    def encrypted(self):
        self.write("in", b"text")
        self.run_host(EXAMPLES / "encrypt-file.js", "AES", AES, "in", "encrypted")
        return self.read("encrypted").hex()

    def test_files(self):
        run = self.run_there("none", "encrypt-file.js", "AES", "--key-file", "key", "in", "out")
        self.assertEqual(run.returncode, 0, run)
        self.assertIn("plain length: 4\n", run.stdout)
        self.assertIn(f"\nout={self.encrypted()}\n", run.stdout)
        self.assertNotIn("rad12345.tmp", run.stdout)
        back = "in=" + "".join(map(chr, bytes.fromhex(self.encrypted())))
        run = self.run_there("none", "decrypt-file.js", "--length", "4", "AES", AES, "in", "new",
                             files=[back])
        self.assertEqual(run.returncode, 0, run)
        self.assertIn("\nnew=74657874\n", run.stdout)
        run = self.run_there("none", "encrypt-file.js", "AES", AES, "in", "new", files=["in="])
        self.assertIn("\nin=\nnew=\n", run.stdout)

    def test_hmac(self):
        run = self.run_there("none", "hmac.js", "SHA1", "--key-file", "k", "in",
                             files=["in=text", "k=secret\r\n"])
        self.assertIn(hmac.new(b"secret", b"text", "sha1").hexdigest() + "\n", run.stdout)

    def test_sealed_files(self):
        """Each kind of host opens what the other sealed."""
        text = "text" * 5
        words = ("--key-file", "k", "--iterations", "2", "in", "sealed")
        run = self.run_there("none", "seal-file.js", *words, files=["in=" + text, "k=secret"])
        self.assertEqual(run.returncode, 0, run)
        self.write("sealed", bytes.fromhex(re.search("^sealed=(.*)$", run.stdout, re.MULTILINE)[1]))
        self.write("k", b"secret")
        run = self.run_host(EXAMPLES / "open-file.js", "--key-file", "k", "sealed", "in")
        self.assertEqual((run.returncode, self.read("in")), (0, text.encode()), run)
        self.assertEqual(self.run_host(EXAMPLES / "seal-file.js", *words).returncode, 0)
        sealed = self.read("sealed").hex()
        run = self.run_there("none", "open-file.js", "--key-file", "k", "sealed", "new",
                             files=["sealed=0x" + sealed, "k=secret"])
        self.assertIn(f"\nnew={text.encode().hex()}\n", run.stdout)
        run = self.run_there("none", "open-file.js", "--key-file", "k", "sealed", "new",
                             files=["sealed=0x" + sealed[:-1] + ("0" if sealed[-1] != "0" else "1"), "k=secret"])
        self.assertEqual(run.returncode, 1, run)
        self.assertNotIn("\nnew=", run.stdout)

    def test_lists_of_digests(self):
        run = self.run_there("none", "sums.js", "--output", "list", "in", files=["in=text"])
        self.assertEqual(run.returncode, 0, run)
        line = hashlib.sha256(b"text").hexdigest() + "  in\n"
        self.assertIn(f"\nlist={line.encode().hex()}\n", "\n" + run.stdout)
        for content, status in (("text", 0), ("other", 1)):
            run = self.run_there("none", "sums.js", "--check", "list", files=["in=" + content, "list=" + line])
            self.assertEqual(run.returncode, status, run)

    def test_random_bytes(self):
        run = self.run_there("none", "random-bytes.js", "--output", "new", "20", files=["in=text"])
        self.assertRegex(run.stdout, "(?m)^new=[0-9a-f]{40}$")
        run = self.run_there("none", "random-bytes.js", "--output", "in", "20", files=["in=text"])
        self.assertEqual(run.returncode, 1, run)
        self.assertIn("in: is there already", run.stdout)

    def test_failures_leave_the_old_file(self):
        for failing in ("LoadFromFile", "Read", "Write", "SaveToFile"):
            run = self.run_there(failing, "encrypt-file.js", "AES", AES, "in", "out")
            self.assertEqual(run.returncode, 1, run)
            self.assertIn(failing + " failed", run.stdout)
            self.assertTrue(run.stdout.endswith(self.OLD_FILES), run.stdout)
        # The old file is gone and the new one not yet there: it must not be lost.
        run = self.run_there("MoveFile", "encrypt-file.js", "AES", AES, "in", "out")
        self.assertEqual(run.returncode, 1, run)
        self.assertIn("out: MoveFile failed (the result is in C:\\Work\\rad12345.tmp)", run.stdout)
        self.assertIn(f"\nrad12345.tmp={self.encrypted()}\n", run.stdout)

    def test_the_same_file(self):
        for name in ("in", "IN", "c:\\work\\in"):
            run = self.run_there("none", "encrypt-file.js", "AES", AES, "in", name)
            self.assertEqual(run.returncode, 1, run)
            self.assertIn(f"{name}: is both input and output\n", run.stdout)
            self.assertTrue(run.stdout.endswith(self.OLD_FILES), run.stdout)

    def test_no_way_to_use_files(self):
        run = self.run_there("Open", "encrypt-file.js", "AES", AES, "in", "out")
        self.assertEqual(run.returncode, 1, run)
        self.assertIn("has neither WScript.OpenFile nor ADODB.Stream", run.stdout)

    def test_large_files_are_refused(self):
        for example, words in (("encrypt-file.js", ("AES", AES, "in", "out")),
                               ("hash-file.js", ("MD5", "in"))):
            run = self.run_there("none", example, *words, files=["in=huge", "out=old"])
            self.assertEqual(run.returncode, 1, run)
            self.assertIn("in: has more than 256 MB", run.stdout)
            self.assertTrue(run.stdout.endswith("in=huge\nout=6f6c64\n"), run.stdout)

    def test_key_files(self):
        run = self.run_there("none", "rsa-keygen.js", "128", "out")
        self.assertEqual(run.returncode, 1, run)
        self.assertIn("out: is there already", run.stdout)
        self.assertTrue(run.stdout.endswith(self.OLD_FILES), run.stdout)


if __name__ == "__main__":
    unittest.main()
