#!/usr/bin/env python3
"""size.py BUILD: what the module in a build folder takes of a device, compared with the budgets.

Reads the module, the linker's map beside it and the object files. Prints bytes of code, constant data and
writable data by class and by layer, whose sum is the file, and the deepest chains of calls. Fails if a budget is
exceeded, or if the stack cannot be computed.
"""
import argparse
import sys
from collections import defaultdict
from pathlib import Path

from budget import call_chains, linker_map, object_code

HERE = Path(__file__).resolve().parent
KINDS = ("code", "constants", "data", "zeroed")

# The class that a target's sources belong to. Sources of streams are told apart by name.
CLASSES = (
    ("hash_", "HashObject"),
    ("cipher_", "SymmetricCryptObject"),
    ("bignum_", "PexBigNumber"),
    ("rsa_", "RSACrypt"),
)
STREAM_CLASSES = (
    ("tovi_stream_digest", "ToviStreamDigest"),
    ("digest_direction", "ToviStreamDigest"),
    ("tovi_stream_crypt", "ToviStreamCrypt"),
    ("cipher_direction", "ToviStreamCrypt"),
)


def class_of(target, source):
    """The class that a source belongs to."""
    for prefix, name in CLASSES:
        if target.startswith(prefix):
            return name
    for prefix, name in STREAM_CLASSES:
        if source.startswith(prefix):
            return name
    return {linker_map.LINKER_MADE: "tables of the linker", "resources": "resources"}.get(target, "shared")


def layer_of(target, source):
    """The layer: the target, or what the bytes are of that no source has."""
    return f"linker: {source}" if target == linker_map.LINKER_MADE else target


# Functions of members, by the class whose member was measured.
MEMBER_OWNERS = {
    "PexBigNumber": "BigNumberObject",
    "RSACrypt": "RsaCryptObject",
    "ToviStreamDigest": "(ToviStreamDigest|StreamFilter<kToviStreamDigestClass.*>)",
    "ToviStreamCrypt": "(ToviStreamCrypt|StreamFilter<kToviStreamCryptClass.*>)",
}
# What the measuring program itself has on the measured stack.
MEASURING_BYTES = 96


def read_budgets(path):
    """{name: limit} of lines "name limit"."""
    budgets = {}
    for line in path.read_text(encoding="utf-8").splitlines():
        if line.strip() and not line.startswith("#"):
            name, limit = line.rsplit(None, 1)
            budgets[name] = int(limit)
    return budgets


def print_table(title, rows):
    """Prints one table with its sums, the largest rows first."""
    print(f"{title:28}{'code':>9}{'constants':>11}{'data':>8}{'zeroed':>8}{'in file':>10}")
    total = defaultdict(int)
    for name, sizes in sorted(rows.items(), key=lambda row: -sum(row[1][kind] for kind in KINDS[:3])):
        in_file = sum(sizes[kind] for kind in KINDS[:3])
        if in_file == 0 and sizes["zeroed"] == 0:
            continue
        print(f"{name:28}{sizes['code']:9}{sizes['constants']:11}{sizes['data']:8}{sizes['zeroed']:8}{in_file:10}")
        for kind in KINDS:
            total[kind] += sizes[kind]
    print(f"{'sum':28}{total['code']:9}{total['constants']:11}{total['data']:8}{total['zeroed']:8}"
          f"{sum(total[kind] for kind in KINDS[:3]):10}\n")
    return sum(total[kind] for kind in KINDS[:3])


def grouped(places, group):
    """The sizes by a function of target and source."""
    rows = defaultdict(lambda: defaultdict(int))
    for (target, source), sizes in places.items():
        for kind, size in sizes.items():
            rows[group(target, source)][kind] += size
    return rows


def objects_by_name(build):
    """{(target, source): [object files]} of a build."""
    by_name = defaultdict(list)
    for suffix in ("o", "obj"):
        for path in build.glob(f"**/CMakeFiles/*.dir/**/*.cpp.{suffix}"):
            target = next(part for part in path.parts if part.endswith(".dir"))[:-len(".dir")]
            by_name[target, path.name.split(".")[0]].append(path)
    return by_name


def object_files(build, places):
    """The object files of the sources that the module has something of."""
    by_name = objects_by_name(build)
    out = []
    for target, source in sorted(places):
        if not source or target in (linker_map.LINKER_MADE, "compiler"):
            continue
        found = by_name.get((target, source), [])
        if len(found) != 1:
            raise linker_map.MapError(f"{len(found)} object files for {source} of {target}")
        out += found
    return out


def report_sizes(build, module, map_file, budgets):
    """Prints the tables. Returns (places, problems)."""
    data = module.read_bytes()
    targets = {source: target for target, source in objects_by_name(build)}
    places, rest = linker_map.attribute(data, map_file.read_text(encoding="utf-8", errors="replace"), targets)
    loaded = print_table("by class", grouped(places, class_of))
    print_table("by layer", grouped(places, layer_of))
    for name, size in sorted(rest.items(), key=lambda row: -row[1]):
        print(f"{name:64}{size:10}")
    total = loaded + sum(rest.values())
    limit = budgets["file"]
    of_file = len(data) - rest.get("symbols, not loaded", 0)
    print(f"{module.name + ', without symbols':64}{of_file:10}  of {limit}\n")
    problems = []
    if total != len(data):
        problems.append(f"the parts have {total} bytes, the file {len(data)}")
    if of_file > limit:
        problems.append(f"the file has {of_file} bytes, more than {limit}")
    return places, problems


def member_pattern(class_name, member):
    """What finds the functions that a call of a member may enter."""
    if class_name == "module":
        return f"^{member}$"
    if member == "Release":
        return rf"DispatchObject<.*\bI{class_name}\b.*::Release\("
    return rf"\b{MEMBER_OWNERS.get(class_name, class_name)}::{member}\("


def compare_measured(graph, path):
    """Prints the largest of the measured figures and those computed for the same members. Returns problems."""
    measured = defaultdict(int)
    for line in path.read_text(encoding="utf-8").splitlines():
        class_name, member, used = line.split()
        if not class_name.endswith("/system"):
            measured[class_name, member] = max(measured[class_name, member], int(used))
    problems = [] if len(measured) > 100 else [f"{path} has only {len(measured)} members"]
    largest = {}
    for (class_name, member), used in measured.items():
        functions = graph.matching(member_pattern(class_name, member), graph.program.functions)
        if not functions:
            problems.append(f"no function of {class_name}.{member}")
            continue
        computed = max(graph.depth(function) for function in functions)
        largest[class_name] = max(largest.get(class_name, (0,)), (used, computed, member))
        if used > computed + MEASURING_BYTES:
            problems.append(f"{class_name}.{member} used {used} bytes of stack, {computed} were computed")
    print(f"measured: {len(measured)} members")
    for class_name, (used, computed, member) in sorted(largest.items()):
        print(f"  {class_name + '.' + member:40}{used:6}, computed {computed}")
    return problems


def report_stack(objects, arguments, budgets):
    """Prints the deepest chains, and what was measured. Returns the problems."""
    program = object_code.read_program(objects)
    graph = call_chains.CallGraph(program, call_chains.read_rules(arguments.rules))
    graph.find_depths()
    wiped = graph.check_wiped()
    order = sorted(graph.program.functions | graph.ways, key=lambda function: (-graph.depth(function), function))
    limit = budgets["stack"]
    print(f"stack: {len(order)} functions, {len(graph.recursive)} of them recursive")
    for function in order[:arguments.chains]:
        print(f"  {graph.depth(function)} of {limit}: "
              + " > ".join(f"{name.split('(')[0]} {size}" for name, size in graph.chain(function)))
    for name, used, of in sorted(wiped, key=lambda row: row[1] - row[2])[-1:]:
        print(f"  {used} of {of} wiped after {name.split('(')[0]}")
    problems = list(graph.problems)
    if arguments.measured:
        problems += compare_measured(graph, arguments.measured)
    if order and graph.depth(order[0]) > limit:
        problems.append(f"a chain of calls uses {graph.depth(order[0])} bytes of stack, more than {limit}")
    return problems


def main():
    """Reports on the build named by the command."""
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=Path)
    parser.add_argument("--module", help="the linked file, below the build folder")
    parser.add_argument("--map", help="the linker's map, below the build folder")
    parser.add_argument("--budgets", type=Path, default=HERE / "budget" / "budgets.txt")
    parser.add_argument("--rules", type=Path, default=HERE / "budget" / "stack_rules.txt")
    parser.add_argument("--chains", type=int, default=3, help="how many chains of calls to print")
    parser.add_argument("--measured", type=Path, help="what tests/budgets/stack_use has printed")
    arguments = parser.parse_args()
    windows = (arguments.build / "Mirolta.dll").exists()
    module = arguments.build / (arguments.module or ("Mirolta.dll" if windows else "lib/libMirolta.so"))
    map_file = arguments.build / (arguments.map or "Mirolta.map")
    try:
        budgets = read_budgets(arguments.budgets)
        places, problems = report_sizes(arguments.build, module, map_file, budgets)
        problems += report_stack(object_files(arguments.build, places), arguments, budgets)
    except (linker_map.MapError, object_code.ObjectError, OSError) as error:
        problems = [str(error)]
    for problem in problems:
        print(f"size.py: {problem}", file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
