#!/usr/bin/env python3
"""Converts the benchmark's JSON to the page of the processor that was measured, and prints a table.

usage: table.py [--pages FOLDER] results.json...

The page is FOLDER/MAKER-FAMILY-MODEL.md, with -x86 for 32-bit programs, and -avx2 or -sse2 where no wider
vectors were used; without a folder no file is written. Further results have the same rows beside other
versions of the peers.
"""
import argparse
import json
import pathlib
import sys

from processor import Processor, library

OURS = "ours"
SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
LEVELS = {
    "kernel": "Kernels",
    "engine": "Engines",
    "class": "Classes",
    "scaling": "Scaling",
    "script": "Scripts",
}
INTRODUCTION = {
    "kernel": "The loops alone, without an object around them.",
    "engine": "Whole computations of the engines that the classes are made of. The primality "
    "assurance of key generation differs: ours tests four Fermat bases, OpenSSL runs many rounds "
    "of Miller-Rabin.",
    "class": "Calls of the module's objects. Their peers are our own kernels and, for late-bound "
    "calls, the early-bound ones.",
    "scaling": "How cost grows with length, calls, objects and threads.",
    "script": "The native script host beside the platform's (cscript), which Wine runs on the same scripts with "
    "the module for Windows: elapsed time of a call, without that of the loop around it. Node runs counterparts of "
    "its own, where it has any, and counts for no ratio. Files are hashed by `examples/hash-file.js` in one run, "
    "its start included.",
}
PEERS = ("OpenSSL", "nettle", "Botan", "GMP", "libgcrypt")
HOSTS = ("Wine", "Node")  # only where they were measured


def read_rows(report):
    """{row name: {contestant: median entry}} in the order of the report."""
    rows = {}
    for entry in report["benchmarks"]:
        if entry.get("aggregate_name") != "median":
            continue
        row, contestant = entry["run_name"].split("|")
        contestant = contestant.split("/")[0]
        rows.setdefault(row, {})[contestant] = entry
    return rows


def merged_rows(reports):
    """The rows of the first report, with the other reports' peers, whose names get their version.

    A peer's "beside" is our own entry of the run that measured it.
    """
    rows = read_rows(reports[0])
    for report in reports[1:]:
        for row, contestants in read_rows(report).items():
            for contestant, entry in contestants.items():
                if contestant == OURS or row not in rows:
                    continue
                entry["beside"] = contestants[OURS]
                name = library(contestant)
                version = f" {report['context'][name]}" if name in PEERS else " of the other run"
                rows[row][contestant + version] = entry
    return rows


def ratio_to(entry, ours):
    """Our speed over that of a peer, in the run that measured the peer."""
    return seconds(entry) / seconds(entry.get("beside", ours))


def seconds(entry):
    time = entry["real_time"] if entry["has_threads"] else entry["cpu_time"]
    return time * SECONDS[entry["time_unit"]]


def speed_text(entry):
    """Bytes a second, or the time of one run."""
    time = seconds(entry)
    if entry["bytes"]:
        speed = entry["bytes"] / time
        return f"{speed / 1e9:.2f} GB/s" if speed >= 1e9 else f"{speed / 1e6:.0f} MB/s"
    for unit, size in (("s", 1), ("ms", 1e-3), ("µs", 1e-6), ("ns", 1e-9)):
        if time >= size:
            return f"{time / size:.3g} {unit}"
    return f"{time / 1e-9:.3g} ns"


def ratio_text(value):
    return "" if not value else f"{value:.2f}"


def table_line(name, contestants, processor):
    ours = contestants[OURS]
    peers = {peer: entry for peer, entry in contestants.items() if peer != OURS}
    required, stretch, counting = processor.requirement(name, ours, peers)
    shown = ", ".join([f"{peer} {speed_text(entry)}" for peer, entry in sorted(
        peers.items(), key=lambda item: ratio_to(item[1], ours))] +
        [f"{peer} missing" for peer in ours.get("missing", ())])
    ratio = ""
    verdict = ""
    if counting:
        # Requirements have two decimals, so the ratio is rounded to two.
        value = round(min(ratio_to(entry, ours) for entry in counting.values()), 2)
        ratio = f"{value:.2f}"
        if required:
            verdict = "short" if value < required else "met"
            if stretch and value >= stretch:
                verdict = "stretch"
    task = name.split("/", 1)[1].replace("/", ", ")
    return [task, speed_text(ours), shown, ratio, ratio_text(required), ratio_text(stretch),
            verdict]


HEADINGS = ["task", "ours", "peers, best first", "ratio", "required", "stretch", ""]


def limit_lines(processor):
    """Which limits hold, for the page and the terminal."""
    limits = processor.limits()
    return [f"limit of this processor: {why}, required {required}" for _, required, why in limits] or [
        "limits of this processor: none that changes what is required"]


def versions(report):
    return ", ".join(f"{peer} {report['context'][peer]}" for peer in PEERS + HOSTS
                     if peer in PEERS or peer in report["context"])


def markdown(reports, rows):
    context = reports[0]["context"]
    processor = Processor(*(report["context"] for report in reports))
    lines = [
        f"# Benchmarks on {processor.title()}",
        "",
        f"Written by `make {processor.command()}`; one run, ours and the peers "
        "interleaved at random, medians of the repetitions, operands rotated. The ratio is our "
        "speed over that of the best peer in the same run; every output was compared with every "
        "peer's before."
        + ("" if len(reports) == 1 else " Peers with a version behind their name were measured in "
           "a run of their own, beside ours there; the ratio is to the best of all.")
        + ("" if processor.is_wide else " Peers too are kept from wider vectors.")
        + ("" if processor.is_wide and not processor.is_x86 else
           " Where a ratio to GMP is required, that is the one shown."),
        "",
        f"- processor: {processor}; {' '.join(processor.features)}; {context['num_cpus']} cores, "
        f"{context['mhz_per_cpu']} MHz",
        *[f"- {line}" for line in limit_lines(processor)],
        "- peers: " + "; ".join(versions(report) for report in reports),
        "",
    ]
    for level, title in LEVELS.items():
        here = [table_line(name, contestants, processor) for name, contestants in rows.items()
                if name.startswith(level + "/") and OURS in contestants]
        if not here:
            continue
        lines += [f"## {title}", "", INTRODUCTION[level], ""]
        lines.append("| " + " | ".join(HEADINGS) + " |")
        lines.append("|" + "---|" * len(HEADINGS))
        lines += ["| " + " | ".join(line) + " |" for line in here]
        lines.append("")
    return "\n".join(lines)


def main(arguments):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--pages", help="the folder of the page to write")
    parser.add_argument("results", nargs="+")
    options = parser.parse_args(arguments)
    reports = []
    for name in options.results:
        with open(name, encoding="utf-8") as file:
            reports.append(json.load(file))
    rows = merged_rows(reports)
    processor = Processor(*(report["context"] for report in reports))
    print(processor)
    print("\n".join(limit_lines(processor)))
    for name, contestants in rows.items():
        if OURS not in contestants:
            continue
        task, ours, peers, ratio, required, stretch, verdict = table_line(name, contestants, processor)
        wanted = f"(required {required}, stretch {stretch}: {verdict})" if required else ""
        level = name.split("/")[0]
        print(f"{level:8} {task}: {ours}; {peers}; ratio {ratio} {wanted}")
    if options.pages:
        page = pathlib.Path(options.pages, processor.page())
        page.write_text(markdown(reports, rows), "utf-8")
        print(f"written: {page}")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
