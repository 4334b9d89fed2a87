"""Which object file each byte of a linked file is from: linker's map, sections of the file."""
import math
import re
import struct
from collections import defaultdict, namedtuple

Section = namedtuple("Section", "name address size file_size offset loaded writable code")


class MapError(Exception):
    """A map or file that cannot be read, or whose bytes do not add up."""


def read_elf(data):
    """The sections of an ELF file, and the bytes of its headers."""
    wide = data[4] == 2
    form = "<16sHHIQQQIHHHHHH" if wide else "<16sHHIIIIIHHHHHH"
    header = struct.unpack_from(form, data)
    table, header_size, program_size, program_count, entry, count, names = (
        header[6], header[8], header[9], header[10], header[11], header[12], header[13])
    rows = [struct.unpack_from("<IIQQQQIIQQ" if wide else "<IIIIIIIIII", data, table + entry * i)
            for i in range(count)]
    sections = []
    for row in rows[1:]:
        start = rows[names][4] + row[0]
        name = data[start:data.index(b"\0", start)].decode()
        in_file = 0 if row[1] == 8 else row[5]  # SHT_NOBITS
        sections.append(Section(name, row[3], row[5], in_file, row[4], bool(row[2] & 2), bool(row[2] & 1),
                                bool(row[2] & 4)))
    return sections, header_size + program_size * program_count + entry * count


def read_pe(data):
    """The sections of a PE file, and the bytes of its headers."""
    start = struct.unpack_from("<I", data, 0x3C)[0]
    count, optional = struct.unpack_from("<H", data, start + 6)[0], struct.unpack_from("<H", data, start + 20)[0]
    sections = []
    for i in range(count):
        name, size, address, file_size, offset, _, _, _, _, flags = struct.unpack_from(
            "<8sIIIIIIHHI", data, start + 24 + optional + 40 * i)
        sections.append(Section(name.rstrip(b"\0").decode(), address, size, file_size, offset, True,
                                bool(flags & 0x80000000), bool(flags & 0x20000000)))
    return sections, start + 24 + optional + 40 * count


def read_sections(data):
    """The sections of a linked file and the bytes of its headers."""
    if data[:4] == b"\x7fELF":
        return read_elf(data)
    if data[:2] == b"MZ":
        return read_pe(data)
    raise MapError("neither an ELF nor a PE file")


def read_gnu_map(text):
    """Contributions [(output section, address, size, object)] from ld -Map."""
    start = text.index("Linker script and memory map")
    text = re.sub(r"^( \S+)\n {8,}(0x)", r"\1 \2", text[start:], flags=re.M)
    text = re.sub(r"^(\S+)\n {8,}(0x)", r"\1 \2", text, flags=re.M)
    out, section = [], None
    for line in text.splitlines():
        heading = re.match(r"(\S+)\s+0x[0-9a-f]+\s+0x[0-9a-f]+", line)
        if heading:
            section = heading[1]
            continue
        part = re.match(r" (\S+)\s+0x([0-9a-f]+)\s+0x([0-9a-f]+)\s*(\S.*)?$", line)
        if part and section is not None and int(part[3], 16) != 0:
            out.append((section, int(part[2], 16), int(part[3], 16), "" if part[1] == "*fill*" else part[4] or ""))
    return out


def read_lld_map(text):
    """The same from lld's map, of ELF or of COFF files (/lldmap)."""
    lines = text.splitlines()
    columns = 3 if "LMA" in lines[0] else 2
    out, section = [], None
    for line in lines[1:]:
        part = re.match(r"\s*((?:[0-9a-f]+\s+){%d})\d+ (.*)$" % columns, line)
        if not part:
            continue
        numbers = [int(number, 16) for number in part[1].split()]
        rest = part[2]
        if not rest.startswith(" "):
            section = rest.strip()
        elif re.match(r" {8}\S", rest) and numbers[-1] != 0:
            out.append((section, numbers[0], numbers[-1], rest.strip()))
    return out


def read_map(text):
    """Contributions from a linker's map of either kind."""
    return read_gnu_map(text) if "Linker script and memory map" in text else read_lld_map(text)


# What the linker itself makes: tables for the system's loader, which maps ascribe to the first object.
LINKER_MADE = "(linker)"
LINKER_SECTIONS = re.compile(r"\.(rel|dyn|hash|gnu|note|plt|got|iplt|ARM|interp|reloc|edata|idata)")


def place_of(origin, targets):
    """(target, source) of what the map names as origin, such as archive/libhash_object.a(hash_object.cpp.o). Of
    names without an archive `targets` has the target by source."""
    match = re.search(r"lib(\w+)\.a(?:\(|:)([^():]+?)\.(?:cpp|cxx)\.o", origin) or \
        re.search(r"CMakeFiles/(\w+)\.dir/(?:\S+/)?([^/():]+?)\.(?:cpp|cxx)\.o", origin) or \
        re.search(r"(\w+)\.lib\(([^():]+?)\.(?:cpp|cxx)\.obj", origin) or \
        re.search(r"CMakeFiles[/\\](\w+)\.dir[/\\](?:\S+[/\\])?([^/\\():]+?)\.(?:cpp|cxx)\.obj", origin)
    if match:
        return match[1], match[2]
    match = re.match(r"([^/():]+?)\.(?:cpp|cxx)\.obj:", origin)
    if match and match[1] in targets:
        return targets[match[1]], match[1]
    if origin.startswith("<internal>") or re.search(r"\.dll\b", origin):
        return LINKER_MADE, ""
    if re.search(r"\.(rc|res)\b", origin):
        return "resources", ""
    if re.search(r"crt\w*\.o|libgcc|libc_nonshared|clang_rt|libsupc|libstdc", origin):
        return "compiler", ""
    return LINKER_MADE, ""


def clipped(contributions):
    """[(size, origin)] without overlaps: strings that the linker merges belong to the first that has them."""
    rows = sorted(contributions, key=lambda row: row[:2])
    for (address, size, origin), (following, _, _) in zip(rows, rows[1:] + [(math.inf, 0, "")]):
        yield min(size, following - address), origin


def attribute(data, map_text, targets=()):
    """{(target, source): {"code", "constants", "data", "zeroed": bytes}} and the remaining bytes of the file by
    name. Raises MapError if they do not add up to the file."""
    sections, headers = read_sections(data)
    contributions = defaultdict(list)
    for section, address, size, origin in read_map(map_text):
        contributions[section].append((address, size, origin))
    places = defaultdict(lambda: defaultdict(int))
    rest = {"headers": headers}
    covered = headers
    for section in sections:
        kind = ("code" if section.code else "zeroed" if section.loaded and section.file_size == 0 else
                "data" if section.writable and not section.name.startswith((".data.rel.ro", ".got", ".dynamic",
                                                                            ".init_array", ".fini_array"))
                else "constants")
        covered += section.file_size
        if not section.loaded:
            rest["symbols, not loaded"] = rest.get("symbols, not loaded", 0) + section.file_size
            continue
        known = 0
        for size, origin in clipped(contributions.get(section.name, ())):
            if origin and not LINKER_SECTIONS.match(section.name):
                places[place_of(origin, targets)][kind] += size
                known += size
        # Alignment, and what the linker makes without naming an origin.
        if known > section.size:
            raise MapError(f"{section.name}: the map has {known} bytes, the section {section.size}")
        places[(LINKER_MADE, section.name)][kind] += section.size - known
        if section.file_size > section.size:
            rest["padding"] = rest.get("padding", 0) + section.file_size - section.size
        elif section.file_size not in (0, section.size):
            places[(LINKER_MADE, section.name)]["zeroed"] += section.size - section.file_size
            places[(LINKER_MADE, section.name)][kind] -= section.size - section.file_size
    # Gaps between sections in the file.
    end = 0
    gaps = 0
    for section in sorted((s for s in sections if s.file_size), key=lambda s: s.offset):
        gap = section.offset - end if end else section.offset - min(headers, section.offset)
        if gap < 0 or gap > 0x10000:
            raise MapError(f"{section.name} is at {section.offset:#x}, after {end:#x}")
        gaps += gap if end else 0
        end = section.offset + section.file_size
    rest["padding"] = rest.get("padding", 0) + len(data) - covered
    if len(data) - covered < 0 or len(data) - covered > gaps + 0x10000:
        raise MapError(f"{len(data)} bytes of file, but {covered} of sections")
    return places, rest
