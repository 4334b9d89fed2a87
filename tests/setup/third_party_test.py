#!/usr/bin/env python3
"""Compares THIRD-PARTY.md with what the programs are made of and what the tests quote.

  third_party_test.py PROJECT [PROGRAM-OR-LIBRARY...]    what they need, and tests/vectors
  third_party_test.py PROJECT --map FILE                 what a DLL contains, by the linker's map
"""
import pathlib
import re
import subprocess
import sys

# Archives of the linker that only list imports, which name a symbol or begin a list.
IMPORTS = re.compile(r"lib\w+\.a\((?:lib)?\w+?(?:_def)?(?:h|t|s\d+)\.o\)$")
SOURCES = re.compile(r"RFC \d+|FIPS \d+(?:-\d)?|SP \d+-\d+\w?|CAVP|Wycheproof|Grabbe")


def page_of(project):
    """The page by headings, and the whole."""
    text = (project / "THIRD-PARTY.md").read_text("utf-8")
    return dict(re.findall(r"^## (.*)\n((?:(?!## ).*\n?)*)", text, re.M))


def needed_by(file):
    said = subprocess.run(["readelf", "-d", file], capture_output=True, text=True, check=True).stdout
    return re.findall(r"\(NEEDED\).*\[(.*)\]", said)


def check_needed(page, files):
    named = page["What they need on the machine"]
    for file in files:
        needed = needed_by(file)
        if not needed:
            yield f"{file} needs nothing"
        for library in needed:
            stem = library[:library.index(".so") + 3]
            if not library.startswith("libmirolta") and not re.search(rf"`{re.escape(stem)}[.\d]*`", named):
                yield f"{file} needs {library}, which is not listed"


def check_vectors(page, folder):
    named = page["Published values in the tests"]
    files = sorted(set(folder.glob("*.txt")) - {folder / "CMakeLists.txt"})
    if len(files) < 10:
        yield f"{folder} has {len(files)} files"
    for file in files:
        origin = re.match(r"# Origin: (?:.*\n# )*?.*\n(?!#)", file.read_text("utf-8"))
        found = SOURCES.findall(origin[0]) if origin else []
        if not found:
            yield f"{file} names no source"
        for source in found:
            if source not in named:
                yield f"{file} quotes {source}, which is not listed"


def check_map(page, text):
    named = page["What the packages carry"]
    # Both the members of archives and the objects of the start-up code.
    members = set(re.findall(r"(lib[\w+]+\.a\([^)]*\))$", text, re.M))
    objects = set(re.findall(r"^LOAD \S*/((?:dll)?crt\w+\.o)$", text, re.M))
    own = re.compile(r"^lib(automation|bignum|cipher|hash|mirolta|module|rsa|stream)_\w+\.a")
    others = {member for member in members if not own.match(member) and not IMPORTS.match(member)}
    if not others or not objects:
        yield "the map names nothing of others"
    for part in sorted(others):
        archive = part[:part.index(".")]
        if not re.search(rf"`{re.escape(archive)}`", named):
            yield f"{part} is in the DLL and not listed"
    for part in sorted(objects):
        if f"`{part[:-2]}`" not in named:
            yield f"{part} is in the DLL and not listed"


def main(project, *words):
    project = pathlib.Path(project)
    page = page_of(project)
    if words[:1] == ("--map",):
        faults = list(check_map(page, pathlib.Path(words[1]).read_text("utf-8", "replace")))
    else:
        faults = [*check_needed(page, words), *check_vectors(page, project / "tests/vectors")]
    print("\n".join(f"FAILED: {fault}" for fault in faults) or "agrees")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
