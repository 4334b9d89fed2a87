#!/usr/bin/env python3
"""Turns the benchmark's JSON into docs/benchmarks.md and a table on the screen.

usage: table.py results.json [benchmarks.md]

Without the second argument nothing is written: a part of the rows is no report.
"""
import json
import sys

OURS = "ours"
SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
LEVELS = {
    "kernel": "Kernels",
    "engine": "Engines",
    "class": "Classes",
    "scaling": "Scaling",
}
INTRODUCTION = {
    "kernel": "The loops alone, without an object around them.",
    "engine": "Whole computations of the engines that the classes are made of. The primality "
    "assurance of key generation differs: ours tests four Fermat bases, OpenSSL runs many rounds "
    "of Miller-Rabin.",
    "class": "Calls of the module's objects. Their peers are our own kernels and, for late-bound "
    "calls, the early-bound ones.",
    "scaling": "How cost grows with length, calls, objects and threads.",
}


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


def table_line(name, contestants):
    ours = contestants[OURS]
    peers = {peer: entry for peer, entry in contestants.items() if peer != OURS}
    shown = ", ".join(f"{peer} {speed_text(entry)}" for peer, entry in sorted(
        peers.items(), key=lambda item: seconds(item[1])))
    ratio = ""
    verdict = ""
    if peers:
        value = min(seconds(entry) for entry in peers.values()) / seconds(ours)
        ratio = f"{value:.2f}"
        if ours["required"]:
            verdict = "short" if value < ours["required"] else "met"
            if ours["stretch"] and value >= ours["stretch"]:
                verdict = "stretch"
    task = name.split("/", 1)[1].replace("/", ", ")
    return [task, speed_text(ours), shown, ratio, ratio_text(ours["required"]),
            ratio_text(ours["stretch"]), verdict]


HEADINGS = ["task", "ours", "peers, best first", "ratio", "required", "stretch", ""]


def markdown(report, rows):
    context = report["context"]
    lines = [
        "# Benchmarks",
        "",
        "Written by `make bench`; one run, ours and the peers interleaved at random, medians of the "
        "repetitions, operands rotated. The ratio is our speed over that of the best peer in the "
        "same run; every output was compared with every peer's before.",
        "",
        f"- processor: {context['features'].strip()}; {context['num_cpus']} cores, "
        f"{context['mhz_per_cpu']} MHz",
        "- peers: " + ", ".join(
            f"{peer} {context[peer]}" for peer in ("OpenSSL", "nettle", "Botan", "GMP",
                                                   "libgcrypt")),
        "",
    ]
    for level, title in LEVELS.items():
        here = [table_line(name, contestants) for name, contestants in rows.items()
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
    with open(arguments[0], encoding="utf-8") as file:
        report = json.load(file)
    rows = read_rows(report)
    for name, contestants in rows.items():
        if OURS not in contestants:
            continue
        task, ours, peers, ratio, required, stretch, verdict = table_line(name, contestants)
        wanted = f"(required {required}, stretch {stretch}: {verdict})" if required else ""
        level = name.split("/")[0]
        print(f"{level:8} {task}: {ours}; {peers}; ratio {ratio} {wanted}")
    if len(arguments) > 1:
        with open(arguments[1], "w", encoding="utf-8") as file:
            file.write(markdown(report, rows))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
