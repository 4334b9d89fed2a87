"""The project within another one: what configuring says. package_test.py builds it.

  subproject_test.py SCRATCH
"""
import json
import pathlib
import shutil
import sys
import unittest

import consumer

SCRATCH = pathlib.Path(sys.argv[1])


class Subproject(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = consumer.write_project(SCRATCH, "add_subdirectory")
        shutil.copy(consumer.PROJECT / "tests/consumers/parent/CMakeLists.txt", cls.folder)
        cls.build = cls.folder / "build"
        consumer.run("cmake", "-S", cls.folder, "-B", cls.build, f"-DMIROLTA={consumer.PROJECT}")
        commands = json.loads((cls.build / "compile_commands.json").read_text("utf-8"))
        cls.commands = {pathlib.Path(row["file"]).name: row["command"] for row in commands}

    def test_parent_keeps_build_type(self):
        cache = (self.build / "CMakeCache.txt").read_text("utf-8")
        self.assertIn("CMAKE_BUILD_TYPE:STRING=\n", cache)

    def test_parent_keeps_its_language_and_warnings(self):
        own = self.commands["hash.cpp"]
        self.assertIn(" -std=gnu++20 ", own)
        self.assertIn(" -Werror", own)
        self.assertNotIn(" -Wconversion", own)

    def test_parent_sees_the_public_headers_only(self):
        folders = [word for word in self.commands["hash.cpp"].split() if word.startswith("-I")]
        self.assertEqual(folders, [f"-I{consumer.PROJECT}/include"])

    def test_library_keeps_its_language_and_warnings(self):
        own = self.commands["hash_object.cpp"]
        self.assertIn(" -std=c++20 ", own)
        self.assertIn(" -fPIC ", own)
        self.assertNotIn("-Werror", own)
        self.assertGreater(len(self.commands), 100)

    def test_nothing_is_installed(self):
        prefix = consumer.new_folder(self.folder / "prefix")
        consumer.run("cmake", "--install", self.build, "--prefix", prefix)
        self.assertEqual(list(prefix.iterdir()), [])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
