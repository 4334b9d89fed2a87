"""Runs the programs of this folder by memcheck, with secrets undefined, and expects no report; then a
branch and an address that leak, and expects one.

    constant_time_test.py VALGRIND FOLDER

It prints what was checked: the kernels that the machine has and valgrind knows.
"""

import subprocess
import sys

REPORTED = 99
LEAKS = {"branch": "Conditional jump or move depends on uninitialised",
         "address": "Use of uninitialised value"}


def run(valgrind, program, *arguments):
    return subprocess.run(
        [valgrind, "--quiet", f"--error-exitcode={REPORTED}", "--leak-check=no",
         program, *arguments],
        capture_output=True, text=True, check=False)


def main():
    valgrind, folder = sys.argv[1:]
    failed = False
    for name in "secret_flow", "secret_words", "secret_half_words":
        result = run(valgrind, f"{folder}/{name}")
        print(result.stdout, end="")
        if result.returncode != 0 or "checked: " not in result.stdout:
            print(f"{name}: status {result.returncode}\n{result.stderr}")
            failed = True
    for kind, text in LEAKS.items():
        result = run(valgrind, f"{folder}/secret_flow", kind)
        if result.returncode != REPORTED or text not in result.stderr:
            print(f"a leaking {kind} is not reported: status {result.returncode}\n{result.stderr}")
            failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
