#!/usr/bin/env python3
"""mutate.py FOLDER: mutation testing. Tries small changes of the sources and lists those that no test finds.

The sources are copied to FOLDER/tree-N, one copy for each worker, and changed and built there only.
Results are stored in FOLDER/results.jsonl, so that an interrupted run can be continued.

  --mutants N   number of mutants that compile (default 300)
  --seed N      another sample
  --filter P    only sources whose path starts with P
  --retry       try the survivors again, after tests were written
  --workers N   mutants at a time (default: the number of processors)
  --budget S    a mutant that is not found in S seconds of processor time has survived (default 60;
                unlimited with --retry)
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
from mutation.trial import Kills, Trial  # noqa: E402
from mutation.windows_tree import WindowsTree, WindowsTrial  # noqa: E402

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
ANSWERS = os.path.join(ROOT, "tests", "trust", "mutation_survivors.txt")
GOAL = 95.0
BUDGET = 60.0


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
        """kills returns Kills of the mutants found so far."""
        counts = Kills()
        for key, row in self.rows.items():
            if row["status"] in ("found", "timed out"):
                counts.add(key.split("|")[0], row["by"])
        return counts


def prepare(tree, jobs):
    """prepare builds everything; tests of programs that do not build are left out."""
    if not os.path.exists(os.path.join(tree.build, "build.ninja")):
        done, output = tree.configure()
        if not done:
            say(output)
            return False
    tree.ninja([], jobs, keep_going=True)
    tree.read_objects()
    tree.read_tests()
    return True


def work(tree, budget, kills, jobs, rows):
    """work is a worker: takes lists of mutants until there is none."""
    trial = (WindowsTrial if isinstance(tree, WindowsTree) else Trial)(tree, kills, budget)
    while True:
        mutants = jobs.get()
        if mutants is None:
            break
        for mutant in mutants:
            row = trial.run(mutant)
            if row["status"] in ("found", "timed out"):
                kills.add(mutant.path, row["by"])
            rows.put(row)
        tree.note_times(trial.measured)
    rows.put(None)


def try_all(trees, budget, mutants, results):
    """try_all hands the mutants of a source to one worker together, who learns which test finds them."""
    jobs, rows = multiprocessing.Queue(), multiprocessing.Queue()
    sources = {}
    for mutant in mutants:
        sources.setdefault(mutant.path, []).append(mutant)
    # Sources before headers, which make a worker compile more.
    for group in sorted(sources.values(), key=lambda g: (not g[0].path.endswith(".cpp"),
                                                         g[0].folder in sample.WIDE, g[0].path)):
        jobs.put(group)
    workers = []
    for tree in trees:
        jobs.put(None)
        worker = multiprocessing.Process(target=work,
                                         args=(tree, budget, results.kills(), jobs, rows))
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
    """crew makes the copies and their builds; one will do for the few sources of the Windows build."""
    if windows:
        trees = [WindowsTree(os.path.join(given.folder, "tree-windows"))]
    else:
        trees = [Tree(os.path.join(given.folder, f"tree-{n + 1}")) for n in range(given.workers)]
    for tree in trees:
        tree.copy(root, files)
        if not prepare(tree, given.workers):
            sys.exit(2)
    return trees


def options():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder")
    parser.add_argument("--mutants", type=int, default=300)
    parser.add_argument("--seed", default="1")
    parser.add_argument("--filter", default="")
    parser.add_argument("--retry", action="store_true")
    parser.add_argument("--budget", type=float)
    parser.add_argument("--stay", action="store_true")
    parser.add_argument("--report", action="store_true")
    parser.add_argument("--workers", type=int, default=os.cpu_count() or 1)
    return parser.parse_args()


def main():
    given = options()
    os.makedirs(given.folder, exist_ok=True)
    results = Results(os.path.join(given.folder, "results.jsonl"))
    budget = given.budget or (float("inf") if given.retry else BUDGET)
    crews = {}

    def try_in_crews(mutants):
        for windows in (False, True):
            some = [m for m in mutants if (m.folder in sample.WINDOWS) == windows]
            if not some:
                continue
            if windows not in crews:
                crews[windows] = crew(given, windows, root, files)
            try_all(crews[windows], budget, some, results)

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
