#!/usr/bin/env python3
"""Draws speed over size, ours beside each peer, as SVG by gnuplot.

usage: plots.py results.json|PAGE.md FOLDER

Reads the benchmark's JSON or the page that table.py makes of it, and writes FOLDER/LEVEL-TASK.svg for each
task that was measured beside another at three sizes or more, and prints their names. The same input gives
the same bytes.
"""
import json
import pathlib
import re
import subprocess
import sys

import table

SIZE = re.compile(r"^(.*)[/,] ?(\d+) (bytes|KiB|MiB|bits)$")
FACTORS = {"bytes": 1, "KiB": 1 << 10, "MiB": 1 << 20, "bits": 1}
SPEED = re.compile(r"^(.*?) ?([\d.e+]+) (GB/s|MB/s|s|ms|µs|ns)$")
VERSION = re.compile(r" [\d.]+$")  # of a peer that was measured in a run of its own
UNITS = {"GB/s": 1e9, "MB/s": 1e6, "s": 1, "ms": 1e-3, "µs": 1e-6, "ns": 1e-9}
# A colour for each contestant, the same in all plots; ours is drawn last and thickest.
COLOURS = {"ours": "#c0392b", "OpenSSL": "#2c6fbb", "OpenSSL EVP": "#7fb2e5", "nettle": "#3a9d5d",
           "Botan": "#8e6bbf", "libgcrypt": "#b8860b", "GMP": "#2c6fbb", "libtommath": "#7f8c8d"}
FEWEST_SIZES = 3


class Plot:
    """The measurements of a task: {contestant: {size: value}}."""

    def __init__(self, unit, is_speed):
        self.unit = unit
        self.is_speed = is_speed
        self.series = {}

    def add(self, contestant, size, value):
        self.series.setdefault(contestant, {})[size] = value

    def sizes(self):
        return sorted({size for values in self.series.values() for size in values})


def measured(text):
    """(name, value, whether it is a speed) of `name 1.5 GB/s`."""
    name, value, unit = SPEED.match(text.strip()).groups()
    return name or table.OURS, float(value) * UNITS[unit], unit.endswith("B/s")


def rows_of_page(text, level):
    """(task, contestant, value, is_speed) of a page's table of a level."""
    section = re.search(rf"^## {table.LEVELS[level]}\n(.*?)(?=^## |\Z)", text, re.M | re.S)
    for line in section[1].splitlines() if section else ():
        cells = [cell.strip() for cell in line.strip().strip("|").split("|")]
        if len(cells) == len(table.HEADINGS) and SPEED.match(cells[1]):
            for text_of_one in [cells[1], *filter(None, cells[2].split(", "))]:
                yield (cells[0], *measured(text_of_one))


def rows_of_report(report, level):
    for name, contestants in table.read_rows(report).items():
        row_level, task = name.split("/", 1)
        if row_level == level and table.OURS in contestants:
            for contestant, entry in contestants.items():
                seconds = table.seconds(entry)
                is_speed = bool(entry["bytes"])
                yield (task.replace("/", ", "), contestant,
                       entry["bytes"] / seconds if is_speed else seconds, is_speed)


def plots_of(rows):
    plots = {}
    for task, contestant, value, is_speed in rows:
        match = SIZE.match(task)
        if not match:
            continue
        unit = "bits" if match[3] == "bits" else "bytes"
        plot = plots.setdefault(match[1], Plot(unit, is_speed))
        plot.add(contestant, int(match[2]) * FACTORS[match[3]], value)
    return {task: plot for task, plot in plots.items()
            if len(plot.series.get(table.OURS, ())) >= FEWEST_SIZES and len(plot.series) > 1}


def size_label(size, unit):
    for factor, name in ((1 << 20, "MiB"), (1 << 10, "KiB")):
        if unit == "bytes" and size % factor == 0:
            return f"{size // factor} {name}"
    return f"{size} {unit}"


def program(task, plot, file):
    """The gnuplot program of a plot, with its data."""
    order = sorted(plot.series, key=lambda name: (name == table.OURS, name))
    tics = ", ".join(f'"{size_label(size, plot.unit)}" {size}' for size in plot.sizes())
    lines = [
        'set terminal svg size 720,420 font "sans-serif,13" background "white"',
        f'set output "{file}"',
        f'set title "{task}" noenhanced',
        "set logscale xy",
        f"set xtics ({tics})",
        'set format y "%.0s %c' + ('B/s"' if plot.is_speed else 's"'),
        f'set ylabel "{"bytes a second: more is better" if plot.is_speed else "time: less is better"}"',
        'set grid lc rgb "#dddddd" lw 1',
        "set key outside right top noenhanced",
    ]
    drawn = []
    for name in order:
        contestant = VERSION.sub("", name)
        colour = COLOURS.get(contestant, "#555555")
        width, size = (3, 0.9) if name == table.OURS else (1.5, 0.6)
        dashes = 1 if contestant == name else 2
        drawn.append(f'"-" using 1:2 with linespoints lw {width} dt {dashes} pt 7 ps {size} lc rgb "{colour}" '
                     f'title "{name}"')
    lines.append("plot " + ", ".join(drawn))
    for name in order:
        lines += [f"{size} {value:.6g}" for size, value in sorted(plot.series[name].items())]
        lines.append("e")
    return "\n".join(lines) + "\n"


def read_plots(path):
    """{level: {task: plot}} of a report or a page; levels without plots are left out."""
    text = pathlib.Path(path).read_text("utf-8")
    report = json.loads(text) if text.lstrip().startswith("{") else None
    found = {level: plots_of(rows_of_report(report, level) if report else rows_of_page(text, level))
             for level in table.LEVELS}
    return {level: plots for level, plots in found.items() if plots}


def draw(path, folder):
    """Draws the plots; returns their {level: {task: file name}}."""
    folder = pathlib.Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    names = {}
    for level, plots in read_plots(path).items():
        for task, plot in plots.items():
            name = f"{level}-{re.sub('[^a-z0-9]+', '-', task.lower()).strip('-')}.svg"
            subprocess.run(["gnuplot"], input=program(task, plot, name), text=True, check=True, cwd=folder)
            names.setdefault(level, {})[task] = name
    return names


def main(arguments):
    if len(arguments) != 2:
        sys.exit(__doc__)
    names = draw(*arguments)
    if not names:
        sys.exit(f"{arguments[0]}: no task with {FEWEST_SIZES} sizes and a peer")
    print("\n".join(f"{arguments[1]}/{name}" for level in names.values() for name in level.values()))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
