#!/usr/bin/env python3
"""Measures the native script host beside the platform's, run by Wine, and Node, and adds the rows to a report.

usage: scripts.py [--pattern PATTERN] [--windows-module Mirolta.dll] HOST MODULE results.json

Elapsed time, medians of interleaved runs. Of a call it is the time of a loop less that of the same loop without
the call. Node counts for no ratio: it runs its own counterparts of some calls. A peer that is not installed is
named as missing; the platform's host needs the module for Windows too.
"""
import argparse
import json
import os
import pathlib
import re
import shutil
import statistics
import subprocess
import sys
import time

import script_rows

LEVEL = "script/"
REPETITIONS = 5
LEAST_MILLISECONDS = 100  # of a loop
OURS, CSCRIPT, NODE = "ours", "cscript", "Node"
DIGEST = re.compile(r"\b[0-9a-f]{64}\b")

# Prints the nanoseconds of a call and the output.
SCRIPT = """var a = null;
%(setup)s
function work(o, a, count) { var x, i; for (i = 0; i < count; i++) { %(work)s } return x; }
function idle(o, a, count) { var x, i; for (i = 0; i < count; i++) { %(idle)s } return x; }
function now() { return new Date().getTime(); }
(function (a) {
  var count = 1, start, taken, x, idleStart;
  for (;;) {
    start = now();
    x = work(o, a, count);
    taken = now() - start;
    if (taken >= %(least)d) break;
    count *= 2;
  }
  idleStart = now();
  idle(o, a, count);
  taken -= now() - idleStart;
  %(print)s(taken * 1e6 / count + " " + (%(output)s));
})(a);
"""


def script_text(setup, work, call, printer):
    return SCRIPT % {"setup": setup, "work": work, "idle": call.idle, "least": LEAST_MILLISECONDS, "print": printer,
                     "output": call.output}


class Native:
    """A script host that is started as it is."""

    def __init__(self, command, environment=None, printer="WScript.Echo"):
        self.command, self.environment, self.printer = command, environment or {}, printer

    def text(self, call):
        return script_text(call.setup, call.work, call, self.printer)

    def words(self, path):
        return [*self.command, str(path)]

    def measure(self, path):
        """(nanoseconds, output) of the script's call."""
        done = subprocess.run(self.words(path), env={**os.environ, **self.environment}, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=False)
        words = done.stdout.split()
        if done.returncode != 0 or len(words) != 2:
            raise ValueError(f"{' '.join(self.words(path))}: status {done.returncode}, {done.stdout!r}")
        return float(words[0]), words[1]


class Node(Native):
    def text(self, call):
        return script_text(*call.node, call, self.printer) if call.node else None


class Wine(Native):
    def words(self, path):
        return [*self.command, "Z:" + str(path).replace("/", "\\")]


def native_host(host, module, folder):
    """The native host, with the module registered for it alone."""
    environment = {"MIROLTA_REGISTRY": str(folder / "registry.reg")}
    subprocess.run([host, "--register", module], env={**os.environ, **environment}, stdout=subprocess.DEVNULL,
                   check=True)
    return Native([host], environment)


def wine_host(module, folder):
    """The platform's host, with the module registered; None without Wine or the module."""
    if shutil.which("wine") is None or module is None or not pathlib.Path(module).exists():
        return None
    environment = {"WINEPREFIX": str(folder / "wine"), "WINEDEBUG": "-all", "WINEDLLOVERRIDES": "mscoree=;mshtml=",
                   "DISPLAY": ""}
    wine = Wine(["wine", "cscript", "//nologo"], environment)
    name = "Z:" + str(pathlib.Path(module).resolve()).replace("/", "\\")
    subprocess.run(["wine", "regsvr32", "/s", name], env={**os.environ, **environment}, stdin=subprocess.DEVNULL,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)
    return wine


def entry(row, contestant, nanoseconds, size=0):
    return {"run_name": f"{LEVEL}{row.name}|{contestant}", "aggregate_name": "median", "time_unit": "ns",
            "real_time": nanoseconds, "cpu_time": nanoseconds, "has_threads": 1, "bytes": size,
            "required": row.required, "stretch": row.stretch}


def same_outputs(row, outputs, reference):
    """Reports the contestants whose output is not that of the reference."""
    wrong = [name for name, output in outputs.items() if output != outputs[reference]]
    for name in wrong:
        print(f"{LEVEL}{row.name}: the output of {name} differs", file=sys.stderr)
    return not wrong


def measure_call(call, worlds, folder):
    """The entries of a row, None if outputs differ. Each repetition runs all hosts, in turn."""
    scripts = {}
    for name, world in worlds.items():
        text = world.text(call)
        if text is not None:
            scripts[name] = folder / f"{name}.js"
            scripts[name].write_text(text, "utf-8")
    times, outputs = {name: [] for name in scripts}, {}
    for _ in range(REPETITIONS):
        for name, path in scripts.items():
            nanoseconds, output = worlds[name].measure(path)
            times[name].append(nanoseconds)
            if name != NODE:
                outputs[name] = output
    if not same_outputs(call, outputs, OURS):
        return None
    return [entry(call, name, max(statistics.median(values), 0.1)) for name, values in times.items()]


def measure_program(program, commands, environment, folder):
    """The same of the programs that hash files."""
    paths = program.write_files(folder / str(program.count))
    times, outputs = {name: [] for name in commands}, {}
    for _ in range(REPETITIONS):
        for name, command in commands.items():
            start = time.perf_counter_ns()
            done = subprocess.run([*command, *paths], env={**os.environ, **environment}, stdout=subprocess.PIPE,
                                  text=True, check=True)
            times[name].append(time.perf_counter_ns() - start)
            outputs[name] = DIGEST.findall(done.stdout)
    if not same_outputs(program, outputs, OURS):
        return None
    return [entry(program, name, statistics.median(values), program.count * program.size)
            for name, values in times.items()]


def names():
    return [LEVEL + row.name for row in script_rows.CALLS + script_rows.PROGRAMS]


def installed(commands):
    return {name: command for name, command in commands.items() if shutil.which(command[0])}


def version_of(words):
    said = subprocess.run(words, capture_output=True, text=True, check=False).stdout
    found = re.search(r"\d+(\.\d+)+", said)
    return found[0] if found else "unknown"


def measure(options):
    """The entries of the rows whose names match, the versions of their hosts, and whether all outputs were equal."""
    folder = pathlib.Path(options.results).resolve().parent / "scripts"
    folder.mkdir(parents=True, exist_ok=True)
    calls = [row for row in script_rows.CALLS if re.search(options.pattern, LEVEL + row.name)]
    programs = [row for row in script_rows.PROGRAMS if re.search(options.pattern, LEVEL + row.name)]
    native = native_host(options.host, options.module, folder)
    worlds = {OURS: native}
    context, missing = {}, []
    if calls:
        wine = wine_host(options.windows_module, folder)
        if wine is not None:
            worlds[CSCRIPT] = wine
            context["Wine"] = version_of(["wine", "--version"])
        else:
            missing.append(CSCRIPT)
        if shutil.which("node"):
            worlds[NODE] = Node(["node"], printer="console.log")
            context["Node"] = version_of(["node", "--version"])
    entries, agree = [], True
    for row in calls + programs:
        print(LEVEL + row.name, file=sys.stderr)
        if row in programs:
            measured = measure_program(row, installed(row.commands(options.host)), native.environment, folder)
            absent = sorted(set(row.commands(options.host)) - {one["run_name"].split("|")[1] for one in measured or []})
        else:
            measured, absent = measure_call(row, worlds, folder), missing
        if measured is None:
            agree = False
            continue
        for one in measured:
            one["missing"] = absent
        entries += measured
    return entries, context, agree


def add_to_report(path, entries, context):
    """Replaces the rows of scripts in the report."""
    path = pathlib.Path(path)
    report = json.loads(path.read_text("utf-8"))
    others = [one for one in report["benchmarks"] if not one["run_name"].startswith(LEVEL)]
    report["benchmarks"] = others + entries
    report["context"].update(context)
    path.write_text(json.dumps(report, indent=1), "utf-8")


def main(arguments):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--pattern", default="", help="measure only rows whose names match")
    parser.add_argument("--windows-module", help="the module that the platform's host uses")
    for name in ("host", "module", "results"):
        parser.add_argument(name)
    options = parser.parse_args(arguments)
    entries, context, agree = measure(options)
    add_to_report(options.results, entries, context)
    return 0 if agree else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
