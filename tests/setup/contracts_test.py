#!/usr/bin/env python3
"""Plants faults in contracts and sees that the check finds each, and nothing else.

contracts_test.py SCRIPTS_DIR
"""
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, sys.argv[1])
import contracts  # noqa: E402

CLEAN = """
// MulAdd computes z += x * y. A word such as Sources: or Timer: is no label.
// Shapes: x[m], y[n], z[k], k >= m + n; words
//         least significant first.
// Alias:  x may be y.
// Errors: none.
// Time:   depends on m and n only.
// Source: Knuth.
int MulAdd();  // computes
// Two contracts in one comment, apart by an empty line.
// Source: Knuth.
//
// Another.
// Shapes: x[n].
const char* address = "https://example.org/Source: x";
"""

# Name, text, the lines at fault.
PLANTED = [
    ("beside a sentence", "// Adds. Shapes: x[n].\n", [1]),
    ("beside another label", "// Errors: none.  Time: constant.\n", [1]),
    ("inside a continued line", "// Shapes: x[n],\n//         y[n]. Alias: none.\n", [2]),
    ("beside code", "int x;  // Errors: none.\n", [1]),
    ("wrong order", "// Source: Knuth.\n// Errors: none.\n", [2]),
    ("the same label twice", "// Errors: none.\n// Errors: some.\n", [2]),
    ("text too early", "// Time: constant.\n", [1]),
    ("text too late", "// Shapes:  x[n].\n", [1]),
    ("continued without indentation", "// Source: Knuth TAOCP 2,\n// 4.3.1.\n", [2]),
    ("in a class", "  // Adds. Source: Knuth.\n  // Errors: none.\n", [1]),
    ("two faults", "// Alias: none.\n// Shapes: x[n].\n", [1, 2]),
]


def main():
    failed = False
    for name, text, lines in [("clean", CLEAN, [])] + PLANTED:
        found = [number for number, _ in contracts.find_faults(text)]
        if found != lines:
            print(f"{name}: faults in lines {found}, planted in {lines}")
            failed = True
    count, _ = contracts.check([])
    if count < 500:
        print(f"only {count} files were read")
        failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
