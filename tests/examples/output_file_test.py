"""Files that scripts write: what is there stays until the new content is complete."""
import os
import shutil
import signal
import stat
import subprocess
import tempfile
import unittest

from runner import SIGNALS, HostTest, limit_files

OPEN = 'var out = WScript.OpenFile(WScript.Arguments(0), "w");\n'
BYTES = "new Uint8Array([110, 101, 119])"  # new
WRITE = OPEN + f"out.Write({BYTES});\n"


class OutputFileTest(HostTest):
    def setUp(self):
        super().setUp()
        self.write("out", b"old")

    def expect_old(self, names=("out",)):
        self.assertEqual(self.read("out"), b"old")
        self.assertEqual(self.names(), sorted(names))

    def expect_new(self, names=("out",)):
        self.assertEqual(self.read("out"), b"new")
        self.assertEqual(self.names(), sorted(names))

    def write_new(self, name="out"):
        run = self.run_script(WRITE + "out.Close();", name)
        self.assertEqual((run.returncode, run.stderr), (0, ""))


class WhenItTakesThePlace(OutputFileTest):
    def test_close(self):
        run = self.run_script(WRITE + 'WScript.Echo(WScript.OpenFile("out").Size, out.Size);'
                              'out.Position = 1; out.Write(new Uint8Array(1));'
                              'WScript.Echo(WScript.OpenFile("out").Read(9)[0]);'
                              'out.Close(); WScript.Echo(WScript.OpenFile("out").Read(9)[0]);',
                              "out")
        self.assertEqual(run.stdout, "3 3\n111\n110\n")
        self.assertEqual(self.read("out"), b"n\0w")
        self.assertEqual(self.names(), ["out"])

    def test_normal_end_without_close(self):
        self.assertEqual(self.run_script(WRITE, "out").returncode, 0)
        self.expect_new()

    def test_normal_end_after_the_script_dropped_the_stream(self):
        run = self.run_script(WRITE + 'out = null; WScript.Echo(WScript.OpenFile("out").Size);',
                              "out")
        self.assertEqual((run.returncode, run.stdout), (0, "3\n"))
        self.expect_new()

    def test_quit_with_0(self):
        self.assertEqual(self.run_script(WRITE + "WScript.Quit();", "out").returncode, 0)
        self.expect_new()

    def test_a_new_file(self):
        self.addCleanup(os.umask, os.umask(0o027))
        self.write_new("made")
        self.assertEqual(self.read("made"), b"new")
        self.assertEqual(stat.S_IMODE((self.folder / "made").stat().st_mode), 0o640)

    def test_another_file_of_many_that_cannot(self):
        run = self.run_script(WRITE + 'var big = WScript.OpenFile("big", "w");'
                              "try { big.Write(new Uint8Array(9999)); } catch (e) {}", "out",
                              preexec_fn=limit_files(4096))
        self.assertEqual((run.returncode, run.stderr), (1, "mirolta-host: big: Disk full\n"))
        self.expect_new()


class WhenTheOldOneStays(OutputFileTest):
    def test_discard(self):
        run = self.run_script(WRITE + "out.Discard(); out.Discard(); out.Close();", "out")
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        self.expect_old()

    def test_quit_with_another_status(self):
        self.assertEqual(self.run_script(WRITE + "WScript.Quit(3);", "out").returncode, 3)
        self.expect_old()

    def test_uncaught_error(self):
        run = self.run_script(WRITE + 'throw new Error(1, "stop");', "out")
        self.assertEqual(run.returncode, 1)
        self.expect_old()

    def test_failure_after_the_script_dropped_the_stream(self):
        run = self.run_script("(function () {" + WRITE + "})(); WScript.Quit(1);", "out")
        self.assertEqual(run.returncode, 1)
        self.expect_old()

    def test_output_that_cannot_be_printed(self):
        with open("/dev/full", "wb") as full:
            run = self.run_script(WRITE + "WScript.Echo(1); WScript.Quit(0);", "out", stdout=full)
        self.assertEqual(run.returncode, 1)
        self.expect_old()

    def test_signals(self):
        for number in SIGNALS:
            with self.subTest(number):
                with tempfile.NamedTemporaryFile("w", suffix=".js") as script:
                    script.write(WRITE + "out = null; WScript.Sleep(600000);")
                    script.flush()
                    process = self.start([script.name, "out"])
                    self.wait_for(self.has_temporary, process)
                    self.interrupt(process, number)
                self.assertEqual(process.returncode, -number)
                self.expect_old()

    def test_an_ignored_signal_stays_ignored(self):
        with tempfile.NamedTemporaryFile("w", suffix=".js") as script:
            script.write(WRITE + "WScript.Sleep(600000);")
            script.flush()
            process = self.start([script.name, "out"], preexec_fn=lambda: signal.signal(
                signal.SIGHUP, signal.SIG_IGN))
            self.wait_for(self.has_temporary, process)
            process.send_signal(signal.SIGHUP)
            self.interrupt(process, signal.SIGTERM)
        self.assertEqual(process.returncode, -signal.SIGTERM)
        self.expect_old()

    def test_a_closed_pipe(self):
        ends = os.pipe()
        os.close(ends[0])
        run = self.run_script(WRITE + "WScript.Echo(1); WScript.Sleep(0);", "out", stdout=ends[1])
        os.close(ends[1])
        self.assertEqual(run.returncode, 1)
        self.expect_old()

    def test_a_full_disk_even_if_the_script_closes(self):
        script = (OPEN + "try { out.Write(new Uint8Array(9999)); }"
                  "catch (e) { WScript.Echo(e.number, e.description); }"
                  "try { out.Close(); } catch (e) { WScript.Echo(e.number, e.description); }")
        run = self.run_script(script, "out", preexec_fn=limit_files(4096))
        self.assertEqual(run.stdout, 2 * "-2147286928 out: Disk full\n")
        self.expect_old()

    def test_a_disk_that_is_full_in_the_end(self):
        run = self.run_script(WRITE + "out.Close();", "out", fails={"FAIL_FSYNC": "1"})
        self.assertEqual(run.returncode, 1)
        self.assertIn("out: Disk full", run.stderr)
        self.expect_old()
        commit = "try { out.Commit(); } catch (e) { WScript.Echo(e.description); } out.Discard();"
        run = self.run_script(WRITE + commit, "out", fails={"FAIL_FSYNC": "1"})
        self.assertEqual(run.stdout, "out: Disk full\n")
        self.expect_old()

    def test_a_target_that_may_not_be_written(self):
        # A program that runs may not, not even by the administrator.
        shutil.copy("/bin/sleep", self.folder / "program")
        sleep = subprocess.Popen([self.folder / "program", "600"])
        self.addCleanup(sleep.wait)
        self.addCleanup(sleep.kill)
        run = self.run_script(WRITE + "out.Close();", "program")
        self.assertEqual(run.returncode, 1)
        self.assertIn("program: Permission denied", run.stderr)
        self.expect_old(["out", "program"])

    def test_no_folder(self):
        for name, text in (("none/out", "File not found"), ("out/out", "File not found"),
                           (".", "Permission denied"), ("", "File not found")):
            run = self.run_script(WRITE, name)
            self.assertEqual(run.returncode, 1)
            self.assertIn(f"{name}: {text}" if name else f'"": {text}', run.stderr)
        self.expect_old()

    def test_a_loop_of_links(self):
        os.symlink("loop", self.folder / "loop")
        self.assertEqual(self.run_script(WRITE, "loop").returncode, 1)
        self.expect_old(["loop", "out"])


class WhatStaysOfTheOldFile(OutputFileTest):
    def test_permissions(self):
        for mode in (0o600, 0o754):
            (self.folder / "out").chmod(mode)
            self.write_new()
            self.assertEqual(stat.S_IMODE((self.folder / "out").stat().st_mode), mode)
        self.expect_new()

    @unittest.skipUnless(os.geteuid() == 0, "only the administrator gives files away")
    def test_owner(self):
        os.chown(self.folder / "out", 12345, 23456)
        self.write_new()
        facts = (self.folder / "out").stat()
        self.assertEqual((facts.st_uid, facts.st_gid), (12345, 23456))
        self.expect_new()

    def test_symbolic_links(self):
        (self.folder / "sub").mkdir()
        os.symlink("../out", self.folder / "sub" / "link")
        os.symlink(self.folder / "sub" / "link", self.folder / "link")
        self.write_new("link")
        self.assertTrue((self.folder / "link").is_symlink())
        self.assertTrue((self.folder / "sub" / "link").is_symlink())
        self.assertEqual(os.listdir(self.folder / "sub"), ["link"])
        self.expect_new(["link", "out", "sub"])

    def test_a_symbolic_link_to_nothing(self):
        os.symlink("made", self.folder / "link")
        self.write_new("link")
        self.assertTrue((self.folder / "link").is_symlink())
        self.assertEqual(self.read("made"), b"new")

    def test_other_hard_links_keep_the_old_content(self):
        os.link(self.folder / "out", self.folder / "other")
        self.write_new()
        self.assertEqual(self.read("other"), b"old")
        self.expect_new(["other", "out"])

    def test_opening_in_place(self):
        inode = (self.folder / "out").stat().st_ino
        run = self.run_script('var f = WScript.OpenFile("out", "r+"); f.Seek(0, 2);'
                              f"f.Write({BYTES}); WScript.Quit(1);")
        self.assertEqual(run.returncode, 1)
        self.assertEqual(self.read("out"), b"oldnew")
        self.assertEqual((self.folder / "out").stat().st_ino, inode)


class NewFilesOnly(OutputFileTest):
    MAKE = WRITE.replace('"w"', '"wx", true')

    def test_private(self):
        self.assertEqual(self.run_script(self.MAKE, "made").returncode, 0)
        self.assertEqual(self.read("made"), b"new")
        self.assertEqual(stat.S_IMODE((self.folder / "made").stat().st_mode), 0o600)
        # While it is written, every output is its owner's alone.
        self.addCleanup(os.umask, os.umask(0))
        with tempfile.NamedTemporaryFile("w", suffix=".js") as script:
            script.write(WRITE + "WScript.Sleep(600000);")
            script.flush()
            process = self.start([script.name, "other"])
            self.wait_for(self.has_temporary, process)
            temporary = [name for name in self.names() if name.startswith(".mirolta-")]
            self.assertEqual(stat.S_IMODE((self.folder / temporary[0]).stat().st_mode), 0o600)
            self.interrupt(process)

    def test_private_over_a_public_one(self):
        self.run_script(WRITE.replace('"w"', '"w", true'), "out")
        self.assertEqual(stat.S_IMODE((self.folder / "out").stat().st_mode), 0o600)
        self.expect_new()

    def test_what_is_there_is_refused(self):
        os.symlink("nowhere", self.folder / "link")
        for name in ("out", "link", self.device("null"), "."):
            run = self.run_script(self.MAKE, name)
            self.assertEqual(run.returncode, 1)
            self.assertIn(f"{name}: File already exists", run.stderr)
        self.expect_old(["link", "out"])

    def test_what_appears_meanwhile_stays(self):
        other = 'var other = WScript.OpenFile("made", "w"); other.Close();'
        run = self.run_script(self.MAKE + other + "out.Close();", "made")
        self.assertEqual(run.returncode, 1)
        self.assertIn("made: File already exists", run.stderr)
        self.assertEqual(self.read("made"), b"")
        self.expect_old(["made", "out"])


class WrittenDirectly(OutputFileTest):
    def test_pipes(self):
        os.mkfifo(self.folder / "pipe")
        reader = subprocess.Popen(["cat", self.folder / "pipe"], stdout=subprocess.PIPE)
        run = self.run_script(WRITE + "WScript.Quit(1);", "pipe")
        self.assertEqual(run.returncode, 1)
        self.assertEqual(reader.communicate()[0], b"new")
        self.assertTrue((self.folder / "pipe").is_fifo())

    def test_standard_output(self):
        for name in ("/dev/stdout", "/proc/self/fd/1", "/dev/fd/1"):
            self.assertEqual(self.run_script(WRITE, name).stdout, "new")
            # A regular file behind the name is written too, not replaced.
            inode = (self.folder / "out").stat().st_ino
            with open(self.folder / "out", "wb") as out:
                self.run_script(WRITE, name, stdout=out)
            self.expect_new()
            self.assertEqual((self.folder / "out").stat().st_ino, inode)

    def test_devices(self):
        full = self.device("full")
        run = self.run_script(WRITE, full)
        self.assertIn(f"{full}: Disk full", run.stderr)
        run = self.run_script(WRITE + "out.Close();", self.device("null"))
        self.assertEqual(run.returncode, 0, run)


class ClosedOutputs(OutputFileTest):
    def test_nothing_changes_a_file_in_place(self):
        script = OPEN + """
          var filter = new ActiveXObject("Vardeko.crypt.ToviStreamDigest");
          filter.Stream = out;
          out.Write(new Uint8Array([110, 101, 119]));
          out.Close();
          try { WScript.StreamOf(filter).Write(new Uint8Array(9)); }
          catch (e) { WScript.Echo(e.description); }"""
        run = self.run_script(script, "out")
        self.assertEqual(run.stdout,
                         "out: The object was reverted and is no longer usable\n")
        self.expect_new()


class FileAtFault(OutputFileTest):
    """The file that failed is named, whatever stream the call was made on."""

    def test_copies_and_filters(self):
        plain = 'var from = WScript.OpenFile("IN");'
        filtered = """
          var filter = new ActiveXObject("Vardeko.crypt.ToviStreamDigest");
          filter.Stream = WScript.OpenFile("IN");
          var from = WScript.StreamOf(filter);"""
        self.write("in", bytes(9999))
        for source in (plain, filtered):
            copy = OPEN + source + "from.CopyTo(out);"
            run = self.run_script(copy.replace("IN", "in"), "out", preexec_fn=limit_files(4096))
            self.assertIn("out: Disk full", run.stderr)
            run = self.run_script(copy.replace("IN", "/proc/self/mem"), "out")
            self.assertIn("/proc/self/mem: A disk error occurred during a read", run.stderr)
        self.expect_old(["in", "out"])


class Reading(OutputFileTest):
    def test_read_gives_what_was_asked_for(self):
        size = (16 << 20) + 5
        with open(self.folder / "in", "wb") as file:
            file.truncate(size)
        run = self.run_script("""
          var f = WScript.OpenFile("in"), hash = new ActiveXObject("Vardeko.crypt.HashObject");
          hash.InitHash("MD5");
          hash.HashData(f.Read(f.Size));
          WScript.Echo(hash.Value.toLowerCase(), f.Position, f.Read(1).length);
          f.Position = 0;
          WScript.Echo(f.Read().length, f.Position, f.Read(1e15).length, f.Read().length);
          WScript.Echo(WScript.MemoryStream(new Uint8Array(17 << 20)).Read(17 << 20).length);
          WScript.Echo(String(WScript.OpenFile("/proc/self/status").Read(1e9).length > 100));""")
        expected = subprocess.run(["md5sum", self.folder / "in"], capture_output=True, text=True)
        self.assertEqual(run.stdout, f"{expected.stdout[:32]} {size} 0\n"
                         f"65536 65536 {size - 65536} 0\n{17 << 20}\ntrue\n")

    def test_pieces_of_a_pipe_are_put_together(self):
        os.mkfifo(self.folder / "pipe")
        writer = subprocess.Popen(["sh", "-c", "(printf abc; sleep 0.2; printf de) > pipe"],
                                  cwd=self.folder)
        run = self.run_script('var f = WScript.OpenFile("pipe"); WScript.Echo(f.Read(4).length,'
                              "f.Read(4).length, f.Read(4).length);")
        writer.wait()
        self.assertEqual(run.stdout, "4 1 0\n")

    def test_short_reads_of_a_filter_are_put_together(self):
        # 24 bytes from behind make one block, and the rest of the next comes with the next read.
        run = self.run_script("""
          var filter = new ActiveXObject("Vardeko.crypt.ToviStreamCrypt");
          filter.ReadAlgorithm = "AES";
          filter.ReadKey = "sixteen byte key";
          filter.Stream = WScript.MemoryStream(new Uint8Array(64));
          WScript.Echo(WScript.StreamOf(filter).Read(24).length);""")
        self.assertEqual(run.stdout, "24\n")

    def test_too_much_at_once(self):
        with open(self.folder / "in", "wb") as file:
            file.truncate(600 << 20)
        run = self.run_script('var f = WScript.OpenFile("in"); try { f.Read(1e9); } catch (e) {'
                              "WScript.Echo(e.number, e.description, f.Position); }")
        self.assertEqual(run.stdout, "-2147024882 Read returns at most 512 MB at once 0\n")

    def test_a_read_that_fails(self):
        self.write("in", bytes(1 << 20))
        run = self.run_script('WScript.OpenFile("in").Read(1 << 20);',
                              fails={"FAIL_READ_AFTER": "500000"})
        self.assertIn("in: A disk error occurred during a read operation", run.stderr)


class Questions(OutputFileTest):
    def ask(self, expression, **options):
        return self.run_script(f"WScript.Echo(String({expression}));", **options).stdout.strip()

    def test_same_file(self):
        os.symlink("out", self.folder / "link")
        os.symlink("made", self.folder / "dangling")
        os.symlink(".", self.folder / "here")
        os.link(self.folder / "out", self.folder / "hard")
        self.write("other", b"old")
        for a, b, expected in (
                ("out", "out", "true"), ("out", "./out", "true"), ("out", "link", "true"),
                ("here/out", "hard", "true"), ("out", "other", "false"), ("out", "made", "false"),
                ("made", "./made", "true"), ("made", "here/made", "true"),
                ("made", "dangling", "true"), ("made", "made2", "false"), ("no/a", "no/a", "false"),
                ("/dev/null", "/dev/full", "false"), ("/dev/null", "/dev/../dev/null", "true")):
            self.assertEqual(self.ask(f'WScript.IsSameFile("{a}", "{b}")'), expected, (a, b))

    def test_environment(self):
        self.assertEqual(self.ask('WScript.EnvironmentVariable("MIROLTA_X")',
                                  env={"MIROLTA_X": "\u00fc x"}), "\u00fc x")
        self.assertEqual(self.ask('WScript.EnvironmentVariable("MIROLTA_Y")'), "undefined")

    def test_terminal(self):
        self.assertEqual(self.ask("[WScript.StdErr.IsTerminal, WScript.StdOut.isterminal]"),
                         "false,false")
        main, terminal = os.openpty()
        self.assertEqual(self.ask("WScript.StdErr.IsTerminal", stderr=terminal), "true")
        os.close(main)
        os.close(terminal)


if __name__ == "__main__":
    unittest.main()
