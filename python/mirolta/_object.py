# SPDX-License-Identifier: MIT
"""Late-bound objects: members by name, with the help of the type library where there is one."""
from __future__ import annotations

import inspect
import threading
from ctypes import byref, c_int32, c_void_p, cast
from typing import Any, Callable, Dict, Iterator, Optional, Tuple, Type, Union

from . import _calls, _classes, _texts, _typeinfo, _values
from ._errors import AutomationError
from ._interfaces import Dispatch, Unknown, borrow, borrow_as, table_of
from ._invocation import Target, bind, invoke, put, put_untyped
from ._library import runtime
from ._statuses import (DISP_E_BADPARAMCOUNT, DISP_E_MEMBERNOTFOUND, DISP_E_PARAMNOTFOUND,
                        DISP_E_UNKNOWNNAME, signed)
from ._structures import (DISPATCH_METHOD, DISPATCH_PROPERTYGET, DISPID_VALUE, GUID, IID_NULL,
                          LOCALE_USER_DEFAULT, VT_DISPATCH)
from ._typeinfo import Description, Member
from ._values import AutomationValue

# Interfaces whose members take numbers: a large int is passed as its bytes, not as decimal text.
_NUMBER_INTERFACES = {bytes(GUID.of(text)) for text in (
    "65340385-06EA-4727-B2F7-8F1BF19675C4",   # IPexBigNumber
    "303A999E-48F7-47C8-A434-3F11F75C60E6")}  # IRSACrypt
# Of a member that may be a property or a method: the object says that it is not this one.
_OTHER_KIND = {signed(DISP_E_MEMBERNOTFOUND), signed(DISP_E_BADPARAMCOUNT),
               signed(DISP_E_PARAMNOTFOUND)}


class IndexedProperty:
    """A property with arguments: obj.Text[65001], obj.Text[65001] = "x", and obj.Text() to read it
    with the arguments' default values."""

    __slots__ = ("_owner", "_member")

    def __init__(self, owner: Object, member: Member) -> None:
        self._owner = owner
        self._member = member

    def __call__(self, *arguments: Any, **named: Any) -> Any:
        return invoke(self._owner._target(), self._member.id, DISPATCH_PROPERTYGET,
                      bind(self._member, arguments, named))

    def __getitem__(self, arguments: Any) -> Any:
        return self(*arguments) if isinstance(arguments, tuple) else self(arguments)

    def __setitem__(self, arguments: Any, value: Any) -> None:
        positional = arguments if isinstance(arguments, tuple) else (arguments,)
        put(self._owner._target(), self._member, bind(self._member, positional, {}), value)

    def __repr__(self) -> str:
        return f"<property {self._member.name} with arguments of {self._owner!r}>"


class _UntypedMember:
    """A member of an object without type information that is no property without arguments."""

    __slots__ = ("_owner", "_name", "_id")

    def __init__(self, owner: Object, name: str, member: int) -> None:
        self._owner = owner
        self._name = name
        self._id = member

    def __call__(self, *arguments: Any) -> Any:
        return invoke(self._owner._target(), self._id, DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                      list(arguments))

    def __getitem__(self, arguments: Any) -> Any:
        return self(*arguments) if isinstance(arguments, tuple) else self(arguments)

    def __setitem__(self, arguments: Any, value: Any) -> None:
        positional = list(arguments) if isinstance(arguments, tuple) else [arguments]
        put_untyped(self._owner._target(), self._id, positional, value)

    def __repr__(self) -> str:
        return f"<member {self._name} of {self._owner!r}>"


class Object(AutomationValue):
    """An automation object. Its members are attributes; help(obj) lists them.

    Object("Vardeko.crypt.HashObject") creates an object of a class by its ProgID, and
    Object(address) takes a pointer to an interface of an object, to which its owner keeps a
    reference. Names of members are found without regard to letter case.
    """

    __slots__ = ("_dispatch", "_source", "__weakref__")

    _dispatch: Dispatch
    _source: str
    _description: Optional[Description] = None
    _large_as_bytes = False

    def __new__(cls, source: Union[str, int, Unknown]) -> Object:
        if isinstance(source, str):
            return _object_of(_classes.new_object(source), source)
        runtime()
        return _object_of((borrow(source) if isinstance(source, int) else source).query(Dispatch))

    def _automation_reference(self) -> Tuple[int, Unknown]:
        return VT_DISPATCH, self._dispatch

    def _target(self) -> Target:
        return Target(self._dispatch, self._source, self._large_as_bytes, self._object_at)

    def _object_at(self, address: int) -> Any:
        """An object that a member returned. One with the same functions has the same interface."""
        if table_of(address) != table_of(self._dispatch.address):
            return _wrap(borrow(address))
        return _made(type(self), borrow_as(Dispatch, address), self._source)

    def _id_of(self, name: str) -> int:
        text = _texts.terminated(name)
        names = (c_void_p * 1)(cast(text, c_void_p).value)
        member = c_int32()
        status = _calls.call(self._dispatch.GetIDsOfNames, byref(IID_NULL), names, 1,
                             LOCALE_USER_DEFAULT, byref(member))
        if status == signed(DISP_E_UNKNOWNNAME):
            raise AttributeError(f"{type(self).__name__!r} object has no attribute {name!r}")
        if status < 0:
            raise AutomationError(status, "", self._source)
        return member.value

    def _member_of(self, name: str) -> Union[int, Member]:
        """The member of that name in any letter case: its description, else its id."""
        if name.startswith("__") or name in Object.__slots__:
            raise AttributeError(f"{type(self).__name__!r} object has no attribute {name!r}")
        number = self._id_of(name)
        members = self._description.members if self._description is not None else []
        return next((member for member in members if member.id == number), number)

    def __getattr__(self, name: str) -> Any:
        # Names that the class lacks: in other letter case, or without type information.
        member = self._member_of(name)
        if isinstance(member, Member):
            return getattr(self, member.name)
        try:
            return invoke(self._target(), member, DISPATCH_PROPERTYGET, [])
        except AutomationError as failure:
            if failure.number not in _OTHER_KIND:
                raise
        return _UntypedMember(self, name, member)

    def __setattr__(self, name: str, value: Any) -> None:
        if name in Object.__slots__ or isinstance(getattr(type(self), name, None), property):
            object.__setattr__(self, name, value)
            return
        member = self._member_of(name)
        if not isinstance(member, Member):
            put_untyped(self._target(), member, [], value)
        elif member.is_method:
            raise AttributeError(f"{member.name} is a method of {type(self).__name__!r} objects")
        else:
            setattr(self, member.name, value)

    def __call__(self, *arguments: Any) -> Any:
        """Reads the default member."""
        return invoke(self._target(), DISPID_VALUE, DISPATCH_PROPERTYGET, list(arguments))

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Object):
            return NotImplemented
        return self._dispatch.identity() == other._dispatch.identity()

    def __hash__(self) -> int:
        return hash(self._dispatch.identity())

    def __reduce__(self) -> Any:
        raise TypeError(f"cannot pickle or copy {type(self).__name__!r} objects")

    def __repr__(self) -> str:
        name = f" {self._source}" if self._source else ""
        return f"<{type(self).__name__}{name} at {self._dispatch.address:#x}>"


def _signature(member: Member) -> inspect.Signature:
    parameters = [inspect.Parameter("self", inspect.Parameter.POSITIONAL_ONLY)]
    for parameter in member.parameters:
        default = parameter.default if parameter.is_optional else inspect.Parameter.empty
        parameters.append(inspect.Parameter(parameter.name, inspect.Parameter.POSITIONAL_OR_KEYWORD,
                                            default=default, annotation=parameter.type))
    return inspect.Signature(parameters, return_annotation=member.type)


def _method(member: Member) -> Callable[..., Any]:
    def method(self: Object, /, *arguments: Any, **named: Any) -> Any:
        return invoke(self._target(), member.id, DISPATCH_METHOD, bind(member, arguments, named))

    method.__name__ = method.__qualname__ = member.name
    method.__doc__ = member.help
    method.__signature__ = _signature(member)  # type: ignore[attr-defined]
    return method


def _property(member: Member) -> property:
    def get(self: Object) -> Any:
        return invoke(self._target(), member.id, DISPATCH_PROPERTYGET, [])

    def get_indexed(self: Object) -> Any:
        return IndexedProperty(self, member)

    def set_value(self: Object, value: Any) -> None:
        put(self._target(), member, [], value)

    reads = get_indexed if member.parameters else get if member.can_be_read else None
    arguments = ", ".join(parameter.name for parameter in member.parameters)
    access = "" if member.can_be_set else " (read-only)"
    documentation = f"{member.type}{access}. {member.help}"
    if arguments:
        documentation = f"{member.name}[{arguments}]: {documentation}"
    return property(reads, set_value if member.can_be_set else None, None, documentation)


def _class_of(description: Description) -> Type[Object]:
    """A class whose attributes are the members, with their help texts."""
    names: Dict[str, Any] = {
        "__slots__": (), "__module__": "mirolta", "__doc__": description.help,
        "_description": description,
        "_large_as_bytes": description.guid in _NUMBER_INTERFACES}
    for member in description.members:
        if not hasattr(Object, member.name):
            names[member.name] = _method(member) if member.is_method else _property(member)
    return type(description.name, (Object,), names)


_lock = threading.Lock()
_classes_by_interface: Dict[bytes, Type[Object]] = {}


def _class_for(dispatch: Dispatch) -> Type[Object]:
    description = _typeinfo.describe(dispatch)
    if description is None:
        return Object
    found = _classes_by_interface.get(description.guid)
    if found is None:
        made = _class_of(description)
        with _lock:
            found = _classes_by_interface.setdefault(description.guid, made)
    return found


def _made(cls: Type[Object], dispatch: Dispatch, source: str) -> Object:
    made: Object = object.__new__(cls)
    made._dispatch = dispatch
    made._source = source
    return made


def _object_of(dispatch: Dispatch, source: str = "") -> Object:
    return _made(_class_for(dispatch), dispatch, source)


def _wrap(reference: Unknown) -> Any:
    dispatch = reference.try_query(Dispatch)
    return reference if dispatch is None else _object_of(dispatch)


_values.wrap = _wrap


def members(obj: Object) -> Iterator[Member]:
    """The members that the type library has of an object."""
    return iter(obj._description.members if obj._description is not None else ())


def address_of(value: AutomationValue) -> int:
    """The address of the object's IDispatch, or of a stream's IStream.

    It is valid while `value` exists; a library that keeps it adds a reference of its own.
    """
    return value._automation_reference()[1].address
