#!/usr/bin/env python3
"""mutate.py FOLDER: mutation testing. Tries small changes of the sources and lists those that no test finds.

The sources are copied to FOLDER/tree-N, one copy for each worker, and changed and built there only.
Results are stored in FOLDER/results.jsonl, so that an interrupted run can be continued.

  --mutants N   number of mutants that compile (default 300)
  --seed N      another sample
  --filter P    only sources whose path starts with P
  --retry       try the survivors again, after tests were written
  --workers N   mutants at a time (default: the number of processors)
  --stay        use the copy of the previous run, whatever the sources are now
  --report      only print the table of what has been tried
"""

import argparse
import json
import multiprocessing
import os
import sys
import time

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from mutation import answers, report, sample  # noqa: E402
from mutation.tree import Tree, tracked_files  # noqa: E402
from mutation.trial import Trial, sees  # noqa: E402
from mutation.windows_tree import WindowsTree  # noqa: E402

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
ANSWERS = os.path.join(ROOT, "tests", "trust", "mutation_survivors.txt")
GOAL = 95.0


def say(*words):
    print(*words, flush=True)


class Results:
    """The rows of all runs, the last one of a mutant counts."""

    def __init__(self, path):
        self.path = path
        self.rows = {}
        if os.path.exists(path):
            with open(path, encoding="utf-8") as file:
                for line in file:
                    row = json.loads(line)
                    self.rows[row["key"]] = row

    def add(self, row):
        self.rows[row["key"]] = row
        with open(self.path, "a", encoding="utf-8") as file:
            file.write(json.dumps(row) + "\n")

    def kills(self):
        """kills counts how often a test has found a mutant of a source."""
        counts = {}
        for key, row in self.rows.items():
            if row["status"] in ("found", "timed out"):
                pair = (key.split("|")[0], row["by"])
                counts[pair] = counts.get(pair, 0) + 1
        return counts


def prepare(tree, jobs, folders):
    """prepare builds what the tests need that see the folders; programs that do not build are left out."""
    done, output = tree.configure()
    if not done:
        say(output)
        return False
    tests = [t for t in tree.read_tests() if any(sees(folder, t) for folder in folders)]
    all_of_them = len(tests) == len(tree.tests)
    tree.tests = tests
    done, output = tree.ninja([] if all_of_them else sorted({n for t in tests for n in t.targets}),
                              jobs, keep_going=True)
    tree.read_objects()
    if not done:
        for test in list(tree.tests):
            if not tree.ninja(sorted(test.targets), jobs)[0]:
                say(f"left out: {test.name} does not build")
                tree.tests.remove(test)
    return bool(tree.tests)


def measure(tree, known):
    """measure runs every test once, unless the same sources have been measured before."""
    digest = tree.sources_digest()
    measured = {}
    if os.path.exists(known):
        with open(known, encoding="utf-8") as file:
            measured = json.load(file)
        if measured.pop("sources") != digest:
            measured = {}
    for test in tree.tests:
        if test.name in measured:
            continue
        if test.measure(tree) == "passed":
            measured[test.name] = (test.cpu, test.wall)
        else:
            say(f"left out: {test.name} fails on the unchanged sources")
    with open(known, "w", encoding="utf-8") as file:
        json.dump(dict(measured, sources=digest), file)
    return measured


def work(tree, folders, measured, kills, jobs, rows):
    """work is a worker: takes lists of mutants until there is none."""
    if not tree.tests and not prepare(tree, 1, folders):
        rows.put(None)
        return
    tree.tests = [t for t in tree.tests if t.name in measured]
    for test in tree.tests:
        test.cpu, test.wall = measured[test.name]
    trial = Trial(tree, tree.digests(), kills)
    while True:
        mutants = jobs.get()
        if mutants is None:
            break
        for mutant in mutants:
            row = trial.run(mutant)
            if row["status"] in ("found", "timed out"):
                pair = (mutant.path, row["by"])
                kills[pair] = kills.get(pair, 0) + 1
            rows.put(row)
    rows.put(None)


class Crew:
    """Copies of the sources with the same build, for the mutants of some folders."""

    def __init__(self, trees, known):
        self.trees = trees
        self.known = known
        self.folders = set()
        self.measured = {}

    def try_all(self, mutants, results):
        folders = {mutant.folder for mutant in mutants}
        if not folders <= self.folders:
            self.folders |= folders
            if not prepare(self.trees[0], len(self.trees), self.folders):
                sys.exit(2)
            self.measured = measure(self.trees[0], self.known)
            for tree in self.trees[1:]:
                tree.tests = []
        try_all(self.trees, self.folders, self.measured, mutants, results)


def try_all(trees, folders, measured, mutants, results):
    """try_all hands the mutants of a source to one worker together: it is built once for all then."""
    jobs, rows = multiprocessing.Queue(), multiprocessing.Queue()
    sources = {}
    for mutant in mutants:
        sources.setdefault(mutant.path, []).append(mutant)
    # Last those that make a worker build everything.
    for group in sorted(sources.values(),
                        key=lambda g: (g[0].folder in sample.WIDE, g[0].folder, g[0].path)):
        for first in range(0, len(group), 6):
            jobs.put(group[first:first + 6])
    workers = []
    for tree in trees:
        jobs.put(None)
        worker = multiprocessing.Process(target=work,
                                         args=(tree, folders, measured, results.kills(), jobs, rows))
        worker.start()
        workers.append(worker)
    running, count, start = len(workers), 0, time.monotonic()
    by_key = {m.key: m for m in mutants}
    while running:
        row = rows.get()
        if row is None:
            running -= 1
            continue
        results.add(row)
        count += 1
        mutant = by_key[row["key"]]
        say(f"{count}/{len(mutants)} {(time.monotonic() - start) / 60:.1f} min  {row['status']:10} "
            f"{mutant.path}:{mutant.line} {mutant.operator} {sample.squeezed(mutant.old)[:30]} -> "
            f"{sample.squeezed(mutant.new)[:30]}  {row['by'][:40]}  {row['cpu']} s")
    for worker in workers:
        worker.join()


def chosen(order, quotas, results):
    """chosen returns what is still to be tried so that every folder has its number."""
    todo = []
    for folder, quota in quotas.items():
        for mutant in order.get(folder, []):
            if quota == 0:
                break
            row = results.rows.get(mutant.key)
            if row is None:
                todo.append(mutant)
            elif row["status"] in ("invalid", "compiler"):
                continue
            quota -= 1
    return todo


def crew(given, windows, root, files):
    """crew makes the copies; one will do for the few sources of the Windows build."""
    if windows:
        trees = [WindowsTree(os.path.join(given.folder, "tree-windows"))]
    else:
        trees = [Tree(os.path.join(given.folder, f"tree-{n + 1}")) for n in range(given.workers)]
    for tree in trees:
        tree.copy(root, files)
    return Crew(trees, os.path.join(given.folder, "tests-windows.json" if windows else "tests.json"))


def options():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder")
    parser.add_argument("--mutants", type=int, default=300)
    parser.add_argument("--seed", default="1")
    parser.add_argument("--filter", default="")
    parser.add_argument("--retry", action="store_true")
    parser.add_argument("--stay", action="store_true")
    parser.add_argument("--report", action="store_true")
    parser.add_argument("--workers", type=int, default=os.cpu_count() or 1)
    return parser.parse_args()


def main():
    given = options()
    os.makedirs(given.folder, exist_ok=True)
    results = Results(os.path.join(given.folder, "results.jsonl"))
    crews = {}

    def try_in_crews(mutants):
        for windows in (False, True):
            some = [m for m in mutants if (m.folder in sample.WINDOWS) == windows]
            if not some:
                continue
            if windows not in crews:
                crews[windows] = crew(given, windows, root, files)
            crews[windows].try_all(some, results)

    files = tracked_files(ROOT)
    root = ROOT
    if not given.report:
        # All have the same sources, whatever is edited meanwhile.
        originals = Tree(os.path.join(given.folder, "sources"))
        if not given.stay:
            originals.copy(ROOT, files)
        root, files = originals.folder, originals.files()
    texts = sample.sources(root, [p for p in files if p.startswith(given.filter)])
    everything = sample.all_mutants(texts)
    by_key = {m.key: m for m in everything}
    given_answers = answers.read(ANSWERS)
    say(f"{len(everything)} possible mutants in {len(texts)} sources")
    if given.retry:
        _, survivors, _ = report.classify(results.rows, by_key, given_answers)
        try_in_crews(survivors)
    elif not given.report:
        order = sample.drawn(everything, given.seed)
        quotas = sample.quotas(texts, given.mutants)
        while todo := chosen(order, quotas, results):
            try_in_crews(todo)
    counts, survivors, _ = report.classify(results.rows, by_key, given_answers)
    table, score = report.text(counts, survivors, results.rows)
    say(table)
    if not given.filter:
        for answer in answers.stale(given_answers, everything):
            say(f"an answer fits nothing: {answer[0]}: {answer[1]}")
    return 0 if score >= GOAL else 1


if __name__ == "__main__":
    sys.exit(main())
