#!/usr/bin/env python3
"""Checks that loop_divisions.py finds the divisions of loop_division_cases.cpp that stand in a loop.

    loop_divisions_test.py OBJDUMP OBJECT
"""
import pathlib
import re
import subprocess
import sys

FOLDER = pathlib.Path(__file__).parent
CASES = (FOLDER / "loop_division_cases.cpp").read_text("utf-8")
EXPECTED = set(re.findall(r"^u?int64_t (InLoop\w+)\(.*\{$", CASES, re.M))


def main():
    run = subprocess.run([sys.executable, "-B", FOLDER / "loop_divisions.py", *sys.argv[1:]], text=True,
                         capture_output=True)
    found = set(re.findall(r": (\w+)\(.*\): \S+ in a loop$", run.stdout, re.M))
    if run.returncode != 1 or found != EXPECTED or len(EXPECTED) < 4:
        sys.exit(f"status {run.returncode}, found {sorted(found)} instead of {sorted(EXPECTED)}\n"
                 f"{run.stdout}")
    print(run.stdout.splitlines()[-1])


if __name__ == "__main__":
    main()
