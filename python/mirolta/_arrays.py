# SPDX-License-Identifier: MIT
"""Automation arrays: byte arrays and Python's buffers, other arrays and lists."""
from __future__ import annotations

import ctypes
from ctypes import byref, c_int32, c_void_p
from typing import Any, Callable, List

from ._errors import check
from ._library import runtime
from ._structures import VARIANT, VT_UI1, VT_VARIANT

# Converts the element of the given type and size at an address.
ReadElement = Callable[[int, int, int], Any]


class _Data:
    """The address of an array's elements, in a with statement that locks the array."""

    def __init__(self, array: int) -> None:
        self._array = array

    def __enter__(self) -> int:
        data = c_void_p()
        check(runtime().SafeArrayAccessData(self._array, byref(data)))
        return data.value or 0

    def __exit__(self, *_: Any) -> None:
        runtime().SafeArrayUnaccessData(self._array)


def _allocate(element: int, count: int) -> int:
    array = runtime().SafeArrayCreateVector(element, 0, count)
    if not array:
        raise MemoryError
    return int(array)


def byte_view(value: Any) -> memoryview:
    """The bytes of a buffer; a copy of them if they are not one after the other."""
    view = memoryview(value)
    return view.cast("B") if view.c_contiguous else memoryview(view.tobytes())


def allocate_bytes(value: Any) -> int:
    """A new byte array with the content of a buffer; the receiver destroys it."""
    view = byte_view(value)
    array = _allocate(VT_UI1, view.nbytes)
    if view.nbytes:
        with _Data(array) as data:
            room = (ctypes.c_ubyte * view.nbytes).from_address(data)
            memoryview(room).cast("B")[:] = view
    return array


def allocate_variants(values: Any) -> int:
    """A new array that takes over the VARIANTs; the receiver destroys it."""
    array = _allocate(VT_VARIANT, len(values))
    if len(values):
        with _Data(array) as data:
            ctypes.memmove(data, values, len(values) * ctypes.sizeof(VARIANT))
    return array


def _lengths(array: int) -> List[int]:
    """The number of elements of each dimension, the leftmost first."""
    lower, upper = c_int32(), c_int32()
    lengths = []
    for dimension in range(1, runtime().SafeArrayGetDim(array) + 1):
        check(runtime().SafeArrayGetLBound(array, dimension, byref(lower)))
        check(runtime().SafeArrayGetUBound(array, dimension, byref(upper)))
        lengths.append(upper.value - lower.value + 1)
    return lengths


def read(array: int, element: int, read_element: ReadElement) -> Any:
    """The array's content, which its owner keeps: bytes, or a list, nested by dimensions."""
    if not array:
        return b"" if element == VT_UI1 else []
    lengths = _lengths(array)
    size = runtime().SafeArrayGetElemsize(array)
    with _Data(array) as data:
        if element == VT_UI1 and len(lengths) == 1:
            return ctypes.string_at(data, lengths[0])

        def part(dimension: int, offset: int, stride: int) -> List[Any]:
            # The leftmost index varies fastest.
            places = range(offset, offset + lengths[dimension] * stride, stride)
            if dimension + 1 == len(lengths):
                return [read_element(element, data + place, size) for place in places]
            return [part(dimension + 1, place, stride * lengths[dimension]) for place in places]

        return part(0, 0, size)
