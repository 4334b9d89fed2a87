"""Writes the source of all_host_classes.h: all_host_classes.py OUTPUT SOURCE...

A class is a `HostClass NAME = {...}` of a source file, declared in the header of the same name.
"""
import pathlib
import re
import sys

CLASS = re.compile(r"^(?:\w+ )*HostClass ([\w:]+) = ?\{", re.MULTILINE)


def main(output, sources):
    lines, names = ['#include "all_host_classes.h"', ""], []
    for path in map(pathlib.Path, sources):
        found = CLASS.findall(path.read_text("utf-8"))
        if found:
            lines.append(f'#include "{path.parent.name}/{path.stem}.h"')
            names += found
    lines += ["", "namespace mirolta::host {", "",
              "std::span<const HostClass* const> AllHostClasses() {",
              "  static constexpr const HostClass* kClasses[] = {", *(f"      &{name}," for name in names),
              "  };", "  return kClasses;", "}", "", "}  // namespace mirolta::host", ""]
    pathlib.Path(output).write_text("\n".join(lines), "utf-8")


main(sys.argv[1], sys.argv[2:])
