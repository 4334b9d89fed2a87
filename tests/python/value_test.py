"""Values to automation and back: an object returns them as the platform copies them."""
import array
import ctypes
import datetime
import decimal
import os
import time
import unittest

import mirolta
from fake_dispatch import FakeDispatch
from mirolta import _arrays, _values
from mirolta._library import runtime
from mirolta._structures import (VARIANT, VT_ARRAY, VT_BOOL, VT_BSTR, VT_BYREF, VT_CY, VT_DATE,
                                 VT_DECIMAL, VT_DISPATCH, VT_EMPTY, VT_ERROR, VT_I2, VT_I4, VT_I8,
                                 VT_NULL, VT_R4, VT_R8, VT_UI1, VT_UI4, VT_UI8, VT_UNKNOWN,
                                 VT_VARIANT)
from support import AutomationTest

SURROGATES = "\ud800 \udc00\ud800 \U0001F600 \0 end\0"


def type_of(value, as_bytes=False):
    with _values.Values(1) as values:
        _values.write(value, values[0], as_bytes)
        return values[0].vt


class Echo(AutomationTest):
    def setUp(self):
        super().setUp()
        self.fake = FakeDispatch()
        self.echo = mirolta.Object(self.fake.address).Echo

    def tearDown(self):
        del self.echo
        self.assertEqual(self.fake.references, 1)

    def expect(self, value, vt):
        self.assertEqual(type_of(value), vt)
        back = self.echo(value)
        self.assertEqual(back, value)
        return back

    def test_none_and_its_kin(self):
        self.assertIsNone(self.expect(None, VT_EMPTY))
        self.assertEqual(type_of(mirolta.NULL), VT_NULL)
        self.assertIsNone(self.echo(mirolta.NULL))
        self.assertEqual(type_of(mirolta.MISSING), VT_ERROR)
        self.assertIs(self.echo(mirolta.MISSING), mirolta.MISSING)
        self.assertEqual(repr(mirolta.MISSING), "mirolta.MISSING")

    def test_booleans(self):
        for value in (True, False):
            self.assertIs(self.expect(value, VT_BOOL), value)

    def test_integers(self):
        for vt, values in {VT_I4: [0, 1, -1, 2**31 - 1, -2**31], VT_UI4: [2**31, 2**32 - 1],
                           VT_I8: [2**32, 2**63 - 1, -2**31 - 1, -2**63],
                           VT_UI8: [2**63, 2**64 - 1]}.items():
            for value in values:
                self.assertIs(type(self.expect(value, vt)), int)

    def test_larger_integers_are_decimal_text_or_bytes(self):
        for value in (2**64, -2**63 - 1, 10**50):
            self.assertEqual(type_of(value), VT_BSTR)
            self.assertEqual(self.echo(value), str(value))
        self.assertEqual(type_of(2**32, as_bytes=True), VT_ARRAY | VT_UI1)
        with self.assertRaisesRegex(OverflowError, "negative"):
            type_of(-2**32, as_bytes=True)

    def test_objects_of_numbers_take_integers_of_any_size(self):
        number = mirolta.create("Vardeko.crypt.Number")
        rsa = mirolta.create("Vardeko.crypt.RSA")
        digest = mirolta.create("Vardeko.crypt.HashObject")
        digest.InitHash("SHA256")
        for value in (1, 2**31, 2**32 - 1, 2**32, 2**64 + 1, 3**5000):
            number.Value = value
            self.assertEqual(int.from_bytes(number.Binary, "big"), value)
            self.assertEqual(int.from_bytes(number.Add(value).Binary, "big"), 2 * value)
            rsa.Modulus = value
            self.assertEqual(int.from_bytes(rsa.Modulus, "big"), value)
            digest.HashData(value if value < 10**4000 else 7)
            expected = digest.Value
            digest.HashData(str(value) if value < 10**4000 else "7")
            self.assertEqual(digest.Value, expected)  # elsewhere a number is its text

    def test_what_has_an_index_is_an_integer(self):
        class Index:
            def __index__(self):
                return 9

        self.assertEqual(self.echo(Index()), 9)

    def test_floating_point_numbers(self):
        for value in (0.0, -1.5, 1e300, float("inf")):
            self.expect(value, VT_R8)

    def test_texts_keep_surrogates_and_zeros(self):
        for value in ("", "a", "äöü€", SURROGATES, "x" * 100_000):
            self.expect(value, VT_BSTR)
        # A member of the module has them too.
        number = mirolta.create("Vardeko.crypt.Number")
        number.Text[-1] = "\ud800a\udc00"
        self.assertEqual(number.Hex, "d8000061dc00")
        self.assertEqual(number.Text[-1], "\ud800a\udc00")
        crypt = mirolta.create("Vardeko.crypt.Symmetric")
        crypt.Init("AES")
        crypt.codePage = -1
        crypt.Key = "a\0\ud800\0" * 2
        self.assertEqual(crypt.Key, "a\0\ud800\0".encode("utf-16-le", "surrogatepass") * 2)

    def test_bytes_and_buffers(self):
        for value in (b"", b"\0", bytes(range(256)), b"x" * 100_000):
            self.assertIs(type(self.expect(value, VT_ARRAY | VT_UI1)), bytes)
            self.assertEqual(self.echo(bytearray(value)), value)
            self.assertEqual(self.echo(memoryview(value)), value)
            self.assertEqual(self.echo(memoryview(value)[::-2]), value[::-2])
        self.assertEqual(self.echo(memoryview(array.array("H", [1, 2]))),
                         array.array("H", [1, 2]).tobytes())

    def test_dates(self):
        for value, number in [(datetime.datetime(1899, 12, 30), 0.0),
                              (datetime.datetime(1899, 12, 29, 6), -1.25),
                              (datetime.datetime(1899, 12, 31, 18), 1.75),
                              (datetime.datetime(2026, 1, 2, 3, 4, 5), 46024.12783564815),
                              (datetime.datetime(100, 1, 1), -657434.0),
                              (datetime.datetime(9999, 12, 31, 12), 2958465.5)]:
            self.expect(value, VT_DATE)
            with _values.Values(1) as values:
                _values.write(value, values[0])
                self.assertAlmostEqual(values[0].value.r8, number, 10)
        for microsecond in range(0, 1_000_000, 7919):
            value = datetime.datetime(2079, 6, 4, 23, 59, 59, microsecond)
            self.assertEqual(self.echo(value), value)
        self.assertEqual(self.echo(datetime.date(2026, 1, 2)), datetime.datetime(2026, 1, 2))
        with self.assertRaises(OverflowError):
            self.echo(datetime.datetime(99, 12, 31))

    def test_dates_with_a_zone_become_local(self):
        def set_zone(name):
            os.environ["TZ"] = name
            time.tzset()

        self.addCleanup(set_zone, os.environ.get("TZ", "UTC"))
        set_zone("JST-9")
        aware = datetime.datetime(2026, 7, 1, 12, tzinfo=datetime.timezone.utc)
        self.assertEqual(self.echo(aware), datetime.datetime(2026, 7, 1, 21))

    def test_decimal_numbers(self):
        for text in ("0", "1.50", "-0.0001", "79228162514264337593543950335", "1E+5", "1E-28"):
            self.expect(decimal.Decimal(text), VT_DECIMAL)
        self.assertEqual(str(self.echo(decimal.Decimal("1.50"))), "1.50")
        for text in ("79228162514264337593543950336", "1E-29", "NaN", "Infinity"):
            with self.subTest(text), self.assertRaises(OverflowError):
                self.echo(decimal.Decimal(text))

    def test_lists(self):
        value = [1, "a", None, b"b", [2, [3.5]], True, decimal.Decimal("2.5"), 10**10]
        self.expect(value, VT_ARRAY | VT_VARIANT)
        self.assertEqual(self.echo((1, 2)), [1, 2])
        self.assertEqual(self.echo([]), [])

    def test_objects(self):
        number = mirolta.create("Vardeko.crypt.Number")
        self.assertEqual(type_of(number), VT_DISPATCH)
        self.assertEqual(self.echo(number), number)
        digest = mirolta.create("Vardeko.crypt.ToviStreamDigest")
        stream = mirolta.Stream(digest)
        self.assertEqual(type_of(stream), VT_UNKNOWN)
        self.assertEqual(self.echo(stream), digest)

    def test_other_types_are_type_errors(self):
        for value in (object(), {}, set(), 1j, int):
            with self.subTest(value), self.assertRaises(TypeError):
                self.echo(value)


class Reading(AutomationTest):
    """Types that only other programs make."""

    def value(self, vt, field, content):
        value = VARIANT()
        value.vt = vt
        setattr(value.value, field, content)
        return value

    def test_other_numbers(self):
        self.assertEqual(_values.read(self.value(VT_I2, "i2", -2)), -2)
        self.assertEqual(_values.read(self.value(16, "i1", -3)), -3)
        self.assertEqual(_values.read(self.value(VT_UI1, "ui1", 200)), 200)
        self.assertEqual(_values.read(self.value(18, "ui2", 60000)), 60000)
        self.assertEqual(_values.read(self.value(22, "i4", -4)), -4)
        self.assertEqual(_values.read(self.value(23, "ui4", 2**32 - 1)), 2**32 - 1)
        self.assertEqual(_values.read(self.value(VT_R4, "r4", 0.5)), 0.5)
        self.assertEqual(_values.read(self.value(VT_CY, "i8", -12345)), decimal.Decimal("-1.2345"))
        self.assertEqual(_values.read(self.value(VT_ERROR, "i4", -2147467259)), -2147467259)
        self.assertIsNone(_values.read(self.value(VT_DISPATCH, "pointer", None)))
        self.assertEqual(_values.read(self.value(VT_BSTR, "pointer", None)), "")

    def test_references(self):
        number = ctypes.c_int32(7)
        value = self.value(VT_BYREF | VT_I4, "pointer", ctypes.addressof(number))
        self.assertEqual(_values.read(value), 7)

    def test_an_unknown_type_is_a_type_error(self):
        with self.assertRaises(TypeError):
            _values.read(self.value(36, "pointer", None))

    def test_arrays_of_numbers_and_of_two_dimensions(self):
        functions = ctypes.CDLL(runtime().module.file)
        create = functions.SafeArrayCreate
        create.restype = ctypes.c_void_p
        bounds = (ctypes.c_uint32 * 4)(2, 0, 3, 5)  # elements and lower bound, leftmost first
        array_of_words = create(VT_I2, 2, bounds)
        place = functions.SafeArrayPutElement
        place.argtypes = [ctypes.c_void_p, ctypes.c_void_p, ctypes.c_void_p]
        for i in range(2):
            for j in range(5, 8):
                place(array_of_words, (ctypes.c_int32 * 2)(i, j),
                      ctypes.byref(ctypes.c_int16(10 * i + j)))
        value = self.value(VT_ARRAY | VT_I2, "pointer", array_of_words)
        self.assertEqual(_values.read(value), [[5, 6, 7], [15, 16, 17]])
        runtime().VariantClear(ctypes.byref(value))
        self.assertEqual(_arrays.read(0, VT_UI1, None), b"")


if __name__ == "__main__":
    unittest.main()
