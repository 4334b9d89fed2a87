"""Runs scripts on the native host and on the platform's script host, which Wine has (cscript)."""
import difflib
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys

# The code page in which programs of the platform write to a pipe in the locale of the tests.
CODE_PAGE = "cp437"
WINE_LIMIT = int(os.environ.get("MIROLTA_WINE_LIMIT", "900"))
NATIVE_LIMIT = 120
# The oldest Wine of the systems that the tests run on. Later ones may have what this one lacks.
MARKED_FOR = 8

ENVIRONMENT = {**os.environ, "TZ": "UTC", "LC_ALL": "C.UTF-8", "WINEDEBUG": "-all",
               "WINEDLLOVERRIDES": "mscoree=;mshtml="}
ENVIRONMENT.pop("DISPLAY", None)


class Run:
    """A script to run: its arguments, what is in its environment, and the folder it runs in."""

    def __init__(self, name, script, folder, arguments=(), environment=None):
        self.name = name
        self.script = pathlib.Path(script).resolve()
        self.folder = pathlib.Path(folder)
        self.arguments = list(arguments)
        self.environment = dict(environment or {})
        self.status = None
        self.output = ""
        self.errors = ""


def new_folder(path):
    """An empty folder."""
    path = pathlib.Path(path)
    shutil.rmtree(path, ignore_errors=True)
    path.mkdir(parents=True)
    return path


def run_natively(host, runs):
    """Sets status, output and errors of each."""
    for run in runs:
        done = subprocess.run([os.path.abspath(host), str(run.script), *run.arguments], cwd=run.folder,
                              env={**ENVIRONMENT, **run.environment}, stdin=subprocess.DEVNULL,
                              capture_output=True, timeout=NATIVE_LIMIT, check=False)
        run.status = done.returncode
        run.output = done.stdout.decode("utf-8", "replace")
        run.errors = done.stderr.decode("utf-8", "replace")


def windows_name(path):
    return "Z:" + str(pathlib.Path(path).resolve()).replace("/", "\\")


def quoted(word):
    """A word of a batch file."""
    if '"' in word:
        raise ValueError(f"no argument with a quote is possible here: {word}")
    return '"' + word.replace("%", "%%") + '"'


def run_by_wine(scratch, runs):
    """Sets status, output and errors of each. All run in one batch file, one after the other: a start
    of Wine takes longer than most scripts. A script that did not end has the status None."""
    prefix = pathlib.Path(ENVIRONMENT["WINEPREFIX"])
    if not (prefix / "system.reg").exists():
        prefix.mkdir(parents=True, exist_ok=True)
        subprocess.run(["wineboot", "-i"], env=ENVIRONMENT, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL, check=True)
    results = new_folder(pathlib.Path(scratch) / "wine-results")
    lines = ["@echo off"]
    for number, run in enumerate(runs):
        lines += [f"set {name}={value}" for name, value in run.environment.items()]
        lines += [f'cd /d {quoted(windows_name(run.folder))}',
                  " ".join(["cscript //nologo", quoted(windows_name(run.script)),
                            *map(quoted, run.arguments),
                            f"<NUL >{quoted(windows_name(results / f'{number}.out'))}",
                            f"2>{quoted(windows_name(results / f'{number}.err'))}"]),
                  f"echo ended {number} %errorlevel%"]
        lines += [f"set {name}=" for name in run.environment]
    batch = results / "all.bat"
    batch.write_bytes("\r\n".join([*lines, ""]).encode())
    with open(results / "ended", "wb") as ended:
        process = subprocess.Popen(["wine", "cmd", "/c", windows_name(batch)], env=ENVIRONMENT,
                                   stdin=subprocess.DEVNULL, stdout=ended,
                                   stderr=subprocess.DEVNULL, start_new_session=True)
        try:
            process.wait(WINE_LIMIT)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            print(f"Wine did not end within {WINE_LIMIT} s", file=sys.stderr)
    statuses = {}
    for line in (results / "ended").read_text("latin-1").split("\n"):
        words = line.split()
        if len(words) == 3 and words[0] == "ended":
            statuses[int(words[1])] = int(words[2])
    for number, run in enumerate(runs):
        run.status = statuses.get(number)
        run.output = text_of(results / f"{number}.out")
        run.errors = text_of(results / f"{number}.err")


def wine_version():
    said = subprocess.run(["wine", "--version"], capture_output=True, text=True, check=True).stdout
    return int(re.match(r"wine-(\d+)", said)[1])


def text_of(path):
    if not path.exists():
        return ""
    return path.read_bytes().decode(CODE_PAGE).replace("\r\n", "\n")


class Report:
    """Counts what held and prints what did not."""

    def __init__(self):
        self.failures = 0

    def fail(self, name, text):
        self.failures += 1
        print(f"FAILED: {name}: {text}")

    def needless(self, name, text):
        """A mark of what Wine lacks, where it does not."""
        if wine_version() > MARKED_FOR:
            print(f"{name}: {text} (this is Wine {wine_version()}, the marks are for {MARKED_FOR})")
        else:
            self.fail(name, text)

    def same(self, name, what, got, expected):
        if got == expected:
            return True
        self.fail(name, f"{what}: other text")
        print(*difflib.unified_diff(expected.splitlines(), got.splitlines(), "expected", "got",
                                    lineterm=""), sep="\n")
        return False

    def end(self, summary):
        print(summary)
        sys.exit(1 if self.failures else 0)
