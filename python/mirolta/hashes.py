# SPDX-License-Identifier: MIT
"""Digests and HMACs with the interface of hashlib and hmac.

What HashObject cannot do raises an exception that says so: to continue after digest(), and to copy
a computation that has begun.
"""
from __future__ import annotations

import threading
from typing import Any, Callable, Optional, Union

from ._arrays import byte_view
from ._names import HASHES, algorithm, plain
from ._object import Object

algorithms_guaranteed = frozenset(HASHES)
algorithms_available = algorithms_guaranteed

_PIECE = 1 << 20
_Digestmod = Union[str, Callable[[], Any]]


def hmac_key(key: bytes) -> bytes:
    """The key as the objects take it: HMAC fills a key with zeros, so that the empty key is one zero
    byte too."""
    return key or b"\0"


class Hash:
    """A digest of bytes that are given in pieces; made by new(), md5(), sha1(), sha256(), hmac()."""

    __slots__ = ("_object", "_name", "_key", "_has_data", "_digest", "_lock")

    def __init__(self, name: str, data: Any = b"", key: Optional[bytes] = None) -> None:
        self._name = plain(name)
        self._key = key
        self._object = Object("Vardeko.crypt.HashObject")
        self._object.InitHash(algorithm(name, HASHES))
        if key is not None:
            self._object.Key = hmac_key(key)
        self._has_data = False
        self._digest: Optional[bytes] = None
        self._lock = threading.Lock()
        self.update(data)

    @property
    def name(self) -> str:
        return self._name if self._key is None else f"hmac-{self._name}"

    @property
    def digest_size(self) -> int:
        return int(self._object.HashSize)

    @property
    def block_size(self) -> int:
        return int(self._object.BlockSize)

    def update(self, data: Any, /) -> None:
        """Adds a piece of data: bytes, or anything else that has a buffer."""
        if isinstance(data, str):
            raise TypeError("Strings must be encoded before hashing")
        view = byte_view(data)
        with self._lock:
            if not len(view):
                return
            if self._digest is not None:
                raise ValueError(f"{self.name}: the computation ended with digest(), "
                                 "and HashObject cannot continue one")
            self._has_data = True
            for start in range(0, len(view), _PIECE):
                self._object.HashUpdate(view[start:start + _PIECE])

    def digest(self) -> bytes:
        """The digest. It ends the computation."""
        with self._lock:
            if self._digest is None:
                self._object.HashFinalize()
                self._digest = self._object.BinaryValue
            return self._digest

    def hexdigest(self) -> str:
        """The digest in lowercase hexadecimal. It ends the computation."""
        return self.digest().hex()

    def copy(self) -> Hash:
        """A second object in the same state, if that is empty or ended.

        Raises NotImplementedError while a computation is in progress.
        """
        with self._lock:
            if self._has_data and self._digest is None:
                raise NotImplementedError(f"{self.name}: HashObject cannot copy a computation "
                                          "that is in progress")
            made = Hash(self._name, b"", self._key)
            made._digest = self._digest
            return made

    def __repr__(self) -> str:
        return f"<{self.name} mirolta.hashes.Hash object at {id(self):#x}>"


def new(name: str, data: Any = b"", *, usedforsecurity: bool = True) -> Hash:
    """A new digest: "md5", "sha1" or "sha256"."""
    del usedforsecurity  # as hashlib has it; nothing is restricted here
    return Hash(name, data)


def md5(data: Any = b"", *, usedforsecurity: bool = True) -> Hash:
    """A new MD5 digest. Collisions are practical."""
    return new("md5", data, usedforsecurity=usedforsecurity)


def sha1(data: Any = b"", *, usedforsecurity: bool = True) -> Hash:
    """A new SHA-1 digest. Collisions are practical."""
    return new("sha1", data, usedforsecurity=usedforsecurity)


def sha256(data: Any = b"", *, usedforsecurity: bool = True) -> Hash:
    """A new SHA-256 digest."""
    return new("sha256", data, usedforsecurity=usedforsecurity)


def hmac(key: bytes, msg: Any = None, digestmod: _Digestmod = "") -> Hash:
    """A new HMAC, as hmac.new(); digestmod is the name of a digest, or md5, sha1 or sha256."""
    if not isinstance(key, (bytes, bytearray)):
        raise TypeError(f"key: expected bytes or bytearray, but got {type(key).__name__!r}")
    if not digestmod:
        raise TypeError("Missing required argument 'digestmod'.")
    name = digestmod if isinstance(digestmod, str) else digestmod().name
    return Hash(name, b"" if msg is None else msg, bytes(key))


def file_digest(file: Any, digest: _Digestmod, /) -> Hash:
    """The digest of what a file has left, as hashlib.file_digest()."""
    made = new(digest) if isinstance(digest, str) else digest()
    while True:
        data = file.read(_PIECE)
        if not data:
            return made  # type: ignore[no-any-return]
        made.update(data)
