#!/usr/bin/env python3
"""Counts the instructions of this library and its peers under QEMU, and writes docs/benchmarks-arm.md.

usage: count.py [--report FILE] [--pattern TEXT] NAME BUILD...

NAME is a target (armel, armhf, arm64) and BUILD its build folder, of which CMake's cache names the emulator and
the unpacked packages. A task is done n times and then 2n times; the difference of the two counts, divided
by n, has neither what is around the task nor what runs once. All is run twice, and must give the same
counts. Fails if counts or results differ, or a ratio is below its target.
"""
import os
import re
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
OURS = "ours"

# Which peers run assembly of their own on the target's processor: the packages' symbols and the features
# that the emulated processor has decide. The others run C.
ASSEMBLY = {
    "armel": [
        (r"SHA-", {"OpenSSL"}),
        (r"AES", {"OpenSSL", "nettle", "libgcrypt"}),
        (r"multiply|power|RSA", {"GMP", "GMP constant-time", "OpenSSL", "OpenSSL constant-time", "nettle"}),
    ],
    "armhf": [
        (r"SHA-1", {"OpenSSL", "nettle", "libgcrypt"}),
        (r"SHA-256", {"OpenSSL", "nettle"}),
        (r"AES", {"OpenSSL", "nettle", "libgcrypt"}),
        (r"multiply|power|RSA", {"GMP", "GMP constant-time", "OpenSSL", "OpenSSL constant-time", "nettle"}),
    ],
    "arm64": [
        (r"SHA-|AES", {"OpenSSL", "nettle", "libgcrypt"}),
        (r"multiply|power|RSA", {"GMP", "GMP constant-time", "OpenSSL", "OpenSSL constant-time", "nettle"}),
    ],
}
# Targets: instructions of the best peer in C, of the best one in assembly, or of one peer, divided by ours, for
# the tasks that the pattern matches. By the primes of a short key, where masks and blinding weigh most, the peer is
# GMP's function for secret exponents.
TARGETS = {
    "armel": [("C", r"", 1.05), ("assembly", r"", 0.9), ("GMP", r"RSA private/", 0.9),
              ("GMP constant-time", r"RSA private by primes", 0.9)],
    "arm64": [("OpenSSL", r"SHA-|AES", 1.0), ("GMP", r"multiply|power", 0.9)],
}
TITLES = {"armel": "ARMv5TE (arm926, soft float)", "armhf": "ARMv7 with NEON (cortex-a15)",
          "arm64": "AArch64 with the instructions for AES and SHA (cortex-a72)"}
UNIT_TEXT = {True: "instructions a byte", False: "instructions"}


def cached(build, name):
    with open(os.path.join(build, "CMakeCache.txt"), encoding="utf-8") as file:
        return re.search(rf"^{name}:\w+=(.*)$", file.read(), re.M).group(1)


def make_plugin(folder):
    plugin = os.path.join(folder, "count.so")
    subprocess.run(["c++", "-std=c++20", "-O2", "-shared", "-fPIC", "-fvisibility=hidden",
                    os.path.join(HERE, "count_plugin.cpp"), "-o", plugin], check=True)
    return plugin


def counts_of(name, build, plugin, pattern):
    """{row: (bytes, {contestant: instructions of one task})} of one run."""
    command = [cached(build, "MIROLTA_QEMU"), "-cpu", cached(build, "MIROLTA_QEMU_CPU"),
               "-L", os.path.join(cached(build, "MIROLTA_TARGET_PACKAGES"), "root"),
               "-E", "LD_LIBRARY_PATH=" + os.path.join(build, "lib"), "-plugin", plugin,
               os.path.join(build, "bin", "mirolta-arm-count"), pattern]
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"{name}: {done.stdout}{done.stderr}")
    marks = [int(line) for line in done.stderr.splitlines()]
    lines = done.stdout.splitlines()
    if len(marks) != 3 * len(lines):
        sys.exit(f"{name}: {len(lines)} tasks and {len(marks)} counts")
    rows = {}
    for i, line in enumerate(lines):
        row, size, contestant, times = line.split("|")
        before, middle, after = marks[3 * i:3 * i + 3]
        each = ((after - middle) - (middle - before)) / int(times)
        rows.setdefault(row, (int(size), {}))[1][contestant] = each
    return rows


def agree(rows, others):
    """Whether two runs gave the same counts. The random numbers of private operations take a few instructions more
    or less."""
    pairs = [(counts[who], others[row][1][who]) for row, (_, counts) in rows.items() for who in counts]
    return rows.keys() == others.keys() and all(abs(a - b) <= 1e-4 * a for a, b in pairs)


def assembly_peers(name, row):
    for pattern, peers in ASSEMBLY[name]:
        if re.match(pattern, row):
            return peers
    return set()


def best(peers):
    return min(peers.values()) if peers else None


def target_of(name, what, row):
    for peer, pattern, target in TARGETS.get(name, ()):
        if peer == what and re.match(pattern, row):
            return target
    return None


def ratios(name, row, counts):
    """[(what, ratio, target or None)] of a row."""
    ours = counts[OURS]
    peers = {peer: count for peer, count in counts.items() if peer != OURS}
    assembly = assembly_peers(name, row)
    in_c = best({peer: count for peer, count in peers.items() if peer not in assembly})
    in_assembly = best({peer: count for peer, count in peers.items() if peer in assembly})
    is_number = "GMP" in peers
    found = []
    if in_c is not None:
        found.append(("C", in_c / ours))
    if in_assembly is not None and not is_number:
        found.append(("assembly", in_assembly / ours))
    found += [(peer, peers[peer] / ours) for peer in ("OpenSSL", "GMP", "GMP constant-time")
              if peer == "GMP" and is_number or target_of(name, peer, row)]
    return [(what, ratio, target_of(name, what, row)) for what, ratio in found]


def shown(count, size):
    return f"{count / size:.2f}" if size else f"{count:,.0f}"


def table(name, rows):
    lines = ["| task | unit | ours | peers, best first | ratio | target |  |", "|---|---|---|---|---|---|---|"]
    short = 0
    for row, (size, counts) in rows.items():
        assembly = assembly_peers(name, row)
        peers = ", ".join(
            f"{peer}{'*' if peer in assembly else ''} {shown(count, size)}" for peer, count in
            sorted(counts.items(), key=lambda item: item[1]) if peer != OURS)
        found = ratios(name, row, counts)
        # A ratio is rounded to the two decimals that targets have.
        is_short = any(target and round(ratio, 2) < target for _, ratio, target in found)
        has_target = any(target for _, _, target in found)
        short += is_short
        lines.append(f"| {row.replace('/', ', ')} | {UNIT_TEXT[size != 0]} | {shown(counts[OURS], size)} | {peers} | "
                     + ", ".join(f"{what} {ratio:.2f}" for what, ratio, _ in found) + " | "
                     + ", ".join(f"{what} {target}" for what, _, target in found if target) + " | "
                     + ("short" if is_short else "met" if has_target else "") + " |")
    return lines, short


def report(tables):
    lines = [
        "# Instructions on ARM",
        "",
        "Written by `make arm-bench`: instructions that QEMU's user emulation executes, counted by "
        "`bench/arm/count_plugin.cpp`, ours and those of the peers in one run of one program. Debian's "
        "packages for the processor are the peers. A task is done n times and 2n times, and the difference "
        "is counted; a second run gave the same counts, to a ten-thousandth. The ratio is the peer's count over ours: "
        "that of the best peer in C, that of the best in assembly (marked by *), and GMP's. Every result was "
        "compared with every peer's. Instructions are not time: caches, and what a load or a product "
        "waits for, do not count.",
        ""]
    for name, body in tables.items():
        lines += [f"## {TITLES[name]}", "", *body, ""]
    return "\n".join(lines)


def main(arguments):
    report_file, pattern = None, ""
    while arguments and arguments[0].startswith("--"):
        option, value = arguments[0], arguments[1]
        if option == "--report":
            report_file = value
        elif option == "--pattern":
            pattern = value
        arguments = arguments[2:]
    tables = {}
    failures = 0
    with tempfile.TemporaryDirectory() as folder:
        plugin = make_plugin(folder)
        for name, build in zip(arguments[::2], arguments[1::2]):
            rows = counts_of(name, build, plugin, pattern)
            if not agree(rows, counts_of(name, build, plugin, pattern)):
                sys.exit(f"{name}: a second run gave other counts")
            tables[name], short = table(name, rows)
            failures += short
            print(f"{TITLES[name]}: {len(rows)} tasks, {short} below their target")
            print("\n".join(tables[name]))
    if report_file:
        with open(report_file, "w", encoding="utf-8") as file:
            file.write(report(tables))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
