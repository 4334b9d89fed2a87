"""Runs a program once for each fault of each of its system calls, and judges what it does.

A fault may be reported: the exit status is not 0, a message names the file or what failed, each file is as it was or
as it is after an undisturbed run, and nothing else is left. Or it changes nothing. An interrupted call and a short
transfer change nothing. After a kill too each file is old or new, and the next run does its work.
"""
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
from dataclasses import dataclass, field

TIMEOUT = 20  # seconds, of one run
TRACING_REFUSED = 254
REPEATS = 253
SKIPPED = 77  # the exit status of a test that cannot run here
KILLED = 128 + 9

FILE_OPENING = ("EIO", "EACCES", "EMFILE", "ENOMEM", "EINTR", "ENOSPC")
FACTS = ("EIO", "EACCES", "ENOMEM")
CHANGE = ("EIO", "EACCES", "ENOSPC", "EROFS")
MEMORY = ("ENOMEM",)
NO_FAILURE = ()  # with right arguments, or none that a program can do anything about
# What each call can fail with. A call that is not here ends the run: it needs its row.
FAULTS = {
    "read": ("EIO", "EINTR", "short:1", "short:100"), "pread64": ("EIO", "EINTR", "short:1"), "readv": ("EIO", "EINTR"),
    "write": ("EIO", "ENOSPC", "EINTR", "short:1", "short:100"), "pwrite64": ("EIO", "ENOSPC", "EINTR", "short:1"),
    "writev": ("EIO", "ENOSPC", "EINTR"),
    "open": FILE_OPENING, "openat": FILE_OPENING, "close": ("done:EIO", "done:EINTR"), "dup": ("EMFILE",),
    "stat": FACTS, "lstat": FACTS, "fstat": FACTS, "newfstatat": FACTS, "statx": FACTS, "statfs": FACTS,
    "access": FACTS, "faccessat": FACTS, "faccessat2": FACTS, "readlink": FACTS, "readlinkat": FACTS,
    "getcwd": ("ENOMEM", "EACCES"), "chdir": FACTS, "getdents64": ("EIO",), "lseek": ("EIO",),
    "ftruncate": ("EIO", "ENOSPC", "EINTR"), "fsync": ("EIO", "ENOSPC", "EINTR"), "fdatasync": ("EIO", "EINTR"),
    "flock": ("ENOLCK", "EINTR"), "fcntl": ("EIO",),
    "fchmod": CHANGE, "fchown": CHANGE, "chmod": CHANGE, "utimensat": CHANGE, "mkdir": CHANGE, "rmdir": CHANGE,
    "link": CHANGE, "symlink": CHANGE, "unlink": CHANGE, "unlinkat": CHANGE,
    "rename": CHANGE, "renameat": CHANGE, "renameat2": CHANGE,
    "getrandom": ("EINTR", "ENOSYS", "short:1"), "poll": ("EINTR", "ENOMEM"), "ppoll": ("EINTR", "ENOMEM"),
    "brk": MEMORY, "mmap": MEMORY, "mremap": MEMORY, "munmap": MEMORY, "mprotect": MEMORY,
    "ioctl": NO_FAILURE,  # its failure is how a terminal is told from others
    "madvise": NO_FAILURE, "futex": NO_FAILURE, "rt_sigaction": NO_FAILURE, "rt_sigprocmask": NO_FAILURE,
    "umask": NO_FAILURE, "alarm": NO_FAILURE, "getpid": NO_FAILURE, "gettid": NO_FAILURE, "getuid": NO_FAILURE,
    "geteuid": NO_FAILURE, "exit_group": NO_FAILURE,
}
# Faults that last: a full disk, no free descriptor, no memory.
LASTING = {"write": ("ENOSPC",), "openat": ("EMFILE",), "brk": MEMORY, "mmap": MEMORY}
INVISIBLE = re.compile(r"EINTR|short:|done:EINTR")
CHANGING = ("write", "fsync", "fchmod", "mkdir", "openat", "link", "unlink", "unlinkat", "rename", "renameat",
            "renameat2", "ftruncate", "flock")
DELETING = ("unlink", "unlinkat", "rmdir")
# The system's loader does not repeat an interrupted call; it reports it.
LOADED = re.compile(r"\.so[.\d]*$|/gconv/|/locale/|^/proc/")
NUMBERED = re.compile(r"(/proc/|\.mirolta-)\d+")
LEFT_BY_KILL = re.compile(r"(^|/)\.mirolta-\d+-\d+$|\.new$")
# What no number of the table means.
UNTRUE = re.compile(r"no such file|file not found|invalid function", re.I)
NOT_JUDGED = re.compile(r"\.lock$")


@dataclass
class Scenario:
    """A program with its arguments, what it finds, and what its messages of failures name."""
    name: str
    words: list
    files: dict = field(default_factory=dict)  # name: bytes, or (bytes, mode), or a str, the text of a link
    environment: dict = field(default_factory=dict)
    stdin: bytes = b""
    has_terminal: bool = False  # standard input is one
    again: list = None  # what runs after a kill; the same if it is None
    messages: str = "not enough memory|[Nn]ot enough storage"
    warnings: str = None  # of failures that are reported and do not count for the exit status
    drafts: tuple = ()  # files that a failure may leave half written
    timeout: int = TIMEOUT  # seconds, of one run


@dataclass
class Run:
    """What a run left."""
    status: int
    output: bytes
    errors: bytes
    files: dict
    calls: list


class Folder:
    """Where the program runs."""

    def __init__(self, tracer):
        self.tracer = tracer
        memory = "/dev/shm"
        place = memory if os.access(memory, os.W_OK) else None
        self.temporary = tempfile.TemporaryDirectory(prefix="mirolta-faults-", dir=place)
        self.root = pathlib.Path(self.temporary.name)
        self.work = self.root / "work"
        self.list = self.root / "calls"

    def clear(self, files):
        """Makes the files, and nothing else."""
        shutil.rmtree(self.work, ignore_errors=True)
        self.work.mkdir()
        for name, content in files.items():
            path = self.work / name
            path.parent.mkdir(parents=True, exist_ok=True)
            if isinstance(content, str):
                path.symlink_to(content)
                continue
            content, mode = content if isinstance(content, tuple) else (content, 0o644)
            path.write_bytes(content)
            path.chmod(mode)

    def snapshot(self):
        """The files with their content and modes, the links with their texts."""
        found = {}
        for path in sorted(self.work.rglob("*")):
            name = str(path.relative_to(self.work))
            if NOT_JUDGED.search(name):
                continue
            if path.is_symlink():
                found[name] = ("link", os.readlink(path))
            elif path.is_dir():
                found[name] = ("folder",)
            else:
                found[name] = (path.stat().st_mode & 0o777, path.read_bytes())
        return found

    def run(self, scenario, fault=(), words=None):
        """Runs the program, traced unless `fault` is None."""
        words = [word.replace("FOLDER", str(self.work)) for word in words or scenario.words]
        environment = {"PATH": os.environ["PATH"], "HOME": str(self.work), "LC_ALL": "C.UTF-8", "TZ": "UTC",
                       "XDG_DATA_DIRS": str(self.work / "data"), "TMPDIR": str(self.work)}
        environment.update((key, value.replace("FOLDER", str(self.work)))
                           for key, value in scenario.environment.items())
        self.list.write_bytes(b"")
        if fault is not None:
            words = [self.tracer, str(self.list), *fault, "--", *words]
        terminal = None
        if scenario.has_terminal:
            terminal, inner = os.openpty()
            os.write(terminal, scenario.stdin)
            stdin = {"stdin": inner}
        else:
            stdin = {"input": scenario.stdin}
        try:
            done = subprocess.run(words, cwd=self.work, env=environment, capture_output=True, timeout=scenario.timeout,
                                  check=False, **stdin)
        except subprocess.TimeoutExpired:
            return None
        finally:
            if terminal is not None:
                os.close(terminal)
                os.close(inner)
        if fault is not None and done.returncode == TRACING_REFUSED:
            print("skipped: this process may not trace another")
            os._exit(SKIPPED)
        root = str(self.root).encode()
        calls = [tuple(NUMBERED.sub(r"\1NUMBER", line).split("\t")) for line in
                 self.list.read_text(errors="replace").replace(str(self.root), "").splitlines()]
        return Run(done.returncode, done.stdout.replace(root, b""), done.stderr.replace(root, b""), self.snapshot(),
                   calls)


class Judge:
    """Compares the runs of a scenario with an undisturbed one."""

    def __init__(self, folder, scenario):
        self.folder = folder
        self.scenario = scenario
        folder.clear(scenario.files)
        self.old = folder.snapshot()
        self.right = folder.run(scenario)
        if self.right is None or self.right.status != 0:
            raise SystemExit(f"{scenario.name}: the undisturbed run failed: {self.right}")
        self.calls = self.right.calls
        unknown = {call[0] for call in self.calls} - set(FAULTS)
        if unknown:
            raise SystemExit(f"{scenario.name}: what can these calls fail with? {sorted(unknown)}")
        # What may be found after a run that follows a kill: it started from the old files or the new ones.
        self.after_kill = []
        again = scenario.again or scenario.words
        for start in (scenario.words, None):
            folder.clear(scenario.files)
            if start is not None:
                folder.run(scenario, None, start)
            self.after_kill.append(self.result_of(folder.run(scenario, None, again)))

    @staticmethod
    def result_of(run):
        """What must be the same after a kill."""
        return run.status, {name: what for name, what in run.files.items() if not LEFT_BY_KILL.search(name)}

    def faults(self):
        """All faults: the number of a call with what becomes of it."""
        for number, call in enumerate(self.calls, 1):
            for fault in FAULTS[call[0]]:
                yield fault, str(number)
            for fault in LASTING.get(call[0], ()):
                yield fault, f"{number}+"
            if call[0] != "exit_group":
                yield "kill", str(number)

    def problem_of(self, fault, number):
        """What is wrong with the run that has the fault; None if nothing is."""
        name, file = self.calls[int(number.rstrip("+")) - 1]
        self.folder.clear(self.scenario.files)
        run = self.folder.run(self.scenario, (fault, number))
        if run is None:
            return "hangs"
        if run.status == REPEATS:
            return f"repeats calls that fail: {len(run.calls)}"
        if run.calls[:1] != [(name, file)]:
            return f"took another way before the fault: {run.calls}"
        if fault == "kill":
            return self.problem_of_kill(run)
        if run.status > 128:
            return f"ended by signal {run.status - 128}: {run.errors.decode(errors='replace')}"
        changed = self.files_changed(run, name in DELETING)
        is_right = run.status == self.right.status and run.output == self.right.output
        if is_right and run.files == self.right.files:
            return None
        if is_right and name in DELETING and changed is None:
            return None  # what cannot be deleted stays
        if is_right and changed is None and self.warns(run):
            return None
        is_output = name == "write" and file in ("descriptor 1", "descriptor 2")
        if INVISIBLE.fullmatch(fault.rstrip("0123456789")) and not LOADED.search(file) and not is_output:
            return f"is seen: status {run.status}, {self.words_of(run)}"
        if run.status in (0, self.right.status):
            return f"is not reported: {self.words_of(run)}{changed or ''}"
        if changed is not None:
            return changed
        if not is_output and not self.right.output.startswith(run.output):
            return f"wrong output: {run.output!r}"
        if is_output and file == "descriptor 2":
            return None
        if re.search(self.scenario.messages, run.errors.decode(errors="replace")) is None:
            return f"names neither file nor operation: {self.words_of(run)}"
        if UNTRUE.search(run.errors.decode(errors="replace")):
            return f"gives a reason that is not so: {self.words_of(run)}"
        return None

    def warns(self, run):
        """Whether the run reports a failure that does not count."""
        warnings = self.scenario.warnings
        return warnings is not None and re.search(warnings, run.errors.decode(errors="replace")) is not None

    @staticmethod
    def words_of(run):
        return f"{run.output.decode(errors='replace')!r}, {run.errors.decode(errors='replace')!r}"

    def files_changed(self, run, may_leave):
        """What is neither old nor new."""
        for name in sorted({*self.old, *self.right.files, *run.files}):
            now = run.files.get(name)
            if name in self.scenario.drafts or now in (self.old.get(name), self.right.files.get(name)):
                continue
            if name in self.old or name in self.right.files:
                return f"{name} is neither the old nor the new one: {str(now)[:200]}"
            if not (may_leave and LEFT_BY_KILL.search(name)):
                return f"{name} is left"
        return None

    def problem_of_kill(self, run):
        if run.status != KILLED:
            return f"was not killed: status {run.status}"
        changed = self.files_changed(run, True)
        if changed is not None:
            return changed
        again = self.folder.run(self.scenario, None, self.scenario.again)
        if again is None:
            return "the next run hangs"
        if self.result_of(again) not in self.after_kill:
            return f"the next run fails: {again.status}, {self.words_of(again)}"
        return None

    def is_of_short_form(self, fault, number):
        """One fault of a kind for each operation on a file of the scenario, and kills where files change."""
        at = int(number.rstrip("+")) - 1
        name, file = self.calls[at]
        if not file.startswith(("/work", "descriptor 0", "descriptor 1")) or self.calls.index((name, file)) != at:
            return False
        if fault == "kill":
            return name in CHANGING
        of_name = FAULTS[name]
        return number.endswith("+") or fault == of_name[0] or fault in ("EINTR", "short:1")

    def describe(self, fault, number):
        name, file = self.calls[int(number.rstrip("+")) - 1]
        return f"{self.scenario.name}: {fault} at call {number}, {name} {file}"
