"""Digests and HMACs beside hashlib and hmac, and ciphers beside published answers."""
import hashlib
import hmac
import io
import random
import threading
import unittest

import mirolta
from support import AutomationTest

NAMES = ("md5", "sha1", "sha256")
RANDOM = random.Random(2)
SIZES = [*range(0, 130), 1000, 65537, (1 << 20) + 1]


class BesideHashlib(AutomationTest):
    def test_digests_of_all_sizes(self):
        for name in NAMES:
            for size in SIZES:
                data = RANDOM.randbytes(size)
                self.assertEqual(mirolta.new(name, data).digest(), hashlib.new(name, data).digest())
                key = RANDOM.randbytes(size % 150)
                self.assertEqual(mirolta.hmac(key, data, name).hexdigest(),
                                 hmac.new(key, data, name).hexdigest())

    def test_data_in_pieces(self):
        for name in NAMES:
            ours, theirs = mirolta.new(name), hashlib.new(name)
            for size in (0, 1, 63, 64, 65, 1000):
                data = RANDOM.randbytes(size)
                ours.update(data)
                theirs.update(data)
            self.assertEqual(ours.hexdigest(), theirs.hexdigest())
            self.assertEqual(ours.digest(), theirs.digest())

    def test_attributes(self):
        for name in NAMES:
            ours, theirs = mirolta.new(name.upper()), hashlib.new(name)
            for attribute in ("name", "digest_size", "block_size"):
                self.assertEqual(getattr(ours, attribute), getattr(theirs, attribute))
            ours, theirs = mirolta.hmac(b"k", digestmod=name), hmac.new(b"k", digestmod=name)
            for attribute in ("name", "digest_size", "block_size"):
                self.assertEqual(getattr(ours, attribute), getattr(theirs, attribute))
        self.assertEqual(mirolta.algorithms_available, set(NAMES))
        self.assertIn("hmac-md5", repr(mirolta.hmac(b"", None, "md5")))

    def test_constructors(self):
        for name in NAMES:
            make = getattr(mirolta, name)
            self.assertEqual(make(b"abc").hexdigest(), hashlib.new(name, b"abc").hexdigest())
            self.assertEqual(make(usedforsecurity=False).digest(), hashlib.new(name).digest())
            self.assertEqual(mirolta.hmac(b"k", b"m", make).digest(), hmac.digest(b"k", b"m", name))
        self.assertEqual(mirolta.new("sha-256").name, "sha256")

    def test_buffers(self):
        expected = hashlib.sha256(b"abcd").digest()
        for data in (bytearray(b"abcd"), memoryview(b"abcd"), memoryview(b"a_b_c_d_")[::2]):
            self.assertEqual(mirolta.sha256(data).digest(), expected)

    def test_wrong_arguments(self):
        for function in (lambda: mirolta.new("sha512"), lambda: mirolta.hmac(b"", b"", "sha3")):
            with self.assertRaises(ValueError):
                function()
        for function in (lambda: mirolta.sha256("text"), lambda: mirolta.sha256(5),
                         lambda: mirolta.sha256(None), lambda: mirolta.hmac("key", b"", "md5"),
                         lambda: mirolta.hmac(b"key", b"")):
            with self.assertRaises(TypeError):
                function()

    def test_file_digest(self):
        data = RANDOM.randbytes((1 << 20) + 77)
        for digest in ("sha256", mirolta.sha256):
            self.assertEqual(mirolta.file_digest(io.BytesIO(data), digest).digest(),
                             hashlib.sha256(data).digest())

    def test_a_digest_in_several_threads(self):
        ours = mirolta.sha256()
        threads = [threading.Thread(target=lambda: [ours.update(b"a" * 100) for _ in range(50)])
                   for _ in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(ours.digest(), hashlib.sha256(b"a" * 20_000).digest())


class WhatTheClassCannot(AutomationTest):
    def test_an_ended_computation_does_not_go_on(self):
        digest = mirolta.sha256(b"abc")
        digest.digest()
        digest.update(b"")
        with self.assertRaisesRegex(ValueError, "sha256: the computation ended with digest()"):
            digest.update(b"d")
        self.assertEqual(digest.digest(), hashlib.sha256(b"abc").digest())

    def test_copies(self):
        empty = mirolta.hmac(b"key", b"", "sha1")
        copied = empty.copy()
        copied.update(b"abc")
        self.assertEqual(copied.digest(), hmac.digest(b"key", b"abc", "sha1"))
        self.assertEqual(empty.digest(), hmac.digest(b"key", b"", "sha1"))
        self.assertEqual(copied.copy().digest(), copied.digest())
        with self.assertRaisesRegex(NotImplementedError, "sha256: HashObject cannot copy"):
            mirolta.sha256(b"abc").copy()


class Ciphers(AutomationTest):
    def test_published_answers(self):
        for name, key, plain, sealed in [
                ("aes", "000102030405060708090a0b0c0d0e0f", "00112233445566778899aabbccddeeff",
                 "69c4e0d86a7b0430d8cdb78070b4c55a"),  # FIPS 197
                ("AES", "000102030405060708090a0b0c0d0e0f1011121314151617",
                 "00112233445566778899aabbccddeeff", "dda97ca4864cdfe06eaf70a0ec0d7191"),
                ("aes", "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f",
                 "00112233445566778899aabbccddeeff", "8ea2b7ca516745bfeafc49904b496089"),
                ("des", "0123456789abcdef", "4e6f77206973207468652074696d6520666f7220616c6c20",
                 "3fa40e8a984d48156a271787ab8883f9893d51ec4b563b53")]:  # FIPS 81
            cipher = mirolta.Cipher(name, bytes.fromhex(key))
            self.assertEqual(cipher.encrypt(bytes.fromhex(plain)).hex(), sealed)
            self.assertEqual(cipher.decrypt(bytes.fromhex(sealed)).hex(), plain)

    def test_pieces_and_pads(self):
        cipher = mirolta.Cipher("des", b"12345678", pad_type=0x2E)
        self.assertEqual(cipher.block_size, 8)
        whole = cipher.encrypt(b"abcdefghij")
        self.assertEqual(cipher.encrypt(b"abc", last=False), b"")
        self.assertEqual(cipher.encrypt(b"defghij", last=False) + cipher.encrypt(b""), whole)
        self.assertEqual(cipher.decrypt(whole), b"abcdefghij......")
        cipher.encrypt(b"abc", last=False)
        cipher.reset()
        self.assertEqual(cipher.encrypt(b"abcdefghij"), whole)

    def test_buffers_of_every_layout(self):
        cipher = mirolta.Cipher("aes", b"k" * 16)
        whole = cipher.encrypt(b"abcd")
        for data in (bytearray(b"abcd"), memoryview(b"a_b_c_d_")[::2], memoryview(b"dcba")[::-1]):
            self.assertEqual(cipher.encrypt(data), whole)

    def test_more_than_one_call_takes(self):
        data = RANDOM.randbytes((2 << 20) + 3)
        cipher = mirolta.Cipher("aes", b"k" * 16)
        self.assertEqual(cipher.decrypt(cipher.encrypt(data)), data + b"\0" * 13)

    def test_bad_keys_and_names(self):
        self.expect_failure(0x80070057, mirolta.Cipher, "aes", b"short")
        with self.assertRaises(ValueError):
            mirolta.Cipher("rc4", b"key")


if __name__ == "__main__":
    unittest.main()
