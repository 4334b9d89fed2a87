#!/usr/bin/env python3
"""Checks that Windows CE on ARM can load a DLL, and that it is what the module should be.

    dll_check.py DLL MAP EXPORTS IDENTIFIERS

MAP is the linker's map of the DLL, EXPORTS a folder with LIBRARY.txt for each library that may be
imported, IDENTIFIERS the resource script that the DLL's resources were made from.
"""
import pathlib
import re
import struct
import sys

from pe_image import Image

MACHINE = 0x1C4                # ARM with Thumb-2
WINDOWS_CE = 9
# An image for a later version of the system is refused.
LATEST_SYSTEM = (7, 0)
# A page of the system, and the unit of files.
PAGE = 0x1000
SECTOR = 0x200
EXECUTABLE, LARGE_OR_32_BIT, DLL, NO_RELOCATIONS = 0x2, 0x100, 0x2000, 0x1

LIMIT = 200 * 1024

CODE, DATA, ZEROED = 0x20, 0x40, 0x80
DISCARDABLE, RUN, READ, WRITE = 0x02000000, 0x20000000, 0x40000000, 0x80000000
# The loader goes by flags: it commits, copies and protects pages by RUN, READ and WRITE, and looks for
# no section by name. It ignores DISCARDABLE, the mark of relocations, but pages these in anyway. No
# section is shared between processes, unpaged, or both writable and executable.
SECTIONS = {
    ".text": CODE | RUN | READ,
    ".rdata": DATA | READ,
    ".data": DATA | READ | WRITE,
    ".rsrc": DATA | READ,
    ".reloc": DATA | READ | DISCARDABLE,
}

# What the loader reads: imports and their table of addresses, exports, resources, relocations. Others
# it ignores (debug, load configuration), reads from the kernel on (exception tables, which C++ without
# exceptions has no use for), or does not implement (storage of threads, delayed and bound imports).
DIRECTORIES = {"export", "import", "resource", "relocation", "address table"}

# The filler, and a whole address. Every loader knows these two. Type 7, the address in a pair of
# instructions, is known by the systems whose own compilers write it, and not by earlier ones: the
# code is compiled without such pairs.
FILLER, WHOLE_ADDRESS = 0, 3

# By number: strings (6) and versions (16), which the system reads; by name: what the module finds with
# FindResource, and what the automation library finds in it.
RESOURCE_TYPES = {6, 16, "REGISTRY", "TYPELIB"}

EXPORTS = {"DllCanUnloadNow": 1, "DllGetClassObject": 2, "DllRegisterServer": 3,
           "DllUnregisterServer": 4}


def header_faults(image):
    if image.machine != MACHINE:
        yield f"is for machine {image.machine:#x}"
    if image.magic != 0x10B:
        yield f"has headers of kind {image.magic:#x}"
    if image.subsystem != WINDOWS_CE:
        yield f"is for subsystem {image.subsystem}"
    if image.subsystem_version > LATEST_SYSTEM:
        yield "needs version {}.{} of the system".format(*image.subsystem_version)
    wanted = EXECUTABLE | LARGE_OR_32_BIT | DLL
    if image.characteristics & wanted != wanted:
        yield f"is no DLL for 32 bits: {image.characteristics:#x}"
    if image.characteristics & NO_RELOCATIONS or "relocation" not in image.directories:
        yield "cannot be moved"
    if image.time != 0:
        yield f"contains the time of linking: {image.time:#x}"
    if image.alignment != PAGE or image.file_alignment != SECTOR:
        yield f"is aligned to {image.alignment:#x} and {image.file_alignment:#x}"
    for name in sorted(image.directories.keys() - DIRECTORIES):
        yield f"has a directory of kind {name}"
    faults = entry_fault(image, "the entry point", image.entry)
    if faults:
        yield faults


def entry_fault(image, what, address):
    """Thumb functions are called at their address plus one."""
    section = image.section_at(address)
    if section is None or not section.flags & RUN:
        return f"{what} is not in code: {address:#x}"
    return None if address & 1 else f"{what} is no Thumb code: {address:#x}"


def section_faults(image):
    end = 0
    for section in image.sections:
        if section.name not in SECTIONS:
            yield f"has a section {section.name}"
        elif section.flags & ~ZEROED != SECTIONS[section.name]:
            yield f"has a section {section.name} with flags {section.flags:#x}"
        if section.address % PAGE or section.address < end:
            yield f"has section {section.name} at {section.address:#x}"
        if section.file_at % SECTOR or section.file_at + section.file_size > len(image.data):
            yield f"has section {section.name} at {section.file_at:#x} of the file"
        end = section.address + section.size
    if end > image.image_size:
        yield f"is larger than it says: {end:#x}"


def relocation_faults(image):
    for kind, address in image.relocations():
        if kind == FILLER:
            continue
        if kind != WHOLE_ADDRESS:
            yield f"has a relocation of type {kind} at {address:#x}"
        # The loader writes whole words, which the processor may refuse elsewhere.
        if address % 4:
            yield f"has a relocation at the odd address {address:#x}"
        if image.section_at(address) is None:
            yield f"has a relocation outside its sections, at {address:#x}"


def import_faults(image, allowed):
    imports = image.imports()
    if not imports:
        yield "imports nothing"
    for library, names in imports:
        known = allowed.get(library)
        if known is None:
            yield f"imports {library}"
            continue
        for name in names:
            if name not in known:
                yield f"imports {name}, which {library} lacks"


def export_faults(image):
    if "export" not in image.directories:
        yield "exports nothing"
        return
    name, exports = image.exports()
    if name != "Mirolta.dll":
        yield f"calls itself {name}"
    found = {export.name: export.ordinal for export in exports}
    if found != EXPORTS or len(exports) != len(EXPORTS):
        yield "exports " + ", ".join(f"{e.name} as {e.ordinal}" for e in exports)
    for export in exports:
        fault = entry_fault(image, export.name, export.address)
        if fault:
            yield fault


def wanted_resources(script):
    """(type, name) of each resource that the script defines; strings are in blocks of 16."""
    text = re.sub(r'"(?:[^"\\]|\\.)*"', "", script)
    wanted = {(kind, int(name)) for name, kind in re.findall(r"^(\d+) (REGISTRY|TYPELIB)\b", text, re.M)}
    wanted |= {(16, int(name)) for name in re.findall(r"^(\d+) VERSIONINFO\b", text, re.M)}
    table = re.search(r"^STRINGTABLE\nBEGIN\n(.*?)^END$", text, re.M | re.S)
    wanted |= {(6, int(number) // 16 + 1) for number in re.findall(r"^  (\d+)", table[1], re.M)}
    return wanted


def resource_faults(image, script):
    found = set()
    for kind, name, _, address, size in image.resources():
        found.add((kind, name))
        if kind not in RESOURCE_TYPES:
            yield f"has a resource of type {kind}"
        section = image.section_at(address)
        if size == 0 or section is None or section.name != ".rsrc" or \
                address + size > section.address + section.file_size:
            yield f"has resource {kind} {name} outside its section"
    for kind, name in sorted(wanted_resources(script) - found, key=str):
        yield f"lacks resource {kind} {name}"


# In a line of the map: an object and one of its sections.
MAPPED = re.compile(r"^[0-9a-f]+ +[0-9a-f]+ +\d+ +(\S.*):\((\S+)\)$", re.M)


def map_faults(text):
    """What the linker took: our objects and what it made itself, nothing of a library of the compiler;
    no constructors, which nothing would call, and no data of threads."""
    taken = MAPPED.findall(text)
    if not taken:
        yield "has a map without objects"
    for file in sorted({file for file, _ in taken}):
        if not file.startswith("internal") and not file.endswith(".cpp.obj"):
            yield f"contains {file}"
    for file, section in taken:
        if re.match(r"\.(ctors|dtors|init_array|CRT\b|tls)", section):
            yield f"contains constructors or data of threads: {section} of {file}"


def size_faults(image):
    if len(image.data) > LIMIT:
        yield f"is larger than {LIMIT} bytes: {len(image.data)}"


def faults(data, map_text, allowed, script):
    image = Image(data)
    for check in (header_faults(image), section_faults(image), relocation_faults(image),
                  import_faults(image, allowed), export_faults(image), resource_faults(image, script),
                  map_faults(map_text), size_faults(image)):
        try:
            yield from check
        except (IndexError, struct.error) as problem:
            yield f"cannot be read: {problem}"


def inputs(map_file, exports, script):
    """The arguments of faults() beside the DLL."""
    allowed = {f"{path.stem}.dll": set(path.read_text(encoding="ascii").split())
               for path in pathlib.Path(exports).glob("*.txt")}
    if not allowed:
        sys.exit(f"{exports} has no lists")
    return (pathlib.Path(map_file).read_text(encoding="utf-8"), allowed,
            pathlib.Path(script).read_text(encoding="utf-8"))


def main(dll, *others):
    data = pathlib.Path(dll).read_bytes()
    found = list(faults(data, *inputs(*others)))
    for fault in found:
        print(f"{dll} {fault}")
    print(f"{dll}: {len(data)} bytes of {LIMIT}, imports "
          f"{sum(len(names) for _, names in Image(data).imports())} functions")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    main(*sys.argv[1:])
