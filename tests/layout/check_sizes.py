#!/usr/bin/env python3
"""Checks that no size of memory is computed unchecked.

check_sizes.py SOURCE_DIR COMPILE_COMMANDS

- The module allocates arrays through NewArray only, whose sizes are CheckedSize.
- A sum or product of counts known at run time does not compile as a CheckedSize: the compiler is
  asked, with the command line of a layer.
Exits 1 and names every place that does not comply.
"""
import json
import pathlib
import re
import shlex
import subprocess
import sys

from check_layers import MODULE_FOLDERS, strip_comments

FOLDERS = MODULE_FOLDERS + ["platform/seam", "platform/windows", "platform/handheld", "platform/runtime"]
HELPER = "platform/seam/checked_size.h"
# An array of some type: its size stands in brackets behind the type.
ARRAY = re.compile(r"\bnew\s*(\([^()]*\)\s*)?(\(\s*)?[A-Za-z_][\w:<>*\s]*\[")
# What places an object in memory that is there allocates nothing.
PLACED = re.compile(r"\bnew\s*\(\s*(?!std::nothrow)[A-Za-z_]")

UNIT = "bignum/core/limb_scratch.cpp"
ALLOWED = [
    "LimbScratch memory{CheckedSize(n)};",
    "LimbScratch memory(2 * CheckedSize(n) + CheckedSize(m) * 3 + 4 * 8);",
    "LimbScratch memory(CheckedSize(n) * CheckedSize(m));",
    "uint8_t* bytes = NewArray<uint8_t>(CheckedSize(words)); delete[] bytes;",
    "uint8_t* bytes = NewArray<uint8_t>(SizeConstant(16)); delete[] bytes;",
]
REFUSED = [
    "LimbScratch memory(n);",
    "LimbScratch memory(2 * n);",
    "LimbScratch memory(CheckedSize(2 * n));",
    "LimbScratch memory(CheckedSize(n + m));",
    "LimbScratch memory(CheckedSize(n) + m);",
    "LimbScratch memory(CheckedSize(n) + 2 * m);",
    "LimbScratch memory(CheckedSize(n) * m);",
    "LimbScratch memory(CheckedSize(n) << 3);",
    "LimbScratch memory{CheckedSize(signed_count)};",
    "uint8_t* bytes = NewArray<uint8_t>(2 * n); delete[] bytes;",
    "uint8_t* bytes = NewArray<uint8_t>(SizeConstant(n)); delete[] bytes;",
]


def check_arrays(source):
    for folder in FOLDERS:
        for path in sorted((source / folder).rglob("*")):
            name = str(path.relative_to(source))
            if path.suffix not in (".h", ".cpp") or name == HELPER:
                continue
            for number, line in enumerate(strip_comments(path.read_text()).splitlines(), 1):
                if ARRAY.search(line) and not PLACED.search(line):
                    yield f"{name}:{number}: an array that is not NewArray's"


def check_conversions(source, commands):
    command = commands[str((source / UNIT).resolve())]
    words = shlex.split(command["command"])
    words = [w for i, w in enumerate(words)
             if w not in ("-c", "-o", command["file"]) and words[i - 1] != "-o"]
    for statements, compiles in ((ALLOWED, True), (REFUSED, False)):
        for statement in statements:
            text = ('#include "limb_scratch.h"\nnamespace mirolta {\n'
                    "void Try(size_t n, size_t m, uint32_t words, int signed_count);\n"
                    "void Try(size_t n, size_t m, uint32_t words, int signed_count) {\n"
                    f"(void)n; (void)m; (void)words; (void)signed_count;\n{statement}\n}}\n}}\n")
            run = subprocess.run(words + ["-fsyntax-only", "-x", "c++", "-"], input=text,
                                 cwd=command["directory"], capture_output=True, text=True)
            if (run.returncode == 0) != compiles:
                said = "is refused: " + run.stderr if compiles else "compiles"
                yield f"{statement} {said}"


def main():
    source = pathlib.Path(sys.argv[1]).resolve()
    with open(sys.argv[2]) as file:
        commands = {entry["file"]: entry for entry in json.load(file)}
    if len(re.findall(ARRAY, (source / HELPER).read_text())) != 1:
        print(f"{HELPER}: the one array is not found, so its search means nothing")
        return 1
    failures = list(check_arrays(source)) + list(check_conversions(source, commands))
    for failure in failures:
        print(failure)
    print(f"{len(ALLOWED) + len(REFUSED)} conversions tried, {len(failures)} findings")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
