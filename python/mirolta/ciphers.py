# SPDX-License-Identifier: MIT
"""AES and DES, block by block.

Equal blocks give equal blocks, and nothing is authenticated: a primitive for protocols that exist,
not for new ones.
"""
from __future__ import annotations

import threading
from typing import Any

from ._arrays import byte_view
from ._names import CIPHERS, algorithm
from ._object import Object

_PIECE = 1 << 20  # what one call takes


class Cipher:
    """A cipher with its key: Cipher("aes", key) of 16, 24 or 32 bytes, Cipher("des", key) of 8, or
    of 16 or 24 for triple DES.

    pad_type  the pad bytes of an incomplete last block: their value, or -1 for random ones
    """

    def __init__(self, name: str, key: bytes, *, pad_type: int = 0) -> None:
        self._object = Object("Vardeko.crypt.Symmetric")
        self._object.Init(algorithm(name, CIPHERS))
        self._object.Key = bytes(key)
        self._object.PadType = pad_type
        self._lock = threading.Lock()

    @property
    def block_size(self) -> int:
        return int(self._object.BlockSize)

    def encrypt(self, data: Any, *, last: bool = True) -> bytes:
        """The blocks that the data completes; the last piece of data is padded."""
        return self._transform(self._object.Encrypt, data, last)

    def decrypt(self, data: Any, *, last: bool = True) -> bytes:
        """The blocks that the data completes. A pad is not removed."""
        return self._transform(self._object.Decrypt, data, last)

    def reset(self) -> None:
        """Discards what is left of earlier pieces."""
        with self._lock:
            self._object.Reset()

    def _transform(self, member: Any, data: Any, last: bool) -> bytes:
        view = byte_view(data)
        with self._lock:  # the pieces of one call stay together
            done = [member(view[start:start + _PIECE], False)
                    for start in range(0, len(view), _PIECE)]
            if last:
                done.append(member(b"", True))
        return b"".join(done)
