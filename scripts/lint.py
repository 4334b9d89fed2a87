#!/usr/bin/env python3
"""Checks the sources without running them.

lint.py BUILD [PATH...]

BUILD is a configured build folder with compile_commands.json. Clean results are cached in its folder
lint/ by the content of what they depend on, so that a second run only checks what has changed. With
PATHs (files or folders) only these are checked.

- layers      includes go in the allowed directions (tests/layout/check_layers.py)
- contracts   the labels of contracts and their order (scripts/contracts.py)
- licences    which files name their licence (scripts/licences.py)
- definitions each name is defined once, and used (scripts/definitions.py)
- includes    none is repeated in tests, harnesses and benchmark
- gcc         its warnings for what the ordinary build omits (the benchmark)
- clang       its warnings: those of .clang-tidy's ExtraArgs
- clang-tidy  the checks of .clang-tidy; tests, harnesses and benchmark have the warnings only
- cppcheck    all but scripts/cppcheck-suppressions.txt

Prints the findings and a line for each check; exits 1 if there are findings.
"""
import concurrent.futures
import functools
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import threading
import time

sys.dont_write_bytecode = True
import contracts  # noqa: E402
import definitions  # noqa: E402
import licences  # noqa: E402

SOURCE = pathlib.Path(__file__).resolve().parent.parent
# Folders that the ordinary build does not compile.
GCC_FOLDERS = {"bench"}
# Definitions that change the code of a file; such a variant is compiled, but not analysed again.
VARIANTS = {"-DMIROLTA_PORTABLE_ONLY=1", "-DMIROLTA_HALF_PRODUCTS=1"}
# cppcheck does not know the test framework's macros.
CPPCHECK_LEAVES_OUT = {"tests", "fuzz", "bench"}
# Folders whose .clang-tidy has no checks but the compiler's warnings. The compiler alone reads them, with
# GoogleTest precompiled, which most of their time was; what is included through it alone is not missed.
WARNINGS_ONLY = {"tests", "fuzz", "bench"}
# What the precompiled header must share with a file.
PRECOMPILED = re.compile(r"-D(NDEBUG|GTEST_|_FILE_OFFSET_BITS|_TIME_BITS)|-[fmx]|-std=|-pthread")
PRINTED = set()
FINDING = re.compile(r"(.+?):\d+:\d+: (?:warning|error|style|performance|portability): .*")


class Unit:
    """One way to compile one file."""

    def __init__(self, entry):
        words = shlex.split(entry["command"])
        place = words.index("-o")
        self.words = words[:place] + words[place + 2:]
        if self.words[0].endswith("ccache"):
            del self.words[0]
        self.directory = entry["directory"]
        self.path = pathlib.Path(entry["file"])
        self.name = self.path.relative_to(SOURCE).as_posix()
        self.folder = self.name.split("/")[0]
        self.variant = tuple(sorted(VARIANTS.intersection(words)))


def read_units(build):
    units = {}
    for entry in json.loads((build / "compile_commands.json").read_text()):
        if build not in pathlib.Path(entry["file"]).parents:  # generated files are data
            unit = Unit(entry)
            units.setdefault((unit.name, unit.variant), unit)
    return list(units.values())


@functools.lru_cache(maxsize=None)
def headers_by_name():
    """File names are unique in the project, so an include's name finds the file."""
    found = {}
    for folder in SOURCE.iterdir():
        if folder.is_dir() and folder.name != "build" and not folder.name.startswith("."):
            for pattern in ("**/*.h", "**/*.inc"):
                found.update((path.name, path) for path in folder.glob(pattern))
    return found


@functools.lru_cache(maxsize=None)
def content_and_includes(path):
    try:
        text = path.read_bytes()
    except FileNotFoundError:  # deleted, but not yet from the list of files
        return b"", ()
    names = re.findall(rb'^\s*#\s*include\s+"(?:[^"]*/)?([^"/]+)"', text, re.M)
    found = (headers_by_name().get(name.decode()) for name in names)
    return hashlib.sha256(text).digest(), tuple(header for header in found if header)


def hash_of(unit, tool):
    """A hash of everything in the project that the tool's findings in the unit depend on."""
    seen, left = {unit.path}, [unit.path]
    while left:
        for header in content_and_includes(left.pop())[1]:
            if header not in seen:
                seen.add(header)
                left.append(header)
    state = hashlib.sha256(repr((tool, unit.words)).encode())
    for path in sorted(seen):
        state.update(content_and_includes(path)[0])
    return state.hexdigest()


def findings_of(text):
    lines = {line.replace(f"{SOURCE}/", "") for line in text.splitlines() if FINDING.fullmatch(line)}
    return sorted(lines)


def tell(found):
    """Prints each finding once, though many units may include it."""
    fresh = [line for line in found if line not in PRINTED]
    PRINTED.update(fresh)
    for line in fresh:
        print(line, flush=True)


def remembered(kept, unit, tool, make_command):
    """The findings of the command, which is not run if it was clean on the same sources."""
    record = kept / hash_of(unit, tool)
    if record.exists():
        return []
    command = make_command()
    run = subprocess.run(command, cwd=unit.directory, capture_output=True, text=True)
    output = run.stdout + run.stderr
    found = findings_of(output)
    if run.returncode != 0 and not found:
        found = [f"{unit.name}: {command[0]} failed: {output.strip()[-500:]}"]
    if not found:
        record.touch()
    tell(found)
    return found


def version_of(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def run_gcc(kept, units, pool):
    units = [unit for unit in units if unit.folder in GCC_FOLDERS]
    tool = version_of(units[0].words[0], "--version") if units else ""

    def check(unit):
        return remembered(kept, unit, tool,
                          lambda: unit.words + ["-O1", "-fdiagnostics-plain-output", "-o", os.devnull])
    return len(units), [line for found in pool.map(check, units) for line in found]


@functools.lru_cache(maxsize=None)
def extra_words(folder):
    """The options that .clang-tidy adds to the compiler's."""
    dump = version_of("clang-tidy", "--dump-config", str(SOURCE / folder / "file.cpp"))
    return tuple(re.findall(r"^  - +'?([^'\n]+)'?$", dump.partition("\nExtraArgs:")[2], re.M))


class Precompiled:
    """GoogleTest's header, precompiled once for each set of options."""

    def __init__(self, kept):
        self.kept = kept
        self.made = {}
        self.lock = threading.Lock()

    def of(self, options):
        """The words that include it; none if it cannot be compiled so."""
        shared = tuple(word for word in options if PRECOMPILED.match(word))
        with self.lock:
            if shared not in self.made:
                self.made[shared] = self.make(shared)
            return self.made[shared]

    def make(self, shared):
        header = self.kept / f"gtest-{hashlib.sha256(repr(shared).encode()).hexdigest()[:16]}.h"
        header.write_text("#include <gtest/gtest.h>\n")
        compiled = header.with_suffix(".pch")
        run = subprocess.run(["clang++", "-x", "c++-header", str(header), "-o", str(compiled), *shared],
                             capture_output=True)
        return ["-include-pch", str(compiled)] if run.returncode == 0 else []


def run_clang(kept, units, pool):
    """Both of clang's checks, from one run for each file."""
    version = version_of("clang-tidy", "--version").split("Default target")[0]
    precompiled = Precompiled(kept)

    def check(unit):
        options = [word for word in unit.words[1:] if word not in ("-c", "-Werror", str(unit.path))]
        if unit.folder in WARNINGS_ONLY:
            options = [word for word in options if not word.startswith("-O")] + list(extra_words(unit.folder))
            command = ["clang++", "-fsyntax-only", *options, str(unit.path)]
            return remembered(kept, unit, (version, command),
                              lambda: command + precompiled.of(options))
        files = [SOURCE / ".clang-tidy", SOURCE / unit.folder / ".clang-tidy"]
        configuration = [file.read_text() for file in files if file.exists()]
        checks = ["-checks=-*,clang-diagnostic-*,readability-duplicate-include"] if unit.variant else []
        return remembered(kept, unit, (version, configuration, checks),
                          lambda: ["clang-tidy", "-quiet", str(unit.path), *checks, "--"] + options)
    found = {line for found in pool.map(check, units) for line in found}
    warnings = {line for line in found if "[clang-diagnostic-" in line or "[-W" in line or "[" not in line}
    return warnings, found - warnings


def repeated_includes():
    """Of the folders without clang-tidy's check for it: (number of files, findings)."""
    paths = [path for folder in sorted(WARNINGS_ONLY) for path in sorted((SOURCE / folder).rglob("*"))
             if path.suffix in (".cpp", ".h")]
    found = []
    for path in paths:
        seen = set()
        for number, line in enumerate(path.read_text(errors="replace").splitlines(), 1):
            if line.startswith("#include") and line in seen:
                found.append(f"{path.relative_to(SOURCE)}:{number}:1: error: repeated {line}")
            seen.add(line)
    return len(paths), found


def run_cppcheck(kept, units, jobs):
    chosen = {}
    for unit in units:
        if unit.folder not in CPPCHECK_LEAVES_OUT and not unit.variant:
            chosen[unit.name] = {"file": str(unit.path), "directory": unit.directory,
                                 "command": shlex.join(unit.words)}
    if not chosen:
        return 0, []
    work = kept / "cppcheck"
    work.mkdir(exist_ok=True)
    project = work / "units.json"
    project.write_text(json.dumps(list(chosen.values())))
    run = subprocess.run(
        ["cppcheck", "--quiet", "--enable=warning,style,performance,portability", "--inline-suppr",
         f"--suppressions-list={SOURCE}/scripts/cppcheck-suppressions.txt", "--error-exitcode=1",
         f"-j{jobs}", f"--project={project}", f"--cppcheck-build-dir={work}",
         "--template={file}:{line}:{column}: {severity}: {message} [{id}]", "--template-location="],
        capture_output=True, text=True)
    found = findings_of(run.stdout + run.stderr)
    if run.returncode != 0 and not found:
        found = [f"cppcheck failed: {(run.stdout + run.stderr).strip()[-500:]}"]
    return len(chosen), found


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    places = [pathlib.Path(word).resolve() for word in sys.argv[2:]]
    units = read_units(build)
    if places:
        units = [unit for unit in units if any(p == unit.path or p in unit.path.parents for p in places)]
    if not units:
        print("lint: nothing to check")
        return 1
    kept = build / "lint"
    kept.mkdir(exist_ok=True)
    jobs = os.cpu_count() or 1
    failed = False
    began = time.monotonic()

    def report(check, count, found):
        nonlocal failed, began
        failed = failed or bool(found)
        tell(sorted(found))
        print(f"lint {check}: {count}, {len(found)} findings, {time.monotonic() - began:.0f} s", flush=True)
        began = time.monotonic()

    layers = subprocess.run([sys.executable, SOURCE / "tests/layout/check_layers.py", SOURCE,
                             build / "compile_commands.json"], capture_output=True, text=True)
    found = (layers.stdout + layers.stderr).splitlines()
    report("layers", found[-1].rsplit(",", 1)[0], found[:-1] if layers.returncode else [])
    count, found = contracts.check(places)
    report("contracts", f"{count} files", found)
    count, found = licences.check(SOURCE)
    report("licences", f"{count} files", found)
    _, count, found = definitions.check()
    chosen = [line for line in found if not places or any(
        (SOURCE / line.split(":")[0]).is_relative_to(place) for place in places)]
    report("definitions", f"{count} names", chosen)
    count, found = repeated_includes()
    report("includes", f"{count} files", found)
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        count, found = run_gcc(kept, units, pool)
        report("gcc", f"{count} units beside the build's", found)
        warnings, found = run_clang(kept, units, pool)
        report("clang", f"{len(units)} units", warnings)
        tidied = sum(not unit.variant and unit.folder not in WARNINGS_ONLY for unit in units)
        report("clang-tidy", f"{tidied} units", found)
    count, found = run_cppcheck(kept, units, jobs)
    report("cppcheck", f"{count} units", found)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
