# SPDX-License-Identifier: MIT
"""Creates objects by ProgID: of registered classes, and of the module's classes in any case."""
from __future__ import annotations

from ctypes import byref, c_void_p
from typing import Dict

from . import _calls, _texts
from ._errors import AutomationError
from ._interfaces import ClassFactory, Dispatch
from ._library import Module, runtime
from ._statuses import CO_E_CLASSSTRING, REGDB_E_CLASSNOTREG, signed
from ._structures import GUID, ON_WINDOWS

# In this process; on Windows also in a process of its own, which classes of other modules may need.
_CONTEXT = 1 | 4 if ON_WINDOWS else 1
_NOT_REGISTERED = {signed(CO_E_CLASSSTRING), signed(REGDB_E_CLASSNOTREG)}

# The module's classes, which need not be registered.
CLASSES: Dict[str, str] = {
    "Vardeko.crypt.ToviStreamDigest": "{77EFB331-3043-4FD6-853B-152DB6BE4FC4}",
    "Vardeko.crypt.HashObject": "{9D56F139-1F04-4283-AED7-3DB89AFF00FD}",
    "Vardeko.crypt.Symmetric": "{6977BAED-8AA9-4ED5-A43B-0E9913D43AD2}",
    "Vardeko.crypt.RSA": "{C962B164-2D40-42A0-8B3B-41DAAFECF3F4}",
    "Vardeko.crypt.Number": "{2C83BBAC-AE2B-46CB-B126-F5B8E1A41A38}",
    "Vardeko.crypt.ToviStreamCrypt": "{5BF7B652-3B78-4422-94AD-3D4944F3B584}",
    "Vardeko.crypt.ToviStreamDigest.free": "{25FC5E57-C4C2-4461-A968-E5959B5F11F8}",
    "Vardeko.crypt.HashObject.free": "{FECAFCBB-A8C3-404D-A42B-53AD9FD47737}",
    "Vardeko.crypt.Symmetric.free": "{4EDA294F-1980-4785-A7A4-0818498BD74C}",
    "Vardeko.crypt.RSA.free": "{11483538-0E59-418F-9EDD-96F9C87BB0C1}",
    "Vardeko.crypt.Number.free": "{902482D4-4104-4239-9497-A6194C6CCA0E}",
    "Vardeko.crypt.ToviStreamCrypt.free": "{E7367C2D-F8AA-4A66-96EA-57B5D3C06F72}",
}
_CLASS_IDS = {name.lower(): GUID.of(class_id) for name, class_id in CLASSES.items()}


def _unversioned(prog_id: str) -> str:
    return prog_id.lower()[:-2] if prog_id.endswith(".1") else prog_id.lower()


def _from_module(module: Module, class_id: GUID) -> Dispatch:
    out = c_void_p()
    status = module.get_class_object(byref(class_id), byref(ClassFactory.IID), byref(out))
    if status < 0 or not out.value:
        raise AutomationError(status)
    factory = ClassFactory(out.value)
    made = c_void_p()
    status = factory.CreateInstance(None, byref(Dispatch.IID), byref(made))
    if status < 0 or not made.value:
        raise AutomationError(status)
    return Dispatch(made.value)


def new_object(prog_id: str) -> Dispatch:
    """A reference to a new object of the class.

    A registered class comes first, unless MIROLTA_LIBRARY names the module to use.
    """
    functions = runtime()
    module = functions.module
    own = _CLASS_IDS.get(_unversioned(prog_id))
    if own is not None and module is not None and functions.module_is_chosen:
        return _from_module(module, own)
    class_id = GUID()
    status = functions.CLSIDFromProgID(_texts.terminated(prog_id), byref(class_id))
    if status >= 0:
        out = c_void_p()
        status = _calls.call(functions.CoCreateInstance, byref(class_id), None, _CONTEXT,
                             byref(Dispatch.IID), byref(out))
        if status >= 0 and out.value:
            return Dispatch(out.value)
    if own is not None and module is not None and status in _NOT_REGISTERED:
        return _from_module(module, own)
    raise AutomationError(status, source=prog_id)
