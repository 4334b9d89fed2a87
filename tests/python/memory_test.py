"""Nothing leaks, and memory that runs out is an exception: many iterations, and every allocation that
fails once."""
import ctypes
import gc
import io
import os
import unittest

import mirolta
from fake_dispatch import Failure, FakeDispatch
from mirolta import _stream_server, _typeinfo
from mirolta._library import runtime
from support import ObjectTest

# What the process may grow by over all rounds: a quarter of what one leaked value a round is.
ROUNDS = 100
VALUE_SIZE = 100_000
ALLOWED = ROUNDS * VALUE_SIZE // 4


def resident_bytes():
    with open("/proc/self/statm", encoding="ascii") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


class Growth(ObjectTest):
    def expect_no_growth(self, step):
        for _ in range(20):
            step()
        gc.collect()
        before = resident_bytes()
        for _ in range(ROUNDS):
            step()
        gc.collect()
        grown = resident_bytes() - before
        self.assertLess(grown, ALLOWED)

    def test_arguments_and_results(self):
        fake = FakeDispatch()
        echo = mirolta.Object(fake.address).Echo
        for value in ("x" * (VALUE_SIZE // 2), b"x" * VALUE_SIZE, ["x" * VALUE_SIZE],
                      [b"x" * VALUE_SIZE, ["y"]]):
            with self.subTest(type(value)):
                self.expect_no_growth(lambda: self.assertEqual(echo(value), value))
        del echo
        self.assertEqual(fake.references, 1)

    def test_arguments_before_one_that_cannot_be_converted(self):
        fake = FakeDispatch()
        echo = mirolta.Object(fake.address).Echo
        text = "x" * (VALUE_SIZE // 2)

        def step():
            for arguments in ((object(), text), ([text, object()],)):
                with self.assertRaises(TypeError):
                    echo(*arguments)

        self.expect_no_growth(step)

    def test_texts_of_errors(self):
        def fail(_flags):
            raise Failure(0x80041234, "s" * (VALUE_SIZE // 2), "d" * (VALUE_SIZE // 2))

        fake = FakeDispatch({"Fail": fail})
        obj = mirolta.Object(fake.address)

        def step():
            with self.assertRaises(mirolta.AutomationError):
                obj.Fail

        self.expect_no_growth(step)
        del obj

    def test_objects_and_streams(self):
        data = b"x" * VALUE_SIZE

        def step():
            file = io.BytesIO(data)
            with mirolta.DigestStream(file, reading="md5") as digest:
                digest.read()
            with mirolta.CryptStream(file, "aes", b"k" * 16) as crypt:
                crypt.write(b"abc")
            mirolta.Number.from_bytes(data) + 1

        self.expect_no_growth(step)

    def test_exceptions_of_files(self):
        class File:
            def __init__(self):
                self.data = b"x" * VALUE_SIZE

            def read(self, _count):
                raise KeyError(self.data)

        def step():
            digest = mirolta.DigestStream(File(), reading="md5")
            with self.assertRaises(KeyError):
                digest.read()
            digest.close()

        self.expect_no_growth(step)


class FailingAllocations(ObjectTest):
    """Each allocation of the runtime fails once."""

    def setUp(self):
        super().setUp()
        library = ctypes.CDLL(runtime().module.file)
        if not hasattr(library, "MiroltaFailAllocationAfter"):
            self.skipTest("the runtime was built without its test hooks")
        self.fail_after = library.MiroltaFailAllocationAfter
        self.fail_after.argtypes = [ctypes.c_int32]
        self.has_failed = library.MiroltaAllocationHasFailed
        self.has_failed.restype = ctypes.c_bool

    def tearDown(self):
        self.fail_after(-1)

    def failures_of(self, step):
        """The exceptions of the step while the first, the second ... allocation fails."""
        failures = []
        for count in range(200):
            self.fail_after(count)
            try:
                step()
                if not self.has_failed():
                    return failures
                failures.append(None)  # recovered from
            except (MemoryError, mirolta.AutomationError) as failure:
                failures.append(failure)
            finally:
                self.fail_after(-1)
        self.fail("the step never came to its end")

    def test_calls(self):
        number = mirolta.create("Vardeko.crypt.Number")

        def step():
            number.Value = "12345678901234567890"
            self.assertEqual(number.Add(b"\1").Value, "12345678901234567891")

        failures = self.failures_of(step)
        self.assertGreaterEqual(len(failures), 4)
        for failure in failures:
            if isinstance(failure, mirolta.AutomationError):
                self.assertEqual(f"{failure.status:08X}", "8007000E")
        self.assertIn(MemoryError, map(type, failures))

    def test_lists(self):
        fake = FakeDispatch()
        echo = mirolta.Object(fake.address).Echo
        value = ["a", b"b", ["c"]]
        failures = self.failures_of(lambda: self.assertEqual(echo(value), value))
        self.assertGreater(len(failures), 10)

    def test_creation_and_help(self):
        def step():
            _typeinfo._descriptions.clear()
            self.assertEqual(mirolta.create("Vardeko.crypt.Symmetric").codePage, 0)

        self.assertGreater(len(self.failures_of(step)), 20)

    def test_streams(self):
        def step():
            digest = mirolta.DigestStream(io.BytesIO(b"abc"), reading="md5")
            try:
                self.assertEqual(digest.read(), b"abc")
                self.assertEqual(len(digest.reading_digest()), 16)
            finally:
                digest.close()

        self.assertGreater(len(self.failures_of(step)), 3)
        gc.collect()
        self.assertEqual(_stream_server.served_count(), 0)


if __name__ == "__main__":
    unittest.main()
