#!/usr/bin/env python3
"""Measures the rows of mirolta-bench and those of scripts whose names match, and writes BUILD/results.json.

usage: measure.py [--without-scripts] BUILD [PATTERN]
"""
import argparse
import json
import pathlib
import re
import subprocess
import sys

import scripts

ROOT = pathlib.Path(__file__).resolve().parents[1]
# Measured for what the report says of the processor, if the pattern leaves rows of scripts only.
SHORTEST_ROW = "^class/late-bound/codePage read$"


def rows_of(command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout.splitlines()


def main(arguments):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--without-scripts", action="store_true")
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("pattern", nargs="?", default="")
    options = parser.parse_args(arguments)
    program, results = str(options.build / "bin" / "mirolta-bench"), str(options.build / "results.json")
    measures_scripts = not options.without_scripts and any(re.search(options.pattern, name) for name in scripts.names())
    is_listed = any(re.search(options.pattern, name) for name in rows_of([program, "--list"]))
    pattern = SHORTEST_ROW if measures_scripts and not is_listed else options.pattern
    status = subprocess.run([program, results, pattern], check=False).returncode
    if status != 0 or not measures_scripts:
        return status
    if not is_listed:
        report = json.loads(pathlib.Path(results).read_text("utf-8"))
        pathlib.Path(results).write_text(json.dumps({**report, "benchmarks": []}), "utf-8")
    return scripts.main([
        "--pattern", options.pattern, "--windows-module", str(ROOT / "build" / "windows-x64" / "Mirolta.dll"),
        str(options.build / "bin" / "mirolta-host"), str(options.build / "lib" / "libMirolta.so"), results])


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
