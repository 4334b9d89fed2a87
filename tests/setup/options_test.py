#!/usr/bin/env python3
"""Checks that docs/systems.md lists the options that there are, with their defaults.

    options_test.py PROJECT

Everything that the project's own files put into CMake's cache is named MIROLTA_*, but CMake's own variables.
"""
import os
import pathlib
import re
import sys

PROJECT = pathlib.Path(sys.argv[1])
LEFT_OUT = {"build", ".git"}
# Defaults that are computed -> how the page lists them.
COMPUTED = {"${PROJECT_IS_TOP_LEVEL}": "`ON`, within another project `OFF`", "${gtest_default}": "",
            "${least_cpu}": "the least that the build is for"}
OPTION = re.compile(r'^\s*option\((\w+)\s+"[^"]*"\s+(\S+)\)', re.M)
CACHED = re.compile(r'^\s*set\((\w+)\s+("[^"]*"|\S+)\s+CACHE\s', re.M)
FOUND = re.compile(r"^\s*find_(?:library|path|program|file)\((\w+)", re.M)


def files_of_cmake():
    for folder, folders, names in os.walk(PROJECT):
        folders[:] = [name for name in folders if name not in LEFT_OUT]
        for name in names:
            if name == "CMakeLists.txt" or name.endswith(".cmake"):
                yield pathlib.Path(folder, name)


def main():
    options, found = {}, set()
    for path in files_of_cmake():
        text = re.sub(r"#.*", "", path.read_text("utf-8"))
        options.update(OPTION.findall(text))
        options.update((name, value.strip('"')) for name, value in CACHED.findall(text))
        found |= set(FOUND.findall(text))
    # The toolchain files take it.
    found.add("MIROLTA_TARGET_PACKAGES")
    wrong = [f"{name}: its name" for name in {*options, *found}
             if not name.startswith(("MIROLTA_", "CMAKE_"))]
    listed_options, listed_found = {}, set()
    for table in re.split(r"\n\n", (PROJECT / "docs/systems.md").read_text("utf-8")):
        if table.startswith("| option | default |"):
            for name, default in re.findall(r"^\| `(\w+)` \| (.*?) ?\| .+\|$", table, re.M):
                listed_options[name] = default
        elif table.startswith("| variable |"):
            listed_found |= set(re.findall(r"`(MIROLTA_\w+)`", table))
    for name, default in options.items():
        if name.startswith("CMAKE_"):
            continue
        expected = COMPUTED.get(default, f"`{default}`" if default else "")
        if listed_options.get(name) != expected:
            wrong.append(f"{name}: is {default!r}, listed as {listed_options.get(name)!r}")
    wrong += [f"{name}: listed, but no option" for name in listed_options.keys() - options.keys()]
    wrong += [f"{name}: listed in one place only" for name in listed_found ^ found]
    print(f"{len(listed_options)} options, {len(listed_found)} variables")
    if wrong or len(listed_options) < 5 or len(listed_found) < 5:
        sys.exit("\n".join(sorted(wrong)) or "there are hardly any")


if __name__ == "__main__":
    main()
