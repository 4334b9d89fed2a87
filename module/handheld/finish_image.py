#!/usr/bin/env python3
"""Writes what the linker cannot: the subsystem of a DLL becomes Windows CE.

    finish_image.py DLL
"""
import struct
import sys

SUBSYSTEM_AT = 68  # in the optional header
WINDOWS_CE = 9


def main(path):
    with open(path, "r+b") as file:
        image = file.read(4096)
        header = struct.unpack_from("<I", image, 0x3C)[0]
        if image[:2] != b"MZ" or image[header:header + 4] != b"PE\0\0":
            sys.exit(f"{path} is no DLL")
        file.seek(header + 24 + SUBSYSTEM_AT)
        file.write(struct.pack("<H", WINDOWS_CE))


if __name__ == "__main__":
    main(*sys.argv[1:])
