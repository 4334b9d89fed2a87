#!/usr/bin/env python3
"""Checks which files name their licence by an SPDX line.

licences.py [--fix] [FOLDER]

Files that leave the project one by one, because users include or copy them, say in their first line

    // SPDX-License-Identifier: MIT

(# in Python). These are the public headers, the Python package, lib/bytes.js; mirolta.d.ts is written with
the line.
For all other files LICENSE speaks; a line in them would have to be kept right for nothing. --fix adds the lines
that are missing. Prints the faults; exits 1 if there are any.
"""
import pathlib
import sys

SOURCE = pathlib.Path(__file__).resolve().parent.parent
TAG = "SPDX-License-Identifier"
PATTERNS = ["include/**/*.h", "include/**/*.hpp", "python/mirolta/**/*.py", "lib/*.js"]
# They speak of the line.
MAY_NAME_IT = {"docs/conventions.md", "scripts/licences.py", "tests/editors/declarations_test.js",
               "tests/setup/licences_test.py", "tools/script_declarations.cpp"}
# What has comments; the corpus of the fuzzers and the test vectors have none of ours.
SUFFIXES = {".c", ".cmake", ".cpp", ".h", ".hpp", ".idl", ".in", ".inc", ".js", ".md", ".py", ".sh", ".ts", ".txt"}


def line_of(path):
    return f"{'#' if path.suffix == '.py' else '//'} {TAG}: MIT"


def wanted_files(folder):
    return {path for pattern in PATTERNS for path in folder.glob(pattern)}


def other_files(folder):
    for top in sorted(folder.iterdir()):
        if top.name == "build" or top.name.startswith("."):
            continue
        for path in [top] if top.is_file() else sorted(top.rglob("*")):
            if path.suffix in SUFFIXES and path.is_file() and "corpus" not in path.parts:
                yield path


def check(folder, fix=False):
    """The number of files that need the line and the faults, a line each."""
    lines, wanted = [], wanted_files(folder)
    for path in sorted(wanted):
        text = path.read_text("utf-8")
        if text.split("\n", 1)[0] == line_of(path):
            continue
        if fix and TAG not in text:
            path.write_text(f"{line_of(path)}\n{text}", "utf-8")
        else:
            lines.append(f"{path.relative_to(folder)}:1:1: warning: the first line is not "
                         f"\"{line_of(path)}\" [licence]")
    for path in other_files(folder):
        name = path.relative_to(folder).as_posix()
        if path in wanted or name in MAY_NAME_IT:
            continue
        for number, text in enumerate(path.read_text("utf-8", "replace").split("\n"), 1):
            if TAG in text:
                lines.append(f"{name}:{number}:1: warning: LICENSE speaks for this file [licence]")
    return len(wanted), lines


def main(words):
    folders = [pathlib.Path(word).resolve() for word in words if word != "--fix"]
    _, lines = check(folders[0] if folders else SOURCE, "--fix" in words)
    print("\n".join(lines), end="\n" if lines else "")
    return 1 if lines else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
