# SPDX-License-Identifier: MIT
"""Type information: the members of an interface with their parameters and help texts."""
from __future__ import annotations

import threading
from ctypes import POINTER, byref, c_uint32, c_void_p, cast
from typing import Any, Dict, List, NamedTuple, Optional

from . import _texts, _values
from ._errors import check
from ._interfaces import Dispatch, TypeInfo
from ._structures import (DISPATCH_METHOD, DISPATCH_PROPERTYGET, DISPATCH_PROPERTYPUT,
                          DISPATCH_PROPERTYPUTREF, FUNCDESC, FUNCFLAG_FRESTRICTED, IID_NULL,
                          LOCALE_USER_DEFAULT, PARAMFLAG_FHASDEFAULT, PARAMFLAG_FOPT, TYPEATTR,
                          VT_BOOL, VT_BSTR, VT_CY, VT_DATE, VT_DECIMAL, VT_DISPATCH, VT_EMPTY,
                          VT_HRESULT, VT_I1, VT_I2, VT_I4, VT_I8, VT_INT, VT_PTR, VT_R4, VT_R8,
                          VT_UI1, VT_UI2, VT_UI4, VT_UI8, VT_UINT, VT_UNKNOWN, VT_VARIANT, VT_VOID)

_PUTS = DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF
_MEMBER_ITSELF = -1  # the id under which GetDocumentation describes the interface

_TYPE_NAMES: Dict[int, str] = {
    **dict.fromkeys([VT_I1, VT_I2, VT_I4, VT_I8, VT_INT, VT_UI1, VT_UI2, VT_UI4, VT_UI8, VT_UINT],
                    "int"),
    VT_R4: "float", VT_R8: "float", VT_CY: "Decimal", VT_DECIMAL: "Decimal", VT_BOOL: "bool",
    VT_BSTR: "str", VT_DATE: "datetime", VT_VARIANT: "Any", VT_DISPATCH: "Object",
    VT_UNKNOWN: "Object", VT_PTR: "Object", VT_VOID: "None", VT_EMPTY: "None", VT_HRESULT: "None"}


class Parameter(NamedTuple):
    name: str
    type: str
    is_optional: bool
    default: Any  # MISSING if there is none


class Member(NamedTuple):
    """A method, or a property with all its forms."""

    name: str
    id: int
    kinds: int  # DISPATCH_METHOD, or the forms of the property
    parameters: List[Parameter]  # without the value that a property is set to
    type: str
    help: str

    @property
    def is_method(self) -> bool:
        return bool(self.kinds & DISPATCH_METHOD)

    @property
    def can_be_read(self) -> bool:
        return bool(self.kinds & DISPATCH_PROPERTYGET)

    @property
    def can_be_set(self) -> bool:
        return bool(self.kinds & _PUTS)


class Description(NamedTuple):
    """What the type library has about an interface."""

    guid: bytes
    name: str
    help: str
    members: List[Member]


def _documentation(info: TypeInfo, member: int) -> List[str]:
    name, text = c_void_p(), c_void_p()
    check(info.GetDocumentation(member, byref(name), byref(text), None, None))
    return [_texts.take(part.value or 0) for part in (name, text)]


def _names(info: TypeInfo, member: int, capacity: int) -> List[str]:
    names = (c_void_p * capacity)()
    count = c_uint32()
    check(info.GetNames(member, cast(names, POINTER(c_void_p)), capacity, byref(count)))
    return [_texts.take(names[i] or 0) for i in range(count.value)]


def _parameter(element: Any, name: str) -> Parameter:
    description = element.parameter
    default: Any = _values.MISSING
    if description.flags & PARAMFLAG_FHASDEFAULT and description.extra:
        default = _values.read(description.extra.contents.default)
    return Parameter(name, _TYPE_NAMES.get(element.type.vt, "Any"),
                     bool(description.flags & (PARAMFLAG_FOPT | PARAMFLAG_FHASDEFAULT)), default)


def _member(info: TypeInfo, function: FUNCDESC) -> Member:
    count = function.count - (1 if function.invoke_kind & _PUTS else 0)
    names = _names(info, function.id, count + 1)[1:]
    names += [f"argument{i}" for i in range(len(names), count)]
    parameters = [_parameter(function.parameters[i], names[i]) for i in range(count)]
    value = function.parameters[count] if function.invoke_kind & _PUTS else function.result
    name, text = _documentation(info, function.id)
    return Member(name, function.id, function.invoke_kind, parameters,
                  _TYPE_NAMES.get(value.type.vt, "Any"), text)


def _functions(info: TypeInfo, count: int) -> List[Member]:
    members = []
    for index in range(count):
        pointer = POINTER(FUNCDESC)()
        check(info.GetFuncDesc(index, byref(pointer)))
        try:
            if not pointer.contents.flags & FUNCFLAG_FRESTRICTED:
                members.append(_member(info, pointer.contents))
        finally:
            info.ReleaseFuncDesc(pointer)
    return members


def _describe(info: TypeInfo, guid: bytes, function_count: int) -> Description:
    name, text = _documentation(info, _MEMBER_ITSELF)
    members: Dict[str, Member] = {}
    for member in _functions(info, function_count):
        earlier = members.get(member.name)
        if earlier is None:
            members[member.name] = member
        else:  # another form of the same property; that which reads has the result's type
            kept = member if member.can_be_read else earlier
            members[member.name] = kept._replace(kinds=earlier.kinds | member.kinds)
    return Description(guid, name, text, list(members.values()))


_lock = threading.Lock()
_descriptions: Dict[bytes, Description] = {}


def describe(dispatch: Dispatch) -> Optional[Description]:
    """What is known of the object's interface; None without type information, or an identifier."""
    out = c_void_p()
    if dispatch.GetTypeInfo(0, LOCALE_USER_DEFAULT, byref(out)) < 0 or not out.value:
        return None
    info = TypeInfo(out.value)
    attributes = POINTER(TYPEATTR)()
    check(info.GetTypeAttr(byref(attributes)))
    try:
        guid = bytes(attributes.contents.guid)
        count = attributes.contents.function_count
    finally:
        info.ReleaseTypeAttr(attributes)
    if guid == bytes(IID_NULL):
        return None
    known = _descriptions.get(guid)
    if known is None:
        known = _describe(info, guid, count)
        with _lock:
            known = _descriptions.setdefault(guid, known)
    return known
