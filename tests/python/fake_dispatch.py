"""An automation object without type information, for what the module's objects do not do.

Names of members are looked up in `members`: a function of the flags and the arguments, whose result is
the member's. A Failure that it raises is the status of the call. `Echo` returns its argument as the
platform copies it.
"""
import ctypes
from ctypes import POINTER, byref, c_int32, c_uint16, c_uint32, c_void_p

from mirolta import _texts, _values
from mirolta._library import runtime
from mirolta._statuses import (DISP_E_EXCEPTION, DISP_E_MEMBERNOTFOUND, DISP_E_UNKNOWNNAME,
                               E_NOINTERFACE, E_NOTIMPL, S_OK, signed)
from mirolta._structures import (DISPPARAMS, EXCEPINFO, GUID, IID_IDispatch, IID_ISupportErrorInfo,
                                 IID_IUnknown, TYPEATTR, VARIANT, function_type)


class Failure(Exception):
    def __init__(self, status, source="", description=""):
        super().__init__(status)
        self.status = status
        self.source = source
        self.description = description


def _object(*functions):
    """A pointer to a table of functions, and what must live as long as it."""
    table = (c_void_p * len(functions))(*(ctypes.cast(f, c_void_p).value for f in functions))
    memory = c_void_p(ctypes.addressof(table))
    return ctypes.addressof(memory), (functions, table, memory)


_QUERY = function_type(c_int32, c_void_p, POINTER(GUID), POINTER(c_void_p))
_COUNT = function_type(c_uint32, c_void_p)


class FakeDispatch:
    def __init__(self, members=(), publishes=False, describes=False):
        self.members = {"Echo": None, **dict(members)}
        self.names = list(self.members)
        self.references = 1
        self.publishes = publishes
        self.given = self.released = 0  # attributes of the type information
        ids = function_type(c_int32, c_void_p, POINTER(GUID), POINTER(c_void_p), c_uint32, c_uint32,
                            POINTER(c_int32))
        call = function_type(c_int32, c_void_p, c_int32, POINTER(GUID), c_uint32, c_uint16,
                             POINTER(DISPPARAMS), POINTER(VARIANT), POINTER(EXCEPINFO),
                             POINTER(c_uint32))
        self.address, self._kept = _object(
            _QUERY(self._query), _COUNT(self._add), _COUNT(self._release),
            function_type(c_int32, c_void_p, POINTER(c_uint32))(lambda this, out: signed(E_NOTIMPL)),
            function_type(c_int32, c_void_p, c_uint32, c_uint32, POINTER(c_void_p))(
                self._describe if describes else lambda *_: signed(E_NOTIMPL)),
            ids(self._ids), call(self._invoke))
        self._support, self._kept_support = _object(
            _QUERY(self._query), _COUNT(self._add), _COUNT(self._release),
            function_type(c_int32, c_void_p, POINTER(GUID))(
                lambda this, iid: S_OK if bytes(iid[0]) == bytes(IID_IDispatch) else 1))

    def _describe(self, _this, _index, _locale, out):
        """Type information of an interface without an identifier."""
        attributes = TYPEATTR()

        def give(_this, attributes_out):
            attributes_out[0] = ctypes.pointer(attributes)
            self.given += 1
            return S_OK

        def release(_this, _attributes):
            self.released += 1

        attributes_type = POINTER(TYPEATTR)
        nothing = function_type(c_int32, c_void_p)(lambda this: signed(E_NOTIMPL))
        out[0], self._kept_description = _object(
            _QUERY(self._query), _COUNT(self._add), _COUNT(self._release),
            function_type(c_int32, c_void_p, POINTER(attributes_type))(give), *[nothing] * 15,
            function_type(None, c_void_p, attributes_type)(release))
        self.references += 1
        return S_OK

    def _query(self, _this, iid, out):
        wanted = bytes(iid[0])
        if wanted in (bytes(IID_IUnknown), bytes(IID_IDispatch)):
            out[0] = self.address
        elif wanted == bytes(IID_ISupportErrorInfo) and self.publishes:
            out[0] = self._support
        else:
            out[0] = None
            return signed(E_NOINTERFACE)
        self.references += 1
        return S_OK

    def _add(self, _this):
        self.references += 1
        return self.references

    def _release(self, _this):
        self.references -= 1
        return self.references

    def _ids(self, _this, _iid, names, _count, _locale, ids):
        name = ctypes.wstring_at(names[0]) if ctypes.sizeof(ctypes.c_wchar) == 2 else _wide(names[0])
        if name not in self.names:
            return signed(DISP_E_UNKNOWNNAME)
        ids[0] = self.names.index(name)
        return S_OK

    def _invoke(self, _this, member, _iid, _locale, flags, params, result, exception, _bad):
        arguments = params[0].arguments
        if self.names[member] == "Echo":
            if params[0].count != 1:
                return signed(DISP_E_MEMBERNOTFOUND)
            return runtime().VariantCopyInd(result, byref(arguments[0]))
        values = [_values.read(arguments[i]) for i in reversed(range(params[0].count))]
        try:
            value = self.members[self.names[member]](flags, *values)
        except Failure as failure:
            if not failure.description:
                return signed(failure.status)
            exception[0].scode = signed(failure.status)
            exception[0].source = _texts.allocate(failure.source)
            exception[0].description = _texts.allocate(failure.description)
            exception[0].help_file = _texts.allocate(failure.description)
            return signed(DISP_E_EXCEPTION)
        if result:
            _values.write(value, result[0])
        return S_OK


def _wide(address):
    units = []
    while True:
        unit = c_uint16.from_address(address + 2 * len(units)).value
        if unit == 0:
            return "".join(map(chr, units))
        units.append(unit)


class FakeErrorInfo:
    """An error object that a test publishes for the thread."""

    def __init__(self, source, description):
        text = function_type(c_int32, c_void_p, POINTER(c_void_p))
        self.references = 1

        def give(value):
            def get(_this, out):
                out[0] = _texts.allocate(value)
                return S_OK
            return text(get)

        self.address, self._kept = _object(
            _QUERY(self._query), _COUNT(self._add), _COUNT(self._release), give(""), give(source),
            give(description))

    def _query(self, _this, _iid, out):
        out[0] = self.address
        self.references += 1
        return S_OK

    def _add(self, _this):
        self.references += 1
        return self.references

    def _release(self, _this):
        self.references -= 1
        return self.references
