#!/usr/bin/env python3
"""Breaks a good DLL in every way that dll_check.py must report.

    dll_check_test.py DLL MAP EXPORTS IDENTIFIERS
"""
import pathlib
import struct
import sys
import unittest

import dll_check
from pe_image import DIRECTORIES, Image

arguments = sys.argv[1:]


class DllCheck(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.good = pathlib.Path(arguments[0]).read_bytes()
        cls.map, cls.allowed, cls.script = dll_check.inputs(*arguments[1:])
        cls.image = Image(cls.good)

    def faults(self, data, **changed):
        inputs = {"map_text": self.map, "allowed": self.allowed, "script": self.script} | changed
        return list(dll_check.faults(bytes(data), **inputs))

    def broken(self, at, form, value):
        data = bytearray(self.good)
        struct.pack_into(f"<{form}", data, at, value)
        return data

    def expect(self, fault, data=None, **changed):
        """One of the faults contains the text, and the DLL as built has none with it."""
        found = self.faults(self.good if data is None else data, **changed)
        self.assertTrue(any(fault in text for text in found), f"{fault!r} is not in {found}")

    def section(self, name):
        """A section, and the position of its header."""
        for i, section in enumerate(self.image.sections):
            if section.name == name:
                optional_size = self.image.u16(self.image.header + 20)
                return section, self.image.optional + optional_size + 40 * i
        raise AssertionError(name)

    def test_the_module_has_no_fault(self):
        self.assertEqual(self.faults(self.good), [])

    def test_headers(self):
        header, optional = self.image.header, self.image.optional
        for fault, at, form, value in (
                ("is for machine 0x14c", header + 4, "H", 0x14C),
                ("is for machine 0x1c2", header + 4, "H", 0x1C2),
                ("headers of kind 0x20b", optional, "H", 0x20B),
                ("is for subsystem 2", optional + 68, "H", 2),
                ("needs version 10.0", optional + 48, "H", 10),
                ("is no DLL", header + 22, "H", 0x102),
                ("cannot be moved", header + 22, "H", 0x2103),
                ("time of linking", header + 8, "I", 1),
                ("is aligned", optional + 32, "I", 0x2000),
                ("is aligned", optional + 36, "I", 0x20),
                ("the entry point is no Thumb code", optional + 16, "I", self.image.entry & ~1),
                ("the entry point is not in code", optional + 16, "I", 0x80000001),
                ("is larger than it says", optional + 56, "I", 0x1000)):
            with self.subTest(fault):
                self.expect(fault, self.broken(at, form, value))

    def test_directories(self):
        for i, name in enumerate(DIRECTORIES):
            if name not in dll_check.DIRECTORIES:
                with self.subTest(name):
                    self.expect(f"directory of kind {name}",
                                self.broken(self.image.optional + 96 + 8 * i, "I", 0x1000))
        for i, fault in ((0, "exports nothing"), (1, "imports nothing"), (2, "lacks resource"),
                         (5, "cannot be moved")):
            with self.subTest(fault):
                self.expect(fault, self.broken(self.image.optional + 96 + 8 * i, "Q", 0))

    def test_sections(self):
        for name in dll_check.SECTIONS:
            section, at = self.section(name)
            with self.subTest(name):
                self.expect(f"flags {section.flags | 0x10000000:#x}",  # shared
                            self.broken(at + 36, "I", section.flags | 0x10000000))
                self.expect("has a section .tls", self.broken(at, "8s", b".tls"))
                self.expect(f"section {name} at {section.address + 1:#x}",
                            self.broken(at + 12, "I", section.address + 1))
        code, at = self.section(".text")
        self.expect("section .text with flags", self.broken(at + 36, "I", code.flags | 0x80000000))
        self.expect("of the file", self.broken(at + 20, "I", len(self.good) & ~0x1FF))

    def first_relocation(self):
        return self.image.at(self.image.directories["relocation"][0]) + 8

    def test_relocations(self):
        at = self.first_relocation()
        entry = self.image.u16(at)
        for fault, value in (("relocation of type 7", 0x7000 | entry & 0xFFF),
                             ("relocation of type 5", 0x5000 | entry & 0xFFF),
                             ("at the odd address", entry | 2)):
            with self.subTest(fault):
                self.expect(fault, self.broken(at, "H", value))
        self.expect("relocation outside its sections", self.broken(at - 8, "I", 0x7000000))

    def test_imports(self):
        _, names = self.image.imports()[0]
        at = self.good.index(b"\0" + names[0].encode() + b"\0") + 1
        self.expect("imports Xx", self.broken(at, f"{len(names[0])}s", b"Xx"))
        at = self.good.index(b"coredll.dll\0")
        self.expect("imports corexxx.dll", self.broken(at, "7s", b"corexxx"))
        descriptor = self.image.at(self.image.directories["import"][0])
        entry = self.image.at(self.image.u32(descriptor))
        self.expect("imports #7", self.broken(entry, "I", 0x80000007))
        for library, functions in self.image.imports():
            fewer = self.allowed | {library: self.allowed[library] - {functions[0]}}
            self.expect(f"imports {functions[0]}, which {library} lacks", allowed=fewer)

    def test_exports(self):
        for name in dll_check.EXPORTS:
            at = self.good.index(b"\0" + name.encode() + b"\0") + 1
            with self.subTest(name):
                self.expect("exports ", self.broken(at, "4s", b"Dxx_"))
        table = self.image.at(self.image.directories["export"][0])
        self.expect("exports DllCanUnloadNow as 2",
                    self.broken(table + 16, "I", self.image.u32(table + 16) + 1))
        self.expect("exports ", self.broken(table + 24, "I", 3))
        function = self.good.index(struct.pack("<I", self.image.exports()[1][0].address),
                                   self.image.at(self.image.u32(table + 28)))
        self.expect("DllCanUnloadNow is no Thumb code",
                    self.broken(function, "I", self.image.u32(function) & ~1))
        self.expect("DllCanUnloadNow is not in code",
                    self.broken(function, "I", self.section(".rdata")[0].address + 1))
        name = self.image.at(self.image.u32(table + 12))
        self.expect("calls itself Mirxlta.dll", self.broken(name + 3, "c", b"x"))

    def test_resources(self):
        root = self.image.at(self.image.directories["resource"][0])
        named = self.image.u16(root + 12)
        self.expect("resource of type 24", self.broken(root + 16 + 8 * named, "I", 24))
        text = root + (self.image.u32(root + 16) & 0x7FFFFFFF)
        self.expect("resource of type X", self.broken(text + 2, "2s", b"X\0"))
        for kind, name, _, address, _ in self.image.resources():
            at = self.good.index(struct.pack("<I", address), root)
            with self.subTest(f"{kind} {name}"):
                self.expect(f"resource {kind} {name} outside", self.broken(at, "I", 0x1000))
                self.expect(f"resource {kind} {name} outside", self.broken(at + 4, "I", 0))
        self.expect("lacks resource REGISTRY 7", script=self.script + "7 REGISTRY\n")

    def test_map(self):
        line = "00001000 00000010     4         {}:({})\n"
        for fault, file, section in (
                ("contains udivmoddi4.o", "udivmoddi4.o", ".text"),
                ("constructors or data of threads: .ctors", "a.obj", ".ctors.65436"),
                ("constructors or data of threads: .CRT$XCU", "a.obj", ".CRT$XCU"),
                ("constructors or data of threads: .tls$", "a.obj", ".tls$")):
            with self.subTest(fault):
                self.expect(fault, map_text=self.map + line.format(file, section))
        self.expect("a map without objects", map_text="")

    def test_what_leads_out_of_the_file(self):
        for i in (0, 1, 2, 5):
            with self.subTest(DIRECTORIES[i]):
                self.expect("cannot be read",
                            self.broken(self.image.optional + 96 + 8 * i, "I", 0x7000000))
        self.expect("cannot be read: relocation block",
                    self.broken(self.first_relocation() - 4, "I", 4))

    def test_size(self):
        self.expect("is larger than 204800 bytes",
                    self.good + bytes(dll_check.LIMIT + 1 - len(self.good)))


if __name__ == "__main__":
    if len(arguments) != 4:
        sys.exit(__doc__)
    unittest.main(argv=sys.argv[:1])
