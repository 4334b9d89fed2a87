#!/usr/bin/env python3
"""Checks the licence lines of the project, and that the check finds what is planted.

licences_test.py SCRIPTS_DIR
"""
import pathlib
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, sys.argv[1])
import licences  # noqa: E402

LINE = "SPDX-License-Identifier: MIT\n"
# Name, file, text, whether it is a fault.
PLANTED = [
    ("a public header with the line", "include/a.h", "// " + LINE, False),
    ("without it", "include/mirolta/cpp/a.hpp", "// A header.\n", True),
    ("of another licence", "include/a.h", "// SPDX-License-Identifier: ISC\n", True),
    ("in the second line", "lib/a.js", "// A script.\n// " + LINE, True),
    ("Python", "python/mirolta/a.py", "# " + LINE, False),
    ("Python without it", "python/mirolta/a.py", '"""A module."""\n', True),
    ("a source file with it", "hash/a.cpp", "// " + LINE, True),
    ("a source file", "hash/a.cpp", "// A source file.\n", False),
    ("a test with it", "tests/a_test.py", "# " + LINE, True),
    ("what is built", "build/a.cpp", "// " + LINE, False),
]


def planted(name, text):
    """Faults before, and after the missing lines were added."""
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder, name)
        path.parent.mkdir(parents=True)
        path.write_text(text, "utf-8")
        before = licences.check(pathlib.Path(folder))[1]
        licences.check(pathlib.Path(folder), fix=True)
        return bool(before), path.read_text("utf-8")


def main():
    failures = 0
    for label, name, text, is_fault in PLANTED:
        found, fixed = planted(name, text)
        failures += found != is_fault
        if found != is_fault:
            print(f"FAILED {label}: {'not ' if is_fault else ''}found")
        wants_line = is_fault and licences.TAG not in text
        if fixed != (f"{licences.line_of(pathlib.Path(name))}\n{text}" if wants_line else text):
            failures += 1
            print(f"FAILED {label}: becomes {fixed!r}")
    count, lines = licences.check(licences.SOURCE)
    print("\n".join(lines))
    if count < 5:
        print(f"FAILED only {count} files need a line")
    return 1 if failures or lines or count < 5 else 0


sys.exit(main())
