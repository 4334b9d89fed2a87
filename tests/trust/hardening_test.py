#!/usr/bin/env python3
"""Reads from built files that they are linked as cmake/Layers.cmake says.

    hardening_test.py FILE...

FILE is a shared object or program for Linux, or a DLL for Windows.
"""
import re
import subprocess
import sys


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


class ElfFile:
    """What readelf and objdump say of a shared object or program."""

    def __init__(self, path):
        self.path = path
        self.text = output("readelf", "-hSldnVW", "--dyn-syms", path)

    def find(self, pattern):
        return re.findall(pattern, self.text, re.MULTILINE)

    def faults(self):
        wrong = []

        def require(condition, message):
            if not condition:
                wrong.append(message)

        kind = self.find(r"^\s*Type:\s+(\w+)")
        require(kind == ["DYN"], f"loads at a fixed address: {kind}")
        require(self.find(r"^\s+GNU_RELRO"), "has no read-only relocations")
        flags = " ".join(self.find(r"\((?:FLAGS|FLAGS_1)\)\s+(.*)"))
        require(re.search(r"\b(BIND_)?NOW\b", flags), f"binds at the first call: {flags!r}")
        require(not self.find(r"\(TEXTREL\)"), "relocates its code")
        # Without lazy binding the table of addresses is part of what becomes read-only.
        require(not self.find(r"^\s+\[\s*\d+\] \.got\.plt\s"), "keeps a writable table of calls")
        stack = self.find(r"^\s+GNU_STACK(?:\s+0x\w+){5}\s+(\w+)")
        require(stack == ["RW"], f"has a stack of kind {stack}")
        both = [line for line in self.find(r"^\s+LOAD(?:\s+0x\w+){5}\s+(.{3})")
                if "W" in line and "E" in line]
        require(not both, "has memory that is writable and executable")
        require("__stack_chk_fail" in self.text, "has no guards of the stack")
        machine = self.find(r"^\s*Machine:\s+(.*)")
        if machine[0].startswith(("Advanced Micro Devices X86-64", "Intel 80386")):
            require(self.find(r"x86 feature: .*\bSHSTK\b"), "is not marked for shadow stacks")
            wrong += self.unmarked_exports()
        # The system's libraries version what they offer, so that those in use can be told.
        needed = self.find(r"\(NEEDED\)\s+Shared library: \[((?:lib(?:c|m|dl|rt|pthread|gcc_s|stdc\+\+)"
                           r"|ld-linux[^.]*)\.so.*)\]")
        used = self.find(r"Version: \d+  File: (\S+)")
        require(needed, "needs no library of the system")
        for name in needed:
            require(name in used, f"needs {name} for nothing")
        return wrong

    def unmarked_exports(self):
        """Exported functions that begin with anything but the mark of a branch's target."""
        exported = self.find(
            r"^\s*\d+: (\w+)\s+[1-9]\d*\s+FUNC\s+GLOBAL\s+DEFAULT\s+\d+ (Dll\w+|Mirolta\w+|Sys\w+)$")
        code = output("objdump", "-d", "--no-show-raw-insn", self.path) if exported else ""
        first = dict(re.findall(r"^0*([0-9a-f]+) <[^>]*>:\n\s*[0-9a-f]+:\t(\w+)", code,
                                re.MULTILINE))
        wrong = [name for address, name in exported
                 if first.get(address.lstrip("0")) not in ("endbr64", "endbr32")]
        return [f"has unmarked functions: {' '.join(wrong[:5])}"] if wrong else []


class WindowsFile:
    """What objdump says of a DLL."""

    def __init__(self, path):
        self.path = path
        self.text = output("x86_64-w64-mingw32-objdump", "-p", path)

    def faults(self):
        marks = re.search(r"^DllCharacteristics\s+0*([0-9a-f]+)\n((?:\t.*\n)*)", self.text,
                          re.MULTILINE)
        names = marks.group(2) if marks else ""
        wanted = ["DYNAMIC_BASE", "NX_COMPAT"]
        if "pei-x86-64" in self.text:
            wanted.append("HIGH_ENTROPY_VA")
        wrong = [f"is not marked {name}" for name in wanted if name not in names]
        if not re.search(r"^Entry 5 0*[1-9a-f][0-9a-f]* .*Base Relocation", self.text,
                         re.MULTILINE):
            wrong.append("cannot be moved: it has no relocations")
        return wrong


def main(paths):
    if not paths:
        sys.exit("no file to read")
    failed = False
    for path in paths:
        with open(path, "rb") as file:
            kind = ElfFile if file.read(4) == b"\x7fELF" else WindowsFile
        for fault in kind(path).faults():
            print(f"{path} {fault}")
            failed = True
    print(f"{len(paths)} files read")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main(sys.argv[1:])
