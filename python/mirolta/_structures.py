# SPDX-License-Identifier: MIT
"""Structures and constants of the platform's automation interfaces, with its binary layout."""
from __future__ import annotations

import ctypes
import os
import uuid
from ctypes import (POINTER, Structure, Union, c_double, c_float, c_int8, c_int16, c_int32, c_int64,
                    c_size_t, c_uint8, c_uint16, c_uint32, c_uint64, c_void_p)
from typing import Any

ON_WINDOWS = os.name == "nt"

# The type of a member of an interface, and of the system's functions: stdcall on 32-bit Windows.
# These functions release the interpreter's lock during the call.
function_type: Any = getattr(ctypes, "WINFUNCTYPE") if ON_WINDOWS else ctypes.CFUNCTYPE

VT_EMPTY = 0
VT_NULL = 1
VT_I2 = 2
VT_I4 = 3
VT_R4 = 4
VT_R8 = 5
VT_CY = 6
VT_DATE = 7
VT_BSTR = 8
VT_DISPATCH = 9
VT_ERROR = 10
VT_BOOL = 11
VT_VARIANT = 12
VT_UNKNOWN = 13
VT_DECIMAL = 14
VT_I1 = 16
VT_UI1 = 17
VT_UI2 = 18
VT_UI4 = 19
VT_I8 = 20
VT_UI8 = 21
VT_INT = 22
VT_UINT = 23
VT_VOID = 24
VT_HRESULT = 25
VT_PTR = 26
VT_ARRAY = 0x2000
VT_BYREF = 0x4000

DISPATCH_METHOD = 1
DISPATCH_PROPERTYGET = 2
DISPATCH_PROPERTYPUT = 4
DISPATCH_PROPERTYPUTREF = 8
DISPID_VALUE = 0
DISPID_PROPERTYPUT = -3
LOCALE_USER_DEFAULT = 0x0400
FUNCFLAG_FRESTRICTED = 1
PARAMFLAG_FOPT = 0x10
PARAMFLAG_FHASDEFAULT = 0x20
STGTY_STREAM = 2


class GUID(Structure):
    _fields_ = [("data1", c_uint32), ("data2", c_uint16), ("data3", c_uint16),
                ("data4", c_uint8 * 8)]

    @classmethod
    def of(cls, text: str) -> GUID:
        """The identifier that is written as registry text, with or without braces."""
        return cls.from_buffer_copy(uuid.UUID(text).bytes_le)

    def __str__(self) -> str:
        return "{" + str(uuid.UUID(bytes_le=bytes(self))).upper() + "}"


class _RecordValue(Structure):
    _fields_ = [("record", c_void_p), ("info", c_void_p)]


class _VariantValue(Union):
    _fields_ = [("i1", c_int8), ("i2", c_int16), ("i4", c_int32), ("i8", c_int64),
                ("ui1", c_uint8), ("ui2", c_uint16), ("ui4", c_uint32), ("ui8", c_uint64),
                ("r4", c_float), ("r8", c_double), ("pointer", c_void_p), ("record", _RecordValue)]


class VARIANT(Structure):
    _fields_ = [("vt", c_uint16), ("reserved1", c_uint16), ("reserved2", c_uint16),
                ("reserved3", c_uint16), ("value", _VariantValue)]


class DECIMAL(Structure):
    """Stored over a whole VARIANT; its first word is the VARIANT's type."""
    _fields_ = [("reserved", c_uint16), ("scale", c_uint8), ("sign", c_uint8), ("hi32", c_uint32),
                ("lo64", c_uint64)]


class DISPPARAMS(Structure):
    _fields_ = [("arguments", POINTER(VARIANT)), ("names", POINTER(c_int32)), ("count", c_uint32),
                ("named_count", c_uint32)]


class EXCEPINFO(Structure):
    _fields_ = [("code", c_uint16), ("reserved", c_uint16), ("source", c_void_p),
                ("description", c_void_p), ("help_file", c_void_p), ("help_context", c_uint32),
                ("reserved_pointer", c_void_p), ("deferred_fill_in", c_void_p), ("scode", c_int32)]


class TYPEDESC(Structure):
    # `referent` is the described type of a pointer, or the reference of a user-defined type.
    _fields_ = [("referent", c_void_p), ("vt", c_uint16)]


class PARAMDESCEX(Structure):
    _fields_ = [("size", c_uint32), ("default", VARIANT)]


class PARAMDESC(Structure):
    _fields_ = [("extra", POINTER(PARAMDESCEX)), ("flags", c_uint16)]


class ELEMDESC(Structure):
    _fields_ = [("type", TYPEDESC), ("parameter", PARAMDESC)]


class FUNCDESC(Structure):
    _fields_ = [("id", c_int32), ("scodes", c_void_p), ("parameters", POINTER(ELEMDESC)),
                ("function_kind", c_int32), ("invoke_kind", c_int32), ("convention", c_int32),
                ("count", c_int16), ("optional_count", c_int16), ("offset", c_int16),
                ("scode_count", c_int16), ("result", ELEMDESC), ("flags", c_uint16)]


class TYPEATTR(Structure):
    _fields_ = [("guid", GUID), ("locale", c_uint32), ("reserved", c_uint32),
                ("constructor", c_int32), ("destructor", c_int32), ("schema", c_void_p),
                ("instance_size", c_uint32), ("kind", c_int32), ("function_count", c_uint16),
                ("variable_count", c_uint16), ("implemented_count", c_uint16),
                ("table_size", c_uint16), ("alignment", c_uint16), ("flags", c_uint16),
                ("major", c_uint16), ("minor", c_uint16), ("alias", TYPEDESC),
                ("idl_reserved", c_size_t), ("idl_flags", c_uint16)]


class STATSTG(Structure):
    _fields_ = [("name", c_void_p), ("type", c_uint32), ("size", c_uint64), ("modified", c_uint64),
                ("created", c_uint64), ("accessed", c_uint64), ("mode", c_uint32),
                ("locks", c_uint32), ("class_id", GUID), ("state", c_uint32),
                ("reserved", c_uint32)]


IID_NULL = GUID()
IID_IUnknown = GUID.of("00000000-0000-0000-C000-000000000046")
IID_IClassFactory = GUID.of("00000001-0000-0000-C000-000000000046")
IID_IStream = GUID.of("0000000C-0000-0000-C000-000000000046")
IID_ISequentialStream = GUID.of("0C733A30-2A1C-11CE-ADE5-00AA0044773D")
IID_IDispatch = GUID.of("00020400-0000-0000-C000-000000000046")
IID_ISupportErrorInfo = GUID.of("DF0B3D60-548F-101B-8E65-08002B2BD119")
