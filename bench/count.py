#!/usr/bin/env python3
"""Counts the instructions of the portable kernels with callgrind and compares them to their limits.

usage: count.py mirolta-count

The count per unit is the slope between two amounts of work, which cancels the code around a kernel. A
peer of a kernel must have the kernel's result.
"""
import os
import re
import subprocess
import sys

AMOUNTS = {"byte": (65536, 196608), "power": (1, 3)}


def run(program, kernel, amount):
    """(instructions, output) of one run."""
    done = subprocess.run(
        ["valgrind", "--tool=callgrind", f"--callgrind-out-file={os.devnull}",
         "--toggle-collect=*Run*", program, kernel, str(amount)],
        capture_output=True, text=True, check=True)
    return int(re.search(r"Collected\s*:\s*(\d+)", done.stderr).group(1)), done.stdout


def slope(program, kernel, unit):
    small, large = AMOUNTS[unit]
    first, _ = run(program, kernel, small)
    second, output = run(program, kernel, large)
    return (second - first) / (large - small), output


def main(program):
    listed = subprocess.run([program, "--list"], capture_output=True, text=True, check=True).stdout
    failures = 0
    counts = {}
    outputs = {}
    for line in listed.splitlines():
        kernel, unit, limit = line.split()
        counts[kernel], outputs[kernel] = slope(program, kernel, unit)
        if float(limit):
            fits = counts[kernel] <= float(limit)
            failures += not fits
            print(f"{kernel}: {counts[kernel]:.2f} instructions a {unit}, limit {limit}"
                  f"{'' if fits else ': too many'}")
            continue
        print(f"{kernel}: {counts[kernel]:.2f} instructions a {unit}")
        ours = kernel.rsplit("-", 1)[0]
        if outputs[ours] != outputs[kernel]:
            print(f"{kernel} gives another result than {ours}")
            failures += 1
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
