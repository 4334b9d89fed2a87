# SPDX-License-Identifier: MIT
"""Mirolta: digests, ciphers, big numbers, RSA and stream filters.

    mirolta.new("sha256", b"abc").hexdigest()       as hashlib does
    mirolta.Number(7) ** 100 % 13                    integers that work with int
    mirolta.create("Vardeko.crypt.HashObject")      the automation objects themselves

help(obj) describes an object's members.
"""
from __future__ import annotations

from typing import Any

from . import _library, hashes, numbers, streams
from ._errors import AutomationError
from ._library import LibraryNotFoundError
from ._object import IndexedProperty, Object, address_of, members
from ._values import MISSING, NULL
from .ciphers import Cipher
from .hashes import (Hash, algorithms_available, algorithms_guaranteed, file_digest, hmac, md5, new,
                     sha1, sha256)
from .numbers import Number
from .rsa import RSAKey
from .streams import CryptStream, DigestStream, Stream

__all__ = [
    "AutomationError", "Cipher", "CryptStream", "DigestStream", "Hash", "IndexedProperty",
    "LibraryNotFoundError", "MISSING", "NULL", "Number", "Object", "RSAKey", "Stream",
    "address_of", "algorithms_available", "algorithms_guaranteed", "create", "file_digest",
    "hashes", "hmac", "md5", "members", "new", "numbers", "sha1", "sha256", "streams"]

__version__: str  # read from a file when it is asked for


def create(prog_id: str) -> Object:
    """A new object of the class with this ProgID."""
    return Object(prog_id)


def __getattr__(name: str) -> Any:
    if name == "__version__":
        return _library.version()
    raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
