# SPDX-License-Identifier: MIT
"""Names of algorithms: those of Python's libraries, and those of the objects."""
from __future__ import annotations

from typing import Dict

HASHES: Dict[str, str] = {"md5": "MD5", "sha1": "SHA1", "sha256": "SHA256"}
CIPHERS: Dict[str, str] = {"aes": "AES", "des": "DES"}


def plain(name: str) -> str:
    """The name as HASHES and CIPHERS write it."""
    return name.lower().replace("-", "").replace("_", "")


def algorithm(name: str, names: Dict[str, str]) -> str:
    """The objects' name of an algorithm, in any letter case and with or without a hyphen."""
    found = names.get(plain(name))
    if found is None:
        raise ValueError(f"unsupported algorithm {name!r}; there are {', '.join(names)}")
    return found
