"""Writes the C++ lines that name every class of the host: host_class_rows.py OUTPUT SOURCE...

A class is a `HostClass NAME = {...}` of a source file, declared in the header of the same name.
"""
import pathlib
import re
import sys

CLASS = re.compile(r"^(?:\w+ )*HostClass ([\w:]+) = ?\{", re.MULTILINE)


def main(output, sources):
    lines, names = ['#include "host_class_rows.h"', ""], []
    for path in map(pathlib.Path, sources):
        found = CLASS.findall(path.read_text("utf-8"))
        if found:
            lines.append(f'#include "{path.parent.name}/{path.stem}.h"')
            names += found
    lines += ["", "namespace mirolta::host {", "", "namespace {", "",
              "constexpr const HostClass* kRows[] = {", *(f"    &{name}," for name in names), "};", "",
              "}  // namespace", "", "std::span<const HostClass* const> AllHostClasses() {",
              "  return kRows;", "}", "", "}  // namespace mirolta::host", ""]
    pathlib.Path(output).write_text("\n".join(lines), "utf-8")


main(sys.argv[1], sys.argv[2:])
