#!/usr/bin/env python3
"""Breaks a good DLL in the ways that arm64_check.py must report.

    arm64_check_test.py DLL MAP IMPORTS SCRIPT [X64_DLL]
"""
import pathlib
import struct
import sys
import unittest

import arm64_check
from pe_image import DIRECTORIES, Image

arguments = sys.argv[1:]


class Arm64Check(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        dll, map_file, imports, script = arguments[:4]
        cls.good = pathlib.Path(dll).read_bytes()
        cls.image = Image(cls.good)
        cls.map = pathlib.Path(map_file).read_text(encoding="utf-8")
        cls.allowed = arm64_check.read_allowed(imports)
        cls.script = pathlib.Path(script).read_text(encoding="utf-8")

    def faults(self, data=None, **changed):
        inputs = {"map_text": self.map, "allowed": self.allowed, "script": self.script} | changed
        return list(arm64_check.faults(Image(bytes(data or self.good)), **inputs))

    def broken(self, at, form, value):
        data = bytearray(self.good)
        struct.pack_into(f"<{form}", data, at, value)
        return data

    def expect(self, fault, data=None, **changed):
        found = self.faults(data, **changed)
        self.assertTrue(any(fault in text for text in found), f"{fault!r} is not in {found}")

    def directory_at(self, name):
        return self.image.optional + 112 + 8 * DIRECTORIES.index(name)

    def test_the_module_has_no_fault(self):
        self.assertEqual(self.faults(), [])

    def test_headers(self):
        header, optional = self.image.header, self.image.optional
        for fault, at, form, value in (
                ("is for machine 0x8664", header + 4, "H", 0x8664),
                ("is no DLL for 64 bits", header + 22, "H", 0x22),
                ("time of linking", header + 8, "I", 1),
                ("loaded without protections", optional + 70, "H", 0x140),
                ("loaded without protections", optional + 70, "H", 0x120),
                ("entry point outside", optional + 16, "I", 0),
                ("entry point outside", optional + 16, "I", 0x7FFFFFFF)):
            with self.subTest(fault):
                self.expect(fault, self.broken(at, form, value))

    def test_directories(self):
        for name in ("thread storage", "delayed import"):
            with self.subTest(name):
                self.expect(f"directory of kind {name}", self.broken(self.directory_at(name), "I", 0x1000))
        for name, fault in (("export", "exports nothing"), ("import", "imports nothing"),
                            ("resource", "lacks resource"), ("relocation", "relocations of types []")):
            with self.subTest(name):
                self.expect(fault, self.broken(self.directory_at(name), "Q", 0))

    def test_writable_code(self):
        optional_size = self.image.u16(self.image.header + 20)
        for i, section in enumerate(self.image.sections):
            if section.flags & arm64_check.RUN:
                at = self.image.optional + optional_size + 40 * i + 36
                self.expect("writable and executable", self.broken(at, "I", section.flags | 0x80000000))

    def test_every_import_must_be_listed(self):
        imported = arm64_check.by_library(self.image.imports())
        self.assertGreater(len(imported), 50)
        for library, name in sorted(imported):
            with self.subTest(name):
                self.expect(f"imports {name} of {library}", allowed=self.allowed - {(library, name)})

    def test_another_import_and_library_are_reported(self):
        for old, new in ((b"\0HeapAlloc\0", b"\0HeapClock\0"), (b"\0KERNEL32.dll\0", b"\0KERNEL33.dll\0")):
            at = self.good.upper().index(old.upper())
            data = bytearray(self.good)
            data[at:at + len(new)] = new
            name = new.strip(b"\0").decode().removesuffix(".dll")
            self.expect(name if name[0] == "H" else name.lower(), data)

    def test_another_export_is_reported(self):
        data = self.good.replace(b"\0DllCanUnloadNow\0", b"\0DllCanUnloadLog\0")
        self.expect("exports DllCanUnloadLog", data)

    def test_missing_resources(self):
        for line in ("999 TYPELIB x\n", "999 REGISTRY x\n", "999 VERSIONINFO\n"):
            with self.subTest(line):
                self.expect("lacks resource", script=self.script + "\n" + line)
        self.expect("without resources of type TYPELIB", script=self.script.replace("TYPELIB", "OTHER"))

    def test_constructors_and_foreign_parts(self):
        line = next(line for line in self.map.splitlines() if ".ctors" in line)
        self.expect("other constructors", map_text=self.map.replace(line + "\n", ""))
        self.expect("other constructors", map_text=self.map.replace("language_support", "elsewhere"))
        foreign = line.replace("language_support.cpp.obj", "udivti3.o").replace(".ctors", ".text")
        self.expect("contains udivti3.o", map_text=self.map + "\n" + foreign + "\n")
        more = line.replace("language_support", "another")
        self.expect("contains constructors", map_text=self.map + "\n" + more + "\n" + more + "\n")

    def test_lists_are_bounded_by_the_other_module(self):
        image = Image(self.good)
        allowed = arm64_check.by_library(image.imports()) | {("kernel32", "CreateFileW")}
        found = list(arm64_check.list_faults(allowed, image))
        self.assertEqual(len(found), 1, found)
        self.assertIn("may import CreateFileW", found[0])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
