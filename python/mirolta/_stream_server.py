# SPDX-License-Identifier: MIT
"""A stream of the platform over a file of Python, for objects that read or write it.

The object holds counted references to the stream; a stream that nobody refers to is forgotten, and
with it the file. Python's garbage collector does not see these references: a file that itself refers
to the filter it is bound to keeps both alive, until the filter is bound to another file, or `forget`
takes the file away.
"""
from __future__ import annotations

import ctypes
import errno
import io
from ctypes import POINTER, byref, c_int32, c_int64, c_uint32, c_uint64, c_void_p
from typing import Any, Callable, Dict, List, Optional, Type

from . import _calls
from ._interfaces import Stream, borrow
from ._statuses import (E_FAIL, E_NOINTERFACE, E_NOTIMPL, E_OUTOFMEMORY, E_PENDING, E_POINTER,
                        E_UNEXPECTED, S_FALSE, S_OK, STG_E_ACCESSDENIED, STG_E_FILENOTFOUND,
                        STG_E_INVALIDFUNCTION, STG_E_INVALIDPARAMETER, STG_E_INVALIDPOINTER,
                        STG_E_MEDIUMFULL, STG_E_REVERTED, signed)
from ._structures import (GUID, IID_ISequentialStream, IID_IStream, IID_IUnknown, STATSTG,
                          STGTY_STREAM, function_type)

_COPY_SIZE = 64 * 1024
_INTERFACES = tuple(bytes(iid) for iid in (IID_IUnknown, IID_ISequentialStream, IID_IStream))
_MODE_WRITE = 1
_MODE_READ_WRITE = 2

# A system lacks some of these numbers.
_ERRNO_STATUSES: Dict[int, int] = {
    getattr(errno, name): status
    for name, status in [
        ("ENOSPC", STG_E_MEDIUMFULL), ("EFBIG", STG_E_MEDIUMFULL), ("EDQUOT", STG_E_MEDIUMFULL),
        ("EACCES", STG_E_ACCESSDENIED), ("EPERM", STG_E_ACCESSDENIED),
        ("EROFS", STG_E_ACCESSDENIED), ("ENOENT", STG_E_FILENOTFOUND),
        ("EINVAL", STG_E_INVALIDPARAMETER), ("ENOMEM", E_OUTOFMEMORY),
        ("ESPIPE", STG_E_INVALIDFUNCTION)]
    if hasattr(errno, name)}


def status_of(exception: BaseException) -> int:
    """What an object learns of an exception."""
    if isinstance(exception, io.UnsupportedOperation):
        return STG_E_INVALIDFUNCTION
    if isinstance(exception, BlockingIOError):
        return E_PENDING
    if isinstance(exception, OSError):
        return _ERRNO_STATUSES.get(exception.errno or 0, E_FAIL)
    if isinstance(exception, MemoryError):
        return E_OUTOFMEMORY
    return getattr(exception, "status", E_FAIL)  # of an AutomationError


# The streams that somebody refers to, by the address of their memory.
_served: Dict[int, _Server] = {}
_functions: List[Any] = []


class _Server:
    """One stream. `memory` is what the platform sees of it: a pointer to the table of functions."""

    def __init__(self, file: Any) -> None:
        self.file = file
        self.at_end = False
        # One entry a reference: append and pop are atomic, whatever runs between other instructions.
        self.references = [None]
        self.memory = c_void_p(ctypes.addressof(_table))
        self.address = ctypes.addressof(self.memory)
        _served[self.address] = self

    def open_file(self) -> Any:
        if self.file is None:
            raise _Forgotten
        return self.file


class _Forgotten(Exception):
    status = STG_E_REVERTED


def _member(*parameters: Any, result: Any = c_int32) -> Callable[[Callable[..., int]], None]:
    """Makes a function of a stream the next one of the table."""

    def add(function: Callable[..., int]) -> None:
        def run(this: int, *arguments: Any) -> int:
            server = _served.get(this)
            if server is None:
                return signed(E_UNEXPECTED)
            try:
                return signed(function(server, *arguments))
            except BaseException as exception:  # pylint: disable=broad-except
                if not isinstance(exception, _Forgotten):
                    _calls.keep(exception)
                return signed(status_of(exception))

        _functions.append(function_type(result, c_void_p, *parameters)(run))

    return add


@_member(POINTER(GUID), POINTER(c_void_p))
def _query_interface(server: _Server, iid: Any, out: Any) -> int:
    if not out or not iid:
        return E_POINTER
    if bytes(iid.contents) not in _INTERFACES:
        out[0] = None
        return E_NOINTERFACE
    server.references.append(None)
    out[0] = server.address
    return S_OK


@_member(result=c_uint32)
def _add_ref(server: _Server) -> int:
    server.references.append(None)
    return len(server.references)


@_member(result=c_uint32)
def _release(server: _Server) -> int:
    server.references.pop()
    left = len(server.references)
    if left == 0:
        _served.pop(server.address, None)
    return left


@_member(c_void_p, c_uint32, POINTER(c_uint32))
def _read(server: _Server, to: Optional[int], count: int, out: Any) -> int:
    if out:
        out[0] = 0
    if not to and count:
        return STG_E_INVALIDPOINTER
    data = server.open_file().read(count)
    if data is None:
        return E_PENDING
    data = memoryview(data).cast("B")
    if len(data) > count:
        raise ValueError(f"read({count}) returned {len(data)} bytes")
    if len(data):
        room: Type[Any] = ctypes.c_ubyte * len(data)
        memoryview(room.from_address(to)).cast("B")[:] = data
    if out:
        out[0] = len(data)
    server.at_end = count > 0 and len(data) == 0
    return S_FALSE if server.at_end else S_OK


@_member(c_void_p, c_uint32, POINTER(c_uint32))
def _write(server: _Server, data: Optional[int], count: int, out: Any) -> int:
    if out:
        out[0] = 0
    if not data and count:
        return STG_E_INVALIDPOINTER
    file = server.open_file()
    content = ctypes.string_at(data, count) if data else b""
    done = 0
    while done < count:
        taken = file.write(memoryview(content)[done:] if done else content)
        if taken is None:
            # A raw file takes nothing now; what is no file of the library io need not return a count.
            if isinstance(file, io.RawIOBase):
                return E_PENDING
            taken = count - done
        if not 0 < taken <= count - done:
            return STG_E_MEDIUMFULL
        done += taken
        if out:
            out[0] = done
    return S_OK


@_member(c_int64, c_uint32, POINTER(c_uint64))
def _seek(server: _Server, move: int, origin: int, out: Any) -> int:
    file = server.open_file()
    if origin not in (io.SEEK_SET, io.SEEK_CUR, io.SEEK_END):
        return STG_E_INVALIDFUNCTION
    if not hasattr(file, "seek"):
        return STG_E_INVALIDFUNCTION
    position = file.seek(move, origin)
    if out:
        out[0] = file.tell() if position is None else position
    return S_OK


@_member(c_uint64)
def _set_size(server: _Server, size: int) -> int:
    file = server.open_file()
    if not hasattr(file, "truncate"):
        return STG_E_INVALIDFUNCTION
    file.truncate(size)
    return S_OK


@_member(c_void_p, c_uint64, POINTER(c_uint64), POINTER(c_uint64))
def _copy_to(server: _Server, to: Optional[int], count: int, read: Any, written: Any) -> int:
    for out in (read, written):
        if out:
            out[0] = 0
    if not to:
        return STG_E_INVALIDPOINTER
    target = borrow(to).query(Stream)
    file = server.open_file()
    while count:
        data = file.read(min(count, _COPY_SIZE))
        if not data:
            break
        count -= len(data)
        if read:
            read[0] += len(data)
        # A digest filter without a stream sets the count only if it is not 0.
        taken = c_uint32(len(data))
        status = _calls.call(target.Write, data, len(data), byref(taken))
        if status < 0:
            return status
        if written:
            written[0] += taken.value
        if taken.value < len(data):
            return STG_E_MEDIUMFULL
    return S_OK


@_member(c_uint32)
def _commit(server: _Server, _flags: int) -> int:
    getattr(server.open_file(), "flush", lambda: None)()
    return S_OK


@_member()
def _revert(_server: _Server) -> int:
    return E_NOTIMPL


@_member(c_uint64, c_uint64, c_uint32)
def _lock_region(_server: _Server, *_arguments: int) -> int:
    return STG_E_INVALIDFUNCTION


@_member(c_uint64, c_uint64, c_uint32)
def _unlock_region(_server: _Server, *_arguments: int) -> int:
    return STG_E_INVALIDFUNCTION


def _can(file: Any, question: str, member: str) -> bool:
    return bool(getattr(file, question)()) if hasattr(file, question) else hasattr(file, member)


@_member(POINTER(STATSTG), c_uint32)
def _stat(server: _Server, out: Any, _flags: int) -> int:
    if not out:
        return STG_E_INVALIDPOINTER
    file = server.open_file()
    statistics = STATSTG()
    statistics.type = STGTY_STREAM
    if _can(file, "seekable", "seek"):
        before = file.tell()
        file.seek(0, io.SEEK_END)
        statistics.size = file.tell()
        file.seek(before)
    if _can(file, "writable", "write"):
        statistics.mode = _MODE_READ_WRITE if _can(file, "readable", "read") else _MODE_WRITE
    out[0] = statistics
    return S_OK


@_member(POINTER(c_void_p))
def _clone(_server: _Server, out: Any) -> int:
    if out:
        out[0] = None
    return E_NOTIMPL


_table = (c_void_p * len(_functions))(
    *(ctypes.cast(function, c_void_p).value for function in _functions))


def is_file(value: Any) -> bool:
    return callable(getattr(value, "read", None)) or callable(getattr(value, "write", None))


def serve(file: Any) -> Stream:
    """A reference to a new stream over the file."""
    return Stream(_Server(file).address)


def file_at(address: int) -> Any:
    """The file of the stream at an address; None if it is not such a stream."""
    server = _served.get(address)
    return None if server is None else server.file


def has_ended(stream: Stream) -> bool:
    """Whether the last read of the stream over a file found the file's end."""
    server = _served.get(stream.address)
    return server is None or server.at_end


def forget(stream: Stream) -> None:
    """Takes the file away from its stream, whoever still refers to that."""
    server = _served.get(stream.address)
    if server is not None:
        server.file = None


def served_count() -> int:
    """How many streams over files there are; for tests."""
    return len(_served)
