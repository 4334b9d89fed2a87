"""Numbers beside int, and RSA beside pow."""
import math
import operator
import random
import threading
import time
import unittest

import mirolta
from mirolta import Number
from support import AutomationTest

RANDOM = random.Random(3)


def some_integers(count):
    """Integers of both signs and of many sizes, small ones and edges among them."""
    edges = [0, 1, -1, 2, -2, 255, 256, -256, 2**31, 2**32, -2**32, 2**64 - 1]
    more = [RANDOM.getrandbits(RANDOM.choice([8, 40, 64, 200, 1000])) * RANDOM.choice([1, -1])
            for _ in range(count)]
    return edges + more


class BesideInt(AutomationTest):
    def expect(self, actual, expected):
        self.assertIsInstance(actual, Number)
        self.assertEqual(int(actual), expected)

    def test_operators(self):
        integers = some_integers(12)
        for a in integers:
            for b in integers:
                with self.subTest(a=a, b=b):
                    for operation in (operator.add, operator.sub, operator.mul):
                        for left, right in ((Number(a), Number(b)), (Number(a), b), (a, Number(b))):
                            self.expect(operation(left, right), operation(a, b))
                    for compare in (operator.lt, operator.le, operator.eq, operator.ne, operator.gt,
                                    operator.ge):
                        self.assertIs(compare(Number(a), b), compare(a, b))
                        self.assertIs(compare(a, Number(b)), compare(a, b))

    def test_division(self):
        integers = some_integers(8)
        for a in integers:
            for b in integers:
                with self.subTest(a=a, b=b):
                    if b == 0:
                        for operation in (operator.floordiv, operator.mod, divmod):
                            with self.assertRaises(ZeroDivisionError):
                                operation(Number(a), b)
                        continue
                    self.expect(Number(a) // b, a // b)
                    self.expect(a % Number(b), a % b)
                    for actual, expected in zip(divmod(a, Number(b)), divmod(a, b)):
                        self.expect(actual, expected)

    def test_powers(self):
        for base in (0, 1, -1, 7, -12, 10**30):
            for exponent in (0, 1, 2, 5, 33):
                self.expect(Number(base) ** exponent, base ** exponent)
                self.expect(base ** Number(exponent), base ** exponent)
        with self.assertRaises(ValueError):
            Number(2) ** -1

    def test_powers_with_a_modulus(self):
        for _ in range(60):
            base, modulus = RANDOM.getrandbits(200) - 2**199, RANDOM.getrandbits(150) - 2**149
            exponent = RANDOM.getrandbits(70)
            self.expect(pow(Number(base), exponent, modulus), pow(base, exponent, modulus))
        for modulus in (1, -1, 2, 97, -97, 100):
            for exponent in (0, 1, 96):
                self.expect(pow(Number(3), exponent, modulus), pow(3, exponent, modulus))
        self.expect(pow(Number(3), -5, 97), pow(3, -5, 97))
        for modulus in (0, 9):
            with self.assertRaises(ValueError):
                pow(Number(3), -1, modulus)

    def test_gcd_and_inverse(self):
        integers = some_integers(8)
        for a in integers:
            for b in integers:
                self.expect(Number(a).gcd(b), math.gcd(a, b))
                if b and math.gcd(a, b) == 1:
                    self.expect(Number(a).inverse(b), pow(a, -1, b))
                else:
                    with self.assertRaises(ValueError):
                        Number(a).inverse(b)
        with self.assertRaises(TypeError):
            Number(1).gcd(1.5)

    def test_unary_operators_and_conversions(self):
        for a in some_integers(20):
            number = Number(a)
            with self.subTest(a=a):
                self.expect(-number, -a)
                self.expect(+number, a)
                self.expect(abs(number), abs(a))
                for count in (0, 1, 100):
                    self.expect(number << count, a << count)
                    self.expect(number >> count, a >> count)
                self.assertEqual(str(number), str(a))
                self.assertEqual(repr(number), f"Number('{a}')")
                self.assertEqual(hash(number), hash(a))
                self.assertEqual(bool(number), bool(a))
                self.assertEqual(number.hex(), hex(a))
                self.assertEqual(hex(number), hex(a))
                self.assertEqual(number.bit_length(), a.bit_length())
                self.assertEqual(f"{number}|{number:x}|{number:>10,}", f"{a}|{a:x}|{a:>10,}")
                self.assertEqual([*range(10)][Number(3)], 3)
                self.assertEqual(float(Number(a >> 20)), float(a >> 20))
                self.expect(Number(str(a)), a)
                self.expect(Number(number.hex(), 16), a)
                self.expect(Number(number), a)
                self.expect(-Number(0) + number, a)
        self.assertFalse(Number("-0") < 0 or -Number(0) < 0)

    def test_bytes(self):
        for a in (0, 1, 255, 256, 2**64, 3**200):
            for order in ("big", "little"):
                self.expect(Number.from_bytes(a.to_bytes(50, order), order), a)
                self.assertEqual(Number(a).to_bytes(50, order), a.to_bytes(50, order))
            self.assertEqual(Number(a).to_bytes(), a.to_bytes((a.bit_length() + 7) // 8, "big"))
        self.expect(Number.from_bytes(bytearray(b"\1\0")), 256)
        for function in (lambda: Number(-1).to_bytes(), lambda: Number(256).to_bytes(1)):
            with self.assertRaises(OverflowError):
                function()
        for function in (lambda: Number(1).to_bytes(1, "no"), lambda: Number.from_bytes(b"", "no")):
            with self.assertRaises(ValueError):
                function()

    def test_texts(self):
        for text, value in [("1_000", 1000), (" +5 ", 5), ("-0", 0), ("0012", 12)]:
            self.expect(Number(text), value)
        for text, value in [("0xFf", 255), ("-ff_ff", -65535), ("0X_1", 1)]:
            self.expect(Number(text, 16), value)
        for text, base in [("", 10), ("ff", 10), ("1.5", 10), ("1__0", 10), ("-", 10), ("xyz", 16),
                           ("١", 10), ("1", 8)]:
            with self.subTest(text), self.assertRaises(ValueError):
                Number(text, base)

    def test_long_texts_lose_nothing(self):
        for digits in (1799, 1800, 1811, 3600, 3601, 9999):
            text = str(RANDOM.randint(1, 9)) + "".join(RANDOM.choices("0123456789", k=digits - 1))
            self.assertEqual(str(Number(text)), text)
            self.assertEqual(Number("-" + text), -Number(text))

    def test_other_types(self):
        for other in (1.5, "1", None):
            with self.subTest(other), self.assertRaises(TypeError):
                Number(1) + other
            self.assertNotEqual(Number(1), other)
        with self.assertRaises(TypeError):
            pow(Number(2), 3, 1.5)

    def test_random_numbers(self):
        number = Number.random(8, exact=True, odd=True)
        self.assertEqual(number.bit_length(), 64)
        self.assertEqual(int(number) & 1, 1)
        self.assertNotEqual(number, Number.random(8, exact=True, odd=True))
        self.assertLess(Number.random(2), 65536)

    def test_a_number_in_several_threads(self):
        # The object itself takes no lock: calls of two threads must not overlap.
        number, failures, inside = Number(3**300), [], []

        class Watched:
            def __getattr__(self, name):
                def member(*arguments):
                    inside.append(name)
                    if len(inside) > 1:
                        failures.append("two calls at once")
                    time.sleep(0)
                    inside.pop()
                    return getattr(made, name)(*arguments)
                return member

        number * 2
        made = number._magnitude._object
        number._magnitude._object = Watched()

        def work():
            for _ in range(100):
                if int(number * number) != 3**600 or number % 7 != 3**300 % 7:
                    failures.append("a wrong value")

        threads = [threading.Thread(target=work) for _ in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(failures, [])


class Rsa(AutomationTest):
    def test_a_random_key(self):
        key = mirolta.RSAKey.generate(128, e=17)
        self.assertEqual(key.n.bit_length(), 128)
        self.assertEqual(key.n, key.p * key.q)
        self.assertEqual(key.e * key.d % ((key.p - 1) * (key.q - 1)), 1)
        number = RANDOM.getrandbits(100)
        sealed = key.encrypt(number)
        self.assertEqual(sealed, pow(number, key.e, key.n))
        self.assertEqual(key.decrypt(sealed), number)
        for parts in ({"n": key.n, "e": key.e, "d": key.d},
                      {"n": Number(key.n), "e": key.e, "d": key.d, "p": key.q, "q": key.p}):
            other = mirolta.RSAKey(**parts)
            self.assertEqual(other.decrypt(Number(sealed)), number)
            if "p" in parts:
                self.assertEqual((other.p, other.q), (key.p, key.q))  # the smaller prime is p

    def test_failures(self):
        failure = self.expect_failure(0x80042779, mirolta.RSAKey().encrypt, 1)
        self.assertEqual(failure.description, "Key not set.")
        self.expect_failure(0x8004277A, mirolta.RSAKey(n=15, e=3).encrypt, 15)
        for bits in (24, 100):
            with self.assertRaises(ValueError):
                mirolta.RSAKey.generate(bits)
        with self.assertRaises(OverflowError):
            mirolta.RSAKey(n=15, e=3).encrypt(-1)


if __name__ == "__main__":
    unittest.main()
