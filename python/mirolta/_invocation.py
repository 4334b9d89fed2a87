# SPDX-License-Identifier: MIT
"""Calls of members: IDispatch::Invoke with Python values, and its failures as exceptions."""
from __future__ import annotations

from ctypes import POINTER, byref, c_int32, c_uint32, c_void_p, cast
from typing import Any, Callable, Dict, List, NamedTuple, Tuple

from . import _calls, _texts, _values
from ._errors import AutomationError
from ._interfaces import Dispatch, ErrorInfo, SupportErrorInfo
from ._library import runtime
from ._statuses import DISP_E_EXCEPTION, S_OK, signed
from ._structures import (DISPATCH_PROPERTYPUT, DISPATCH_PROPERTYPUTREF, DISPID_PROPERTYPUT,
                          DISPPARAMS, EXCEPINFO, IID_IDispatch, IID_NULL, LOCALE_USER_DEFAULT,
                          VARIANT, VT_DISPATCH, VT_UNKNOWN, function_type)
from ._typeinfo import Member
from ._values import MISSING, Values

_PUTS = DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF


class Target(NamedTuple):
    """An object to call."""

    dispatch: Dispatch
    source: str  # of errors that name none
    large_as_bytes: bool  # how it receives an int that does not fit 32 bits
    object_at: Callable[[int], Any]  # the Python object of an object that a member returns


def _exception_of(information: EXCEPINFO, source: str) -> AutomationError:
    """The error that a member published; its texts are freed."""
    if information.deferred_fill_in:
        function_type(c_int32, POINTER(EXCEPINFO))(information.deferred_fill_in)(byref(information))
    texts = [_texts.take(address or 0) for address in
             (information.source, information.description, information.help_file)]
    return AutomationError(information.scode or information.code or DISP_E_EXCEPTION, texts[1],
                           texts[0] or source)


def _published_error(dispatch: Dispatch, status: int, source: str) -> AutomationError:
    """The error of a call whose status is a failure of its own, with the thread's description."""
    support = dispatch.try_query(SupportErrorInfo)
    if support is None or support.InterfaceSupportsErrorInfo(byref(IID_IDispatch)) != S_OK:
        return AutomationError(status, "", source)
    out = c_void_p()
    if runtime().GetErrorInfo(0, byref(out)) != S_OK or not out.value:
        return AutomationError(status, "", source)
    information = ErrorInfo(out.value)
    texts = []
    for get in (information.GetDescription, information.GetSource):
        text = c_void_p()
        get(byref(text))
        texts.append(_texts.take(text.value or 0))
    return AutomationError(status, texts[0], texts[1] or source)


def invoke(target: Target, member: int, flags: int, arguments: List[Any]) -> Any:
    """Calls a member. The last argument of a property that is set is its value."""
    count = len(arguments)
    with Values(count + 1) as values:
        _values.write_all(arguments, values, target.large_as_bytes)
        parameters = DISPPARAMS(cast(values, POINTER(VARIANT)), None, count, 0)
        result = values[count]
        out: Any = byref(result)
        if flags & _PUTS:
            name = c_int32(DISPID_PROPERTYPUT)
            parameters.names = POINTER(c_int32)(name)
            parameters.named_count = 1
            out = None
        information = EXCEPINFO()
        status = _calls.call(target.dispatch.Invoke, member, byref(IID_NULL), LOCALE_USER_DEFAULT,
                             flags, byref(parameters), out, byref(information), byref(c_uint32()))
        if status == signed(DISP_E_EXCEPTION):
            raise _exception_of(information, target.source)
        if status < 0:
            raise _published_error(target.dispatch, status, target.source)
        if result.vt == VT_DISPATCH and result.value.pointer:
            return target.object_at(result.value.pointer)
        return _values.read(result)


def bind(member: Member, positional: Tuple[Any, ...], named: Dict[str, Any]) -> List[Any]:
    """The arguments by position; optional ones that are left out are MISSING."""
    if len(positional) > len(member.parameters):
        raise TypeError(f"{member.name}() takes {len(member.parameters)} arguments, "
                        f"{len(positional)} were given")
    arguments = list(positional)
    for parameter in member.parameters[len(positional):]:
        arguments.append(named.pop(parameter.name, MISSING))
    if named:
        raise TypeError(f"{member.name}() has no parameter {next(iter(named))!r}, "
                        "or it was given twice")
    for parameter, value in zip(member.parameters, arguments):
        if value is MISSING and not parameter.is_optional:
            raise TypeError(f"{member.name}() needs the argument {parameter.name!r}")
    return arguments


def _is_object(value: Any) -> bool:
    with Values(1) as values:
        _values.write(value, values[0])
        return values[0].vt in (VT_DISPATCH, VT_UNKNOWN)


def put(target: Target, member: Member, arguments: List[Any], value: Any) -> None:
    """Sets a property, by reference where that is declared for objects."""
    flags = member.kinds & _PUTS
    if flags == _PUTS:
        flags = DISPATCH_PROPERTYPUTREF if _is_object(value) else DISPATCH_PROPERTYPUT
    left_out = len(member.parameters) - len(arguments)
    invoke(target, member.id, flags, arguments + [MISSING] * left_out + [value])


def put_untyped(target: Target, member: int, arguments: List[Any], value: Any) -> None:
    """Sets a property of which nothing is known; the object chooses how it takes an object."""
    flags = _PUTS if _is_object(value) else DISPATCH_PROPERTYPUT
    invoke(target, member, flags, arguments + [value])
