"""One mutant: build what it touches, run tests until one fails."""

import os
import re
import time

from . import sample
from .graph import Graph
from .shadow import Shadow, recover
from .tree import cpu_seconds

# Tests by distance from a folder: its own, then those of the layers above, then everything.
ABOVE = {
    "platform/seam": ["platform", "bignum", "rsa"],
    "include/mirolta": ["platform"],
    "platform/portable": ["platform"],
    "platform/runtime": ["platform"],
    "platform/windows": ["windows"],
    "automation": ["automation", "hash", "cipher", "streams", "module"],
    "hash": ["hash", "streams", "module"],
    "cipher": ["cipher", "streams", "module"],
    "bignum": ["bignum", "rsa", "module"],
    "rsa": ["rsa", "module"],
    "streams": ["streams", "module"],
    "module": ["module"],
    "host": ["host"]}
# Run after those, before the layers below.
LAST = ["tests/trust", "tests/host", "fuzz"]
# What one object takes to compile, and a program to link, in seconds.
COMPILE, LINK = 1.0, 0.1


def sees(folder, test):
    """sees says whether a Test may run code of a folder: only the host's tests run the host."""
    return folder != "host" or test.folder.startswith("tests/host") or \
        any(target.endswith("mirolta-host") for target in test.targets)


def stages(folder, tests):
    """stages returns lists of those tests that see the folder, in the order in which they are run.

    Raises KeyError for a folder that is not in ABOVE.
    """
    tests = [t for t in tests if sees(folder, t)]
    order = ["tests/" + name for name in ABOVE[folder]] + LAST
    out = []
    for name in order:
        stage = [t for t in tests if t.folder == name or t.folder.startswith(name + "/")]
        out.append(stage)
        tests = [t for t in tests if t not in stage]
    return [stage for stage in out + [tests] if stage]


def likeness(mutant, test):
    """likeness returns how many words the test's name shares with the source's path."""
    words = set(re.split(r"[_/.]", mutant.path)) - {"cpp", "h", "inc", "kernels", "engine", "object", "core"}
    named = set(re.split(r"[_.]", test.name)) - {"test", "fuzz", "script", "object"}
    return len(words & named)


class Kills:
    """How often a test has found a mutant of a source, and of a source in the same folder."""

    def __init__(self):
        self.counts = {}

    def add(self, path, test):
        """add counts a mutant of the source that the test found."""
        for place in (path, os.path.dirname(path)):
            self.counts[place, test] = self.counts.get((place, test), 0) + 1

    def weight(self, path, test):
        """weight returns what these counts say for the test being run early on a mutant of the source."""
        return 4 * self.counts.get((path, test), 0) + self.counts.get((os.path.dirname(path), test), 0)


class Trial:
    """Tries mutants in one tree, whose build is done.

    kills: the Kills of the trials before; budget: the seconds of processor time after which a mutant
    counts as survived. measured is {test: (processor time, time)}
    of the tests that ran here.
    """

    def __init__(self, tree, kills, budget):
        self.tree = tree
        self.graph = Graph(tree.build)
        recover(tree, self.graph)
        tree.tests = [t for t in tree.tests if all(map(self.is_built, self.binaries(t)))]
        self.kills = kills
        self.measured = {}
        self.budget = budget
        self.failing = set()

    def run(self, mutant):
        """run tries a mutant and returns a row of the results; the tree is as before afterwards.

        status is found, timed out, survived, equivalent (the objects are the same), compiler (a static
        assertion finds it) or invalid (it does not compile); by names the test, or tells how many
        tests a survivor has left when the budget is spent; cpu and wall are in seconds. Raises OSError
        if the source cannot be read or written.
        """
        with open(self.tree.path(mutant.path), encoding="utf-8", newline="") as file:
            original = file.read()
        row = {"key": mutant.key, "folder": mutant.folder, "operator": mutant.operator,
               "line": mutant.line, "old": mutant.old, "new": mutant.new}
        cpu, wall = cpu_seconds(), time.monotonic()
        shadow = Shadow(self.tree, self.graph)
        self.aside = 0.0
        try:
            self.tree.write(mutant.path, (original[:mutant.start] + mutant.new +
                                          original[mutant.end:]).encode())
            row["status"], row["by"] = self.outcome(mutant, shadow, cpu)
        finally:
            shadow.restore()
            self.tree.write(mutant.path, original.encode())
        row["cpu"] = round(cpu_seconds() - cpu - self.aside, 2)
        row["wall"] = round(time.monotonic() - wall, 2)
        return row

    def outcome(self, mutant, shadow, start):
        """outcome returns (status, by) of a mutant that is written into the tree.

        Only what the tests run is made: the objects of the next test's programs, and these programs. A
        test is not run if all its objects are as before. start: cpu_seconds() when the trial began.
        """
        affected = set(self.tree.objects.get(mutant.path, []))
        own = [n for n in affected if self.tree.object_source[n] == mutant.path]
        refused = shadow.compile(own)
        if refused is not None:
            return self.refused(refused)
        waiting = {t.name: t for t in self.tree.tests if sees(mutant.folder, t) and t.name not in self.failing}
        needed = {t.name: set().union(*map(self.graph.objects, self.binaries(t))) & affected
                  for t in waiting.values()}
        waiting = {name: t for name, t in waiting.items() if needed[name]}
        distance = {t.name: n for n, stage in enumerate(stages(mutant.folder, waiting.values())) for t in stage}
        while waiting:
            test = max(waiting.values(),
                       key=lambda t: self.promise(mutant, t, distance[t.name], needed[t.name] - set(shadow.changed)))
            refused = shadow.compile(needed[test.name])
            if refused is not None:
                return self.refused(refused)
            del waiting[test.name]
            if any(shadow.changed[n] for n in needed[test.name]):
                refused = shadow.place(self.binaries(test))
                if refused is not None:
                    return self.refused(refused)
                outcome = self.run_test(test, shadow)
                if outcome != "passed":
                    return ("found" if outcome == "failed" else "timed out"), test.name
            if cpu_seconds() - start - self.aside > self.budget and waiting:
                return "survived", f"{len(waiting)} tests left"
        refused = shadow.compile({n for n in affected if self.of_module(n)})
        if refused is not None:
            return self.refused(refused)
        same = not any(out for name, out in shadow.changed.items() if self.of_module(name))
        return ("equivalent" if same else "survived"), ""

    def is_built(self, binary):
        """is_built says whether the build has a binary."""
        return os.path.exists(os.path.join(self.tree.build, binary))

    def binaries(self, test):
        """binaries returns the programs and libraries that a test and its fixtures run."""
        targets = set(test.targets).union(*(t.targets for t in self.tree.fixtures(test)))
        return sorted(set().union(*map(self.graph.binaries, targets)))

    def promise(self, mutant, test, distance, objects):
        """promise says how likely a test finds the mutant for each second that it takes.

        distance is that of its stage, objects are those to be compiled first.
        """
        known = self.kills.weight(mutant.path, test.name)
        chance = (1 + known + 2 * likeness(mutant, test)) / 3 ** distance
        seconds = self.measured.get(test.name, (test.cpu, test.wall))[0]
        return chance / (LINK * len(self.binaries(test)) + COMPILE * len(objects) + seconds)

    def run_test(self, test, shadow):
        """run_test returns what Tree.run does, but "passed" for a test that fails without the mutant too.

        A failure counts if it repeats: some tests depend on the order of threads. The limits are by
        what the test takes on the unchanged sources, once that is known.
        """
        before, wall_before = cpu_seconds(), time.monotonic()
        outcome = self.tree.run(test, *self.limits(test))
        if outcome == "passed":
            self.measured.setdefault(test.name, (cpu_seconds() - before, time.monotonic() - wall_before))
            return outcome
        repeat = outcome == "failed"
        if test.name not in self.measured:
            if not self.passes_unchanged(test, shadow):
                return "passed"
            repeat = True
        return self.tree.run(test, *self.limits(test)) if repeat else outcome

    def limits(self, test):
        """limits returns the seconds of processor time and of time that the test may take."""
        cpu, wall = self.measured.get(test.name, (5.0, 20.0))
        return 5 + 5 * cpu, 30 + 20 * wall

    def passes_unchanged(self, test, shadow):
        """passes_unchanged measures the test on unchanged sources; one that fails is not run again.

        Its programs are linked as those of the mutant are.
        """
        before, binaries = cpu_seconds(), sorted(shadow.placed)
        shadow.place(binaries, unchanged=True)
        if test.measure(self.tree) == "passed":
            self.measured[test.name] = (test.cpu, test.wall)
        else:
            self.failing.add(test.name)
        shadow.place(binaries)
        self.aside += cpu_seconds() - before
        return test.name in self.measured

    def of_module(self, name):
        """of_module says whether an object is made of a source of sample.FOLDERS."""
        return sample.folder_of(self.tree.object_source[name]) is not None

    @staticmethod
    def refused(output):
        """refused returns (status, by) of a build that failed, from its output."""
        if "static assertion failed" in output:
            return "compiler", "static_assert"
        return "invalid", next((l for l in output.splitlines() if "error" in l), "")[-200:]
