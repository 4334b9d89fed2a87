#!/usr/bin/env python3
"""Checks that the layers are what the documents say.

check_layers.py SOURCE_DIR COMPILE_COMMANDS

- A header of a layer that another may not know cannot be included there: the compiler is asked, with
  the layer's own command line.
- No include climbs out of its folder with "..".
- The system is reached through platform only: no system header and no _WIN32 above it.
- What is below the classes does not know their interfaces: it does not include mirolta.h.
- The public headers include each other, the language's headers and the system's; nothing of the project.
- A room of the portable runtime includes only those that ROOMS names.
- Exceptions, run-time type information and stream headers are not used in the module.
Exits 1 and names every place that does not comply.
"""
import json
import pathlib
import re
import shlex
import subprocess
import sys

# A source file that stands for its layer, and headers that the layer must not see.
FORBIDDEN = {
    "platform/seam/memory.cpp": ["byte_buffer.h", "object_core.h", "hash_engine.h"],
    "automation/data/byte_buffer.cpp": ["object_core.h", "hash_engine.h"],
    "automation/object/object_core.cpp": ["hash_engine.h", "class_table.h", "byte_buffer.h", "messages.h"],
    "hash/kernels/hash_kernels.cpp": ["hash_engine.h", "byte_buffer.h"],
    "hash/engine/hash_engine.cpp": ["object_core.h", "hash_object.h", "cipher_engine.h"],
    "cipher/kernels/aes_kernels.cpp": ["cipher_engine.h", "byte_buffer.h"],
    "cipher/engine/cipher_engine.cpp": ["object_core.h", "hash_engine.h", "big_int.h"],
    "bignum/core/big_int.cpp": ["object_core.h", "rsa_key.h", "hash_engine.h"],
    "rsa/key/rsa_key.cpp": ["object_core.h", "rsa_crypt_object.h", "cipher_engine.h"],
    "hash/object/hash_object.cpp": ["class_table.h", "cipher_engine.h", "engine/script_engine.h"],
    "cipher/object/symmetric_crypt_object.cpp": ["class_table.h", "hash_engine.h"],
    "bignum/object/big_number_object.cpp": ["class_table.h", "rsa_key.h"],
    "rsa/object/rsa_crypt_object.cpp": ["class_table.h", "cipher_engine.h"],
    "streams/stream_binding.cpp": ["class_table.h", "big_int.h"],
    "module/class_table.cpp": ["engine/script_engine.h", "values/value_marshal.h"],
    "platform/runtime/texts/bstr.cpp": ["object_core.h", "byte_buffer.h", "engine/script_engine.h"],
}

# The rooms of platform/runtime and those that each may include (docs/architecture.md).
ROOMS = {
    "classes": {"registry", "charsets", "system", "texts", "heap"},
    "types": {"registry", "errors", "texts", "heap"},
    "registry": {"charsets", "system", "texts", "heap"},
    "streams": {"charsets", "texts", "heap"},
    "errors": {"heap"},
    "arrays": {"values", "texts", "heap"},
    "values": {"texts", "heap"},
    "charsets": {"texts", "heap"},
    "system": {"heap"},
    "texts": {"heap"},
    "heap": set(),
}

MODULE_FOLDERS = ["automation", "hash", "cipher", "bignum", "rsa", "streams", "module"]
# Folders whose targets do not link mirolta_api. They have its folder for the platform's headers.
BELOW_INTERFACES = ["platform", "automation/data", "hash/engine", "hash/kernels", "cipher/engine",
                    "cipher/kernels", "bignum/kernels"]
# What code above platform may include with angle brackets: the language's own headers that bring no
# system, no exceptions to catch and no streams, and the compiler's intrinsics in kernels.
ALLOWED_SYSTEM = {
    "algorithm", "array", "atomic", "bit", "climits", "cstddef", "cstdint", "cstring", "initializer_list",
    "iterator", "limits", "memory", "new", "tuple", "type_traits", "utility",
}
INTRINSICS = {"immintrin.h", "emmintrin.h", "tmmintrin.h", "wmmintrin.h", "smmintrin.h", "x86intrin.h",
              "arm_neon.h"}
BANNED = re.compile(r"\b(throw|try|catch|dynamic_cast|typeid)\b|(?<!\w)_WIN32\b")


def strip_comments(text):
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.S)
    text = re.sub(r'"(\\.|[^"\\\n])*"', '""', text)
    return re.sub(r"//[^\n]*", "", text)


def check_includes(source, commands):
    for unit, headers in FORBIDDEN.items():
        command = commands.get(str((source / unit).resolve()))
        if command is None:
            yield f"{unit}: not in the build, so its layer cannot be checked"
            continue
        words = shlex.split(command["command"])
        words = [w for i, w in enumerate(words) if w not in ("-c", "-o") and words[i - 1] != "-o"]
        for header in headers:
            if not any(source.glob(f"*/**/{header}")) and not (source / "include" / header).exists():
                yield f"{header}: no such header, so the check of {unit} means nothing"
                continue
            run = subprocess.run(words + ["-fsyntax-only", "-include", header],
                                 cwd=command["directory"], capture_output=True, text=True)
            if run.returncode == 0 or header not in run.stderr:
                yield f"{unit}: its layer can include {header}"


def check_sources(source):
    for folder in MODULE_FOLDERS:
        for path in sorted((source / folder).rglob("*")):
            if path.suffix not in (".h", ".cpp"):
                continue
            name = path.relative_to(source)
            text = path.read_text()
            for number, line in enumerate(text.splitlines(), 1):
                match = re.match(r'\s*#\s*include\s+([<"])([^>"]+)', line)
                if not match:
                    continue
                if ".." in match[2]:
                    yield f"{name}:{number}: include with .."
                kernel = path.parent.name == "kernels" and match[2] in INTRINSICS
                if match[1] == "<" and match[2] not in ALLOWED_SYSTEM and not kernel:
                    yield f"{name}:{number}: <{match[2]}> belongs below platform"
            for number, line in enumerate(strip_comments(text).splitlines(), 1):
                match = BANNED.search(line)
                if match:
                    yield f"{name}:{number}: {match[0]}"


def includes_of(path):
    for number, line in enumerate(path.read_text().splitlines(), 1):
        match = re.match(r'\s*#\s*include\s+([<"])([^>"]+)', line)
        if match:
            yield number, match[1], match[2]


def check_public_headers(source):
    public = source / "include"
    for path in sorted(public.rglob("*.h*")):
        for number, quote, name in includes_of(path):
            places = [(folder / name).resolve() for folder in (path.parent, public)]
            if quote == '"' and not any(place.exists() and public in place.parents for place in places):
                yield f"{path.relative_to(source)}:{number}: {name} is not among the public headers"
    for folder in BELOW_INTERFACES:
        paths = [path for path in (source / folder).rglob("*") if path.suffix in (".h", ".cpp")]
        if not paths:
            yield f"{folder}: no sources, so the check means nothing"
        for path in sorted(paths):
            for number, _, name in includes_of(path):
                if name in ("mirolta.h", "mirolta.hpp"):
                    yield f"{path.relative_to(source)}:{number}: {name} is above {folder}"


def check_rooms(source):
    runtime = source / "platform/runtime"
    for path in sorted(runtime.rglob("*")):
        if path.suffix not in (".h", ".cpp"):
            continue
        room = path.relative_to(runtime).parts[0]
        if room not in ROOMS:
            yield f"{path.relative_to(source)}: {room} is no room of the runtime"
            continue
        for number, line in enumerate(path.read_text().splitlines(), 1):
            match = re.match(r'\s*#\s*include\s+"(\w+)/', line)
            if match and match[1] in ROOMS.keys() - ROOMS[room] - {room}:
                yield f"{path.relative_to(source)}:{number}: {room} may not include {match[1]}"


def main():
    source = pathlib.Path(sys.argv[1]).resolve()
    with open(sys.argv[2]) as file:
        commands = {entry["file"]: entry for entry in json.load(file)}
    failures = list(check_includes(source, commands)) + list(check_sources(source)) + \
        list(check_public_headers(source)) + list(check_rooms(source))
    for failure in failures:
        print(failure)
    print(f"{len(FORBIDDEN)} layers, {sum(map(len, FORBIDDEN.values()))} includes tried, "
          f"{len(failures)} findings")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
