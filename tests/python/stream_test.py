"""Files as streams, and filters as files."""
import ctypes
import errno
import gc
import hashlib
import hmac
import io
import random
import shutil
import sys
import tempfile
import traceback
import unittest
import weakref

import mirolta
from mirolta import _stream_server
from mirolta._structures import STATSTG
from support import AutomationTest

KEY = b"sixteen byte key"
DATA = random.Random(1).randbytes(300_001)


class StreamTest(AutomationTest):
    def expect_no_objects(self):
        super().expect_no_objects()
        self.assertEqual(_stream_server.served_count(), 0)


class Raising:
    """A file whose members raise."""

    def __init__(self, exception):
        self.exception = exception

    def read(self, _count):
        raise self.exception

    def write(self, _data):
        raise self.exception

    def seek(self, _offset, _whence):
        raise self.exception

    def truncate(self, _size):
        raise self.exception

    def flush(self):
        raise self.exception


class Dribble(io.RawIOBase):
    """A raw file that reads and writes a few bytes at a time."""

    def __init__(self, data=b""):
        super().__init__()
        self.data = bytearray(data)

    def readable(self):
        return True

    def writable(self):
        return True

    def readinto(self, buffer):
        count = min(7, len(buffer), len(self.data))
        buffer[:count] = self.data[:count]
        del self.data[:count]
        return count

    def write(self, data):
        self.data += bytes(data[:7])
        return min(7, len(data))


class Binding(StreamTest):
    def test_the_bound_file_comes_back(self):
        digest = mirolta.create("Vardeko.crypt.ToviStreamDigest")
        file = io.BytesIO()
        digest.Stream = file
        self.assertIs(digest.Stream, file)

    def test_a_file_lives_as_long_as_the_filter_refers_to_it(self):
        class File(io.BytesIO):
            pass

        digest = mirolta.create("Vardeko.crypt.ToviStreamDigest")
        first, second = File(), File()
        alive = weakref.ref(first)
        digest.Stream = first
        del first
        gc.collect()
        self.assertIsNotNone(alive())
        digest.Stream = second
        self.assertIsNone(alive())
        alive = weakref.ref(second)
        del second, digest
        self.assertIsNone(alive())

    def test_what_is_no_file_cannot_be_bound(self):
        digest = mirolta.create("Vardeko.crypt.ToviStreamDigest")
        failure = self.expect_failure(0x80042775, setattr, digest, "Stream",
                                      mirolta.create("Vardeko.crypt.Number"))
        self.assertIn("IStream", failure.description)
        with self.assertRaises(TypeError):
            digest.Stream = object()

    def test_a_closed_filter_gives_up_a_file_that_refers_to_it(self):
        file = io.BytesIO(DATA)

        class Cycle(io.BytesIO):
            pass

        file = Cycle(DATA)
        file.filter = mirolta.DigestStream(file, reading="md5")
        alive = weakref.ref(file)
        file.filter.close()
        del file
        gc.collect()
        self.assertIsNone(alive())


class Digests(StreamTest):
    def test_reading(self):
        for size in (-1, 1000, 65536, 2 << 20):
            for file in (io.BytesIO(DATA), Dribble(DATA[:5000])):
                content = DATA if isinstance(file, io.BytesIO) else DATA[:5000]
                with self.subTest(size=size, file=file):
                    with mirolta.DigestStream(file, reading="sha256") as digest:
                        pieces = [digest.read(size)]
                        while pieces[-1]:
                            pieces.append(digest.read(size))
                        self.assertEqual(b"".join(pieces), content)
                        self.assertEqual(digest.reading_digest(), hashlib.sha256(content).digest())

    def test_writing(self):
        for file in (io.BytesIO(), Dribble(), None):
            with self.subTest(file=file):
                with mirolta.DigestStream(file, writing="SHA-1", writing_key=KEY) as digest:
                    data = DATA[:5000] if isinstance(file, Dribble) else DATA
                    long = b"x" * (len(data) if data is not DATA else (1 << 20) + 5)
                    shutil.copyfileobj(io.BytesIO(data), digest, 1000)
                    self.assertEqual(digest.write(long), len(long))
                    self.assertEqual(digest.writing_digest(), hmac.digest(KEY, data + long, "sha1"))
                if file is not None:
                    written = file.getvalue() if isinstance(file, io.BytesIO) else bytes(file.data)
                    self.assertEqual(written, data + long)
                    self.assertFalse(file.closed)

    def test_both_directions_and_empty_keys(self):
        file = io.BytesIO(b"abc")
        with mirolta.DigestStream(file, reading="md5", reading_key=b"", writing="md5") as digest:
            digest.read()
            digest.write(b"def")
            self.assertEqual(digest.reading_digest(), hmac.digest(b"", b"abc", "md5"))
            self.assertEqual(digest.writing_digest(), hashlib.md5(b"def").digest())

    def test_a_direction_without_an_algorithm(self):
        with mirolta.DigestStream(io.BytesIO()) as digest:
            with self.assertRaisesRegex(ValueError, "reading"):
                digest.reading_digest()
            with self.assertRaises(ValueError):
                mirolta.DigestStream(io.BytesIO(), reading="sha3")

    def test_io_wrappers(self):
        with mirolta.DigestStream(io.BytesIO("ä\nö\n".encode()), reading="sha256") as digest:
            lines = list(io.TextIOWrapper(io.BufferedReader(digest), "utf-8"))
            self.assertEqual(lines, ["ä\n", "ö\n"])

    def test_a_real_file(self):
        with tempfile.TemporaryFile("w+b", buffering=0) as file:
            with mirolta.DigestStream(file, writing="sha256") as digest:
                digest.write(DATA)
                expected = hashlib.sha256(DATA).digest()
                self.assertEqual(digest.writing_digest(), expected)
            file.seek(0)
            self.assertEqual(file.read(), DATA)

    def test_filters_of_filters(self):
        out = io.BytesIO()
        with mirolta.DigestStream(out, writing="md5") as outer:
            with mirolta.CryptStream(outer, "aes", KEY) as crypt:
                with mirolta.DigestStream(crypt, writing="sha256") as inner:
                    inner.write(DATA)
                    self.assertEqual(inner.writing_digest(), hashlib.sha256(DATA).digest())
            self.assertEqual(outer.writing_digest(), hashlib.md5(out.getvalue()).digest())
        out.seek(0)
        with mirolta.CryptStream(mirolta.DigestStream(out), "aes", KEY) as crypt:
            self.assertEqual(crypt.read()[:len(DATA)], DATA)

    def test_an_automation_filter_as_file(self):
        inner = mirolta.create("Vardeko.crypt.ToviStreamDigest")
        inner.Stream = io.BytesIO(DATA)
        inner.ReadAlgorithm = "MD5"
        with mirolta.DigestStream(inner, reading="sha1") as outer:
            self.assertEqual(outer.read(), DATA)
        self.assertEqual(inner.ReadBinaryValue, hashlib.md5(DATA).digest())
        file = mirolta.Stream(inner)
        self.assertEqual(file.read(5), b"")

    def test_bound_natively(self):
        inner = mirolta.create("Vardeko.crypt.ToviStreamDigest")
        inner.WriteAlgorithm = "MD5"
        outer = mirolta.create("Vardeko.crypt.ToviStreamDigest")
        with mirolta.Stream(inner) as stream:
            outer.Stream = stream
        self.assertEqual(outer.Stream, inner)
        with mirolta.Stream(outer) as stream:
            stream.write(b"abc")
        self.assertEqual(inner.WriteBinaryValue, hashlib.md5(b"abc").digest())


class Ciphers(StreamTest):
    def expected(self, data, name="aes", key=KEY):
        return mirolta.Cipher(name, key).encrypt(data)

    def test_writing_encrypts_and_close_pads(self):
        for name, key in (("aes", KEY), ("DES", KEY[:8]), ("des", KEY + KEY[:8])):
            for size in (0, 1, 16, 1000, 300_001):
                with self.subTest(name=name, size=size):
                    out = io.BytesIO()
                    with mirolta.CryptStream(out, name, key) as crypt:
                        for start in range(0, size, 777):
                            crypt.write(DATA[start:min(start + 777, size)])
                    self.assertEqual(out.getvalue(), self.expected(DATA[:size], name, key))

    def test_reading_decrypts_in_pieces_of_every_size(self):
        sealed = self.expected(DATA[:1001])
        for size in (-1, 1, 3, 15, 16, 17, 100, 5000):
            for file in (io.BytesIO(sealed), Dribble(sealed)):
                with self.subTest(size=size, file=file):
                    with mirolta.CryptStream(file, "aes", KEY) as crypt:
                        pieces = [crypt.read(size)]
                        while pieces[-1]:
                            pieces.append(crypt.read(size))
                        self.assertEqual(b"".join(pieces), DATA[:1001] + b"\0" * 7)

    def test_reading_encrypts_and_writing_decrypts(self):
        sealed = self.expected(DATA[:100])
        with mirolta.CryptStream(io.BytesIO(DATA[:100]), "aes", KEY, decrypt_reading=False) as crypt:
            self.assertEqual(crypt.read(), sealed)
        out = io.BytesIO()
        with mirolta.CryptStream(out, "aes", KEY, decrypt_writing=True) as crypt:
            crypt.write(sealed)
        self.assertEqual(out.getvalue(), DATA[:100] + b"\0" * 12)

    def test_buffers_of_every_layout_are_written(self):
        out = io.BytesIO()
        with mirolta.CryptStream(out, "aes", KEY) as crypt:
            self.assertEqual(crypt.write(memoryview(DATA[:200])[::2]), 100)
        self.assertEqual(out.getvalue(), self.expected(DATA[:200:2]))

    def test_finalize_and_pads(self):
        out = io.BytesIO()
        crypt = mirolta.CryptStream(out, "aes", KEY, pad_type=0x2E)
        crypt.write(b"abc")
        crypt.finalize()
        crypt.finalize()
        self.assertEqual(mirolta.Cipher("aes", KEY).decrypt(out.getvalue()), b"abc" + b"." * 13)
        crypt.close()
        crypt.close()

    def test_a_bad_key_or_name(self):
        self.expect_failure(0x80070057, mirolta.CryptStream, io.BytesIO(), "aes", b"short")
        with self.assertRaises(ValueError):
            mirolta.CryptStream(io.BytesIO(), "rc4", KEY)
        with self.assertRaises(TypeError):
            mirolta.CryptStream(None, "aes", KEY)

    def test_reading_writes_nothing(self):
        class ReadOnly(io.BytesIO):
            def write(self, _data):
                raise io.UnsupportedOperation

        with mirolta.CryptStream(ReadOnly(b"x" * 16), "aes", KEY) as crypt:
            self.assertEqual(len(crypt.read()), 16)


class Files(StreamTest):
    """How a filter is a file."""

    def test_seeking(self):
        file = io.BytesIO(b"0123456789")
        with mirolta.DigestStream(file) as digest:
            self.assertFalse(digest.seekable())
            self.assertEqual(digest.read(3), b"012")
            self.assertEqual(digest.tell(), 3)
            with self.assertRaises(io.UnsupportedOperation):
                digest.seek(0)
            digest.object.SeekingForbidden = False
            self.assertTrue(digest.seekable())
            self.assertEqual(digest.seek(-2, io.SEEK_END), 8)
            self.assertEqual(digest.read(), b"89")
            self.assertEqual(digest.seek(1), 1)
            self.assertEqual(digest.seek(1, io.SEEK_CUR), 2)
            self.assertEqual(digest.truncate(), 2)
            self.assertEqual(file.getvalue(), b"01")

    def test_a_file_that_cannot_seek(self):
        with mirolta.DigestStream(Dribble(b"abc")) as digest:
            digest.object.SeekingForbidden = False
            self.assertFalse(digest.seekable())

    def test_closed(self):
        digest = mirolta.DigestStream(io.BytesIO(b"abc"))
        digest.close()
        digest.close()
        for function in (digest.read, digest.readable, digest.writable, digest.seekable,
                         lambda: digest.write(b"x"), digest.tell, lambda: digest.seek(0)):
            with self.assertRaises(ValueError):
                function()

    def test_the_automation_object_after_close(self):
        digest = mirolta.DigestStream(io.BytesIO(b"abc"))
        obj = digest.object
        digest.close()
        self.expect_failure(0x80030102, mirolta.Stream(obj).read, 1)

    def test_other_operations_of_the_stream(self):
        file = io.BytesIO(DATA)
        target = io.BytesIO()
        server = _stream_server.serve(file)
        stream = mirolta.Stream(server)
        statistics = STATSTG()
        self.assertEqual(server.Stat(ctypes.byref(statistics), 1), 0)
        self.assertEqual((statistics.type, statistics.size, statistics.mode), (2, len(DATA), 2))
        self.assertEqual(file.tell(), 0)
        read, written = ctypes.c_uint64(), ctypes.c_uint64()
        other = _stream_server.serve(target)
        self.assertEqual(server.CopyTo(other, 100_000, ctypes.byref(read), ctypes.byref(written)), 0)
        self.assertEqual((read.value, written.value), (100_000, 100_000))
        self.assertEqual(target.getvalue(), DATA[:100_000])
        self.assertEqual(server.CopyTo(other, 1 << 62, None, None), 0)
        self.assertEqual(target.getvalue(), DATA)
        self.assertEqual(server.Commit(0), 0)
        self.assertEqual(stream.seek(5), 5)
        self.assertEqual(stream.read(3), DATA[5:8])


class Exceptions(StreamTest):
    """What a file raises arrives at the filter's caller."""

    def test_the_exception_itself_comes_back(self):
        for exception in (KeyError("mine"), OSError(errno.ENOSPC, "full"), MemoryError(),
                          io.UnsupportedOperation("no"), KeyboardInterrupt(), SystemExit(3)):
            with self.subTest(type(exception).__name__):  # which keeps what it is given
                digest = mirolta.DigestStream(Raising(exception), reading="md5", writing="md5")
                digest.object.SeekingForbidden = False
                for function in (lambda: digest.read(5), lambda: digest.write(b"x"),
                                 lambda: digest.seek(1), lambda: digest.truncate(1)):
                    lines = []
                    try:
                        function()
                    except BaseException as caught:  # not assertRaises, which clears the traceback
                        self.assertIs(caught, exception)
                        lines = traceback.format_exception(type(caught), caught,
                                                           caught.__traceback__)
                    self.assertIn("raise self.exception", "".join(lines))
                digest.close()

    def test_statuses(self):
        for exception, status in [
                (OSError(errno.ENOSPC, ""), 0x80030070), (PermissionError(errno.EACCES, ""), 0x80030005),
                (FileNotFoundError(errno.ENOENT, ""), 0x80030002), (MemoryError(), 0x8007000E),
                (io.UnsupportedOperation(), 0x80030001), (BlockingIOError(), 0x8000000A),
                (OSError(), 0x80004005), (ValueError(), 0x80004005),
                (mirolta.AutomationError(0x80042778), 0x80042778)]:
            with self.subTest(exception=exception):
                self.assertEqual(_stream_server.status_of(exception), status)

    def test_a_later_call_is_not_affected(self):
        digest = mirolta.DigestStream(Raising(KeyError("mine")), reading="md5")
        with self.assertRaises(KeyError):
            digest.read(5)
        self.assertEqual(digest.object.SeekingForbidden, True)
        self.expect_failure(0x80042778, digest.object.WriteFinalize)
        digest.close()

    def test_without_a_caller_in_python_it_is_reported(self):
        reported = []
        self.addCleanup(setattr, sys, "unraisablehook", sys.unraisablehook)
        sys.unraisablehook = lambda report: reported.append(str(report.exc_value))
        server = _stream_server.serve(Raising(KeyError("mine")))
        # As another program calls it: not through the package's own way to call.
        status = server.Read(ctypes.create_string_buffer(3), 3, None)
        self.assertEqual((f"{status & 0xFFFFFFFF:08X}", reported), ("80004005", ["'mine'"]))
        _stream_server.forget(server)  # the file keeps its exception, whose frames keep the stream

    def test_exceptions_of_nested_calls(self):
        class Nested:
            def read(self, count):
                with self_.assertRaises(KeyError):
                    inner.read(count)
                raise ValueError("outer")

        self_ = self
        inner = mirolta.DigestStream(Raising(KeyError("inner")), reading="md5")
        outer = mirolta.DigestStream(Nested(), reading="md5")
        with self.assertRaisesRegex(ValueError, "outer"):
            outer.read(1)
        inner.close()
        outer.close()

    def test_a_file_that_misbehaves(self):
        class Odd:
            def __init__(self, value):
                self.value = value

            def read(self, _count):
                return self.value

            def write(self, _data):
                return self.value

        with self.assertRaisesRegex(ValueError, "read\\(3\\) returned 5 bytes"):
            mirolta.DigestStream(Odd(b"12345")).read(3)
        with self.assertRaises(TypeError):
            mirolta.DigestStream(Odd("text")).read(3)
        for count in (0, -1, 4):
            self.expect_failure(0x80030070, mirolta.DigestStream(Odd(count)).write, b"abc")
        self.assertEqual(mirolta.DigestStream(Odd(None)).write(b"abc"), 3)
        self.expect_failure(0x8000000A, mirolta.DigestStream(Odd(None)).read, 3)
        self.expect_failure(0x80030001, mirolta.DigestStream(Odd(None)).truncate, 3)


if __name__ == "__main__":
    unittest.main()
