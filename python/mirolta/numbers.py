# SPDX-License-Identifier: MIT
"""Integers of any size, computed by PexBigNumber, that work with int.

PexBigNumber reads operands without their sign, and zero has no text there; Number has a sign of its
own and computes with magnitudes, so that results are those of int.
"""
from __future__ import annotations

import re
import threading
from typing import Any, Callable, Optional, Tuple, TypeVar, Union

from ._object import Object

_PROG_ID = "Vardeko.crypt.Number"
# The class reads decimal texts of up to 1,810 digits exactly.
_PIECE_DIGITS = 1800
_DIGITS = {10: re.compile(r"[0-9]+(_[0-9]+)*"), 16: re.compile(r"(0x_?)?[0-9a-f]+(_[0-9a-f]+)*")}

Operand = Union["Number", int]
_Result = TypeVar("_Result")


class _Magnitude:
    """A number without a sign: its bytes, most significant first, and an object that computes with
    it. Each is made when it is first needed. The object takes no lock of its own."""

    __slots__ = ("_bytes", "_object", "_lock")

    def __init__(self, content: Optional[bytes], magnitude: Optional[Object] = None) -> None:
        self._bytes = content
        self._object = magnitude
        self._lock = threading.Lock()

    def bytes(self) -> bytes:
        if self._bytes is None:
            self._bytes = self.get("Binary") or b""
        return self._bytes

    def _made_object(self) -> Object:
        """Called under the lock."""
        if self._object is None:
            self._object = Object(_PROG_ID)
            self._object.Binary = self._bytes
        return self._object

    def get(self, name: str) -> Any:
        """A property of the object."""
        with self._lock:
            return getattr(self._made_object(), name)

    def call(self, name: str, *operands: _Magnitude) -> Any:
        """The result of a member of the object."""
        arguments = [operand.bytes() for operand in operands]
        with self._lock:
            return getattr(self._made_object(), name)(*arguments)


class Number:
    """An integer of any size. Operators take Number and int, and give Number.

    Number(value) takes an int, another Number, the decimal digits of a text, or with base 16 its
    hexadecimal digits. A Number does not change.
    """

    __slots__ = ("_magnitude", "_is_negative")

    def __init__(self, value: Union[Operand, str] = 0, base: int = 10) -> None:
        made = _parse(value, base) if isinstance(value, str) else _required(value)
        self._set(made._magnitude, made._is_negative)

    def _set(self, magnitude: _Magnitude, is_negative: bool) -> Number:
        self._magnitude = magnitude
        self._is_negative = is_negative and bool(magnitude.bytes())
        return self

    def _call(self, name: str, *operands: Number) -> Number:
        """The result of a member for the absolute values."""
        result = self._magnitude.call(name, *(operand._magnitude for operand in operands))
        return _made(_Magnitude(None, result), False)

    def _compare_magnitude(self, other: Number) -> int:
        return int(self._magnitude.call("Cmp", other._magnitude))

    # Conversions.

    def __int__(self) -> int:
        magnitude = int.from_bytes(self._magnitude.bytes(), "big")
        return -magnitude if self._is_negative else magnitude

    __index__ = __int__

    def __float__(self) -> float:
        return float(int(self))

    def __bool__(self) -> bool:
        return bool(self._magnitude.bytes())

    def __str__(self) -> str:
        if not self:
            return "0"
        text = str(self._magnitude.get("Value"))
        return f"-{text}" if self._is_negative else text

    def __repr__(self) -> str:
        return f"Number({str(self)!r})"

    def __format__(self, specification: str) -> str:
        return str(self) if not specification else format(int(self), specification)

    def __hash__(self) -> int:
        return hash(int(self))

    def hex(self) -> str:
        """Lowercase hexadecimal digits behind 0x, as hex() gives for an int."""
        if not self:
            return "0x0"
        text = str(self._magnitude.get("Hex"))
        return f"-0x{text}" if self._is_negative else f"0x{text}"

    def bit_length(self) -> int:
        magnitude = self._magnitude.bytes()
        return len(magnitude) * 8 - 8 + magnitude[0].bit_length() if magnitude else 0

    def to_bytes(self, length: Optional[int] = None, byteorder: str = "big") -> bytes:
        """The bytes of a number that is not negative, by default as few as it needs."""
        if self._is_negative:
            raise OverflowError("can't convert negative number to bytes")
        magnitude = self._magnitude.bytes()
        if length is not None and len(magnitude) > length:
            raise OverflowError("number too big to convert")
        if byteorder not in ("big", "little"):
            raise ValueError("byteorder must be either 'little' or 'big'")
        padded = magnitude.rjust(length or 0, b"\0")
        return padded if byteorder == "big" else padded[::-1]

    @classmethod
    def from_bytes(cls, data: Any, byteorder: str = "big") -> Number:
        """The number of bytes without a sign."""
        if byteorder not in ("big", "little"):
            raise ValueError("byteorder must be either 'little' or 'big'")
        content = bytes(data) if byteorder == "big" else bytes(data)[::-1]
        return _made(_Magnitude(content.lstrip(b"\0")), False)

    @classmethod
    def random(cls, length: int, *, exact: bool = False, odd: bool = False) -> Number:
        """A random number of `length` bytes, from the system's cryptographic source.

        exact  sets the two highest bits; odd  sets the lowest one
        """
        magnitude = Object(_PROG_ID)
        magnitude.Random(length, exact, odd)
        return _made(_Magnitude(None, magnitude), False)

    # Comparison.

    def _compare(self, other: Number) -> int:
        if self._is_negative != other._is_negative:
            return -1 if self._is_negative else 1
        order = self._compare_magnitude(other)
        return -order if self._is_negative else order

    def __eq__(self, other: object) -> bool:
        return _binary(lambda a, b: a._compare(b) == 0, self, other)

    def __lt__(self, other: Operand) -> bool:
        return _binary(lambda a, b: a._compare(b) < 0, self, other)

    def __le__(self, other: Operand) -> bool:
        return _binary(lambda a, b: a._compare(b) <= 0, self, other)

    def __gt__(self, other: Operand) -> bool:
        return _binary(lambda a, b: a._compare(b) > 0, self, other)

    def __ge__(self, other: Operand) -> bool:
        return _binary(lambda a, b: a._compare(b) >= 0, self, other)

    # Arithmetic.

    def _signed(self, is_negative: bool) -> Number:
        if is_negative == self._is_negative:
            return self
        return _made(self._magnitude, is_negative)

    def __pos__(self) -> Number:
        return self

    def __neg__(self) -> Number:
        return self._signed(not self._is_negative)

    def __abs__(self) -> Number:
        return self._signed(False)

    def _add(self, other: Number) -> Number:
        if self._is_negative == other._is_negative:
            return self._call("Add", other)._signed(self._is_negative)
        if self._compare_magnitude(other) >= 0:
            return self._call("Sub", other)._signed(self._is_negative)
        return other._call("Sub", self)._signed(other._is_negative)

    def _subtract(self, other: Number) -> Number:
        return self._add(-other)

    def _multiply(self, other: Number) -> Number:
        return self._call("Mul", other)._signed(self._is_negative != other._is_negative)

    def _divide(self, other: Number) -> Tuple[Number, Number]:
        """Quotient and remainder as int has them: rounded down, the remainder's sign the divisor's."""
        if not other:
            raise ZeroDivisionError("division by zero")
        quotient, remainder = self._call("Div", other), self._call("Mod", other)
        if self._is_negative == other._is_negative:
            return quotient, remainder._signed(other._is_negative)
        if not remainder:
            return -quotient, remainder
        return -(quotient + 1), (abs(other) - remainder)._signed(other._is_negative)

    def _raise(self, exponent: Number) -> Number:
        if exponent._is_negative:
            raise ValueError("a negative exponent needs a modulus")
        result = _of_int(1)
        for bit in bin(int(exponent))[2:]:
            result = result._multiply(result)
            if bit == "1":
                result = result._multiply(self)
        return result

    def __add__(self, other: Operand) -> Number:
        return _binary(Number._add, self, other)

    def __radd__(self, other: Operand) -> Number:
        return _binary(Number._add, other, self)

    def __sub__(self, other: Operand) -> Number:
        return _binary(Number._subtract, self, other)

    def __rsub__(self, other: Operand) -> Number:
        return _binary(Number._subtract, other, self)

    def __mul__(self, other: Operand) -> Number:
        return _binary(Number._multiply, self, other)

    def __rmul__(self, other: Operand) -> Number:
        return _binary(Number._multiply, other, self)

    def __divmod__(self, other: Operand) -> Tuple[Number, Number]:
        return _binary(Number._divide, self, other)

    def __rdivmod__(self, other: Operand) -> Tuple[Number, Number]:
        return _binary(Number._divide, other, self)

    def __floordiv__(self, other: Operand) -> Number:
        return _binary(lambda a, b: a._divide(b)[0], self, other)

    def __rfloordiv__(self, other: Operand) -> Number:
        return _binary(lambda a, b: a._divide(b)[0], other, self)

    def __mod__(self, other: Operand) -> Number:
        return _binary(lambda a, b: a._divide(b)[1], self, other)

    def __rmod__(self, other: Operand) -> Number:
        return _binary(lambda a, b: a._divide(b)[1], other, self)

    def __lshift__(self, count: int) -> Number:
        return self * (1 << count)

    def __rshift__(self, count: int) -> Number:
        return self // (1 << count)

    def __pow__(self, exponent: Operand, modulus: Optional[Operand] = None) -> Number:
        if modulus is None:
            return _binary(Number._raise, self, exponent)
        power, divisor = _operand(exponent), _operand(modulus)
        if power is None or divisor is None:
            return NotImplemented
        if not divisor:
            raise ValueError("pow() 3rd argument cannot be 0")
        base = self % abs(divisor)
        if power._is_negative:
            base, power = base.inverse(abs(divisor)), -power
        return base._call("ModExp", power, divisor) % divisor

    def __rpow__(self, base: Operand, modulus: Optional[Operand] = None) -> Number:
        number = _operand(base)
        if number is None:
            return NotImplemented
        return pow(number, self, modulus)

    # Number theory.

    def gcd(self, other: Operand) -> Number:
        """The greatest common divisor, which is not negative."""
        return self._call("GCD", _required(other))

    def inverse(self, modulus: Operand) -> Number:
        """The inverse modulo `modulus`; raises ValueError if there is none."""
        divisor = _required(modulus)
        if not divisor:
            raise ValueError("the modulus cannot be 0")
        base = self % abs(divisor)
        if base.gcd(divisor) != 1:
            raise ValueError("base is not invertible for the given modulus")
        return base._call("ModInv", divisor) % divisor


def _made(magnitude: _Magnitude, is_negative: bool) -> Number:
    return Number.__new__(Number)._set(magnitude, is_negative)


def _of_int(value: int) -> Number:
    content = abs(value).to_bytes((value.bit_length() + 7) // 8, "big")
    return _made(_Magnitude(content), value < 0)


def _operand(value: object) -> Optional[Number]:
    if isinstance(value, Number):
        return value
    return _of_int(value) if isinstance(value, int) else None


def _required(value: object) -> Number:
    number = _operand(value)
    if number is None:
        raise TypeError(f"{type(value).__name__!r} object is not an integer")
    return number


def _binary(operation: Callable[[Number, Number], _Result], first: object,
            second: object) -> _Result:
    left, right = _operand(first), _operand(second)
    if left is None or right is None:
        return NotImplemented
    return operation(left, right)


def _parse(text: str, base: int) -> Number:
    if base not in _DIGITS:
        raise ValueError("base must be 10 or 16")
    stripped = text.strip()
    digits = stripped[1:] if stripped[:1] in ("+", "-") else stripped
    if not _DIGITS[base].fullmatch(digits.lower()):
        raise ValueError(f"invalid literal for Number() with base {base}: {text!r}")
    digits = digits.replace("_", "")
    is_negative = stripped[0] == "-"
    if base == 16:
        magnitude = Object(_PROG_ID)
        magnitude.Hex = digits[2:] if digits[:2].lower() == "0x" else digits
        return _made(_Magnitude(None, magnitude), is_negative)
    first = len(digits) % _PIECE_DIGITS
    result = _of_int(int(digits[:first] or "0"))
    power = _of_int(10 ** _PIECE_DIGITS)
    for start in range(first, len(digits), _PIECE_DIGITS):
        piece = Object(_PROG_ID)
        piece.Value = digits[start:start + _PIECE_DIGITS]
        result = result * power + _made(_Magnitude(None, piece), False)
    return result._signed(is_negative)
