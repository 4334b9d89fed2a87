#!/usr/bin/env python3
"""Compares the Windows builds' speed under Wine with the native build's, and prints a table.

usage: compare.py [--pages FOLDER] [--rounds N] [--filter TEXT] NATIVE NAME=PROGRAM...

NATIVE and each PROGRAM, several words or a file for Wine, are a build's mirolta-speed. They run in turn, N times; a figure is the median of the
rounds' medians. The page is FOLDER/PROCESSOR-windows.md; without a folder no file is written. Fails if
results differ, or a program does.
"""
import argparse
import pathlib
import re
import shlex
import statistics
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
from processor import Processor  # noqa: E402  (of the folder above)

NATIVE = "native"
# What a Windows build is required to reach of the native one's speed, by the first pattern that matches.
REQUIRED = [(r"kernel/", 0.95), (r"engine/(power|RSA|.* text)", 0.9), (r"class/(ModExp|DecryptPQ)", 0.9)]


def run(command, text):
    """{row: (bytes, nanoseconds, digits of the result)} of one run."""
    done = subprocess.run([*command, *([text] if text else [])], capture_output=True, text=True, check=False)
    lines = [line.split("|") for line in done.stdout.splitlines() if line]
    if done.returncode or not lines or any(len(line) != 4 for line in lines):
        sys.exit(f"{' '.join(command)}: status {done.returncode}\n{done.stdout[-500:]}{done.stderr[-500:]}")
    return {name: (int(size), float(time), digits) for name, size, time, digits in lines}


def medians(runs):
    """{row: (bytes, median of the nanoseconds)}; fails if the runs' results differ."""
    for row, (_, _, digits) in runs[0].items():
        if any(row not in other or other[row][2] != digits for other in runs):
            sys.exit(f"{row}: the results differ")
    return {row: (runs[0][row][0], statistics.median(one[row][1] for one in runs)) for row in runs[0]}


def measure(programs, rounds, text):
    """{build: {row: (bytes, nanoseconds)}}. Results are the same in all builds."""
    runs = {build: [] for build in programs}
    for done in range(rounds):
        for build, command in programs.items():
            print(f"\rround {done + 1} of {rounds}: {build}    ", end="", file=sys.stderr, flush=True)
            runs[build].append(run(command, text))
    print("\r" + " " * 40 + "\r", end="", file=sys.stderr)
    medians([one for of_build in runs.values() for one in of_build])
    return {build: medians(of_build) for build, of_build in runs.items()}


def requirement(row):
    return next((ratio for pattern, ratio in REQUIRED if re.match(pattern, row)), None)


def speed_text(size, time):
    """Bytes a second, or the time of one run."""
    if size:
        return f"{size / time:.2f} GB/s" if size >= time else f"{1000 * size / time:.0f} MB/s"
    for unit, scale in (("ns", 1), ("µs", 1e3), ("ms", 1e6)):
        if time < 1000 * scale or unit == "ms":
            return f"{time / scale:.3g} {unit}"
    return None


def table(measured):
    """The lines of the table, and how many ratios are below what is required."""
    builds = [build for build in measured if build != NATIVE]
    lines = ["| task | native | " + " | ".join(f"{build} | ratio" for build in builds) + " | required |  |",
             "|---" * (4 + 2 * len(builds)) + "|"]
    short = 0
    for row, (size, native) in measured[NATIVE].items():
        times = [measured[build][row][1] for build in builds]
        required = requirement(row)
        # Of 64-bit builds: the native build has 64 bits too.
        below = [required is not None and build.endswith("x64") and round(native / time, 2) < required
                 for build, time in zip(builds, times)]
        short += sum(below)
        cells = [row.replace("/", ", "), speed_text(size, native)]
        cells += [cell for time in times for cell in (speed_text(size, time), f"{native / time:.2f}")]
        cells += [f"{required:.2f}" if required else "", "short" if any(below) else "met" if required else ""]
        lines.append("| " + " | ".join(cells) + " |")
    return lines, short


def this_processor():
    """The Processor of this machine, as the system describes it."""
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        first = file.read().split("\n\n")[0]
    fields = dict(re.findall(r"^([^\t\n]+)\t*: (.*)$", first, re.M))
    features = [name for name, flag in (("AVX2", "avx2"), ("AVX-512", "avx512f"), ("VAES", "vaes"))
                if flag in fields.get("flags", "").split()]
    return Processor({"features": " ".join(features), "maker": fields.get("vendor_id", "unknown"),
                      "family": fields.get("cpu family", "0"), "model": fields.get("model", "0"),
                      "processor": fields.get("model name", "a processor without a name")})


def page(processor, lines, rounds, wine):
    return "\n".join([
        f"# The Windows builds on {processor.name}",
        "",
        f"Written by `make bench-windows` on {processor}. One program, `mirolta-speed`, is built three ways as the "
        f"module is: natively, and for Windows, where {wine} runs it. The builds run in turn, {rounds} times; a figure "
        "is the median of elapsed times. Results are the same in all builds. Kernels and engines are in the program, "
        "classes in the module that it loads. The ratio is the native build's time over that of the Windows build.",
        "",
        "Where a task allocates, Wine's allocator is in its time: a block of some hundred bytes costs about 60 ns "
        "there and 15 ns natively, one of more than 128 KB is mapped anew each time, which costs 12 µs and the first "
        "writing of each page. So do arrays and texts of results, locks, and late-bound calls, which are "
        "the system's.",
        "",
        *lines,
        ""])


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--pages", type=pathlib.Path)
    parser.add_argument("--rounds", type=int, default=7)
    parser.add_argument("--filter", default="")
    parser.add_argument("native")
    parser.add_argument("builds", nargs="+", metavar="NAME=PROGRAM")
    arguments = parser.parse_args()
    programs = {NATIVE: [arguments.native]}
    for build in arguments.builds:
        name, program = build.split("=", 1)
        programs[name] = shlex.split(program) if " " in program else ["wine", program]
    measured = measure(programs, arguments.rounds, arguments.filter)
    lines, short = table(measured)
    print("\n".join(lines))
    print(f"{len(measured[NATIVE])} rows, {short} below what is required")
    if arguments.pages:
        processor = this_processor()
        wine = subprocess.run(["wine", "--version"], capture_output=True, text=True, check=False).stdout.split()[0]
        name = processor.page().removesuffix(".md") + "-windows.md"
        (arguments.pages / name).write_text(page(processor, lines, arguments.rounds, wine), encoding="utf-8")


if __name__ == "__main__":
    main()
