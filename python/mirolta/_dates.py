# SPDX-License-Identifier: MIT
"""Dates: automation's local days since 30 December 1899, and Python's datetime."""
from __future__ import annotations

import datetime
from typing import Union

_DAY_ZERO = datetime.datetime(1899, 12, 30)
_LEAST_YEAR = 100
_DAY_IN_MICROSECONDS = 24 * 60 * 60 * 1_000_000
_MICROSECOND = datetime.timedelta(microseconds=1)


def from_python(value: Union[datetime.date, datetime.datetime]) -> float:
    """The automation date. An aware datetime is converted to local time first.

    Before day 0 the days are negative, and the fraction still counts forward from midnight: -1.25
    is 29 December 1899, 6:00.
    """
    if isinstance(value, datetime.datetime):
        moment = value if value.tzinfo is None else value.astimezone().replace(tzinfo=None)
    else:
        moment = datetime.datetime(value.year, value.month, value.day)
    if moment.year < _LEAST_YEAR:
        raise OverflowError(f"automation has no dates before the year {_LEAST_YEAR}")
    past = moment - _DAY_ZERO
    time = (past - datetime.timedelta(past.days)) / _MICROSECOND / _DAY_IN_MICROSECONDS
    return past.days + time if past.days >= 0 else past.days - time


def to_python(date: float) -> datetime.datetime:
    """The local time, without a time zone, to the nearest microsecond.

    From 1810 to 4 June 2079 that is exactly what from_python converted; the precision of a date is
    that of a 64-bit floating-point number of days.
    """
    days = int(date)
    time = round(abs(date - days) * _DAY_IN_MICROSECONDS)
    return _DAY_ZERO + datetime.timedelta(days, 0, time)
