# One version for the whole project: the file VERSION, which goes into the package too.
import shutil
from pathlib import Path

from setuptools import setup
from setuptools.command.build_py import build_py

VERSION = Path(__file__).resolve().parent.parent / "VERSION"


class BuildWithVersion(build_py):
    def run(self):
        super().run()
        shutil.copyfile(VERSION, Path(self.build_lib) / "mirolta" / "VERSION")


setup(version=VERSION.read_text("utf-8").strip(), cmdclass={"build_py": BuildWithVersion})
