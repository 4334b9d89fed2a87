"""What a user of MinGW does with an installation of the Windows builds; Wine runs the programs.

  windows_test.py SCRATCH

The module is registered in build/wine (scripts/wine-tests.sh registration). Debian's Wine runs 64-bit programs
only; those of 32 bits are linked.
"""
import os
import pathlib
import re
import shutil
import sys
import unittest

import consumer

SCRATCH = pathlib.Path(sys.argv[1])
PROCESSORS = {"x64": "x86_64", "x86": "i686"}


class WindowsInstallation(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.prefix = {}
        for name in PROCESSORS:
            prefix = consumer.new_folder(SCRATCH / name) / "moved"
            consumer.run("cmake", "--install", consumer.PROJECT / "build" / f"windows-{name}",
                         "--prefix", prefix.with_name("installed"))
            os.rename(prefix.with_name("installed"), prefix)
            cls.prefix[name] = prefix

    def check_program(self, name, program):
        """The program loads the DLL beside it, and the registered one."""
        imports = consumer.run(f"{PROCESSORS[name]}-w64-mingw32-objdump", "-p", program)
        self.assertTrue(re.search(r"DLL Name: Mirolta\.dll\n.*\n.* DllGetClassObject\n", imports), program)
        if name != "x64":
            return
        shutil.copy(self.prefix[name] / "bin/Mirolta.dll", program.parent)
        for arguments in ([], ["registered"]):
            self.assertEqual(
                consumer.run_by_wine(program, *arguments, prefix=consumer.PROJECT / "build/wine"), consumer.DIGEST)

    def test_files(self):
        for prefix in self.prefix.values():
            files = {str(path.relative_to(prefix)) for path in prefix.rglob("*") if path.is_file()}
            self.assertLessEqual({"bin/Mirolta.dll", "bin/Mirolta.manifest", "lib/libMirolta.dll.a",
                                  "include/mirolta.h", "lib/pkgconfig/mirolta.pc",
                                  "lib/cmake/Mirolta/MiroltaConfig.cmake"}, files)
            self.assertEqual([name for name in files if re.search(r"\.so|mirolta-host", name)], [])
            consumer.Installation(prefix, "lib").check_names_no_folder_of(consumer.PROJECT)

    def test_find_package(self):
        for name, processor in PROCESSORS.items():
            folder = consumer.write_project(SCRATCH / name / "find_package", "find_package")
            toolchain = consumer.PROJECT / f"cmake/mingw-{processor}.cmake"
            build = consumer.build_project(
                folder, "--toolchain", toolchain, f"-DCMAKE_PREFIX_PATH={self.prefix[name]}",
                "-DCMAKE_EXE_LINKER_FLAGS=-static")
            self.check_program(name, build / "hash.exe")

    def test_pkg_config(self):
        for name, processor in PROCESSORS.items():
            folder = consumer.write_project(SCRATCH / name / "pkg-config", "pkg-config")
            env = consumer.environment(PKG_CONFIG_LIBDIR=self.prefix[name] / "lib/pkgconfig")
            flags = consumer.run("pkg-config", "--cflags", "--libs", "mirolta", env=env).split()
            consumer.run(f"{processor}-w64-mingw32-g++", "-std=c++17", "hash.cpp", "-o", "hash.exe",
                         "-static-libgcc", "-static-libstdc++", *flags, cwd=folder)
            self.check_program(name, folder / "hash.exe")

    def test_compiler_line(self):
        folder = consumer.write_project(SCRATCH / "line", "Windows")
        consumer.run("sh", "-eu", "-c", consumer.PAGE["Windows"]["sh"], cwd=folder,
                     env=consumer.environment(PREFIX=self.prefix["x64"]))
        self.check_program("x64", folder / "hash.exe")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
