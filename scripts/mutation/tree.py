"""A copy of the sources with a build of its own, where mutants are tried."""

import hashlib
import json
import os
import re
import resource
import signal
import subprocess
import time

CONFIGURE = [
    # Compiled as by make build, whose objects are in the compiler's cache.
    "-DMIROLTA_TESTS=ON", "-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_COMPILE_WARNING_AS_ERROR=ON",
    "-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld",
    # A program need not be linked again when the inside of a shared library changes.
    "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON"]


def tracked_files(root):
    """tracked_files returns the paths below root, sorted, of the files that git knows or would add.

    Raises CalledProcessError if root is no work tree.
    """
    out = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "-z"], cwd=root,
                         capture_output=True, check=True).stdout.decode()
    return [p for p in sorted(set(out.split("\0"))) if p and os.path.isfile(os.path.join(root, p))]


def words_of(command, properties):
    """words_of returns what names the files that a test needs: its command, its environment, what it requires."""
    return command + properties.get("ENVIRONMENT", []) + properties.get("REQUIRED_FILES", [])


def named_targets(words, build, outputs):
    """named_targets returns those of outputs that the words of a test name by paths below build, and the module if
    the host, which loads it, is among them."""
    inside = re.compile(re.escape(build) + r"/([^\s;|]+)")
    targets = {target for word in words for target in inside.findall(word)} & outputs
    if any(target.endswith("mirolta-host") for target in targets):
        targets.add("lib/libMirolta.so")
    return targets


def cpu_seconds():
    """cpu_seconds returns the processor time of all children that have been waited for."""
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


class Tree:
    """A copy of the sources and its build folder. Builds and tests run at low priority.

    Paths given to it are relative to the copy. objects is {source: [object]}, tests a list of Test;
    both are empty until they are read. A file that cannot be read or written raises OSError.
    """

    memory_kb = 6 * 1024 * 1024  # what a test may have; None for all there is

    def __init__(self, folder):
        self.folder = os.path.abspath(folder)
        self.build = os.path.join(self.folder, "build", "native")
        self.environment = dict(os.environ, CCACHE_BASEDIR=self.folder, CCACHE_NOHASHDIR="1",
                                NINJA_STATUS="", GTEST_FAIL_FAST="1", GTEST_BRIEF="1")
        self.objects = {}
        self.tests = []

    def path(self, name):
        """path returns the absolute path of a file of the copy."""
        return os.path.join(self.folder, name)

    def copy(self, root, files):
        """copy makes the tree hold just these files of root; files that are equal are not written."""
        for name in files:
            with open(os.path.join(root, name), "rb") as file:
                content = file.read()
            self.write(name, content)
            mode = os.stat(os.path.join(root, name)).st_mode
            os.chmod(self.path(name), mode)
        for name in set(self.files()) - set(files):
            if os.path.exists(self.path(name)):
                os.remove(self.path(name))
        with open(self.path(".files"), "w", encoding="utf-8") as file:
            file.write("\n".join(files))

    def files(self):
        """files returns the paths that the last copy wrote, none before the first."""
        if not os.path.exists(self.path(".files")):
            return []
        with open(self.path(".files"), encoding="utf-8") as file:
            return [name for name in file.read().split("\n") if name]

    def write(self, name, content):
        """write makes a file hold the bytes, and leaves its time if it holds them already."""
        path = self.path(name)
        if os.path.exists(path):
            with open(path, "rb") as file:
                if file.read() == content:
                    return
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content)

    def configure(self):
        """configure runs CMake; returns (whether it succeeded, its output)."""
        launcher = ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"] if self.has("ccache") else []
        command = ["cmake", "-G", "Ninja", "-S", self.folder, "-B", self.build] + CONFIGURE + launcher
        done = subprocess.run(command, env=self.environment, capture_output=True, text=True)
        return done.returncode == 0, done.stdout + done.stderr

    @staticmethod
    def has(program):
        """has says whether PATH has the program."""
        return any(os.access(os.path.join(p, program), os.X_OK) for p in os.environ["PATH"].split(":"))

    def ninja(self, targets, jobs=1, keep_cache=True, keep_going=False):
        """ninja builds targets, all if there are none; returns (whether it succeeded, its output).

        keep_cache: results go to the compiler's cache, which those of mutants should not.
        """
        environment = dict(self.environment)
        if not keep_cache:
            environment["CCACHE_READONLY"] = "1"
        command = ["nice", "-n", "5", "ninja", "-C", self.build, "-j", str(jobs)]
        command += ["-k", "0"] if keep_going else []
        done = subprocess.run(command + list(targets), env=environment, capture_output=True, text=True)
        return done.returncode == 0, done.stdout + done.stderr

    def outputs(self):
        """outputs returns the names of all targets of the build."""
        out = subprocess.run(["ninja", "-C", self.build, "-t", "targets", "all"], capture_output=True,
                             text=True, env=self.environment).stdout
        return {line.rsplit(": ", 1)[0] for line in out.splitlines() if ": " in line}

    def read_objects(self):
        """read_objects fills objects and object_source from the dependencies of a build that is done."""
        out = subprocess.run(["ninja", "-C", self.build, "-t", "deps"], capture_output=True, text=True,
                             env=self.environment).stdout
        self.objects = {}
        self.object_source = {}
        name = None
        prefix = self.folder + os.sep
        for line in out.splitlines():
            if line and not line.startswith(" "):
                name = line.split(":")[0] if "#deps" in line else None
            elif name and line.strip():
                path = os.path.normpath(os.path.join(self.build, line.strip()))
                if path.startswith(prefix) and not path.startswith(self.build + os.sep):
                    path = path[len(prefix):]
                    self.objects.setdefault(path, []).append(name)
                    self.object_source.setdefault(name, path)

    def digest(self, name):
        """digest returns the SHA-256 of a file of the build in hexadecimal, None if it is missing."""
        path = os.path.join(self.build, name)
        if not os.path.exists(path):
            return None
        with open(path, "rb") as file:
            return hashlib.sha256(file.read()).hexdigest()

    def digests(self):
        """digests returns {object: digest} of all objects."""
        return {name: self.digest(name) for names in self.objects.values() for name in names}

    def read_tests(self):
        """read_tests fills and returns tests: those of ctest, each with what has to be built for it.

        Left out are those that read the text of the sources or another build, and clean-ups. Raises
        CalledProcessError if ctest fails.
        """
        outputs = self.outputs()
        # ctest gives no command for a program that is not there yet.
        missing = [path for path in (os.path.join(self.build, name) for name in outputs
                                     if re.fullmatch(r"(?:tests|fuzz|bin)/[^/.]+(?:\.program)?", name))
                   if not os.path.exists(path)]
        for path in missing:
            os.makedirs(os.path.dirname(path), exist_ok=True)
            os.close(os.open(path, os.O_CREAT | os.O_EXCL, 0o755))
        try:
            out = subprocess.run(["ctest", "--show-only=json-v1"], cwd=self.build,
                                 capture_output=True, text=True, check=True).stdout
        finally:
            for path in missing:
                os.remove(path)
        self.tests = []
        for entry in json.loads(out)["tests"]:
            properties = {p["name"]: p["value"] for p in entry["properties"]}
            targets = named_targets(words_of(entry["command"], properties), self.build, outputs)
            folder = os.path.relpath(properties["WORKING_DIRECTORY"], self.build)
            self.tests.append(Test(entry["name"], entry["command"], folder, targets, properties))
        # They look at the sources' text or at another build; or they undo what others need.
        self.tests = [t for t in self.tests if t.folder not in ("tests/layout", "tests/windows") and
                      "FIXTURES_CLEANUP" not in t.properties]
        times = self.times()
        for test in self.tests:
            test.cpu, test.wall = times.get(test.name, (test.cpu, test.wall))
        return self.tests

    def times(self):
        """times returns {test: (processor time, time)} of earlier runs, in seconds."""
        if not os.path.exists(self.path(".times")):
            return {}
        with open(self.path(".times"), encoding="utf-8") as file:
            return json.load(file)

    def note_times(self, times):
        """note_times keeps times for runs to come, which choose tests by them."""
        merged = dict(self.times(), **times)
        with open(self.path(".times"), "w", encoding="utf-8") as file:
            json.dump(merged, file)

    def fixtures(self, test):
        """fixtures returns the tests that set up what the test requires."""
        names = set(test.properties.get("FIXTURES_REQUIRED", []))
        return [t for t in self.tests if names & set(t.properties.get("FIXTURES_SETUP", []))]

    def run(self, test, cpu_limit, wall_limit):
        """run runs the test after its fixtures; returns "passed", "failed" or "timed out".

        The limits are in seconds, of processor time and of time.
        """
        for first in self.fixtures(test):
            outcome = self.run(first, cpu_limit, wall_limit)
            if outcome != "passed":
                return outcome
        environment = dict(self.environment)
        for setting in test.properties.get("ENVIRONMENT", []):
            name, value = setting.split("=", 1)
            environment[name] = value
        limits = f'ulimit -t {int(cpu_limit) + 1}; ulimit -v {self.memory_kb or "unlimited"}; ulimit -c 0; exec "$@"'
        process = subprocess.Popen(
            ["nice", "-n", "5", "sh", "-c", limits, "sh"] + test.command,
            cwd=test.properties["WORKING_DIRECTORY"], env=environment, stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
        try:
            status = process.wait(timeout=wall_limit)
        except subprocess.TimeoutExpired:
            # The group is the test's own session, which its unreaped leader keeps alive.
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            status = -signal.SIGXCPU
        if status in (-signal.SIGXCPU, 128 + signal.SIGXCPU, -signal.SIGKILL):
            return "timed out"
        return "passed" if status == 0 else "failed"


class Test:
    """A test as ctest names it; folder is that of its build, relative to it.

    cpu and wall are what it takes, in seconds: a guess until it has been measured.
    """

    def __init__(self, name, command, folder, targets, properties):
        self.name = name
        self.command = command
        self.folder = folder
        self.targets = targets
        self.properties = properties
        self.cpu = self.wall = float(properties.get("COST", 1))

    def measure(self, tree):
        """measure runs the test once, sets cpu and wall, and returns what Tree.run returns."""
        cpu, wall = cpu_seconds(), time.monotonic()
        outcome = tree.run(self, 120, 300)
        self.cpu, self.wall = cpu_seconds() - cpu, time.monotonic() - wall
        return outcome
