# SPDX-License-Identifier: MIT
"""Calls of objects, and exceptions of Python code that such a call runs.

A member of an object may call back: a filter reads the file that it is bound to. An exception there
cannot pass through the object, which sees a status instead. The exception is kept for the thread,
and the call that started it all raises it again.
"""
from __future__ import annotations

import sys
import threading
from types import SimpleNamespace
from typing import Any, Callable, Optional


class _Thread(threading.local):
    depth = 0
    exception: Optional[BaseException] = None


_thread = _Thread()


def keep(exception: BaseException) -> None:
    """Keeps what Python code raised during a call, for the caller; the first one counts.

    On a thread that does not come from Python nobody waits for it, and it is only reported.
    """
    if _thread.depth == 0:
        sys.unraisablehook(SimpleNamespace(  # type: ignore[arg-type]
            exc_type=type(exception), exc_value=exception, exc_traceback=exception.__traceback__,
            err_msg="Exception ignored in a stream", object=None))
    elif _thread.exception is None:
        _thread.exception = exception


def call(function: Callable[..., int], *arguments: Any) -> int:
    """The status of the call.

    Raises the exception that the call's failure came from. One that the object recovered from is
    dropped, unless it is meant to end the program.
    """
    outer = _thread.exception
    _thread.exception = None
    _thread.depth += 1
    try:
        status = function(*arguments)
        raised = _thread.exception
    finally:
        _thread.depth -= 1
        _thread.exception = outer
    if raised is not None and (status < 0 or not isinstance(raised, Exception)):
        try:
            raise raised
        finally:
            del raised  # it refers to this frame, which would refer to it
    return status
