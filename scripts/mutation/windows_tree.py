"""A copy of the sources with the Windows build, whose tests Wine runs."""

import os
import subprocess

from .tree import CONFIGURE, Test, Tree
from .trial import Trial

# What the steps compare the Windows module with; kernels by what their tests leave out.
NATIVE = ["mirolta-definitions", "mirolta-host", "mirolta", "registry_listing",
          "type_library_listing", "invoke_listing", "value_parity", "hash_kernels_test",
          "aes_kernels_test", "des_kernels_test"]
# Steps of scripts/wine-tests.sh. The first registers the module for those after it.
FIRST = "registration"
STEPS = ["client", "units_automation", "units_hash", "units_cipher", "scripts", "type_library",
         "invoke", "parity", "units_bignum"]


class WindowsTree(Tree):
    """A Tree whose build is the Windows one; native is the folder of the native one beside it."""

    memory_kb = None  # Wine reserves addresses that it does not use

    def __init__(self, folder):
        super().__init__(folder)
        self.native = os.path.join(self.folder, "build", "native")
        self.build = os.path.join(self.folder, "build", "windows-x64")

    def configure(self):
        """configure runs CMake for both builds and builds what the steps need of the native one."""
        launcher = ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"] if self.has("ccache") else []
        common = ["cmake", "-G", "Ninja", "-S", self.folder] + launcher
        commands = [
            common + ["-B", self.native, "-DMIROLTA_WINE_TESTS=ON"] + CONFIGURE,
            ["nice", "-n", "5", "ninja", "-C", self.native] + NATIVE,
            common + ["-B", self.build, "-DCMAKE_BUILD_TYPE=MinSizeRel", "-DMIROLTA_TESTS=ON",
                      "-DCMAKE_TOOLCHAIN_FILE=" + self.path("cmake/mingw-x86_64.cmake"),
                      "-DMIROLTA_DEFINITIONS=" + os.path.join(self.native, "bin", "mirolta-definitions")]]
        for command in commands:
            done = subprocess.run(command, env=self.environment, capture_output=True, text=True)
            if done.returncode != 0:
                return False, done.stdout + done.stderr
        return True, ""

    def ninja(self, targets, jobs=1, keep_cache=True, keep_going=False):
        """ninja builds as Tree.ninja does; without targets all Windows tests."""
        return super().ninja(targets or ["windows-tests"], jobs, keep_cache, keep_going)

    def read_tests(self):
        """read_tests fills and returns tests: the steps of scripts/wine-tests.sh."""
        def step(name, **properties):
            command = [self.path("scripts/wine-tests.sh"), name, self.native]
            return Test(name, command, "tests/windows", {"windows-tests"},
                        dict(properties, WORKING_DIRECTORY=self.build))

        self.tests = [step(FIRST, FIXTURES_SETUP=["module"])]
        self.tests += [step(name, FIXTURES_REQUIRED=["module"]) for name in STEPS]
        return self.tests


class WindowsTrial(Trial):
    """Tries mutants as Trial does, but builds all programs: each step of the tests uses several."""

    def __init__(self, tree, kills, budget):
        super().__init__(tree, kills, budget)
        self.baseline = tree.digests()
        tree.tests = [t for t in tree.tests if t.measure(tree) == "passed"]
        self.measured = {t.name: (t.cpu, t.wall) for t in tree.tests}

    def outcome(self, mutant, shadow, start):
        """outcome returns (status, by) of a mutant that is written into the tree."""
        names = [n for n in self.tree.objects.get(mutant.path, []) if self.of_module(n)]
        for targets in (names, []):
            done, output = self.tree.ninja(targets, keep_cache=False)
            if not done:
                return self.refused(output)
            if all(self.tree.digest(n) == self.baseline[n] for n in names):
                return "equivalent", ""
        for test in sorted(self.tree.tests, key=lambda t: -self.kills.weight(mutant.path, t.name)):
            outcome = self.run_test(test, shadow)
            if outcome != "passed":
                return ("found" if outcome == "failed" else "timed out"), test.name
        return "survived", ""
