# SPDX-License-Identifier: MIT
"""RSA keys and raw RSA, without padding.

Equal numbers give equal results and a changed one is not noticed: encrypt random keys with it. Nothing
runs in constant time.
"""
from __future__ import annotations

from typing import Optional, Union

from ._object import Object
from .numbers import Number

_Integer = Union[int, Number]
_NUMBERS = {"n": "Modulus", "e": "PublicExp", "d": "SecretExp", "p": "P", "q": "Q"}


def _bytes_of(number: _Integer) -> bytes:
    return Number(number).to_bytes()


class RSAKey:
    """A key of the numbers n and e, for decryption also d, or p and q, which is faster.

    n, e, d, p, q are properties of type int, 0 where a number is not known.
    """

    def __init__(self, n: _Integer = 0, e: _Integer = 0, d: _Integer = 0, p: _Integer = 0,
                 q: _Integer = 0) -> None:
        self._object = Object("Vardeko.crypt.RSA")
        lower, upper = sorted([int(p), int(q)])
        for name, number in zip(_NUMBERS.values(), (n, e, d, lower, upper)):
            setattr(self._object, name, _bytes_of(number))

    @classmethod
    def generate(cls, bits: int = 2048, *, e: Optional[_Integer] = None) -> RSAKey:
        """A random key of `bits` bits, a multiple of 16."""
        if bits < 32 or bits % 16:
            raise ValueError("the number of bits must be a multiple of 16, and 32 or more")
        made = cls(e=0 if e is None else e)
        made._object.CreateRandKeys(bits // 8, True)
        return made

    def _number(self, name: str) -> int:
        return int.from_bytes(getattr(self._object, _NUMBERS[name]) or b"", "big")

    @property
    def n(self) -> int:
        return self._number("n")

    @property
    def e(self) -> int:
        return self._number("e")

    @property
    def d(self) -> int:
        return self._number("d")

    @property
    def p(self) -> int:
        """The smaller prime."""
        return self._number("p")

    @property
    def q(self) -> int:
        return self._number("q")

    def encrypt(self, number: _Integer) -> int:
        """The number, which is less than n, to the power e modulo n."""
        return int.from_bytes(self._object.Encrypt(_bytes_of(number)), "big")

    def decrypt(self, number: _Integer) -> int:
        """The number to the power d modulo n."""
        has_primes = all((self.e, self.d, self.p, self.q))
        member = self._object.DecryptPQ if has_primes else self._object.Decrypt
        return int.from_bytes(member(_bytes_of(number)), "big")
