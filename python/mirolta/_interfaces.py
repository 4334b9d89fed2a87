# SPDX-License-Identifier: MIT
"""Counted references to interfaces, and their members by slot."""
from __future__ import annotations

import ctypes
from ctypes import POINTER, byref, c_int32, c_int64, c_uint16, c_uint32, c_uint64, c_void_p
from functools import partial
from typing import Any, Callable, Optional, Type, TypeVar

from . import _errors
from ._statuses import E_NOINTERFACE
from ._structures import (DISPPARAMS, EXCEPINFO, FUNCDESC, GUID, IID_IClassFactory, IID_IDispatch,
                          IID_IStream, IID_ISupportErrorInfo, IID_IUnknown, STATSTG, TYPEATTR,
                          VARIANT, function_type)

_POINTER_SIZE = ctypes.sizeof(c_void_p)
_OUT = POINTER(c_void_p)


def table_of(address: int) -> int:
    """The address of the table of functions of the interface at `address`."""
    return c_void_p.from_address(address).value or 0


def _function_at(address: int, slot: int) -> int:
    return c_void_p.from_address(table_of(address) + slot * _POINTER_SIZE).value or 0


class Slot:
    """A member of an interface: its place in the table of functions, and its parameters."""

    def __init__(self, index: int, *parameters: Any, result: Any = c_int32) -> None:
        self._index = index
        self._prototype = function_type(result, c_void_p, *parameters)

    def __get__(self, reference: Unknown, owner: Any) -> Callable[..., int]:
        function = self._prototype(_function_at(reference.address, self._index))
        # The reference itself is the first argument, so that the call keeps it alive.
        return partial(function, reference)


_RELEASE = function_type(c_uint32, c_void_p)
Interface = TypeVar("Interface", bound="Unknown")


class Unknown:
    """Owns one reference to an object, which it gives up when it is destroyed."""

    IID = IID_IUnknown
    __slots__ = ("address", "__weakref__")

    QueryInterface = Slot(0, POINTER(GUID), _OUT)
    AddRef = Slot(1, result=c_uint32)

    def __init__(self, address: int) -> None:
        """Takes over the caller's reference to the object at `address`, which is not 0."""
        self.address = address

    @property
    def _as_parameter_(self) -> c_void_p:
        return c_void_p(self.address)

    def __del__(self) -> None:
        _RELEASE(_function_at(self.address, 2))(self.address)

    def try_query(self, interface: Type[Interface]) -> Optional[Interface]:
        """The object's other interface, or None if it does not have it."""
        out = c_void_p()
        status = self.QueryInterface(byref(interface.IID), byref(out))
        if status < 0 or not out.value:
            return None
        return interface(out.value)

    def query(self, interface: Type[Interface]) -> Interface:
        found = self.try_query(interface)
        if found is None:
            raise _errors.AutomationError(E_NOINTERFACE)
        return found

    def identity(self) -> int:
        """The address that is the same for all references to one object."""
        return self.query(Unknown).address

    def added(self) -> int:
        """The address with one more reference, which the receiver owns."""
        self.AddRef()
        return self.address


def borrow_as(interface: Type[Interface], address: int) -> Interface:
    """A reference to the interface at `address`, to which the caller keeps its own reference."""
    reference = interface(address)
    reference.AddRef()
    return reference


def borrow(address: int) -> Unknown:
    return borrow_as(Unknown, address)


class ClassFactory(Unknown):
    IID = IID_IClassFactory
    __slots__ = ()
    CreateInstance = Slot(3, c_void_p, POINTER(GUID), _OUT)


class SupportErrorInfo(Unknown):
    IID = IID_ISupportErrorInfo
    __slots__ = ()
    InterfaceSupportsErrorInfo = Slot(3, POINTER(GUID))


class ErrorInfo(Unknown):
    __slots__ = ()
    GetSource = Slot(4, _OUT)
    GetDescription = Slot(5, _OUT)


class Dispatch(Unknown):
    IID = IID_IDispatch
    __slots__ = ()
    GetTypeInfo = Slot(4, c_uint32, c_uint32, _OUT)
    GetIDsOfNames = Slot(5, POINTER(GUID), _OUT, c_uint32, c_uint32, POINTER(c_int32))
    Invoke = Slot(6, c_int32, POINTER(GUID), c_uint32, c_uint16, POINTER(DISPPARAMS),
                  POINTER(VARIANT), POINTER(EXCEPINFO), POINTER(c_uint32))


class TypeInfo(Unknown):
    __slots__ = ()
    GetTypeAttr = Slot(3, POINTER(POINTER(TYPEATTR)))
    GetFuncDesc = Slot(5, c_uint32, POINTER(POINTER(FUNCDESC)))
    GetNames = Slot(7, c_int32, _OUT, c_uint32, POINTER(c_uint32))
    GetDocumentation = Slot(12, c_int32, _OUT, _OUT, POINTER(c_uint32), _OUT)
    ReleaseTypeAttr = Slot(19, POINTER(TYPEATTR), result=None)
    ReleaseFuncDesc = Slot(20, POINTER(FUNCDESC), result=None)


class Stream(Unknown):
    IID = IID_IStream
    __slots__ = ()
    Read = Slot(3, c_void_p, c_uint32, POINTER(c_uint32))
    Write = Slot(4, c_void_p, c_uint32, POINTER(c_uint32))
    Seek = Slot(5, c_int64, c_uint32, POINTER(c_uint64))
    SetSize = Slot(6, c_uint64)
    CopyTo = Slot(7, c_void_p, c_uint64, POINTER(c_uint64), POINTER(c_uint64))
    Commit = Slot(8, c_uint32)
    Stat = Slot(12, POINTER(STATSTG), c_uint32)
