# SPDX-License-Identifier: MIT
"""Stream filters as files, and streams of automation objects as files.

    with mirolta.DigestStream(file, reading="sha256") as filter:
        shutil.copyfileobj(filter, target)
        print(filter.reading_digest().hex())

A filter reads from and writes to a file of Python (anything with read or write), or another filter.
Closing it does not close that file. Exceptions of the file arrive unchanged at the filter's caller.
"""
from __future__ import annotations

import ctypes
import io
from ctypes import byref, c_uint32, c_uint64
from typing import Any, Optional, Tuple, Union

from . import _calls, _interfaces, _stream_server
from ._arrays import byte_view
from ._errors import check
from ._interfaces import Unknown, borrow
from ._library import runtime
from ._names import CIPHERS, HASHES, algorithm
from ._object import Object
from ._structures import VT_UNKNOWN
from ._values import AutomationValue
from .hashes import hmac_key

_LARGEST_CALL = 1 << 20  # what a filter's queue holds at once


class Stream(AutomationValue, io.RawIOBase):
    """A raw file over a stream of the platform (IStream).

    Takes an object that is a stream too, an interface, or the address of one, to which its owner
    keeps a reference.
    """

    _stream: Optional[_interfaces.Stream] = None

    def __init__(self, source: Union[AutomationValue, Unknown, int]) -> None:
        super().__init__()
        runtime()
        if isinstance(source, AutomationValue):
            reference = source._automation_reference()[1]
        else:
            reference = borrow(source) if isinstance(source, int) else source
        self._stream = reference.query(_interfaces.Stream)

    def _open_stream(self) -> _interfaces.Stream:
        if self._stream is None:
            raise ValueError("I/O operation on closed file")
        return self._stream

    def _automation_reference(self) -> Tuple[int, Unknown]:
        return VT_UNKNOWN, self._open_stream()

    def readable(self) -> bool:
        self._open_stream()
        return True

    def writable(self) -> bool:
        self._open_stream()
        return True

    def seekable(self) -> bool:
        position = c_uint64()
        stream = self._open_stream()
        try:
            return _calls.call(stream.Seek, 0, io.SEEK_CUR, byref(position)) >= 0
        except (OSError, AttributeError):
            return False

    def readinto(self, buffer: Any) -> int:
        stream = self._open_stream()
        view = memoryview(buffer).cast("B")
        size = min(view.nbytes, _LARGEST_CALL)
        if size == 0:
            return 0
        room = (ctypes.c_ubyte * size).from_buffer(view)
        taken = c_uint32()
        check(_calls.call(stream.Read, room, size, byref(taken)))
        return taken.value

    def write(self, data: Any) -> int:
        stream = self._open_stream()
        view = byte_view(data)
        done = 0
        while done < len(view):
            piece = bytes(view[done:done + _LARGEST_CALL])
            # A digest filter without a stream sets the count only if it is not 0.
            taken = c_uint32(len(piece))
            check(_calls.call(stream.Write, piece, len(piece), byref(taken)))
            if taken.value == 0:
                break
            done += taken.value
        return done

    def seek(self, offset: int, whence: int = io.SEEK_SET) -> int:
        position = c_uint64()
        check(_calls.call(self._open_stream().Seek, offset, whence, byref(position)))
        return position.value

    def tell(self) -> int:
        return self.seek(0, io.SEEK_CUR)

    def truncate(self, size: Optional[int] = None) -> int:
        wanted = self.tell() if size is None else size
        check(_calls.call(self._open_stream().SetSize, wanted))
        return wanted

    def close(self) -> None:
        """Gives up the stream, which lives on as long as others refer to it."""
        if not self.closed:
            try:
                super().close()
            finally:
                self._stream = None


class _Filter(Stream):
    """A filter in front of a file."""

    _PROG_ID = ""
    _server: Optional[_interfaces.Stream] = None

    def __init__(self, file: Any) -> None:
        self.object = Object(self._PROG_ID)
        super().__init__(self.object)
        if file is None:
            return
        if isinstance(file, (Object, Unknown)):
            file = Stream(file)
        self._server = _stream_server.serve(file)
        self.object.Stream = self._server

    def seekable(self) -> bool:
        self._open_stream()
        return not self.object.SeekingForbidden and super().seekable()

    def seek(self, offset: int, whence: int = io.SEEK_SET) -> int:
        self._open_stream()
        if self.object.SeekingForbidden and (offset, whence) != (0, io.SEEK_CUR):
            raise io.UnsupportedOperation("the filter's SeekingForbidden is set")
        return super().seek(offset, whence)

    def close(self) -> None:
        """Ends the filter and gives up the file, which stays open."""
        if self.closed:
            return
        try:
            super().close()
        finally:
            if self._server is not None:
                _stream_server.forget(self._server)
                self._server = None


class DigestStream(_Filter):
    """Digests what is read from a file, and what is written to it.

    reading, writing          the algorithms: "md5", "sha1", "sha256", or None for no digest
    reading_key, writing_key  the keys of HMACs

    Without a file it digests what is written. `object` is the automation object.
    """

    _PROG_ID = "Vardeko.crypt.ToviStreamDigest"

    def __init__(self, file: Any = None, *, reading: Optional[str] = None,
                 writing: Optional[str] = None, reading_key: Optional[bytes] = None,
                 writing_key: Optional[bytes] = None) -> None:
        super().__init__(file)
        if reading is not None:
            self.object.ReadAlgorithm = algorithm(reading, HASHES)
        if reading_key is not None:
            self.object.ReadKey = hmac_key(reading_key)
        if writing is not None:
            self.object.WriteAlgorithm = algorithm(writing, HASHES)
        if writing_key is not None:
            self.object.WriteKey = hmac_key(writing_key)

    def reading_digest(self) -> bytes:
        """The digest of what was read; later reads do not change it."""
        return self._digest(self.object.ReadBinaryValue, "reading")

    def writing_digest(self) -> bytes:
        """The digest of what was written; later writes do not change it."""
        return self._digest(self.object.WriteBinaryValue, "writing")

    @staticmethod
    def _digest(value: Optional[bytes], direction: str) -> bytes:
        if value is None:
            raise ValueError(f"no algorithm is chosen for {direction}")
        return value


class CryptStream(_Filter):
    """Decrypts what is read from a file, and encrypts what is written to it, block by block.

    algorithm  "aes" or "des"; key  its key in bytes
    decrypt_reading, decrypt_writing  False and True encrypt and decrypt
    pad_type   the pad bytes of an incomplete last block: their value, or -1 for random ones

    `close` pads and writes an incomplete last block; a decrypted pad is not removed. Equal blocks
    give equal blocks, and nothing is authenticated. `object` is the automation object.
    """

    _PROG_ID = "Vardeko.crypt.ToviStreamCrypt"
    _reading_ended = False

    def __init__(self, file: Any, algorithm_name: str, key: bytes, *, decrypt_reading: bool = True,
                 decrypt_writing: bool = False, pad_type: int = 0) -> None:
        name = algorithm(algorithm_name, CIPHERS)
        if file is None:
            raise TypeError("a cipher needs a file")
        super().__init__(file)
        for direction, decrypts in (("Read", decrypt_reading), ("Write", decrypt_writing)):
            setattr(self.object, direction + "Algorithm", name)
            setattr(self.object, direction + "Key", key)
            setattr(self.object, direction + "PadType", pad_type)
            setattr(self.object, direction + "Decrypt", decrypts)

    def readinto(self, buffer: Any) -> int:
        # No bytes mean that no block is complete yet, or the end of the file.
        if memoryview(buffer).nbytes == 0:
            return 0
        while True:
            count = super().readinto(buffer)
            if count or self._reading_ended:
                return count
            if self._server is None or _stream_server.has_ended(self._server):
                self.object.ReadFinalize()
                self._reading_ended = True

    def finalize(self) -> None:
        """Pads and writes what is left of the data written."""
        self._open_stream()
        self.object.WriteFinalize()

    def close(self) -> None:
        if self.closed:
            return
        try:
            self.finalize()
        finally:
            super().close()
