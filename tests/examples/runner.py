"""Runs scripts on the host in a folder of their own and looks at what they leave there."""
import os
import pathlib
import re
import resource
import signal
import stat
import subprocess
import tempfile
import time
import unittest

HOST = os.environ["MIROLTA_TEST_HOST"]
EXAMPLES = pathlib.Path(os.environ["MIROLTA_TEST_EXAMPLES"])
FAILING_CALLS = os.environ["MIROLTA_TEST_FAILING_CALLS"]
# Set if the host is built with a sanitizer.
SANITIZED = os.environ.get("MIROLTA_TEST_SANITIZED", "") not in ("", "OFF")

# Of one run of the host, in seconds; emulated ones need longer.
TIMEOUT = int(os.environ["MIROLTA_TEST_TIMEOUT"])
# What an instrumented host counts under a limit is not written: its files would be cut off. It
# complains in lines of this form.
NO_COUNTS = {"GCOV_PREFIX": "/dev/null"}
COUNT_COMPLAINT = re.compile(r"^(?:libgcov )?profiling[ :].*\n", re.MULTILINE)
SIGNALS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT)


def limit_files(most_bytes):
    """For preexec_fn: no file may grow beyond the limit, as on a full disk."""
    return lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (most_bytes, most_bytes))


class HostTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.addCleanup(self.expect_devices)

    def write(self, name, content):
        (self.folder / name).write_bytes(content)

    def read(self, name):
        return (self.folder / name).read_bytes()

    def device(self, name):
        """The path of a device such as /dev/full that a wrong program cannot spoil for others."""
        if os.geteuid() != 0:
            return f"/dev/{name}"
        path = self.folder / "devices" / name
        if not path.exists():
            path.parent.mkdir(exist_ok=True)
            try:
                os.mknod(path, stat.S_IFCHR | 0o666, os.stat(f"/dev/{name}").st_rdev)
                path.open("rb").close()
            except OSError as error:
                self.skipTest(f"no device can be made in {path.parent}: {error}")
        return f"devices/{name}"

    def expect_devices(self):
        """No device was replaced, and nothing was left beside them."""
        folder = self.folder / "devices"
        if folder.exists():
            self.assertEqual([p.name for p in folder.iterdir() if not p.is_char_device()], [])

    def names(self):
        return sorted(name for name in os.listdir(self.folder) if name != "devices")

    def start(self, words, env=None, preexec_fn=None, **options):
        options.setdefault("stdout", subprocess.PIPE)
        options.setdefault("stderr", subprocess.PIPE)

        def prepare():
            # A test that runs in the background may have been started with some of them ignored.
            for number in SIGNALS:
                signal.signal(number, signal.SIG_DFL)
            if preexec_fn is not None:
                preexec_fn()

        options["preexec_fn"] = prepare
        counts = NO_COUNTS if preexec_fn is not None else {}
        return subprocess.Popen([HOST, *map(str, words)], cwd=self.folder,
                                env={**os.environ, **counts, **(env or {})}, **options)

    def run_host(self, *words, fails=None, env=None, **options):
        """Runs a script; `fails` sets what failing_calls.cpp reads."""
        env = dict(env or {})
        if fails:
            # A sanitizer's runtime insists on being first unless told otherwise.
            env.update(fails, LD_PRELOAD=FAILING_CALLS, ASAN_OPTIONS=":".join(
                filter(None, [os.environ.get("ASAN_OPTIONS"), "verify_asan_link_order=0"])))
        process = self.start(words, env, **options)
        try:
            output, errors = process.communicate(timeout=TIMEOUT)
        except subprocess.TimeoutExpired:
            process.kill()
            process.communicate()
            self.fail(f"{words}: still running after {TIMEOUT} s")
        return subprocess.CompletedProcess(words, process.returncode, (output or b"").decode(),
                                           COUNT_COMPLAINT.sub("", (errors or b"").decode()))

    def run_script(self, text, *words, **options):
        with tempfile.NamedTemporaryFile("w", suffix=".js") as script:
            script.write(text)
            script.flush()
            return self.run_host(script.name, *words, **options)

    def wait_for(self, condition, process):
        """Waits until the condition holds while the process runs."""
        end = time.monotonic() + TIMEOUT
        while not condition():
            if process.poll() is not None or time.monotonic() > end:
                process.kill()
                self.fail(f"{process.args}: {process.communicate()}")
            time.sleep(0.01)

    def has_temporary(self):
        return any(name.startswith(".mirolta-") for name in self.names())

    def interrupt(self, process, number=signal.SIGINT):
        process.send_signal(number)
        output, errors = process.communicate(timeout=TIMEOUT)
        return output.decode(), errors.decode()
