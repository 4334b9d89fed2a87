"""What a user does with a source archive, where there is neither git nor apt-get and the folder's name has
blanks and letters beyond ASCII: builds and installs, moves the installation, and builds programs with it and
with the sources within another project. Nothing is optimised, which the tests need not wait for, and what the
projects would compile in the same way again is compiled once.

  package_test.py SCRATCH
"""
import os
import pathlib
import platform
import re
import shutil
import sys
import tarfile
import unittest

import consumer

SCRATCH = pathlib.Path(sys.argv[1]).resolve()
LIBDIR = pathlib.Path(f"lib/{platform.machine()}-linux-gnu")
QUICKLY = ("-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0")
C_PROGRAM = """#include <mirolta.h>
#include <stdio.h>
int main(void) {
  BSTR text = SysAllocString(u"abc");
  printf("%u\\n", (unsigned)SysStringLen(text));
  SysFreeString(text);
  return 0;
}
"""
C_PROJECT = """cmake_minimum_required(VERSION 3.25)
project(Embedding LANGUAGES C)
find_package(Mirolta 1.0 REQUIRED)
add_executable(length length.c)
target_link_libraries(length PRIVATE Mirolta::Mirolta)
"""


def compiler_options(build, sources):
    """The options of every target that a build by make compiles: the folder of its objects -> text."""
    names = {str(build): "BUILD", str(sources): "SOURCES"}
    found = {}
    for file in build.rglob("flags.make"):
        # make's escapes
        text = file.read_text("utf-8").replace("\\", "").replace('"', "")
        for name in sorted(names, key=len, reverse=True):
            text = text.replace(name, names[name])
        text = re.sub(r"(?m)^# Custom options: .*?(?=CMakeFiles/)", "", text)
        found[file.parent.relative_to(build)] = text
    return found


class Objects:
    """The object files of a build by make, for others that compile the same sources with the same options."""

    def __init__(self, build, sources):
        self.build = build
        self.options = compiler_options(build, sources)

    def move_to(self, folder):
        os.rename(self.build, folder)
        self.build = folder

    def copy_to(self, build, sources):
        """AssertionError if the other build compiles otherwise."""
        options = compiler_options(build, sources)
        assert len(options) > 10, options
        for target, text in options.items():
            assert text == self.options[target], f"{target}:\n{text}\n{self.options[target]}"
            for path in (self.build / target).rglob("*.o"):
                copied = build / target / path.relative_to(self.build / target)
                copied.parent.mkdir(parents=True, exist_ok=True)
                shutil.copyfile(path, copied)


class SourceArchive(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.root = consumer.new_folder(SCRATCH / "Büro und Ärger")
        cls.work = consumer.new_folder(cls.root / "work")
        path = consumer.write_path_without(SCRATCH / "commands", "git.*", "apt.*", "dpkg.*", "sudo")
        cls.env = consumer.environment(PATH=path, CMAKE_BUILD_PARALLEL_LEVEL=os.cpu_count())
        cls.archive, name = consumer.pack_sources(cls.root)
        with tarfile.open(cls.archive) as archive:
            archive.extractall(cls.root)
        cls.sources = cls.root / name
        cls.configure_by_make()
        cls.install()

    @classmethod
    def configure_by_make(cls):
        """The first half of `make build`: nothing has to be installed."""
        consumer.run("make", "build/native/build.ninja", cwd=cls.sources, env=cls.env)
        shutil.rmtree(cls.sources / "build")

    @classmethod
    def install(cls):
        """Builds and installs, and takes away the build and the sources."""
        build, stage = cls.sources / "build" / "der Bau", cls.root / "stage"
        consumer.run("cmake", "-S", cls.sources, "-B", build, "-G", "Unix Makefiles", *QUICKLY,
                     "-DCMAKE_INSTALL_PREFIX=/usr", f"-DCMAKE_INSTALL_LIBDIR={LIBDIR}", env=cls.env)
        consumer.run("cmake", "--build", build, env=cls.env)
        said = consumer.run(build / "bin/mirolta-host", "--check",
                            env=consumer.environment(MIROLTA_REGISTRY=cls.root / "none.reg"))
        assert " 0 failed" in said, said
        consumer.run("cmake", "--install", build, env={**cls.env, "DESTDIR": str(stage)})
        moved = consumer.new_folder(cls.root / "später") / "mirolta 1"
        os.rename(stage / "usr", moved)
        assert not any(stage.iterdir()), list(stage.iterdir())
        cls.tree = consumer.Installation(moved, LIBDIR)
        cls.objects = Objects(build, cls.sources)
        cls.objects.move_to(cls.root / "objects")
        os.rename(cls.sources, cls.root / "mirolta")
        cls.built_from = (cls.sources, build)
        cls.sources = cls.root / "mirolta"

    def test_installation(self):
        self.tree.check_names_no_folder_of(*self.built_from)
        self.tree.check_linking()
        self.tree.check_versions(self.work)

    def test_host(self):
        self.tree.check_host(self.work)

    def test_find_package(self):
        self.tree.check_find_package(self.work)

    def test_find_package_without_cxx(self):
        folder = consumer.new_folder(self.work / "c")
        (folder / "length.c").write_text(C_PROGRAM, "utf-8")
        (folder / "CMakeLists.txt").write_text(C_PROJECT, "utf-8")
        build = consumer.build_project(folder, f"-DCMAKE_PREFIX_PATH={self.tree.prefix}")
        self.assertEqual(consumer.run(build / "length"), "3\n")

    def test_pkg_config(self):
        self.tree.check_pkg_config(self.work)

    def test_compiler_line(self):
        self.tree.check_commands(self.work, "A compiler line")

    def check_within(self, section, sources, library):
        """The project of the page builds the library in its folder `library` from `sources`."""
        folder = consumer.write_project(self.work / section, section)
        if section == "add_subdirectory":
            os.rename(self.sources, folder / "mirolta")
        else:
            shutil.copy(self.archive, folder)
        build = folder / "build"
        consumer.run("cmake", "-S", folder, "-B", build, "-G", "Unix Makefiles", *QUICKLY, env=self.env)
        self.objects.copy_to(folder / library, folder / sources)
        said = consumer.run("cmake", "--build", build, env=self.env)
        compiled = re.findall(r"Building CXX object (.*)", said)
        self.assertEqual([name for name in compiled if "mirolta" in name], [])
        self.assertIn("Linking CXX shared library", said)
        module = list(build.rglob(f"libMirolta.so.{consumer.MAJOR}"))
        self.assertEqual(len(module), 1)
        consumer.exercise(build / "hash", consumer.Installation(
            module[0].parents[1], "lib", host=self.tree.host).register, self.work)

    def test_add_subdirectory(self):
        self.check_within("add_subdirectory", "mirolta", "build/mirolta")

    def test_fetch_content(self):
        self.check_within("FetchContent", "build/_deps/mirolta-src", "build/_deps/mirolta-build")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
