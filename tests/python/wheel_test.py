"""The wheel: built twice with the same bytes, complete, unpacked into a new environment and imported."""
import base64
import csv
import hashlib
import io
import os
import pathlib
import subprocess
import tempfile
import unittest
import venv
import zipfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROGRAM = """
import mirolta
print(mirolta.__version__, mirolta.__file__, mirolta.sha256(b"abc").hexdigest()[:8])
"""


def build(folder, **changes):
    """Builds into a folder, after others of the process's habits were changed."""
    environment = {name: value for name, value in os.environ.items() if name != "PYTHONPATH"}
    environment.update(changes)
    subprocess.run([ROOT / "packaging" / "python.sh", folder / "out", folder / "work"], check=True,
                   env=environment, timeout=120)
    return next((folder / "out").glob("*.whl"))


class WheelTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.path = pathlib.Path(cls.folder.name).resolve()
        cls.wheel = build(cls.path / "first", SOURCE_DATE_EPOCH="1700000000")
        cls.version = (ROOT / "VERSION").read_text().strip()

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def test_its_name_has_the_version_and_no_machine(self):
        self.assertEqual(self.wheel.name, f"mirolta-{self.version}-py3-none-any.whl")

    def test_a_second_build_gives_the_same_bytes(self):
        before = os.umask(0o077)
        try:
            second = build(self.path / "a second place", SOURCE_DATE_EPOCH="1700000000",
                           TZ="Asia/Tokyo")
        finally:
            os.umask(before)
        self.assertEqual(second.read_bytes(), self.wheel.read_bytes())

    def test_it_has_every_file_of_the_package(self):
        names = set(zipfile.ZipFile(self.wheel).namelist())
        package = {f"mirolta/{file.name}" for file in (ROOT / "python" / "mirolta").iterdir()
                   if file.is_file()}
        information = {f"mirolta-{self.version}.dist-info/{name}"
                       for name in ("LICENSE", "METADATA", "RECORD", "WHEEL", "top_level.txt")}
        licenses = {name for name in names if name.endswith("/LICENSE")}
        self.assertEqual(len(licenses), 1)
        self.assertEqual({name for name in names - licenses},
                         {*package, "mirolta/VERSION", *information} -
                         {f"mirolta-{self.version}.dist-info/LICENSE"})
        self.assertIn("mirolta/py.typed", names)

    def test_its_record_has_the_digests(self):
        with zipfile.ZipFile(self.wheel) as wheel:
            record = wheel.read(f"mirolta-{self.version}.dist-info/RECORD").decode()
            rows = [row for row in csv.reader(io.StringIO(record)) if row[1]]
            self.assertGreater(len(rows), 20)
            for name, digest, size in rows:
                content = wheel.read(name)
                expected = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=")
                self.assertEqual((digest, size), (f"sha256={expected.decode()}", str(len(content))))

    def test_it_is_imported_in_a_new_environment(self):
        environment = self.path / "environment"
        venv.create(environment, symlinks=True)
        site, = environment.glob("lib/python*/site-packages")
        zipfile.ZipFile(self.wheel).extractall(site)
        run = subprocess.run(
            [environment / "bin" / "python", "-B", "-c", PROGRAM], capture_output=True, text=True,
            timeout=60, cwd=self.path,
            env={name: value for name, value in os.environ.items() if name != "PYTHONPATH"})
        self.assertEqual((run.stdout, run.stderr),
                         (f"{self.version} {site}/mirolta/__init__.py ba7816bf\n", ""))


if __name__ == "__main__":
    unittest.main()
