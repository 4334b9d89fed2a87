"""One mutant: build what it touches, run tests until one fails."""

import re
import time

from . import sample
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
# So many of the folder's tests are built one by one.
ALONE = 4


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


class Trial:
    """Tries mutants in one tree.

    baseline: the digests of the unchanged sources' objects; kills: {(source, test): how often the
    test has found a mutant of the source}.
    """

    def __init__(self, tree, baseline, kills):
        self.tree = tree
        self.digests = baseline
        self.kills = kills

    def run(self, mutant):
        """run tries a mutant and returns a row of the results; the source is as before afterwards.

        status is found, timed out, survived, equivalent (the objects are the same), compiler (a static
        assertion finds it) or invalid (it does not compile); by names the test; cpu and wall are in
        seconds. Raises OSError if the source cannot be read or written.
        """
        with open(self.tree.path(mutant.path), encoding="utf-8", newline="") as file:
            original = file.read()
        row = {"key": mutant.key, "folder": mutant.folder, "operator": mutant.operator,
               "line": mutant.line, "old": mutant.old, "new": mutant.new}
        cpu, wall = cpu_seconds(), time.monotonic()
        try:
            self.tree.write(mutant.path, (original[:mutant.start] + mutant.new +
                                          original[mutant.end:]).encode())
            row["status"], row["by"] = self.outcome(mutant)
        finally:
            self.tree.write(mutant.path, original.encode())
        row["cpu"] = round(cpu_seconds() - cpu, 2)
        row["wall"] = round(time.monotonic() - wall, 2)
        return row

    def outcome(self, mutant):
        """outcome returns (status, by) of a mutant that is written into the tree."""
        failure, changed = self.compile(mutant)
        if failure:
            return failure
        if not changed:
            return "equivalent", ""
        built = set()
        for alone, stage in self.plan(mutant):
            for index, test in enumerate(stage):
                ahead = [test] if index < alone else stage[index:]
                targets = {t for other in ahead for t in other.targets} | self.needed_first(test)
                if test.targets - built or self.needed_first(test) - built:
                    done, output = self.tree.ninja(sorted(targets), keep_cache=False)
                    if not done:
                        return self.refused(output)
                    built |= targets
                outcome = self.run_test(test)
                if outcome != "passed":
                    return ("found" if outcome == "failed" else "timed out"), test.name
        return "survived", ""

    def run_test(self, test):
        """run_test returns what Tree.run does, within limits by what the test took before.

        A failure counts if it repeats: some tests depend on the order of threads.
        """
        limits = (5 + 5 * test.cpu, 30 + 20 * test.wall)
        outcome = self.tree.run(test, *limits)
        return self.tree.run(test, *limits) if outcome == "failed" else outcome

    def plan(self, mutant):
        """plan returns pairs (how many are built one by one, tests) in the order of the runs.

        The likeliest to fail come first. Programs whose own sources include the changed one take long
        to build: but for a quick two they come after all others, and only those of the folder, of the
        layers above and the harnesses.
        """
        own, *rest = stages(mutant.folder, self.tree.tests)
        dirty = {t.name: self.to_compile(mutant, t) for t in own + [t for s in rest for t in s]}
        tests = [t for stage in rest for t in stage]
        near = tuple("tests/" + name for name in ABOVE[mutant.folder]) + ("fuzz",)
        quick = self.by_promise(mutant, [t for t in own if 0 < dirty[t.name] <= 2])[:2]
        slow = [t for t in own + tests if dirty[t.name] and t not in quick and t.folder.startswith(near)]
        clean = [[t for t in stage if not dirty[t.name]] for stage in [own] + rest]
        return [(ALONE, self.by_promise(mutant, clean[0])), (len(quick), quick)] + \
            [(0, self.by_promise(mutant, stage)) for stage in clean[1:]] + \
            [(len(slow), sorted(slow, key=lambda t: dirty[t.name]))]

    def by_promise(self, mutant, tests):
        """by_promise sorts tests: most kills first, then likeness, then the quickest."""
        return sorted(tests, key=lambda t: (-self.kills.get((mutant.path, t.name), 0),
                                            -likeness(mutant, t), t.cpu))

    def to_compile(self, mutant, test):
        """to_compile returns how many objects of the test's own programs the mutant's source is in."""
        programs = {t.rsplit("/", 1)[-1] for t in test.targets}
        owners = [re.search(r"(?:^|/)CMakeFiles/([^/]+)\.dir/", name)
                  for name in self.tree.objects.get(mutant.path, [])]
        return sum(1 for owner in owners if owner and owner.group(1) in programs)

    def needed_first(self, test):
        """needed_first returns the targets of the test's fixtures."""
        return {target for other in self.tree.fixtures(test) for target in other.targets}

    def compile(self, mutant):
        """compile builds the module's objects that the mutant's source is in, until one differs.

        Returns ((status, by) if it does not compile, else None; whether an object differs from the
        baseline).
        """
        names = [n for n in self.tree.objects.get(mutant.path, []) if self.of_module(n)]
        own = [n for n in names if self.tree.object_source[n] == mutant.path]
        same_folder = [n for n in names if self.tree.object_source[n].startswith(mutant.folder)]
        # A few first: what changes one object need not be built everywhere before the tests.
        near = [n for n in same_folder if n not in own] + [n for n in names if n not in same_folder]
        for group in (own[:1], own[1:], near[:3], near[3:12], near[12:]):
            if not group:
                continue
            done, output = self.tree.ninja(group, keep_cache=False)
            if not done:
                return self.refused(output), False
            if any(self.tree.digest(n) != self.digests[n] for n in group):
                return None, True
        return None, False

    def of_module(self, name):
        """of_module says whether an object is made of a source of sample.FOLDERS."""
        return sample.folder_of(self.tree.object_source[name]) is not None

    @staticmethod
    def refused(output):
        """refused returns (status, by) of a build that failed, from its output."""
        if "static assertion failed" in output:
            return "compiler", "static_assert"
        return "invalid", next((l for l in output.splitlines() if "error" in l), "")[-200:]
