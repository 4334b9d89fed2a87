"""What a user does with an installation of this build, which has been moved.

  installed_test.py BUILD PREFIX LIBDIR SCRATCH

PREFIX and LIBDIR are those that the build was configured with.
"""
import os
import pathlib
import re
import sys
import unittest

import consumer

BUILD, PREFIX, LIBDIR, SCRATCH = (pathlib.Path(argument) for argument in sys.argv[1:5])
# Component -> what it installs, as patterns that each have a file.
COMPONENTS = {
    "Runtime": [rf"{LIBDIR}/lib(Mirolta|mirolta-runtime)\.so\.[0-9.]+"],
    "Host": [r"bin/mirolta-host", r"share/man/man1/[^/]+\.1", r"share/mirolta/.+"],
    "Development": [r"include/mirolta\.h", r"include/mirolta(/.+|\.hpp)",
                    rf"{LIBDIR}/lib(Mirolta|mirolta-runtime)\.so",
                    rf"{LIBDIR}/cmake/Mirolta/Mirolta[A-Za-z-]+\.cmake",
                    rf"{LIBDIR}/pkgconfig/mirolta\.pc"],
    "Documentation": [r"share/doc/mirolta/LICENSE", r"share/doc/mirolta/(README|CHANGELOG|SECURITY|THIRD-PARTY)\.md",
                      r"share/doc/mirolta/examples/.+", r"share/doc/mirolta/docs/.+",
                      r"share/doc/mirolta/.+"],
}


def files_of(folder):
    return {str(path.relative_to(folder)) for path in folder.rglob("*")
            if path.is_symlink() or not path.is_dir()}


class InstalledTree(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        stage = consumer.new_folder(SCRATCH / "stage")
        consumer.run("cmake", "--install", BUILD, env=consumer.environment(DESTDIR=stage))
        staged = stage / PREFIX.relative_to("/")
        cls.outside = [name for name in files_of(stage) if not (stage / name).is_relative_to(staged)]
        moved = consumer.new_folder(SCRATCH / "moved") / "mirolta"
        os.rename(staged, moved)
        cls.tree = consumer.Installation(moved, LIBDIR)
        cls.work = consumer.new_folder(SCRATCH / "work")

    def test_is_whole_below_the_prefix(self):
        self.assertEqual(self.outside, [])

    def test_is_the_sum_of_its_components(self):
        installed = set()
        for component, patterns in COMPONENTS.items():
            folder = consumer.new_folder(SCRATCH / "component")
            consumer.run("cmake", "--install", BUILD, "--prefix", folder, "--component", component)
            files = files_of(folder)
            for pattern in patterns:
                self.assertTrue([name for name in files if re.fullmatch(pattern, name)],
                                f"{component} has no {pattern}: {files}")
            stray = [name for name in files
                     if not any(re.fullmatch(pattern, name) for pattern in patterns)]
            self.assertEqual(stray, [], component)
            self.assertEqual(files & installed, set(), component)
            installed |= files
        self.assertEqual(files_of(self.tree.prefix), installed)

    def test_names_neither_sources_nor_build(self):
        self.tree.check_names_no_folder_of(BUILD, consumer.PROJECT)

    def test_linking(self):
        self.tree.check_linking()

    def test_host(self):
        self.tree.check_host(self.work)

    def test_find_package(self):
        self.tree.check_find_package(self.work)

    def test_versions(self):
        self.tree.check_versions(self.work)

    def test_pkg_config(self):
        self.tree.check_commands(self.work, "pkg-config")

    def test_compiler_line(self):
        self.tree.check_commands(self.work, "A compiler line")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
