#!/usr/bin/env python3
"""Reports which lines and branches the tests ran, and checks what is required of the module.

usage: coverage.py BUILD [--files] [--all] [--rows] [--exceptions FILE]

BUILD is a build folder of the preset `coverage` whose tests have run. Prints a table by folder (by
file with --files), then every line and branch of the module's code that never ran and is not in the
file of exceptions (of all folders with --all; as rows for that file with --rows). Exits 1
if there is one, if a row of that file excuses nothing any more, or if less than 95 % of the module's
branches were taken.

How counts are merged. A line ran if it ran in any object file, any instantiation of a template and
any inline copy. Branches of one line are numbered in the order of the compiler; copies of the line
with the same number of branches are merged branch by branch, each taken if it was in any copy. Where
copies differ in that number (an `if constexpr`, an operand of another type) each number of branches
counts by itself. Arcs of exceptions are left out: the module has none, only the tests' copies of its
headers do.

The file of exceptions holds a reason in brackets and under it the rows it stands for:

    [why this cannot run here]
    1 line automation/data/some_file.cpp: return E_UNEXPECTED;
    2 branches automation/data/some_file.cpp: if (a || b) {
    up to 1 branch automation/data/some_file.cpp: static const int made = Make();

Rows of "up to" depend on the order of threads: they may excuse nothing in a run. Lines are identified
by their text; the count covers all lines of that text in the file. Branches of a line that never ran
are part of the line. Kernels for instruction sets that the machine lacks are excused.
"""
import collections
import json
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
EXCEPTIONS = ROOT / "tests/trust/coverage_exceptions.txt"
LEAST_BRANCHES = 95.0

# What libMirolta.so is made of, and what is counted beside it.
MODULE = ["platform/seam", "platform/portable", "automation", "hash", "cipher", "bignum", "rsa",
          "streams", "module", "include"]
OTHERS = ["platform/runtime", "host", "tools"]

# What a kernel's file is named after, and the processor flags it needs.
KERNEL_FLAGS = {
    "aesni": ["aes", "ssse3", "sse4_1"],
    "avx2": ["avx2"],
    "avx512": ["avx512f", "avx512bw", "avx512dq", "avx512vl"],
    "gfni": ["gfni", "avx512f", "avx512bw", "avx512dq", "avx512vl"],
    "ifma": ["avx512ifma", "avx512f", "avx512bw", "avx512dq", "avx512vl"],
    "ifma": ["avx512ifma", "avx512f", "avx512bw", "avx512dq", "avx512vl"],
    "shani": ["sha_ni", "ssse3", "sse4_1"],
    "sse2": ["sse2"],
    "vaes256": ["vaes", "avx2"],
    "vaes512": ["vaes", "avx512f", "avx512bw", "avx512dq", "avx512vl"],
    "x86_64": ["bmi2", "adx"],
    "kernels_x86_64": ["bmi2", "adx"],
    "rows": ["bmi2", "adx"],
}


class Line:
    """What is known of one line of one file, merged over all objects."""

    def __init__(self):
        self.count = 0
        self.shapes = {}  # number of branches: most often that each was taken

    def add(self, count, branches):
        self.count = max(self.count, count)
        if branches:
            merged = self.shapes.setdefault(len(branches), [0] * len(branches))
            for i, taken in enumerate(branches):
                merged[i] = max(merged[i], taken)

    def branch_total(self):
        return sum(self.shapes)

    def missed_branches(self):
        return sum(taken == 0 for merged in self.shapes.values() for taken in merged)


def without_exceptions(branches):
    """The counts of a line's branches, less the arcs of exceptions and those they part from."""
    left = []
    skip_next = False
    for branch in branches:
        if skip_next:
            skip_next = False
        elif branch["throw"]:
            if left and left[-1]["fallthrough"]:
                left.pop()
            else:
                skip_next = True
        else:
            left.append(branch)
    return [branch["count"] for branch in left]


def folder_of(path):
    for folder in MODULE + OTHERS:
        if path.startswith(folder + "/"):
            return folder
    return None


def read_counts(build):
    """{path below the root: {line number: Line}} of all objects of the build."""
    # A folder that was built before may hold objects of sources that are gone.
    commands = json.loads((build / "compile_commands.json").read_text())
    notes = [pathlib.Path(command["directory"], re.search(r" -o (\S+)\.o ", command["command"])[1])
             for command in commands]
    notes = [note.with_name(note.name + ".gcno") for note in notes]
    notes = [note for note in notes if note.exists()]
    if not notes:
        sys.exit(f"{build} is no build of the preset `coverage`")
    files = collections.defaultdict(lambda: collections.defaultdict(Line))
    for start in range(0, len(notes), 16):
        command = ["gcov", "--json-format", "--stdout", "--branch-probabilities",
                   *[str(note.resolve()) for note in notes[start:start + 16]]]
        output = subprocess.run(command, cwd=build, check=True, stdout=subprocess.PIPE,
                                stderr=subprocess.DEVNULL).stdout
        for text in output.splitlines():
            report = json.loads(text)
            for entry in report["files"]:
                path = pathlib.Path(report["current_working_directory"], entry["file"])
                try:
                    name = str(path.resolve().relative_to(ROOT))
                except ValueError:
                    continue
                if folder_of(name) is None:
                    continue
                for line in entry["lines"]:
                    files[name][line["line_number"]].add(
                        line["count"], without_exceptions(line["branches"]))
    return files


def lacks_processor(path):
    """Whether the file is a kernel for instructions that this processor does not have."""
    match = re.search(r"/kernels/[a-z0-9]+_(?:expand_)?([a-z0-9_]+)\.(?:cpp|h)$", path)
    if not match or match.group(1) not in KERNEL_FLAGS:
        return False
    flags = set()
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("flags"):
            flags = set(line.split(":", 1)[1].split())
            break
    return not flags.issuperset(KERNEL_FLAGS[match.group(1)])


def read_exceptions(path):
    """({(kind, file, text): count}, those of "up to"); the reasons are for readers."""
    rows = {}
    open_ended = set()
    reason = None
    for number, text in enumerate(path.read_text().splitlines(), 1):
        if not text.strip() or text.startswith("#"):
            continue
        if text.startswith("["):
            reason = text
            continue
        match = re.fullmatch(r"(up to )?(\d+) (line|branch)(?:s|es)? ([^:]+): (.*)", text)
        if not match or reason is None:
            sys.exit(f"{path}:{number}: not a row of exceptions: {text}")
        up_to, count, kind, name, line = match.groups()
        if (kind, name, line) in rows:
            sys.exit(f"{path}:{number}: twice: {text}")
        rows[(kind, name, line)] = int(count)
        if up_to:
            open_ended.add((kind, name, line))
    return rows, open_ended


def print_table(title, groups):
    width = max(len(name) for name in groups)
    print(f"{title:<{width}} {'lines':>13} {'':>8} {'branches':>13}")
    for name, (lines, ran, branches, taken) in groups.items():
        if lines == 0:
            continue
        line_share = f"{100 * ran / lines:.2f} %"
        branch_share = f"{100 * taken / branches:.2f} %" if branches else ""
        print(f"{name:<{width}} {ran:>6}/{lines:<6} {line_share:>8} "
              f"{taken:>6}/{branches:<6} {branch_share:>8}")


def summed(files, group_of):
    groups = collections.defaultdict(lambda: [0, 0, 0, 0])
    for name, lines in sorted(files.items()):
        for group in group_of(name):
            sums = groups[group]
            for line in lines.values():
                sums[0] += 1
                sums[1] += line.count > 0
                sums[2] += line.branch_total()
                sums[3] += line.branch_total() - line.missed_branches()
    return groups


def missed(files, wanted):
    """[(kind, file, text, line number, count)] of what never ran."""
    result = []
    for name, lines in sorted(files.items()):
        if not wanted(name):
            continue
        texts = (ROOT / name).read_text().splitlines()
        for number, line in sorted(lines.items()):
            text = texts[number - 1].strip() if number <= len(texts) else ""
            if line.count == 0:
                result.append(("line", name, text, number, 1))
            elif line.missed_branches():
                result.append(("branch", name, text, number, line.missed_branches()))
    return result


def plural(count, kind):
    return f"{count} {kind}" + ("" if count == 1 else "s" if kind == "line" else "es")


def main():
    arguments = sys.argv[1:]
    exceptions = EXCEPTIONS
    if "--exceptions" in arguments:
        at = arguments.index("--exceptions")
        exceptions = pathlib.Path(arguments[at + 1])
        del arguments[at:at + 2]
    options = {argument for argument in arguments if argument.startswith("--")}
    places = [argument for argument in arguments if not argument.startswith("--")]
    if len(places) != 1 or options - {"--files", "--all", "--rows"}:
        sys.exit(__doc__)

    files = read_counts(pathlib.Path(places[0]))
    in_module = lambda name: folder_of(name) in MODULE
    print_table("folder", order(summed(files, lambda name: [folder_of(name)]), MODULE + OTHERS))
    total = summed(files, lambda name: ["the module"] if in_module(name) else [])
    print_table("", total)
    if "--files" in options:
        print()
        print_table("file", summed(files, lambda name: [name]))

    rows, open_ended = read_exceptions(exceptions) if exceptions.exists() else ({}, set())
    left = dict(rows)
    unlisted = collections.Counter()
    places_of = collections.defaultdict(list)
    listed = collections.Counter()
    for kind, name, text, number, count in missed(files, in_module):
        if lacks_processor(name):
            listed[kind] += count
            continue
        key = (kind, name, text)
        excused = min(count, left.get(key, 0))
        if excused:
            left[key] -= excused
            listed[kind] += excused
        if count > excused:
            unlisted[key] += count - excused
            places_of[key].append(number)
    stale = [key for key, count in left.items() if count > 0 and key not in open_ended]

    print(f"\nlisted with reasons: {plural(listed['line'], 'line')}, "
          f"{plural(listed['branch'], 'branch')}")
    if unlisted:
        print("never ran, and not listed in the exceptions:")
    for (kind, name, text), count in unlisted.items():
        if "--rows" in options:
            print(f"{plural(count, kind)} {name}: {text}")
        else:
            numbers = ",".join(str(number) for number in places_of[(kind, name, text)])
            print(f"  {name}:{numbers}: {plural(count, kind)}: {text}")
    for kind, name, text in stale:
        print(f"stale, runs or is gone: {plural(left[(kind, name, text)], kind)} {name}: {text}")
    if "--all" in options:
        print("never ran outside the module:")
        for kind, name, text, number, count in missed(files, lambda name: not in_module(name)):
            print(f"  {name}:{number}: {plural(count, kind)}: {text}")

    _, _, branches, taken = total["the module"]
    few = 100 * taken < LEAST_BRANCHES * branches
    if few:
        print(f"fewer than {LEAST_BRANCHES:g} % of the module's branches were taken")
    sys.exit(1 if unlisted or stale or few else 0)


def order(groups, names):
    return {name: groups[name] for name in names if name in groups}


if __name__ == "__main__":
    main()
