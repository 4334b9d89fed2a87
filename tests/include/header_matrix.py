"""Compiles uses of mirolta.h with every compiler, language edition and order of headers.

  header_matrix.py INCLUDE [ROWS]

INCLUDE is the folder with mirolta.h; a copy of it is all that a compiler is given. Nothing is linked. ROWS is
a regular expression of row names. Each row also has a fault, an edit of the copied headers that the row must
reject, so a row that checks nothing fails. A row whose compiler or headers are missing is printed as skipped,
by name. All warnings are errors.
"""
import concurrent.futures
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
STRICT = ["-Wall", "-Wextra", "-pedantic", "-Wconversion", "-Wsign-conversion", "-Wshadow", "-Wundef", "-Werror"]
STRICT_CPP = [*STRICT, "-Wold-style-cast", "-Woverloaded-virtual", "-Wzero-as-null-pointer-constant"]
STRICT_C = [*STRICT, "-Wstrict-prototypes", "-Wmissing-prototypes", "-DCOBJMACROS"]
MIROLTA = ["mirolta.h"]
CPP, C = "c++", "c"
USES = {CPP: "uses_in_cpp.h", C: "uses_in_c.h"}
X11_PROTOCOL = ["X11/X.h", "X11/Xmd.h", "X11/Xproto.h"]
X11_LIBRARY = ["X11/Xlib.h", "X11/Xutil.h", "X11/Xresource.h", "X11/Xmd.h", "X11/Xproto.h"]
# Names of the platform that are macros, there and here.
MACROS = re.compile(
    r"MIROLTA_\w+|V_\w+|SUCCEEDED|FAILED|TRUE|FALSE|OLESTR|STDMETHODCALLTYPE|STDAPICALLTYPE|WINAPI|"
    r"IsEqual(IID|CLSID)|IID_NULL|CLSID_NULL|IID_PPV_ARGS|INFINITE|MAKEINTRESOURCEW|"
    r"HKEY_(CLASSES_ROOT|CURRENT_USER|LOCAL_MACHINE)")
# Headers with nothing but macros, templates and includes.
NEEDS_NONE = {"interface_id.h", "language.h", "runtime.h"}
NEUTRAL = ("UNICODE", "NOMINMAX", "WIN32_LEAN_AND_MEAN")


def append(header, text):
    return lambda folder: (folder / header).write_text((folder / header).read_text() + f"\n{text}\n")


def replace(header, old, new):
    def edit(folder):
        text = (folder / header).read_text()
        if old not in text:
            sys.exit(f"the fault of a row: {header} has no {old}")
        (folder / header).write_text(text.replace(old, new, 1))
    return edit


CONVERSION = append("mirolta.h", "MIROLTA_INLINE int MiroltaFault(double number) { return number; }")
OLD_CAST = append("mirolta.h", "inline int MiroltaFault(double number) { return (int)number; }")
LATER_EDITION = append("mirolta.h", "template <typename T> requires true void MiroltaFault(T);")
LATER_C = append("mirolta.h", "static constexpr int kMiroltaFault = 0;")
OTHER_BOOL = append("mirolta/base_types.h", "typedef int32_t BOOL;")
OTHER_LONG64 = append("mirolta/base_types.h", "typedef int64_t LONG64;")
MACRO = append("mirolta.h", "#define UNICODE")
MIN_MAX = replace("mirolta.h", "#pragma once", "#pragma once\n#define NOMINMAX")
UNBOUND = replace("mirolta/interface_id.h", "__CRT_UUID_DECL(name, __VA_ARGS__)", "")


class Row:
    """One compilation: of the headers in their order, then the uses of mirolta.h, then more lines."""

    def __init__(self, name, compiler, language, edition, headers, fault, *, before="", after="", flags=()):
        self.name, self.compiler, self.language = name, compiler, language
        self.fault = fault
        self.flags = [f"-std={edition}", *(STRICT_CPP if language == CPP else STRICT_C), *flags]
        self.headers = [header for header in headers if header not in MIROLTA]
        self.text = "\n".join([before, *(f"#include <{header}>" for header in headers),
                               f'#include "{HERE / USES[language]}"', after, ""])

    def command(self, *more):
        return [self.compiler, "-x", self.language, *self.flags, "-fsyntax-only", *more, "-"]

    def missing(self):
        if shutil.which(self.compiler) is None:
            return f"no {self.compiler}"
        probe = "".join(f"#if !__has_include(<{header}>)\n#error\n#endif\n" for header in self.headers)
        done = subprocess.run([self.compiler, "-x", self.language, "-E", "-"], input=probe, capture_output=True,
                              text=True, check=False)
        return f"no {' or '.join(self.headers)}" if self.headers and done.returncode != 0 else None

    def compile(self, include):
        done = subprocess.run(self.command("-I", str(include)), input=self.text, capture_output=True, text=True,
                              check=False, env={**os.environ, "LC_ALL": "C"})
        return done.returncode == 0, done.stderr


def native_rows():
    for compiler in ("g++", "clang++"):
        for edition in ("c++17", "c++20", "c++2b"):
            fault = LATER_EDITION if edition == "c++17" else OLD_CAST
            yield Row(f"{compiler} {edition}", compiler, CPP, edition, MIROLTA, fault)
        yield Row(f"{compiler} without exceptions", compiler, CPP, "c++17", MIROLTA, CONVERSION,
                  flags=["-fno-exceptions", "-fno-rtti"])
        yield Row(f"{compiler} GNU dialect", compiler, CPP, "gnu++17", MIROLTA, CONVERSION)
    for compiler in ("gcc", "clang"):
        for edition in ("c11", "c17", "gnu11"):
            yield Row(f"{compiler} {edition}", compiler, C, edition, [*MIROLTA, "stddef.h"],
                      LATER_C if edition == "c11" else CONVERSION)
    for language, edition, compilers in ((CPP, "c++17", ("g++", "clang++")), (C, "c11", ("gcc", "clang"))):
        more = [] if language == CPP else ["stddef.h"]
        for compiler in compilers:
            for kind, headers in (("protocol", X11_PROTOCOL), ("library", X11_LIBRARY)):
                yield Row(f"{compiler} before X11's {kind}", compiler, language, edition,
                          MIROLTA + more + headers, OTHER_BOOL)
                yield Row(f"{compiler} after X11's {kind}", compiler, language, edition,
                          more + headers + MIROLTA, OTHER_LONG64)


def windows_rows():
    checks = "".join(f"#ifdef {name}\n#error {name}\n#endif\n" for name in NEUTRAL)
    min_max = "#if !defined(min) || !defined(max)\n#error min and max are gone\n#endif\n"
    defines = "".join(f"#define {name}\n" for name in NEUTRAL)
    kept = "".join(f"#ifndef {name}\n#error {name} is gone\n#endif\n" for name in NEUTRAL)
    lost = append("mirolta.h", "#undef NOMINMAX")
    uuid = "static_assert(__uuidof(IHashObject).Data1 == IID_IHashObject.Data1, \"bound\");\n" \
        "static_assert(__uuidof(IPexBigNumber*).Data4[7] == IID_IPexBigNumber.Data4[7], \"bound\");\n"
    wrl = uuid + "HRESULT AsHash(const Microsoft::WRL::ComPtr<IDispatch>& from) {\n" \
        "  Microsoft::WRL::ComPtr<IHashObject> hash;\n  return from.As(&hash);\n}"
    for processor in ("x86_64", "i686"):
        def row(name, headers, fault, language=CPP, edition="c++17", *, processor=processor, **more):
            compiler = f"{processor}-w64-mingw32-{'g++' if language == CPP else 'gcc'}"
            return Row(f"{compiler} {name}", compiler, language, edition, headers, fault, **more)
        yield row("c++17", MIROLTA, LATER_EDITION)
        yield row("c++20", MIROLTA, OLD_CAST, edition="c++20")
        # In C: the standard library of C++ defines NOMINMAX itself.
        yield row("defines no macros of the user", MIROLTA + ["stddef.h"], MACRO, C, "c11", after=checks)
        yield row("leaves min and max", MIROLTA + ["stddef.h"], MIN_MAX, C, "c11", after=min_max)
        yield row("with the user's macros", MIROLTA, lost, before=defines, after=kept)
        yield row("before windows.h", [*MIROLTA, "windows.h", "shlwapi.h"], CONVERSION)
        yield row("after windows.h", ["winsock2.h", "windows.h", "shlwapi.h", *MIROLTA], CONVERSION)
        yield row("after lean windows.h", ["windows.h", *MIROLTA], CONVERSION,
                  before="#define WIN32_LEAN_AND_MEAN")
        yield row("with initguid.h", ["initguid.h", *MIROLTA], CONVERSION)
        yield row("__uuidof", MIROLTA, UNBOUND, after=uuid)
        yield row("ComPtr::As", ["wrl/client.h", *MIROLTA], UNBOUND, after=wrl)
        yield row("c11", MIROLTA + ["stddef.h"], LATER_C, C, "c11")
        yield row("c11 after windows.h", ["windows.h", *MIROLTA, "stddef.h"], CONVERSION, C, "c11")


class AloneRow(Row):
    """A header by itself: it includes what it needs."""

    def __init__(self, compiler, language, header):
        edition = "c++17" if language == CPP else "c11"
        super().__init__(f"{compiler} {header} alone", compiler, language, edition, [], self.break_header)
        self.header = header
        self.text = f"#include <mirolta/{header}>\nint main({'' if language == CPP else 'void'}) {{ return 0; }}\n"

    def break_header(self, folder):
        """Without its includes, or, if it needs none by itself, with a fault of its own."""
        path = folder / "mirolta" / self.header
        text = path.read_text()
        bare = re.sub(r"^\s*#\s*include .*$", "", text, flags=re.M)
        path.write_text(text + "\nint MiroltaFault = undeclared;\n" if self.header in NEEDS_NONE else bare)


def alone_rows(include):
    for path in sorted((include / "mirolta").glob("*.h")):
        if not path.name.startswith("c_"):  # parts of mirolta.h and runtime.h
            yield AloneRow("g++", CPP, path.name)
            yield AloneRow("gcc", C, path.name)


class MacroRow(Row):
    """The names of macros that the headers define, beyond those of the headers that they include."""

    def __init__(self, compiler, language, edition):
        super().__init__(f"{compiler} macros", compiler, language, edition, MIROLTA,
                         append("mirolta.h", "#define DIGEST 1"))
        self.others = ["stddef.h", "stdint.h", "pthread.h", "type_traits" if language == CPP else "uchar.h"]

    def compile(self, include):
        def macros(headers):
            done = subprocess.run(
                [self.compiler, "-x", self.language, self.flags[0], "-dM", "-E", "-I", str(include), "-"],
                input="".join(f"#include <{header}>\n" for header in headers), capture_output=True, text=True,
                check=True)
            return set(re.findall(r"^#define (\w+)", done.stdout, re.M))
        found = macros(self.others + MIROLTA) - macros(self.others)
        foreign = sorted(name for name in found if not MACROS.fullmatch(name))
        return bool(found) and not foreign, f"defines {foreign}\n"


def check(row, include, scratch):
    reason = row.missing()
    if reason is not None:
        return "skipped", reason
    accepted, output = row.compile(include)
    if not accepted:
        return "failed", output
    faulty = scratch / re.sub(r"\W", "_", row.name)
    shutil.copytree(include, faulty)
    row.fault(faulty)
    accepted, _ = row.compile(faulty)
    return ("failed", "accepts its fault") if accepted else ("passed", "")


def main():
    source = pathlib.Path(sys.argv[1]).resolve()
    only = re.compile(sys.argv[2] if len(sys.argv) > 2 else "")
    with tempfile.TemporaryDirectory() as folder:
        scratch = pathlib.Path(folder)
        include = scratch / "include"
        shutil.copytree(source, include)
        rows = [*native_rows(), *alone_rows(include), MacroRow("g++", CPP, "c++17"), MacroRow("gcc", C, "c11"),
                *windows_rows()]
        rows = [row for row in rows if only.search(row.name)]
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            results = list(pool.map(lambda row: check(row, include, scratch), rows))
    counts = {"passed": 0, "skipped": 0, "failed": 0}
    for row, (result, text) in zip(rows, results):
        counts[result] += 1
        if result != "passed":
            print(f"{result}, {row.name}: {text.rstrip()[:3000]}")
    print(", ".join(f"{count} {result}" for result, count in counts.items()))
    names = [row.name for row in rows]
    if len(set(names)) != len(names):
        print("two rows have one name")
        return 1
    return 1 if counts["failed"] or not counts["passed"] else 0


if __name__ == "__main__":
    sys.exit(main())
