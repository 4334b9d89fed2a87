# SPDX-License-Identifier: MIT
"""Automation values: VARIANT and Python's values.

Python                          automation
None                            VT_EMPTY
NULL, MISSING                   VT_NULL; VT_ERROR for an argument that is left out
bool                            VT_BOOL
int                             VT_I4, VT_UI4; a larger one as described at write()
float, decimal.Decimal          VT_R8, VT_DECIMAL
str                             VT_BSTR
datetime, date                  VT_DATE
bytes, bytearray, memoryview    VT_ARRAY | VT_UI1
list, tuple                     VT_ARRAY | VT_VARIANT
Object and everything else that has an interface   VT_DISPATCH or VT_UNKNOWN
a file                          VT_UNKNOWN: a stream over it

The reverse is the same. In addition VT_NULL is None, all integer types are int, VT_R4 is float,
VT_CY is Decimal, arrays of other elements are lists, nested for several dimensions, and a stream
over a file is that file again.
"""
from __future__ import annotations

import ctypes
import datetime
import decimal
from ctypes import byref
from typing import Any, Callable, Dict, List, Tuple, Type

from . import _arrays, _dates, _stream_server, _texts
from ._errors import check
from ._interfaces import Unknown, borrow
from ._library import runtime
from ._statuses import DISP_E_PARAMNOTFOUND, signed
from ._structures import (DECIMAL, VARIANT, VT_ARRAY, VT_BOOL, VT_BSTR, VT_BYREF, VT_CY, VT_DATE,
                          VT_DECIMAL, VT_DISPATCH, VT_EMPTY, VT_ERROR, VT_I1, VT_I2, VT_I4, VT_I8,
                          VT_INT, VT_NULL, VT_R4, VT_R8, VT_UI1, VT_UI2, VT_UI4, VT_UI8, VT_UINT,
                          VT_UNKNOWN, VT_VARIANT)

_DECIMAL_NEGATIVE = 0x80
_DECIMAL_DIGITS = 28
_CURRENCY_UNITS = 10_000


class _Marker:
    """A value that Python has no equivalent of."""

    def __init__(self, name: str) -> None:
        self._name = name

    def __repr__(self) -> str:
        return f"mirolta.{self._name}"


MISSING = _Marker("MISSING")
NULL = _Marker("NULL")

# Makes a Python object of an interface; the module _object sets it.
wrap: Callable[[Unknown], Any] = lambda reference: reference


class AutomationValue:
    """Base of Python objects that stand for an automation object."""

    __slots__ = ()

    def _automation_reference(self) -> Tuple[int, Unknown]:
        """The type of the value, VT_DISPATCH or VT_UNKNOWN, and its interface."""
        raise NotImplementedError


def _write_integer(number: int, to: VARIANT, as_bytes: bool) -> None:
    if -0x80000000 <= number < 0x80000000:
        to.vt, to.value.i4 = VT_I4, number
    elif 0 <= number < 0x100000000:
        to.vt, to.value.ui4 = VT_UI4, number
    elif as_bytes:
        if number < 0:
            raise OverflowError("the object takes no negative numbers")
        _write_bytes(number.to_bytes((number.bit_length() + 7) // 8, "big"), to)
    elif -0x8000000000000000 <= number < 0x8000000000000000:
        to.vt, to.value.i8 = VT_I8, number
    elif 0 <= number < 0x10000000000000000:
        to.vt, to.value.ui8 = VT_UI8, number
    else:
        _write_text(str(number), to)


def _write_text(text: str, to: VARIANT) -> None:
    to.value.pointer = _texts.allocate(text)
    to.vt = VT_BSTR


def _write_bytes(value: Any, to: VARIANT) -> None:
    to.value.pointer = _arrays.allocate_bytes(value)
    to.vt = VT_ARRAY | VT_UI1


def _write_list(value: Any, to: VARIANT, as_bytes: bool) -> None:
    elements = (VARIANT * len(value))()
    try:
        for element, place in zip(value, elements):
            write(element, place, as_bytes)
        to.value.pointer = _arrays.allocate_variants(elements)
        to.vt = VT_ARRAY | VT_VARIANT
    except BaseException:
        for place in elements:
            runtime().VariantClear(byref(place))
        raise


def _write_decimal(value: decimal.Decimal, to: VARIANT) -> None:
    sign, digits, exponent = value.as_tuple()
    if not isinstance(exponent, int):
        raise OverflowError(f"automation has no decimal number {value}")
    whole = int(decimal.Decimal((0, digits, max(exponent, 0))))
    scale = max(-exponent, 0)
    if scale > _DECIMAL_DIGITS or whole >= 1 << 96:
        raise OverflowError("the decimal number has more digits than automation's: 28")
    place = DECIMAL.from_buffer(to)
    place.scale, place.sign = scale, _DECIMAL_NEGATIVE if sign else 0
    place.hi32, place.lo64 = whole >> 64, whole & 0xFFFFFFFFFFFFFFFF
    to.vt = VT_DECIMAL


def _write_reference(vt: int, reference: Unknown, to: VARIANT) -> None:
    to.value.pointer = reference.added()
    to.vt = vt


def write(value: Any, to: VARIANT, as_bytes: bool = False) -> None:
    """Sets an empty VARIANT, which the caller clears.

    An int that does not fit 32 bits becomes its bytes, most significant first, if `as_bytes` is set;
    otherwise VT_I8 or VT_UI8, and a still larger one its decimal text.
    Raises TypeError for values of other types, OverflowError for numbers and dates out of range.
    """
    if isinstance(value, str):
        _write_text(value, to)
    elif isinstance(value, (bytes, bytearray, memoryview)):
        _write_bytes(value, to)
    elif value is None:
        to.vt = VT_EMPTY
    elif isinstance(value, bool):
        to.vt, to.value.i2 = VT_BOOL, -1 if value else 0
    elif isinstance(value, int):
        _write_integer(value, to, as_bytes)
    elif isinstance(value, AutomationValue):
        _write_reference(*value._automation_reference(), to)
    elif isinstance(value, float):
        to.vt, to.value.r8 = VT_R8, value
    elif isinstance(value, datetime.date):
        to.vt, to.value.r8 = VT_DATE, _dates.from_python(value)
    elif isinstance(value, decimal.Decimal):
        _write_decimal(value, to)
    elif isinstance(value, (list, tuple)):
        _write_list(value, to, as_bytes)
    elif value is NULL:
        to.vt = VT_NULL
    elif value is MISSING:
        to.vt, to.value.i4 = VT_ERROR, signed(DISP_E_PARAMNOTFOUND)
    elif isinstance(value, Unknown):
        _write_reference(VT_UNKNOWN, value, to)
    elif hasattr(value, "__index__"):
        _write_integer(value.__index__(), to, as_bytes)
    elif _stream_server.is_file(value):
        _write_reference(VT_UNKNOWN, _stream_server.serve(value), to)
    else:
        raise TypeError(f"automation has no values of the type {type(value).__name__}")


def _read_error(value: VARIANT) -> Any:
    status = value.value.i4
    return MISSING if status == signed(DISP_E_PARAMNOTFOUND) else status


def _read_decimal(value: VARIANT) -> decimal.Decimal:
    place = DECIMAL.from_buffer(value)
    digits = str(place.hi32 << 64 | place.lo64)
    sign = 1 if place.sign & _DECIMAL_NEGATIVE else 0
    return decimal.Decimal((sign, tuple(map(int, digits)), -place.scale))


def _read_object(value: VARIANT) -> Any:
    address = value.value.pointer
    if not address:
        return None
    served = _stream_server.file_at(address)
    return wrap(borrow(address)) if served is None else served


_READERS: Dict[int, Callable[[VARIANT], Any]] = {
    VT_EMPTY: lambda value: None,
    VT_NULL: lambda value: None,
    VT_I1: lambda value: value.value.i1,
    VT_I2: lambda value: value.value.i2,
    VT_I4: lambda value: value.value.i4,
    VT_INT: lambda value: value.value.i4,
    VT_I8: lambda value: value.value.i8,
    VT_UI1: lambda value: value.value.ui1,
    VT_UI2: lambda value: value.value.ui2,
    VT_UI4: lambda value: value.value.ui4,
    VT_UINT: lambda value: value.value.ui4,
    VT_UI8: lambda value: value.value.ui8,
    VT_R4: lambda value: value.value.r4,
    VT_R8: lambda value: value.value.r8,
    VT_BOOL: lambda value: value.value.i2 != 0,
    VT_DATE: lambda value: _dates.to_python(value.value.r8),
    VT_CY: lambda value: decimal.Decimal(value.value.i8) / _CURRENCY_UNITS,
    VT_BSTR: lambda value: _texts.read(value.value.pointer),
    VT_DECIMAL: _read_decimal,
    VT_ERROR: _read_error,
    VT_DISPATCH: _read_object,
    VT_UNKNOWN: _read_object,
}


def read(value: VARIANT) -> Any:
    """The Python value of a VARIANT, which its owner keeps."""
    vt = value.vt
    reader = _READERS.get(vt)
    if reader is not None:
        return reader(value)
    if vt & VT_BYREF:
        return _read_referent(value)
    if vt & VT_ARRAY:
        return _arrays.read(value.value.pointer, vt & ~VT_ARRAY, _read_element)
    raise TypeError(f"Python has no values of the automation type {vt:#x}")


def _read_referent(value: VARIANT) -> Any:
    copy = VARIANT()
    check(runtime().VariantCopyInd(byref(copy), byref(value)))
    try:
        return read(copy)
    finally:
        runtime().VariantClear(byref(copy))


def _read_element(vt: int, address: int, size: int) -> Any:
    """The element of an array, which the array keeps."""
    if vt == VT_VARIANT:
        return read(VARIANT.from_address(address))
    element = VARIANT()
    if vt == VT_DECIMAL:
        ctypes.memmove(byref(element), address, ctypes.sizeof(DECIMAL))
    else:
        ctypes.memmove(byref(element, VARIANT.value.offset), address, size)
    element.vt = vt
    return read(element)


class Values:
    """Room for several VARIANTs, which are cleared at the end of a with statement."""

    def __init__(self, count: int) -> None:
        array: Type[Any] = VARIANT * count
        self.array: Any = array()

    def __enter__(self) -> Any:
        return self.array

    def __exit__(self, *_: Any) -> None:
        clear = runtime().VariantClear
        for value in self.array:
            if value.vt:
                clear(byref(value))


def write_all(values: List[Any], to: Any, as_bytes: bool) -> None:
    """Writes arguments in the order of the platform: the last one first."""
    for value, place in zip(reversed(values), to):
        write(value, place, as_bytes)
