"""Runs scripts on the host in a folder of their own and looks at what they leave there."""
import os
import pathlib
import resource
import signal
import subprocess
import tempfile
import time
import unittest

HOST = os.environ["MIROLTA_TEST_HOST"]
EXAMPLES = pathlib.Path(os.environ["MIROLTA_TEST_EXAMPLES"])
FAILING_CALLS = os.environ["MIROLTA_TEST_FAILING_CALLS"]
# Set if the host is built with a sanitizer.
SANITIZED = os.environ.get("MIROLTA_TEST_SANITIZED", "") not in ("", "OFF")

TIMEOUT = 60


def limit_files(most_bytes):
    """For preexec_fn: no file may grow beyond the limit, as on a full disk."""
    return lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (most_bytes, most_bytes))


class HostTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def write(self, name, content):
        (self.folder / name).write_bytes(content)

    def read(self, name):
        return (self.folder / name).read_bytes()

    def names(self):
        return sorted(os.listdir(self.folder))

    def start(self, words, env=None, **options):
        options.setdefault("stdout", subprocess.PIPE)
        options.setdefault("stderr", subprocess.PIPE)
        return subprocess.Popen([HOST, *map(str, words)], cwd=self.folder,
                                env={**os.environ, **(env or {})}, **options)

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
                                           (errors or b"").decode())

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
