"""How the package finds the libraries: each case in a process of its own, with a copy of both."""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import sysconfig
import tempfile
import unittest

PACKAGE = pathlib.Path(os.environ["PYTHONPATH"]) / "mirolta"
MODULE = pathlib.Path(os.environ["MIROLTA_LIBRARY"])

# Creates an object and prints where its module lies, and the source of its errors.
CREATE = """
import mirolta
hash = mirolta.create("Vardeko.crypt.HashObject")
try:
    hash.HashFinalize()
except mirolta.AutomationError as error:
    source = error.source
for line in open("/proc/self/maps"):
    if "libMirolta" in line:
        print(line.split()[-1], "|", source)
        break
"""
REGISTER = """
import ctypes, sys
sys.exit(ctypes.CDLL(sys.argv[1]).DllRegisterServer())
"""


class LibraryTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name).resolve()
        self.registry = self.folder / "registry.reg"

    def copy_libraries(self, to, module_name=None):
        """Copies both libraries by all their names; returns the module's file."""
        to.mkdir(parents=True, exist_ok=True)
        for file in MODULE.parent.glob("libmirolta-runtime.so*"):
            shutil.copyfile(file, to / file.name)
        name = module_name or "libMirolta.so.1"
        shutil.copyfile(MODULE, to / name)
        return to / name

    def copy_package(self, to):
        shutil.copytree(PACKAGE, to / "mirolta", ignore=shutil.ignore_patterns("__pycache__"))
        return to

    def run_python(self, code, package, *arguments, library=None):
        environment = {name: value for name, value in os.environ.items()
                       if name not in ("MIROLTA_LIBRARY", "PYTHONPATH", "LD_LIBRARY_PATH")}
        environment.update(PYTHONPATH=str(package), MIROLTA_REGISTRY=str(self.registry))
        if library is not None:
            environment["MIROLTA_LIBRARY"] = str(library)
        run = subprocess.run([sys.executable, "-B", "-c", code, *map(str, arguments)],
                             env=environment, cwd=self.folder, capture_output=True, text=True,
                             timeout=60)
        return run.stdout.strip(), run.stderr.strip()

    def register(self, module):
        self.assertEqual(self.run_python(REGISTER, self.folder, module), ("", ""))

    def expect_module(self, package, module, source, library=None):
        output, errors = self.run_python(CREATE, package, library=library)
        self.assertEqual((output, errors), (f"{module} | {source}", ""))

    UNREGISTERED = "Vardeko.crypt.HashObject"
    REGISTERED = "Vardeko HashObject Class"

    def test_the_variable_names_the_module(self):
        module = self.copy_libraries(self.folder / "anywhere", "other-name libMirolta.so")
        output, errors = self.run_python(CREATE, PACKAGE.parent, library=module)
        self.assertEqual(errors, "")
        self.assertTrue(output.endswith(f"libMirolta.so | {self.UNREGISTERED}"), output)

    def test_beside_the_package(self):
        package = self.copy_package(self.folder / "site")
        module = self.copy_libraries(package / "mirolta", "libMirolta.so")
        self.expect_module(package, module, self.UNREGISTERED)

    def test_in_the_library_folders_of_the_prefix(self):
        for number, (site, libraries) in enumerate([
                ("lib/python3/dist-packages", "lib"), ("lib/python3.11/site-packages", "lib64"),
                ("lib/python3.11/site-packages", None)]):
            with self.subTest(site=site, libraries=libraries):
                prefix = self.folder / f"prefix {number}"
                package = self.copy_package(prefix / site)
                if libraries is None:
                    triplet = sysconfig.get_config_var("MULTIARCH")
                    if not triplet:  # not a Debian-like system: there is no such folder
                        continue
                    libraries = f"lib/{triplet}"
                module = self.copy_libraries(prefix / libraries)
                output, errors = self.run_python(CREATE, package)
                self.assertEqual(errors, "")
                self.assertIn(f"{number}/{libraries}/libMirolta.so.1", output)

    def test_in_the_build_folder_of_the_source_tree(self):
        tree = self.folder / "source"
        package = self.copy_package(tree / "python")
        (tree / "python" / "pyproject.toml").touch()
        (tree / "VERSION").write_text("7.8.9\n")
        module = self.copy_libraries(tree / "build" / "check" / "lib", "libMirolta.so")
        self.expect_module(package, module, self.UNREGISTERED)
        version, errors = self.run_python("import mirolta; print(mirolta.__version__)", package)
        self.assertEqual((version, errors), ("7.8.9", ""))

    def test_a_registered_module_comes_before_one_that_is_found(self):
        registered = self.copy_libraries(self.folder / "registered")
        package = self.copy_package(self.folder / "site")
        found = self.copy_libraries(package / "mirolta")
        self.register(registered)
        code = CREATE.replace("break", "").replace("print(", "if '/registered/' in line: print(")
        output, errors = self.run_python(code, package)
        self.assertEqual(errors, "")
        self.assertIn(f"{registered} | {self.REGISTERED}", output)
        # The variable comes before both; the source of errors is then still the registered one.
        output, errors = self.run_python(CREATE, package, library=found)
        self.assertEqual((output, errors), (f"{found} | {self.REGISTERED}", ""))

    def test_the_runtime_alone_creates_registered_classes(self):
        registered = self.copy_libraries(self.folder / "registered")
        package = self.copy_package(self.folder / "site")
        (self.copy_libraries(package / "mirolta")).unlink()
        self.register(registered)
        if self.loader_has_a_module():
            self.skipTest("the loader finds an installed libMirolta.so.1, which is loaded first")
        self.expect_module(package, registered, self.REGISTERED)

    def test_a_registered_module_that_is_gone_is_an_error(self):
        registered = self.copy_libraries(self.folder / "registered")
        self.register(registered)
        registered.unlink()
        package = self.copy_package(self.folder / "site")
        self.copy_libraries(package / "mirolta")
        output, errors = self.run_python(CREATE, package)
        self.assertEqual(output, "")
        self.assertIn("Vardeko.crypt.HashObject: The module of the class does not exist. "
                      "(CO_E_DLLNOTFOUND)", errors)

    def test_the_table_of_classes_is_that_of_the_registration(self):
        self.register(MODULE)
        code = """
from ctypes import byref
from mirolta import _classes, _texts
from mirolta._library import runtime
from mirolta._structures import GUID
for name, expected in _classes.CLASSES.items():
    for prog_id in (name, name + ".1"):
        found = GUID()
        assert runtime().CLSIDFromProgID(_texts.terminated(prog_id), byref(found)) == 0, prog_id
        assert str(found) == expected, (prog_id, str(found))
print(len(_classes.CLASSES))
"""
        output, errors = self.run_python(code, PACKAGE.parent, library=MODULE)
        self.assertEqual(errors, "")
        keys = re.findall(r"(?i)^\[HKEY_CLASSES_ROOT\\CLSID\\\{[^\\]*\}\]$",
                          self.registry.read_text("utf-8-sig"), re.MULTILINE)
        self.assertEqual(int(output), len(keys))

    def loader_has_a_module(self):
        run = subprocess.run([sys.executable, "-c", "import ctypes; ctypes.CDLL('libMirolta.so.1')"],
                             capture_output=True)
        return run.returncode == 0

    def test_nothing_is_found(self):
        code = """
import mirolta
try:
    mirolta.sha256()
except ImportError as error:
    print(type(error).__name__, error)
"""
        package = self.copy_package(self.folder / "site")
        output, errors = self.run_python(code, package, library="/nonexistent/libMirolta.so")
        self.assertEqual(errors, "")
        self.assertRegex(output, "^LibraryNotFoundError MIROLTA_LIBRARY names a file that cannot be "
                                 "loaded: .*/nonexistent/libMirolta.so")
        if self.loader_has_a_module():
            self.skipTest("the loader finds an installed libMirolta.so.1")
        output, errors = self.run_python(code, package)
        self.assertEqual(errors, "")
        self.assertRegex(output, "^LibraryNotFoundError libMirolta.so.1 was not found; set "
                                 "MIROLTA_LIBRARY to its file, or install it")

    def test_nothing_is_printed_when_the_interpreter_ends_with_objects(self):
        code = """
import io, sys, mirolta
hash = mirolta.create("Vardeko.crypt.HashObject")
number = mirolta.Number(5) + 1
sys.kept_longest = mirolta.CryptStream(io.BytesIO(), "aes", b"k" * 16)
digest = mirolta.DigestStream(io.BytesIO(b"abc"), reading="md5")
crypt = mirolta.CryptStream(io.BytesIO(), "aes", b"k" * 16)
crypt.write(b"abc")
class Cycle: pass
cycle = Cycle()
cycle.self, cycle.values = cycle, [hash, number, digest, crypt]
print("done")
"""
        self.assertEqual(self.run_python(code, PACKAGE.parent, library=MODULE), ("done", ""))

    def test_the_ways_of_windows_with_stand_ins(self):
        """What differs on Windows runs here with this system's runtime as its libraries."""
        code = """
import ctypes, decimal, inspect, io, os, pathlib, sys, sysconfig, threading, uuid
opened = []

class WinDLL(ctypes.CDLL):
    def __init__(self, name):
        opened.append(pathlib.PurePath(name).name)
        super().__init__(sys.argv[1] if name in ("ole32", "oleaut32") else name)

ctypes.WinDLL, ctypes.WINFUNCTYPE = WinDLL, ctypes.CFUNCTYPE
ctypes.FormatError = lambda status: f"text of {status}"
os.name = "nt"
import mirolta
os.name = "posix"
print(mirolta.sha256(b"abc").hexdigest()[:8], opened)
print(mirolta.AutomationError(0x80041234))

models = []
mirolta._library.runtime().CoInitializeEx = lambda reserved, model: models.append(model)
def work():
    mirolta.sha256(), mirolta.sha256()
for flags in (None, 0):
    if flags is not None:
        sys.coinit_flags = flags
    thread = threading.Thread(target=work)
    thread.start()
    thread.join()
print(models)
"""
        package = self.copy_package(self.folder / "site")
        module = self.copy_libraries(package / "mirolta", "Mirolta.dll")
        output, errors = self.run_python(code, package, module)
        self.assertEqual(errors, "")
        self.assertEqual(output.splitlines(), [
            "ba7816bf ['Mirolta.dll', 'ole32', 'oleaut32']",
            "text of -2147216844 (0x80041234)", "[2, 0]"])


if __name__ == "__main__":
    unittest.main()
