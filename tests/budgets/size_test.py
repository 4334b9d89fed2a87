#!/usr/bin/env python3
"""Measures a program whose answers are known, and plants faults that scripts/size.py must report.

size_test.py SCRIPTS_DIR SOURCE_DIR WORK_DIR
"""
import contextlib
import io
import subprocess
import sys
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, sys.argv[1])
import size  # noqa: E402
from budget import call_chains, linker_map, object_code  # noqa: E402

SOURCE = Path(sys.argv[2]) / "small_program.s"
WORK = Path(sys.argv[3])
WORK.mkdir(parents=True, exist_ok=True)

RULES = """
callback | ^RunCallback > ^RunCallback | ^Callback | the test's
indirect | ^Middle | OfTable | the table
recursion | ^Recursive | 3 | three frames
wiped | ^TakesCallback | 212 | what RunCallback and Callback use
"""

# A function whose frame no compiler has stated.
MISSING = """
        .section .text.Missing,"ax",%progbits
        .globl Missing
        .type Missing, %function
        .thumb_func
Missing: bx lr
"""

failures = []


def expect(what, found, wanted):
    """Notes a difference."""
    if found != wanted:
        failures.append(f"{what}: {found!r}, not {wanted!r}")


def assemble(name, more=""):
    """An object file of the program, and of more source, below a folder of a target's."""
    path = WORK / "CMakeFiles" / f"{name}.dir" / "small_program.cpp.o"
    path.parent.mkdir(parents=True, exist_ok=True)
    subprocess.run(["clang", "--target=armv7-linux-gnueabi", "-c", "-o", path, "-x", "assembler", "-"], check=True,
                   input=SOURCE.read_text(encoding="utf-8") + more, text=True)
    return path


def graph_of(path, rules):
    """The call graph with depths, under rules given as text."""
    file = WORK / "rules.txt"
    file.write_text(rules, encoding="utf-8")
    graph = call_chains.CallGraph(object_code.read_program([path]), call_chains.read_rules(file))
    graph.find_depths()
    graph.check_wiped()
    return graph


def test_depths():
    """Chains through calls, tail calls, tables, callbacks and recursion."""
    graph = graph_of(assemble("hash_small"), RULES)
    expect("problems", graph.problems, [])
    for function, depth in (("Entry", 236), ("Middle", 220), ("Leaf", 8), ("FirstOfTable", 68),
                            ("SecondOfTable", 180), ("Recursive", 80), ("TakesCallback", 244),
                            ("Callback", 200)):
        expect(f"depth of {function}", graph.depth(function), depth)
    expect("chain", graph.chain("Entry"), [("Entry", 16), ("Middle", 40), ("SecondOfTable", 100),
                                           ("Recursive", 72), ("Leaf", 8)])


def test_names():
    """Local functions lose their object's name, of whichever format."""
    for owner in ("/build/a.cpp.o:", "build/a.cpp.o:", "build/a.cpp.obj:"):
        local = owner + "_ZN7mirolta12_GLOBAL__N_15BlockEv"
        expect(f"name of {local}", call_chains.readable_names([local]), {local: "Block()"})


def test_sized_recursion():
    """Recursion on halves counts once for a whole chain, whatever else recurses."""
    rules = RULES.replace("recursion | ^Recursive | 3 | three frames",
                          "sized | ^Recursive + ^Leaf | 2 | twice for each halving\nhalvings | all | 5.5 | of the test")
    graph = graph_of(assemble("hash_small"), rules)
    expect("problems", graph.problems, [])
    expect("depth with sized recursion", graph.depth("Recursive"), 24 + 8 + (24 + 8) * 11)


def test_faults():
    """What is missing or wrong in rules and objects is a problem."""
    path = assemble("hash_small")
    for dropped, problem in (("callback |", "calls through registers without a rule: RunCallback"),
                             ("indirect |", "calls through registers without a rule: Middle"),
                             ("recursion |", "recursion without a rule: Recursive"),
                             ("wiped |", "no rule says how much is wiped after TakesCallback")):
        rules = "\n".join(line for line in RULES.splitlines() if not line.startswith(dropped))
        expect(f"without {dropped}", problem in graph_of(path, rules).problems, True)
    for planted in ("indirect | ^Leaf | OfTable | no such call", "recursion | ^Leaf | 2 | not recursive",
                    "indirect | ^Middle | ^Leaf | whose address nobody takes",
                    "sized | ^Nobody | 1 | no such function"):
        expect(planted, len(graph_of(path, RULES + planted + "\n").problems) >= 1, True)
    problems = graph_of(path, RULES.replace("| 212 |", "| 211 |")).problems
    expect("too little wiped", problems, ["TakesCallback uses 212 bytes, of which 211 are wiped"])
    problems = graph_of(assemble("hash_faulty", MISSING), RULES).problems
    expect("a function without frame size", problems, ["no frame size: Missing"])
    try:
        graph_of(path, "indirect | two fields\n")
        failures.append("a malformed rule is accepted")
    except object_code.ObjectError:
        pass


def run_size(budgets, arguments):
    """(exit status, output) of size.py for the linked program."""
    file = WORK / "budgets.txt"
    file.write_text(budgets, encoding="utf-8")
    rules = WORK / "rules.txt"
    rules.write_text(RULES, encoding="utf-8")
    out = io.StringIO()
    sys.argv = ["size.py", str(WORK), "--budgets", str(file), "--rules", str(rules), *arguments]
    with contextlib.redirect_stdout(out), contextlib.redirect_stderr(out):
        status = size.main()
    return status, out.getvalue()


def test_file():
    """Every byte of the linked file has its place; budgets are compared. By both linkers."""
    path = assemble("hash_small")
    for stale in (WORK / "CMakeFiles" / "hash_faulty.dir").glob("*"):
        stale.unlink()
    for linker in (["ld.lld"], ["arm-linux-gnueabi-ld"]):
        module = WORK / "module.so"
        subprocess.run([*linker, "-e", "Entry", "--unresolved-symbols=ignore-all", "-o", module,
                        f"-Map={WORK / 'module.map'}", path], check=True)
        data = module.read_bytes()
        places, rest = linker_map.attribute(data, (WORK / "module.map").read_text(encoding="utf-8"))
        sizes = places["hash_small", "small_program"]
        expect(f"{linker[0]}: constants", sizes["constants"], 108)
        expect(f"{linker[0]}: zeroed", sizes["zeroed"], 64)
        expect(f"{linker[0]}: code", 54 <= sizes["code"] <= 64, True)
        total = sum(size for row in places.values() for kind, size in row.items() if kind != "zeroed")
        expect(f"{linker[0]}: sum", total + sum(rest.values()), len(data))
        arguments = ["--module", "module.so", "--map", "module.map"]
        status, out = run_size("file 100000\nstack 244\n", arguments)
        expect(f"{linker[0]}: within the budgets ({out})", status, 0)
        expect(f"{linker[0]}: the class", "HashObject" in out, True)
        status, out = run_size("file 100000\nstack 243\n", arguments)
        expect(f"{linker[0]}: stack", (status, "244 bytes of stack, more than 243" in out), (1, True))
        status, out = run_size("file 100\nstack 244\n", arguments)
        expect(f"{linker[0]}: file", (status, "more than 100" in out), (1, True))
        # Bytes that belong to no section.
        try:
            linker_map.attribute(data + bytes(0x30000), (WORK / "module.map").read_text(encoding="utf-8"))
            failures.append(f"{linker[0]}: unexplained bytes are accepted")
        except linker_map.MapError:
            pass


for test in (test_depths, test_names, test_sized_recursion, test_faults, test_file):
    test()
for failure in failures:
    print(f"size_test: {failure}")
sys.exit(1 if failures else 0)
