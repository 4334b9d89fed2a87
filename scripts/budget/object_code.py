"""Functions, calls and references of object files, from llvm-objdump and llvm-readobj.

Sections of functions and data are separate (-ffunction-sections, -fdata-sections), so that a relocation names
what it reaches.
"""
import re
import subprocess
from collections import defaultdict
from pathlib import Path

# Relocations of instructions that call or jump. All others take an address.
CALL = re.compile(r"R_ARM_(CALL|THM_CALL|JUMP24|THM_JUMP24|THM_JUMP19|PC24|PLT32)$"
                  r"|IMAGE_REL_ARM_(BRANCH20T|BRANCH24T|BLX23T)$")
# Calls and jumps through registers. A return (lr, or pc from the stack) is none, nor is a jump through a table
# of the function's own.
INDIRECT = re.compile(r"^(blx\w*\s+(r\d+|r?12|lr|ip|sb|sl|fp)\b"
                      r"|bx\w*\s+(r\d+|ip|sb|sl|fp)\b"
                      r"|(ldr|mov)\S*\s+pc,\s*(?!\[?(sp|pc)\b))")
DIRECT = re.compile(r"^(bl|blx|b|b\.w|b\w\w|b\w\w\.w)\s+0x[0-9a-f]+ <([^>+]+)(\+0x[0-9a-f]+)?>")


class ObjectError(Exception):
    """An object file that says less than is needed."""


class Program:
    """What a set of object files has: names are those of the linker, with the object's before a local one's."""

    def __init__(self):
        self.functions = set()
        self.frames = {}  # function -> bytes of stack
        self.calls = defaultdict(set)  # function -> functions that it calls directly
        self.indirect = set()  # functions with calls through registers
        self.references = defaultdict(set)  # function or datum -> whose address it has
        self.undefined = set()


def output_of(command):
    """What a program prints; it must succeed."""
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def tool(name):
    """The newest of an LLVM program's installed versions."""
    for suffix in ("", "-22", "-21", "-20", "-19", "-18", "-17", "-16", "-15", "-14"):
        for folder in ("/usr/local/bin", "/usr/bin"):
            if (Path(folder) / (name + suffix)).exists():
                return str(Path(folder) / (name + suffix))
    raise ObjectError(f"{name} is missing: install the package llvm")


class Symbols:
    """The symbols of one object file."""

    def __init__(self, path):
        self.path = path
        self.by_place = {}  # (section, offset) -> name
        self.kinds = {}
        self.names = {}  # as the object writes it -> name in Program
        self.sections = defaultdict(list)

    def add(self, name, binding, kind, section, offset):
        """Records a definition. Of two names of one place, such as a constructor's, the global one counts."""
        unique = name if binding in "gw" else f"{self.path}:{name}"
        place = (section, offset)
        known = self.by_place.get(place)
        if known is not None and not (":" in known and ":" not in unique):
            unique = known
        self.by_place[place] = unique
        self.names[name] = unique
        if kind == "F" or self.kinds.get(unique) != "F":
            self.kinds[unique] = kind
        self.sections[section].append((offset, unique))

    def at(self, section, offset):
        """The symbol that a place belongs to."""
        best = None
        for start, name in sorted(self.sections.get(section, ())):
            if start <= offset:
                best = name
        return best

    def named(self, name):
        """The symbol that a relocation names: a symbol, or a section with one."""
        name = re.sub(r"[+-](0x)?[0-9a-f]+$", "", name)
        if name in self.names:
            return self.names[name]
        if name in self.sections:
            return self.at(name, 0)
        return None if name.startswith((".", "$")) else name


def split_files(text):
    """The parts of a listing of several files."""
    parts = re.split(r"^(\S.*):\s+file format .*$", text, flags=re.M)
    return zip(parts[1::2], parts[2::2])


def read_symbols(path, text):
    """The symbol table as llvm-objdump -t prints it, of ELF or of COFF."""
    symbols = Symbols(path)
    coff_sections = {}
    for line in text.splitlines():
        match = re.match(r"\[\s*\d+\]\(sec\s+(-?\d+)\)\(fl 0x[0-9a-f]+\)\(ty\s+([0-9a-f]+)\)\(scl\s+(\d+)\) "
                         r"\(nx (\d+)\) 0x([0-9a-f]+) (.*)", line)
        if match:
            number, kind, scope, more, value, name = match.groups()
            number = int(number)
            if number <= 0:
                continue
            if scope == "3" and int(more) > 0 and int(value, 16) == 0 and name.startswith("."):
                coff_sections[number] = name
                continue
            symbols.add(name, "g" if scope == "2" else "l", "F" if kind == "20" else "O",
                        number, int(value, 16))
            continue
        match = re.match(r"([0-9a-f]{8,16}) ([ lgu!])([ w])...([ dD])([FfO ]) (\S+)\s+[0-9a-f]+\s+(?:\.hidden )?(\S*)$",
                         line)
        if not match or match[6] == "*UND*" or match[4] == "d" or match[7].startswith("$"):
            continue
        binding = "w" if match[3] == "w" else match[2]
        # The lowest bit of a Thumb function's value is its mode.
        offset = int(match[1], 16) & ~1 if match[5] == "F" else int(match[1], 16)
        symbols.add(match[7], binding, match[5], match[6], offset)
    symbols.coff_sections = coff_sections
    return symbols


def read_code(program, symbols, text):
    """Calls and addresses taken, from the disassembly with relocations. Sections of COFF share their name, so
    functions are found by the labels."""
    function = None
    instruction = ""

    def direct():
        match = DIRECT.match(instruction)
        if match and function is not None:
            target = symbols.named(match[2])
            # A branch within the function is no call; a call of its own start is.
            if target is not None and symbols.kinds.get(target) == "F" and (
                    target != function or (match[3] is None and match[1].startswith("bl"))):
                program.calls[function].add(target)

    for line in text.splitlines():
        label = re.match(r"[0-9a-f]+ <(.*)>:$", line)
        if label:
            direct()
            instruction = ""
            name = symbols.names.get(label[1])
            if name is not None and symbols.kinds[name] == "F":
                function = name
                program.functions.add(function)
            elif line.startswith("00000000") and not label[1].startswith("$"):
                function = None
            continue
        relocation = re.match(r"\s+[0-9a-f]+:\s+(R_ARM\w+|IMAGE_REL\w+)\s+(\S+)", line)
        if relocation and function is not None:
            target = symbols.named(relocation[2])
            if target is not None:
                if CALL.match(relocation[1]):
                    program.calls[function].add(target)
                else:
                    program.references[function].add(target)
            instruction = ""
            continue
        code = re.match(r"\s+[0-9a-f]+:\s+(?:[0-9a-f]{2,8} )*\s*(\S.*)", line)
        if code:
            direct()
            instruction = re.sub(r"\s+", " ", code[1])
            if function is not None and INDIRECT.match(instruction):
                program.indirect.add(function)
    direct()


def read_data(program, symbols, text):
    """The addresses in data, from the relocations by section."""
    section = None
    for line in text.splitlines():
        heading = re.match(r"RELOCATION RECORDS FOR \[(.*)\]:", line)
        if heading:
            section = heading[1]
            continue
        record = re.match(r"([0-9a-f]{8,16}) (\S+)\s+(\S+)", line)
        if not record or section is None or section.startswith((".text", ".ARM.ex", ".stack_sizes", ".debug",
                                                                  ".pdata", ".xdata")):
            continue
        owner = symbols.at(section, int(record[1], 16))
        target = symbols.named(record[3])
        if owner is not None and target is not None and symbols.kinds.get(owner) != "F":
            program.references[owner].add(target)


def read_coff_data(program, symbols, path):
    """The same of a COFF file, whose sections are told apart by number."""
    section = None
    for line in output_of([tool("llvm-readobj"), "-r", path]).splitlines():
        heading = re.match(r"\s+Section \((\d+)\) (\S+) \{", line)
        if heading:
            section = None if heading[2].startswith((".text", ".pdata", ".xdata", ".debug")) else int(heading[1])
            continue
        record = re.match(r"\s+0x([0-9A-F]+) \S+ (\S+) \(\d+\)", line)
        if record and section is not None:
            owner = symbols.at(section, int(record[1], 16))
            target = symbols.named(record[2])
            if owner is not None and target is not None and symbols.kinds.get(owner) != "F":
                program.references[owner].add(target)


def read_frames(program, all_symbols, paths):
    """The stack usage: from the sections .stack_sizes, or from the compiler's .su file beside the object."""
    listing = output_of([tool("llvm-readobj"), "--stack-sizes", *paths])
    path, names = None, []
    for line in listing.splitlines():
        match = re.match(r"File: (.*)", line)
        if match:
            path = match[1]
        match = re.match(r"\s+Functions: \[(.*)\]", line)
        if match:
            names = match[1].split(", ")
        match = re.match(r"\s+Size: (\S+)", line)
        if match:
            for name in names:
                add_frame(program, all_symbols[path], name, int(match[1], 0))
    for path in paths:
        usage = Path(path).with_suffix(".su")
        if not usage.exists():
            continue
        for line in usage.read_text().splitlines():
            place, size, kind = line.split("\t")
            if kind != "static":
                raise ObjectError(f"{place}: the frame has no fixed size")
            add_frame(program, all_symbols[path], place.rsplit(":", 1)[-1], int(size))


def add_frame(program, symbols, name, size):
    """Records a frame; of functions in several objects the largest."""
    unique = symbols.names.get(name)
    if unique is not None:
        program.frames[unique] = max(size, program.frames.get(unique, 0))


def read_program(paths):
    """Program of the object files."""
    paths = [str(path) for path in paths]
    program = Program()
    objdump = tool("llvm-objdump")
    all_symbols = {}
    for path, text in split_files(output_of([objdump, "-t", *paths])):
        all_symbols[path] = read_symbols(path, text)
    for path, text in split_files(output_of([objdump, "-d", "-r", "--no-show-raw-insn", *paths])):
        read_code(program, all_symbols[path], text)
    for path, text in split_files(output_of([objdump, "-r", *paths])):
        if all_symbols[path].coff_sections:
            read_coff_data(program, all_symbols[path], path)
        else:
            read_data(program, all_symbols[path], text)
    read_frames(program, all_symbols, paths)
    return program
