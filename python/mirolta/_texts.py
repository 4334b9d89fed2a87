# SPDX-License-Identifier: MIT
"""Texts: Python's str and the platform's counted 16-bit texts.

Zero characters and lone surrogates are kept. Two surrogates that make a pair come back as the one
character that they encode.
"""
from __future__ import annotations

import ctypes
from typing import Any

from ._library import runtime


def encode(text: str) -> bytes:
    """The text's 16-bit units, little-endian, without a terminator."""
    return text.encode("utf-16-le", "surrogatepass")


def terminated(text: str) -> Any:
    """The text as an array of bytes that ends with a zero unit, for functions that want such."""
    units = encode(text)
    return ctypes.create_string_buffer(units, len(units) + 2)


def allocate(text: str) -> int:
    """A new BSTR, which the receiver frees."""
    units = encode(text)
    address = runtime().SysAllocStringLen(units, len(units) // 2)
    if not address:
        raise MemoryError
    return int(address)


def read(address: int) -> str:
    """The text of a BSTR, which its owner keeps; a null one is empty."""
    if not address:
        return ""
    size = runtime().SysStringByteLen(address) & ~1
    return ctypes.string_at(address, size).decode("utf-16-le", "surrogatepass")


def take(address: int) -> str:
    """The text of a BSTR, which is freed."""
    try:
        return read(address)
    finally:
        runtime().SysFreeString(address)
