"""What the checks read of a DLL: headers, sections, imports, exports, relocations, resources.

Every position is bounded by the file; what leads out of it raises struct.error or IndexError.
"""
import struct
from typing import NamedTuple

DIRECTORIES = ["export", "import", "resource", "exception", "security", "relocation", "debug",
               "architecture", "global pointer", "thread storage", "load configuration",
               "bound import", "address table", "delayed import", "runtime header", "reserved"]


class Section(NamedTuple):
    name: str
    size: int        # in memory
    address: int
    file_size: int
    file_at: int
    flags: int


class Export(NamedTuple):
    name: str
    ordinal: int
    address: int


class Image:
    def __init__(self, data):
        self.data = data
        self.header = self.u32(0x3C)
        if data[:2] != b"MZ" or data[self.header:self.header + 4] != b"PE\0\0":
            raise ValueError("no image")
        (self.machine, count, self.time, _, _, optional_size,
         self.characteristics) = struct.unpack_from("<HHIIIHH", data, self.header + 4)
        self.optional = self.header + 24
        self.magic = self.u16(self.optional)
        self.entry = self.u32(self.optional + 16)
        # Fields of the size of an address move those behind them by as much.
        self.is_wide = self.magic == 0x20B
        self.base = self.u64(self.optional + 24) if self.is_wide else self.u32(self.optional + 28)
        self.alignment = self.u32(self.optional + 32)
        self.file_alignment = self.u32(self.optional + 36)
        self.subsystem_version = (self.u16(self.optional + 48), self.u16(self.optional + 50))
        self.image_size = self.u32(self.optional + 56)
        self.subsystem = self.u16(self.optional + 68)
        self.loader_flags = self.u16(self.optional + 70)
        directories_at = self.optional + (108 if self.is_wide else 92)
        # Loaders ignore further ones. Of headers of another kind the number is read elsewhere.
        known = DIRECTORIES[:self.u32(directories_at)]
        self.directories = {}
        for i, name in enumerate(known):
            address, size = struct.unpack_from("<II", data, directories_at + 4 + 8 * i)
            if address or size:
                self.directories[name] = (address, size)
        self.sections = []
        for i in range(count):
            at = self.optional + optional_size + 40 * i
            name, size, address, file_size, file_at = struct.unpack_from("<8sIIII", data, at)
            self.sections.append(Section(name.rstrip(b"\0").decode("ascii", "replace"), size, address,
                                         file_size, file_at, self.u32(at + 36)))

    def u16(self, at):
        return struct.unpack_from("<H", self.data, at)[0]

    def u32(self, at):
        return struct.unpack_from("<I", self.data, at)[0]

    def u64(self, at):
        return struct.unpack_from("<Q", self.data, at)[0]

    def section_at(self, address):
        for section in self.sections:
            if section.address <= address < section.address + max(section.size, section.file_size):
                return section
        return None

    def at(self, address):
        """The position in the file of an address."""
        section = self.section_at(address)
        if section is None or address - section.address >= section.file_size:
            raise IndexError(f"address {address:#x} is not in the file")
        return section.file_at + address - section.address

    def text(self, address):
        at = self.at(address)
        return self.data[at:self.data.index(b"\0", at)].decode("ascii", "replace")

    def imports(self):
        """(library, names) of each library; an import by number is named #number."""
        found = []
        if "import" not in self.directories:
            return found
        at = self.at(self.directories["import"][0])
        while self.u32(at + 12):
            names = []
            entry = self.at(self.u32(at) or self.u32(at + 16))
            size = 8 if self.is_wide else 4
            while value := self.u64(entry) if self.is_wide else self.u32(entry):
                by_number = value >> (8 * size - 1)
                names.append(f"#{value & 0xFFFF}" if by_number else self.text(value + 2))
                entry += size
            found.append((self.text(self.u32(at + 12)), names))
            at += 20
        return found

    def exports(self):
        """The name of the DLL, and the exports by number; those without a name have none."""
        at = self.at(self.directories["export"][0])
        name, first, count, named = struct.unpack_from("<IIII", self.data, at + 12)
        addresses, names, ordinals = struct.unpack_from("<III", self.data, at + 28)
        by_index = {}
        for i in range(named):
            index = self.u16(self.at(ordinals + 2 * i))
            by_index[index] = self.text(self.u32(self.at(names + 4 * i)))
        found = [Export(by_index.get(i, ""), first + i, self.u32(self.at(addresses + 4 * i)))
                 for i in range(count)]
        return self.text(name), [export for export in found if export.address]

    def relocations(self):
        """(type, address) of each."""
        if "relocation" not in self.directories:
            return
        address, size = self.directories["relocation"]
        at = self.at(address)
        end = at + size
        while at < end:
            page, length = struct.unpack_from("<II", self.data, at)
            if length < 8 or at + length > end:
                raise IndexError(f"relocation block of {length} bytes")
            for entry in struct.unpack_from(f"<{(length - 8) // 2}H", self.data, at + 8):
                yield entry >> 12, page + (entry & 0xFFF)
            at += length

    def resources(self):
        """(type, name, language, address, size) of each resource."""
        if "resource" not in self.directories:
            return
        root = self.at(self.directories["resource"][0])

        def entries(at):
            named, numbered = struct.unpack_from("<HH", self.data, at + 12)
            for i in range(named + numbered):
                key, value = struct.unpack_from("<II", self.data, at + 16 + 8 * i)
                if key >> 31:
                    text = root + (key & 0x7FFFFFFF)
                    length = self.u16(text)
                    key = self.data[text + 2:text + 2 + 2 * length].decode("utf-16-le")
                yield key, value

        def below(value):
            if not value >> 31:
                raise IndexError("a resource directory is not three levels deep")
            return entries(root + (value & 0x7FFFFFFF))

        for kind, names in entries(root):
            for name, languages in below(names):
                for language, leaf in below(languages):
                    address, size = struct.unpack_from("<II", self.data, root + leaf)
                    yield kind, name, language, address, size
