"""Runs the examples and the scripts of the tests by valgrind's memcheck: no read of memory that nothing has
written or that was freed, no block that nothing points to any more, and the same output as without.

    memcheck.py BUILD [--short] [--jobs N] [--valgrind PROGRAM] [TEST...]

The scripts are those that the tests of BUILD run, with what these tests expect. --short runs a few that use all
classes; TEST names others. A planted fault of each kind must be reported first. BUILD/memcheck
or BUILD/memcheck-short has the reports.
"""

import argparse
import concurrent.futures
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
SUPPRESSIONS = ROOT / "tests" / "memory" / "loader.supp"
REPORTED = 99
SHORT = ["host_script_example_tour", "rsa_script_rsa_crypt", "stream_script_crypt_stream"]
# Other tests than those of run_script.cmake: of examples, each with the host among its arguments.
EXAMPLES = ["cipher_file_examples", "rsa_file_examples", "stream_examples"]
FIXTURE = "host_register_fake"
# Of one test, in seconds. Memcheck takes about 30 times as long as the host.
TIMEOUT = 1800
# Examples that no test above runs, in the order in which they need each other's files.
OTHERS = [["random-bytes.js", "--output", "key", "32"],
          ["random-bytes.js", "--base64", "100"],
          ["seal-file.js", "--iterations", "20", "--key-file", "key", str(ROOT / "VERSION"), "sealed"],
          ["open-file.js", "--key-file", "key", "sealed", "opened"]]
SUMMARY = re.compile(r"ERROR SUMMARY: (\d+) errors")
COMMAND = re.compile(r"Command: (.*)")


class Checker:
    def __init__(self, build, folder, valgrind):
        self.valgrind = valgrind
        self.build = build.resolve()
        self.folder = self.build / folder
        self.host = self.build / "bin" / "mirolta-host"
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir()
        self.started = set()

    def wrapper(self, name, program):
        """A program that runs another by memcheck, and the folder of its reports."""
        reports = self.folder / "reports" / name
        reports.mkdir(parents=True)
        script = reports / "run"
        script.write_text(
            f"#!/bin/sh\nexec '{self.valgrind}' --error-exitcode={REPORTED} --leak-check=full "
            "--show-leak-kinds=definite --errors-for-leak-kinds=definite "
            f"--suppressions='{SUPPRESSIONS}' --log-file='{reports}/%p.log' '{program}' \"$@\"\n")
        script.chmod(0o755)
        return str(script), reports

    def complaints(self, reports):
        """What memcheck reports; a missing summary, of a program that was killed, is a complaint too."""
        logs = sorted(reports.glob("*.log"))
        texts = [log.read_text(errors="replace") for log in logs]
        for text in texts:
            self.started.update(COMMAND.findall(text)[:1])
        bad = [text for text in texts if SUMMARY.findall(text) != ["0"]]
        return len(logs), "\n".join(bad)

    def finish(self, name, reports, status, output):
        runs, complaints = self.complaints(reports)
        if runs == 0:
            complaints += "memcheck did not run\n"
        if status != 0:
            complaints += f"status {status}\n{output}"
        print(f"{name}: {runs} runs{', FAILED' if complaints else ''}", flush=True)
        if complaints:
            print(complaints, flush=True)
        return not complaints

    def command(self, name, words, environment=None, cwd=None):
        """Runs a command with memcheck in place of the host."""
        wrapper, reports = self.wrapper(name, self.host)
        words = [word.replace(str(self.host), wrapper) for word in words]
        try:
            result = subprocess.run(words, env={**os.environ, **(environment or {})}, cwd=cwd, timeout=TIMEOUT,
                                    stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        except subprocess.TimeoutExpired:
            return self.finish(name, reports, f"none after {TIMEOUT} s", "")
        return self.finish(name, reports, result.returncode, result.stdout.decode(errors="replace"))

    def aside(self, text):
        """The same path in a folder of this run, since the tests themselves may be running."""
        moved = re.sub(rf"{re.escape(str(self.build))}/tests/([a-z_]+/)", rf"{self.folder}/tests/\1", text)
        if moved != text:
            path = pathlib.Path(moved.split("=", 1)[-1])
            path.parent.mkdir(parents=True, exist_ok=True)
        return moved

    def test(self, row):
        properties = {p["name"]: p["value"] for p in row.get("properties", [])}
        environment = dict(self.aside(pair).split("=", 1) for pair in properties.get("ENVIRONMENT", []))
        return self.command(row["name"], [self.aside(word) for word in row["command"]], environment)

    def planted(self):
        passed = True
        for kind, text in ("read", "uninitialised value"), ("leak", "definitely lost in loss record"):
            wrapper, reports = self.wrapper(f"planted_{kind}", self.build / "tests" / "planted_fault")
            status = subprocess.run([wrapper, kind], stdout=subprocess.DEVNULL, check=False).returncode
            _, complaints = self.complaints(reports)
            if status != REPORTED or text not in complaints:
                print(f"a planted {kind} is not reported: status {status}\n{complaints}")
                passed = False
        return passed

    def transcript(self):
        """The examples of scripts/transcript.sh give the bytes that they give without memcheck."""
        script = str(ROOT / "scripts" / "transcript.sh")
        scratch = self.folder / "transcript"
        plain = subprocess.run(["sh", script, str(self.host), str(scratch)], stdout=subprocess.PIPE, check=False).stdout
        (self.folder / "transcript.plain").write_bytes(plain)
        return self.command("transcript", [
            "sh", "-c", 'sh "$1" "$2" "$3" >"$3.checked" && cmp "$3.plain" "$3.checked"',
            "sh", script, str(self.host), str(scratch)])

    def others(self):
        folder = self.folder / "others"
        folder.mkdir()
        registry = {"MIROLTA_REGISTRY": str(folder / "registry.reg")}
        results = [self.command(f"{words[0][:-3]}_{i}", [str(self.host), str(ROOT / "examples" / words[0]), *words[1:]],
                                registry, folder) for i, words in enumerate(OTHERS)]
        same = (folder / "opened").exists() and (folder / "opened").read_bytes() == (ROOT / "VERSION").read_bytes()
        if not same:
            print("open-file.js did not give the sealed file back")
        return all(results) and same

    def left_out(self):
        """The examples that no run above has started; shared.js is part of the others."""
        names = {path.name for path in (ROOT / "examples").glob("*.js")} - {"shared.js"}
        return sorted(name for name in names if not any(f"/examples/{name}" in line for line in self.started))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--short", action="store_true")
    parser.add_argument("--jobs", type=int, default=1)
    parser.add_argument("--valgrind", default="valgrind")
    parser.add_argument("tests", nargs="*")
    arguments = parser.parse_intermixed_args()
    checker = Checker(arguments.build, "memcheck-short" if arguments.short else "memcheck", arguments.valgrind)
    listing = subprocess.run(["ctest", "--test-dir", str(arguments.build), "--show-only=json-v1"],
                             capture_output=True, text=True, check=True).stdout
    rows = {row["name"]: row for row in json.loads(listing)["tests"]}
    wanted = arguments.tests or (SHORT if arguments.short else EXAMPLES + [
        name for name, row in rows.items()
        if any(word.endswith("/run_script.cmake") for word in row.get("command", []))])
    missing = [name for name in wanted + [FIXTURE] if name not in rows]
    if missing:
        sys.exit(f"there is no test {', '.join(missing)}")
    passed = checker.planted()
    whole = not arguments.short and not arguments.tests
    work = [lambda row=rows[name]: checker.test(row) for name in wanted]
    if not arguments.short:
        passed = checker.test(rows[FIXTURE]) and passed
    if whole:
        work = [checker.transcript, checker.others] + work
    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        results = [future.result() for future in [pool.submit(one) for one in work]]
    passed = all(results) and passed
    if whole and checker.left_out():
        print(f"no run of the examples {', '.join(checker.left_out())}")
        passed = False
    print(f"memcheck: {len(checker.started)} different command lines, {results.count(False)} of {len(work)} failed")
    return 0 if passed else 1


if __name__ == "__main__":
    sys.exit(main())
