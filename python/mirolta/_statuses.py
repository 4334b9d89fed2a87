# SPDX-License-Identifier: MIT
"""Status codes of the platform: their names, and a text for those that nobody else describes."""
from __future__ import annotations

from typing import Dict, Tuple

S_OK = 0
S_FALSE = 1
E_NOTIMPL = 0x80004001
E_NOINTERFACE = 0x80004002
E_POINTER = 0x80004003
E_FAIL = 0x80004005
E_PENDING = 0x8000000A
E_UNEXPECTED = 0x8000FFFF
E_ACCESSDENIED = 0x80070005
E_OUTOFMEMORY = 0x8007000E
E_INVALIDARG = 0x80070057
DISP_E_MEMBERNOTFOUND = 0x80020003
DISP_E_PARAMNOTFOUND = 0x80020004
DISP_E_TYPEMISMATCH = 0x80020005
DISP_E_UNKNOWNNAME = 0x80020006
DISP_E_EXCEPTION = 0x80020009
DISP_E_BADPARAMCOUNT = 0x8002000E
CO_E_CLASSSTRING = 0x800401F3
REGDB_E_CLASSNOTREG = 0x80040154
RPC_E_CHANGED_MODE = 0x80010106
STG_E_INVALIDFUNCTION = 0x80030001
STG_E_FILENOTFOUND = 0x80030002
STG_E_ACCESSDENIED = 0x80030005
STG_E_INVALIDPOINTER = 0x80030009
STG_E_SEEKERROR = 0x80030019
STG_E_WRITEFAULT = 0x8003001D
STG_E_READFAULT = 0x8003001E
STG_E_INVALIDPARAMETER = 0x80030057
STG_E_MEDIUMFULL = 0x80030070
STG_E_REVERTED = 0x80030102

DESCRIPTIONS: Dict[int, Tuple[str, str]] = {
    E_NOTIMPL: ("E_NOTIMPL", "The operation is not implemented."),
    E_NOINTERFACE: ("E_NOINTERFACE", "The object does not have the interface."),
    E_POINTER: ("E_POINTER", "A pointer is null."),
    0x80004004: ("E_ABORT", "The operation was aborted."),
    E_FAIL: ("E_FAIL", "The operation failed."),
    E_PENDING: ("E_PENDING", "No data is available yet."),
    E_UNEXPECTED: ("E_UNEXPECTED", "The object is in a state that does not allow the operation."),
    E_ACCESSDENIED: ("E_ACCESSDENIED", "Access is denied."),
    E_OUTOFMEMORY: ("E_OUTOFMEMORY", "Not enough memory, or more data than a queue holds."),
    E_INVALIDARG: ("E_INVALIDARG", "An argument is invalid."),
    0x80020001: ("DISP_E_UNKNOWNINTERFACE", "The interface is unknown."),
    DISP_E_MEMBERNOTFOUND: ("DISP_E_MEMBERNOTFOUND", "The object has no such member."),
    DISP_E_PARAMNOTFOUND: ("DISP_E_PARAMNOTFOUND", "The member has no such parameter."),
    DISP_E_TYPEMISMATCH: ("DISP_E_TYPEMISMATCH", "A value has a type that cannot be converted."),
    DISP_E_UNKNOWNNAME: ("DISP_E_UNKNOWNNAME", "The object has no member of this name."),
    0x80020007: ("DISP_E_NONAMEDARGS", "The member takes no named arguments."),
    0x80020008: ("DISP_E_BADVARTYPE", "The type of a value is invalid."),
    DISP_E_EXCEPTION: ("DISP_E_EXCEPTION", "The member failed."),
    0x8002000A: ("DISP_E_OVERFLOW", "A number is out of range."),
    0x8002000B: ("DISP_E_BADINDEX", "An index is out of range."),
    0x8002000D: ("DISP_E_ARRAYISLOCKED", "The array is locked."),
    DISP_E_BADPARAMCOUNT: ("DISP_E_BADPARAMCOUNT", "The number of arguments is wrong."),
    0x8002000F: ("DISP_E_PARAMNOTOPTIONAL", "A required argument is missing."),
    0x80020012: ("DISP_E_DIVBYZERO", "Division by zero."),
    0x80029C4A: ("TYPE_E_CANTLOADLIBRARY", "The type library cannot be loaded."),
    0x80040110: ("CLASS_E_NOAGGREGATION", "The class cannot be aggregated."),
    0x80040111: ("CLASS_E_CLASSNOTAVAILABLE", "The module does not have the class."),
    REGDB_E_CLASSNOTREG: ("REGDB_E_CLASSNOTREG", "The class is not registered."),
    CO_E_CLASSSTRING: ("CO_E_CLASSSTRING", "No class of this name is registered."),
    0x800401F0: ("CO_E_NOTINITIALIZED", "The thread has not initialized the object runtime."),
    0x800401F8: ("CO_E_DLLNOTFOUND", "The module of the class does not exist."),
    0x800401F9: ("CO_E_ERRORINDLL", "The module of the class cannot be loaded."),
    STG_E_INVALIDFUNCTION: ("STG_E_INVALIDFUNCTION", "The stream does not have the operation."),
    STG_E_FILENOTFOUND: ("STG_E_FILENOTFOUND", "The file does not exist."),
    STG_E_ACCESSDENIED: ("STG_E_ACCESSDENIED", "Access to the stream is denied."),
    0x80030008: ("STG_E_INSUFFICIENTMEMORY", "Not enough memory."),
    STG_E_INVALIDPOINTER: ("STG_E_INVALIDPOINTER", "A pointer is null."),
    STG_E_SEEKERROR: ("STG_E_SEEKERROR", "The stream cannot be positioned there."),
    STG_E_WRITEFAULT: ("STG_E_WRITEFAULT", "The stream cannot be written."),
    STG_E_READFAULT: ("STG_E_READFAULT", "The stream cannot be read."),
    0x80030050: ("STG_E_FILEALREADYEXISTS", "The file exists already."),
    STG_E_INVALIDPARAMETER: ("STG_E_INVALIDPARAMETER", "An argument is invalid."),
    STG_E_MEDIUMFULL: ("STG_E_MEDIUMFULL", "The medium is full."),
    STG_E_REVERTED: ("STG_E_REVERTED", "The filter has no stream, or the stream is closed."),
    0x80030103: ("STG_E_CANTSAVE", "The filter has no stream to write to."),
}


def unsigned(status: int) -> int:
    """The status as it is usually written: 0x80004005 rather than -2147467259."""
    return status & 0xFFFFFFFF


def signed(status: int) -> int:
    """The status as the platform's 32-bit number."""
    status &= 0xFFFFFFFF
    return status - 0x100000000 if status & 0x80000000 else status
