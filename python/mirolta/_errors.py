# SPDX-License-Identifier: MIT
"""Automation errors as exceptions."""
from __future__ import annotations

import ctypes

from ._statuses import DESCRIPTIONS, signed, unsigned
from ._structures import ON_WINDOWS


def _system_text(status: int) -> str:
    known = DESCRIPTIONS.get(status)
    if known is not None:
        return known[1]
    if ON_WINDOWS:
        return str(getattr(ctypes, "FormatError")(signed(status))).strip()
    return ""


class AutomationError(Exception):
    """A call of an object failed.

    number       the status as a signed 32-bit number, as scripts see it
    source       the class that raised it: its registered description, else the ProgID; may be ""
    description  the text that the object published, else one for the status; may be ""
    """

    def __init__(self, number: int, description: str = "", source: str = "") -> None:
        self.number = signed(number)
        self.description = description or _system_text(self.status)
        self.source = source
        super().__init__(self.number, self.description, self.source)

    @property
    def status(self) -> int:
        """The number without a sign, as documentation writes it: 0x80042778."""
        return unsigned(self.number)

    @property
    def name(self) -> str:
        """The platform's name of the status, such as E_INVALIDARG; "" if it has none."""
        return DESCRIPTIONS.get(self.status, ("", ""))[0]

    def __str__(self) -> str:
        number = self.name or f"0x{self.status:08X}"
        text = f"{self.description} ({number})" if self.description else number
        return f"{self.source}: {text}" if self.source else text


def check(status: int, source: str = "") -> None:
    """Raises the failure that a status means."""
    if status < 0:
        raise AutomationError(status, "", source)
