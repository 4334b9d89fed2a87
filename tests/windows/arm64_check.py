#!/usr/bin/env python3
"""Checks that the module for Windows on 64-bit ARM imports, exports and contains what it should.

    arm64_check.py DLL MAP IMPORTS SCRIPT [X64_DLL]

MAP is the linker's map of the DLL, IMPORTS a folder with LIBRARY.txt for each library that may be
imported, SCRIPT the resource script that the DLL's resources were made from. Where the module for 64-bit
x86 is there too, what may be imported must be what that one imports.
"""
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "handheld"))
from dll_check import map_faults, wanted_resources  # noqa: E402
from pe_image import Image  # noqa: E402

MACHINE = 0xAA64
PE32_PLUS = 0x20B
# Executable, with addresses above 2 GB, and a DLL.
CHARACTERISTICS = 0x2 | 0x20 | 0x2000
# Addresses of high entropy, moved at each start, data that is never run.
LOADER_FLAGS = 0x20 | 0x40 | 0x100
FILLER, ADDRESS_OF_64_BITS = 0, 10
EXPORTS = {"DllCanUnloadNow", "DllGetClassObject", "DllRegisterServer", "DllUnregisterServer"}
RUN, WRITE = 0x20000000, 0x80000000
# What the kernels for this processor are chosen by, and what its compiler calls: the module for the other one
# has no use for them.
BEYOND_X64 = {("kernel32", "IsProcessorFeaturePresent"), ("msvcrt", "memcpy"), ("msvcrt", "memset")}


def header_faults(image):
    if image.machine != MACHINE:
        yield f"is for machine {image.machine:#x}"
    if image.magic != PE32_PLUS:
        yield f"has headers of kind {image.magic:#x}"
    if image.characteristics & CHARACTERISTICS != CHARACTERISTICS:
        yield f"is no DLL for 64 bits: {image.characteristics:#x}"
    if image.loader_flags & LOADER_FLAGS != LOADER_FLAGS:
        yield f"is loaded without protections: {image.loader_flags:#x}"
    if image.time != 0:
        yield f"contains the time of linking: {image.time:#x}"
    section = image.section_at(image.entry)
    if image.entry == 0 or section is None or not section.flags & RUN:
        yield f"has its entry point outside its code: {image.entry:#x}"
    for section in image.sections:
        if section.flags & RUN and section.flags & WRITE:
            yield f"has a section {section.name} that is writable and executable"
    # Threads find no slot of the module, and nothing would run their destructors.
    for name in ("thread storage", "delayed import"):
        if name in image.directories:
            yield f"has a directory of kind {name}"
    kinds = {kind for kind, _ in image.relocations()}
    if ADDRESS_OF_64_BITS not in kinds or kinds - {FILLER, ADDRESS_OF_64_BITS}:
        yield f"has relocations of types {sorted(kinds)}"


def by_library(imports):
    return {(library.lower().removesuffix(".dll"), name) for library, names in imports for name in names}


def import_faults(image, allowed):
    imported = by_library(image.imports())
    if not imported:
        yield "imports nothing"
    for library, name in sorted(imported - allowed):
        yield f"imports {name} of {library}"


def list_faults(allowed, x64):
    for library, name in sorted(allowed - by_library(x64.imports()) - BEYOND_X64):
        yield f"may import {name} of {library}, which the module for 64-bit x86 does not"


def export_faults(image):
    if "export" not in image.directories:
        yield "exports nothing"
        return
    name, exports = image.exports()
    if name != "Mirolta.dll":
        yield f"calls itself {name}"
    if {export.name for export in exports} != EXPORTS or len(exports) != len(EXPORTS):
        yield "exports " + ", ".join(sorted(export.name for export in exports))
    for export in exports:
        section = image.section_at(export.address)
        if section is None or not section.flags & RUN:
            yield f"exports {export.name} outside its code"


def resource_faults(image, script):
    found = {(kind, name): size for kind, name, _, _, size in image.resources()}
    wanted = wanted_resources(script)
    for kind in (6, 16, "REGISTRY", "TYPELIB"):
        if kind not in {kind for kind, _ in wanted}:
            yield f"has a script without resources of type {kind}"
    for kind, name in sorted(wanted, key=str):
        if not found.get((kind, name)):
            yield f"lacks resource {kind} {name}"


def faults(image, map_text, allowed, script):
    for check in (header_faults(image), import_faults(image, allowed), export_faults(image),
                  resource_faults(image, script), start_faults(map_text)):
        yield from check


def start_faults(map_text):
    """Constructors are run by the module's own start, so they are no fault; one is there."""
    found = list(map_faults(map_text))
    constructors = [fault for fault in found if ".ctors" in fault]
    if len(constructors) != 1 or "language_support" not in constructors[0]:
        yield f"has other constructors than that of the stack's canary: {constructors}"
    yield from (fault for fault in found if fault not in constructors)


def read_allowed(folder):
    lists = list(pathlib.Path(folder).glob("*.txt"))
    if not lists:
        sys.exit(f"{folder} has no lists")
    return {(path.stem, name) for path in lists for name in path.read_text(encoding="ascii").split()}


def main(dll, map_file, imports, script, x64=None):
    image = Image(pathlib.Path(dll).read_bytes())
    allowed = read_allowed(imports)
    found = list(faults(image, pathlib.Path(map_file).read_text(encoding="utf-8"), allowed,
                        pathlib.Path(script).read_text(encoding="utf-8")))
    if x64 and pathlib.Path(x64).exists():
        found += list_faults(allowed, Image(pathlib.Path(x64).read_bytes()))
    else:
        print("skipped: make windows has not built the module whose imports bound the lists")
    for fault in found:
        print(f"{dll} {fault}")
    print(f"{dll}: {len(image.data)} bytes, imports {len(by_library(image.imports()))} functions")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    if len(sys.argv) not in (5, 6):
        sys.exit(__doc__)
    main(*sys.argv[1:])
