# SPDX-License-Identifier: MIT
"""Finds and loads the portable automation runtime and the module; the system's own on Windows."""
from __future__ import annotations

import ctypes
import os
import sys
import sysconfig
import threading
from ctypes import POINTER, c_int32, c_uint16, c_uint32, c_void_p
from pathlib import Path
from typing import Any, Callable, Iterator, List, Optional, Tuple

from ._structures import GUID, ON_WINDOWS, VARIANT

VARIABLE = "MIROLTA_LIBRARY"

_POINTER_TO_POINTER = POINTER(c_void_p)

# The library of each function on Windows, its name, result and parameters.
_FUNCTIONS: List[Tuple[str, str, Any, List[Any]]] = [
    ("oleaut32", "SysAllocStringLen", c_void_p, [c_void_p, c_uint32]),
    ("oleaut32", "SysFreeString", None, [c_void_p]),
    ("oleaut32", "SysStringByteLen", c_uint32, [c_void_p]),
    ("oleaut32", "VariantClear", c_int32, [POINTER(VARIANT)]),
    ("oleaut32", "VariantCopyInd", c_int32, [POINTER(VARIANT), POINTER(VARIANT)]),
    ("oleaut32", "SafeArrayCreateVector", c_void_p, [c_uint16, c_int32, c_uint32]),
    ("oleaut32", "SafeArrayAccessData", c_int32, [c_void_p, _POINTER_TO_POINTER]),
    ("oleaut32", "SafeArrayUnaccessData", c_int32, [c_void_p]),
    ("oleaut32", "SafeArrayDestroy", c_int32, [c_void_p]),
    ("oleaut32", "SafeArrayGetDim", c_uint32, [c_void_p]),
    ("oleaut32", "SafeArrayGetElemsize", c_uint32, [c_void_p]),
    ("oleaut32", "SafeArrayGetLBound", c_int32, [c_void_p, c_uint32, POINTER(c_int32)]),
    ("oleaut32", "SafeArrayGetUBound", c_int32, [c_void_p, c_uint32, POINTER(c_int32)]),
    ("oleaut32", "SafeArrayGetVartype", c_int32, [c_void_p, POINTER(c_uint16)]),
    ("oleaut32", "GetErrorInfo", c_int32, [c_uint32, _POINTER_TO_POINTER]),
    ("ole32", "CLSIDFromProgID", c_int32, [c_void_p, POINTER(GUID)]),
    ("ole32", "CoCreateInstance", c_int32,
     [POINTER(GUID), c_void_p, c_uint32, POINTER(GUID), _POINTER_TO_POINTER]),
    ("ole32", "CoInitializeEx", c_int32, [c_void_p, c_uint32]),
]

_MODULE_NAMES = ["Mirolta.dll"] if ON_WINDOWS else ["libMirolta.so.1", "libMirolta.so"]
# A runtime without a module creates the classes that are registered.
_RUNTIME_NAMES = [] if ON_WINDOWS else ["libmirolta-runtime.so.1", "libmirolta-runtime.so"]


class LibraryNotFoundError(ImportError):
    """The shared libraries of Mirolta were not found, or cannot be loaded."""


def _function_of(library: Any, name: str, result: Any, parameters: List[Any]) -> Any:
    function = getattr(library, name)
    function.restype = result
    function.argtypes = parameters
    return function


class Module:
    """A loaded copy of the module: its entry points, for classes that nobody has registered."""

    def __init__(self, library: Any, file: str) -> None:
        self.file = file
        self.get_class_object: Callable[..., int] = _function_of(
            library, "DllGetClassObject", c_int32,
            [POINTER(GUID), POINTER(GUID), _POINTER_TO_POINTER])
        self.can_unload_now: Callable[..., int] = _function_of(
            library, "DllCanUnloadNow", c_int32, [])


class Runtime:
    """The system's automation functions as attributes, and the module if there is one."""

    def __init__(self, library_of: Callable[[str], Any], module: Optional[Module],
                 module_is_chosen: bool) -> None:
        for library, name, result, parameters in _FUNCTIONS:
            setattr(self, name, _function_of(library_of(library), name, result, parameters))
        self.module = module
        # MIROLTA_LIBRARY names the module: its classes come from there, whatever is registered.
        self.module_is_chosen = module_is_chosen

    def __getattr__(self, name: str) -> Callable[..., Any]:
        raise AttributeError(name)  # declares the functions' type; __init__ sets them


def _source_tree() -> Optional[Path]:
    """The root of the source tree, if this package is imported from there."""
    root = Path(__file__).resolve().parents[2]
    return root if (root / "python" / "pyproject.toml").is_file() else None


def version() -> str:
    """The version of this package: a file in it, or in the root of the source tree."""
    folder = _source_tree() or Path(__file__).resolve().parent
    return (folder / "VERSION").read_text("utf-8").strip()


def _folders() -> Iterator[Path]:
    """Where the libraries are looked for, in this order."""
    package = Path(__file__).resolve().parent
    yield package
    if ON_WINDOWS:
        return
    root = _source_tree()
    if root is not None:
        for preset in ("native", "check", "debug"):
            yield root / "build" / preset / "lib"
    # The prefix of an installation, such as PREFIX/lib/python3.11/site-packages/mirolta.
    triplet = sysconfig.get_config_var("MULTIARCH") or ""
    for prefix in [*package.parents, Path(sys.prefix)]:
        for name in ("lib", "lib64", f"lib/{triplet}"):
            yield prefix / name


def _files(names: List[str]) -> Iterator[str]:
    for folder in _folders():
        for name in names:
            if (folder / name).is_file():
                yield str(folder / name)
    if not ON_WINDOWS:
        yield names[0]  # wherever the loader finds it


def _load(file: str) -> Any:
    return getattr(ctypes, "WinDLL")(file) if ON_WINDOWS else ctypes.CDLL(file)


def _load_first(names: List[str], failures: List[str]) -> Tuple[Any, str]:
    for file in _files(names):
        try:
            return _load(file), file
        except OSError as failure:
            failures.append(str(failure))
    return None, ""


def _open() -> Runtime:
    failures: List[str] = []
    chosen = os.environ.get(VARIABLE, "")
    if chosen:
        file = str(Path(chosen).resolve())
        try:
            module_library = _load(file)
        except OSError as failure:
            raise LibraryNotFoundError(f"{VARIABLE} names a file that cannot be loaded: {failure}",
                                       path=file) from None
    else:
        module_library, file = _load_first(_MODULE_NAMES, failures)
    module = None if module_library is None else Module(module_library, file)
    if ON_WINDOWS:
        # Objects of our own: the prototypes of those in ctypes.windll are shared with everybody.
        system = {name: _load(name) for name in ("ole32", "oleaut32")}
        return Runtime(lambda name: system[name], module, bool(chosen))
    # The module depends on the runtime, whose functions are therefore found through it.
    library = module_library
    if library is None:
        library, file = _load_first(_RUNTIME_NAMES, failures)
    if library is None:
        raise LibraryNotFoundError(
            f"libMirolta.so.1 was not found; set {VARIABLE} to its file, or install it. "
            + "; ".join(dict.fromkeys(failures)))
    return Runtime(lambda name: library, module, bool(chosen))


_lock = threading.Lock()
_runtime: Optional[Runtime] = None
_thread = threading.local()


def runtime() -> Runtime:
    """The automation functions, loaded at the first use; the calling thread may then use them."""
    global _runtime
    found = _runtime
    if found is None:
        with _lock:
            if _runtime is None:
                _runtime = _open()
            found = _runtime
    if ON_WINDOWS and not hasattr(_thread, "entered"):
        _enter_apartment(found)
    return found


def _enter_apartment(functions: Runtime) -> None:
    """Initializes the object runtime of Windows for the thread, unless somebody has done so.

    The kind of apartment is the one that pywin32 would choose too: sys.coinit_flags, by default a
    single-threaded one. A thread that is in an apartment of another kind stays there: the status
    RPC_E_CHANGED_MODE is no failure. Nothing calls CoUninitialize, as objects may outlive their
    thread.
    """
    functions.CoInitializeEx(None, getattr(sys, "coinit_flags", 2))
    _thread.entered = True
