"""Scripting.FileSystemObject beyond what both hosts can show: when files take their place, links,
permissions, odd names, full disks, and what the classes say about this system."""
import os
import pathlib
import resource
import signal
import stat
import subprocess
import tempfile
import unittest
import urllib.parse

from runner import HostTest, limit_files

PRELUDE = r"""
var fso = new ActiveXObject("Scripting.FileSystemObject");
function show(f) {
  try { WScript.Echo(f()); } catch (e) {
    WScript.Echo("error " + (e.number >>> 0).toString(16) + " " + e.description + " " + e.source);
  }
}
function write(name, text) { var s = fso.CreateTextFile(name); s.Write(text); s.Close(); }
function list(items) {
  var out = [];
  for (var e = new Enumerator(items); !e.atEnd(); e.moveNext()) out.push(e.item().Name);
  return out.join();
}
"""
DENIED = "error 800a0046 Permission denied Scripting.FileSystemObject\n"


def limit_descriptors(count):
    """For preexec_fn: a process may open so many files."""
    resource.setrlimit(resource.RLIMIT_NOFILE, (count, count))


class FileSystemTest(HostTest):
    def ask(self, script, *words, **options):
        """What the script prints; it succeeds without complaints."""
        run = self.run_script(PRELUDE + script, *words, **options)
        self.assertEqual((run.returncode, run.stderr), (0, ""), run.stdout)
        return run.stdout

    def show(self, expression, **options):
        return self.ask(f"show(function () {{ return {expression}; }});", **options)

    def make(self, *names):
        """Makes folders (with a slash at the end) and files."""
        for name in names:
            if name.endswith("/"):
                (self.folder / name).mkdir()
            else:
                self.write(name, name.encode())


class TextFiles(FileSystemTest):
    def setUp(self):
        super().setUp()
        self.write("out", b"old")

    def test_the_old_file_stays_until_it_is_closed(self):
        for opening in ("fso.CreateTextFile('out')", "fso.OpenTextFile('out', 2)",
                        "fso.GetFile('out').OpenAsTextStream(2)"):
            self.write("out", b"old")
            self.assertEqual(self.ask(f"""var s = {opening}; s.Write('new');
                WScript.Echo(fso.OpenTextFile('out').ReadAll()); s.Close();
                WScript.Echo(fso.OpenTextFile('out').ReadAll());"""), "old\nnew\n", opening)
        self.assertEqual(self.names(), ["out"])

    def test_a_script_that_fails_leaves_the_old_file(self):
        for end in ("throw new Error('failed')", "WScript.Quit(3)", "s = null; gone()"):
            run = self.run_script(PRELUDE + f"var s = fso.CreateTextFile('out'); s.Write('x'); {end};")
            self.assertNotEqual(run.returncode, 0)
            self.assertEqual((self.read("out"), self.names()), (b"old", ["out"]), end)

    def test_a_script_that_ends_well_closes_its_files(self):
        for end in ("", "WScript.Quit(0)", "s = null"):
            self.write("out", b"old")
            self.ask(f"var s = fso.CreateTextFile('out'); s.Write('new'); {end};")
            self.assertEqual((self.read("out"), self.names()), (b"new", ["out"]), end)

    def test_a_signal_leaves_the_old_file(self):
        script = self.folder.parent / (self.folder.name + ".js")
        script.write_text(PRELUDE + "var s = fso.CreateTextFile('out'), t = fso.CreateTextFile('new');"
                          "s.Write('x'); WScript.Echo(1); WScript.Sleep(60000);")
        self.addCleanup(script.unlink)
        process = self.start([script], stdin=subprocess.DEVNULL)
        process.stdout.read(1)
        self.interrupt(process, signal.SIGTERM)
        self.assertEqual((self.read("out"), self.names()), (b"old", ["out"]))

    def test_a_full_disk_leaves_the_old_file(self):
        run = self.ask("""var s = fso.CreateTextFile('out'), text = new Array(9000).join('x');
            show(function () { s.Write(text) }); show(function () { s.Close() });""",
                       preexec_fn=limit_files(4096))
        self.assertEqual(run, "error 800a003d Disk full TextStream\n" * 2)
        self.assertEqual((self.read("out"), self.names()), (b"old", ["out"]))

    def test_a_file_that_must_be_new(self):
        self.assertEqual(self.show("fso.CreateTextFile('out', false)"),
                         "error 800a003a File already exists Scripting.FileSystemObject\n")
        self.ask("""var a = fso.CreateTextFile('new', false), b = fso.CreateTextFile('new', false);
                    a.Write('a'); b.Write('b'); a.Close();
                    show(function () { b.Close() });""")
        self.assertEqual(self.read("new"), b"a")

    def test_appending_writes_in_place_at_once(self):
        os.link(self.folder / "out", self.folder / "same")
        self.assertEqual(self.ask("""var s = fso.OpenTextFile('out', 8); s.Write('+1');
            WScript.Echo(fso.OpenTextFile('same').ReadAll()); s.WriteLine('2');"""), "old+1\n")
        self.assertEqual(self.read("same"), b"old+12\r\n")

    def test_appending_until_the_disk_is_full(self):
        self.assertEqual(self.ask("var s = fso.OpenTextFile('out', 8), t = new Array(9000).join('x');"
                                  "show(function () { s.Write(t) });", preexec_fn=limit_files(4096)),
                         "error 800a003d Disk full TextStream\n")
        self.assertEqual(self.read("out"), b"old" + b"x" * 4093)

    def test_reading_may_create_the_file(self):
        self.assertEqual(self.ask("WScript.Echo(fso.OpenTextFile('new', 1, true).AtEndOfStream);"),
                         "-1\n")
        self.assertEqual(self.read("new"), b"")

    def test_a_link_stays_and_its_file_is_replaced(self):
        os.symlink("out", self.folder / "link")
        self.ask("write('link', 'new');")
        self.assertTrue((self.folder / "link").is_symlink())
        self.assertEqual(self.read("out"), b"new")

    def test_bytes_survive(self):
        every = bytes(range(256)) + "\u20ac\U0001f600".encode()
        self.write("in", every)
        self.ask("write('out', fso.OpenTextFile('in').ReadAll());")
        self.assertEqual(self.read("out"), every)

    def test_halves_of_a_character_meet(self):
        self.ask("var s = fso.CreateTextFile('out'), t = 'a\\ud83d\\ude00\\ud83d';"
                 "for (var i = 0; i < t.length; i++) s.Write(t.charAt(i)); s.Close();")
        self.assertEqual(self.read("out"), "a\U0001f600\ufffd".encode())

    def test_characters_across_blocks(self):
        for text in ("\u20ac\u20ac", "\U0001f600\U0001f600", "\u0416\u0416"):
            for before in range(65530, 65537):
                self.write("in", b"x" * before + text.encode())
                self.assertEqual(self.ask("var t = fso.OpenTextFile('in').ReadAll();"
                                          "WScript.Echo(t.length, encodeURI(t.substr(t.lastIndexOf('x') + 1)));"),
                                 f"{before + len(text.encode('utf-16-le')) // 2} {urllib.parse.quote(text)}\n")

    def test_encodings(self):
        self.ask("var s = fso.CreateTextFile('out', true, true); s.Write('h\\u20ac'); s.Close();")
        self.assertEqual(self.read("out"), "\ufeffh\u20ac".encode("utf-16-le"))
        self.ask("fso.OpenTextFile('out', 8, false, -2).Write('\\ud83d\\ude00');")
        self.assertEqual(self.read("out"), "\ufeffh\u20ac\U0001f600".encode("utf-16-le"))
        self.ask("fso.OpenTextFile('none', 8, true, -1).Write('x');")
        self.assertEqual(self.read("none"), "\ufeffx".encode("utf-16-le"))
        self.write("marked", "\ufeffmarked".encode())
        self.write("odd", b"\xff\xfea\0b")
        self.assertEqual(self.ask("""function read(n, f) { return fso.OpenTextFile(n, 1, false, f).ReadAll(); }
            WScript.Echo(read('out', -1) + read('out', -2) + read('marked', 0) + read('marked', -2));
            WScript.Echo(read('odd', -1) + read('odd', -2));"""),
                         "h\u20ac\U0001f600h\u20ac\U0001f600markedmarked\na\ufffda\ufffd\n")

    def test_wrong_modes_and_formats(self):
        wrong = "error 800a0005 Invalid procedure call or argument Scripting.FileSystemObject\n"
        for arguments in ("3", "0", "-1", "1, false, 1", "1, false, -3", "2, true, 7"):
            self.assertEqual(self.show(f"fso.OpenTextFile('out', {arguments})"), wrong, arguments)
        self.assertEqual(self.read("out"), b"old")

    def test_devices(self):
        self.assertEqual(self.ask(f"show(function () {{ write('{self.device('full')}', 'x'); }});"),
                         "error 800a003d Disk full TextStream\n")
        self.ask(f"write('{self.device('null')}', 'x');")

    def test_more_files_than_may_be_open(self):
        self.assertIn("error 800a0043 Too many files", self.ask(
            "var open = []; show(function () { for (var i = 0; i < 3000; i++)"
            " open.push(fso.OpenTextFile('out')); });", preexec_fn=lambda: limit_descriptors(64)))

    def test_files_that_are_dropped_are_closed(self):
        self.assertEqual(self.ask("for (var i = 0; i < 3000; i++) fso.OpenTextFile('out').Read(1);"
                                  "WScript.Echo(i);", preexec_fn=lambda: limit_descriptors(64)), "3000\n")


class Names(FileSystemTest):
    def test_names_that_are_not_utf_8(self):
        (self.folder / os.fsdecode(b"caf\xe9.txt")).write_bytes(b"x")
        self.assertEqual(self.ask("""var f = fso.GetFolder('.').Files, name = '';
            for (var e = new Enumerator(f); !e.atEnd(); e.moveNext()) name = e.item().Name;
            fso.CopyFile(name, 'copy'); fso.GetFile(name).Name = name + '2';
            WScript.Echo(name.length, fso.FileExists(name + '2'));"""), "8 -1\n")
        self.assertEqual(self.names(), sorted(["copy", os.fsdecode(b"caf\xe9.txt2")]))

    def test_a_backslash_separates(self):
        self.make("d/", "a\\b")
        self.ask("write('d\\\\f', 'x');")
        self.assertEqual(self.read("d/f"), b"x")
        self.assertEqual(self.show("[fso.FileExists('a\\\\b'), list(fso.GetFolder('.').Files)]"),
                         "false,a\\b\n")

    def test_a_zero_or_too_many_characters(self):
        for name in ("'a\\0b'", "new Array(300).join('x')"):
            self.assertEqual(self.show(f"fso.CreateFolder({name})"),
                             "error 800a0034 Bad file name or number Scripting.FileSystemObject\n")

    def test_patterns(self):
        self.make("d/", "a.txt", "b.txt", "ab.dat", "noext", ".hidden.txt", "\u20ac.txt")
        for pattern, matched in (("*.txt", ".hidden.txt,a.txt,b.txt,\u20ac.txt"), ("?.txt", "a.txt,b.txt,\u20ac.txt"),
                                 ("*", ".hidden.txt,a.txt,ab.dat,b.txt,noext,\u20ac.txt"),
                                 ("*.*", ".hidden.txt,a.txt,ab.dat,b.txt,noext,\u20ac.txt"),
                                 ("a*b*", "ab.dat"), ("*a*t", "a.txt,ab.dat"), ("**e**", "noext,.hidden.txt")):
            self.ask(f"fso.CopyFile('{pattern}', 'd'); fso.DeleteFile('d/*');"
                     f"fso.CopyFile('./{pattern}', 'd/');")
            self.assertEqual(sorted(os.listdir(self.folder / "d")), sorted(matched.split(",")), pattern)
        self.assertEqual(self.show("fso.DeleteFile('A.TXT')"),
                         "error 800a0035 File not found Scripting.FileSystemObject\n")

    def test_a_separator_at_the_end_of_a_source(self):
        self.make("d/", "f")
        self.ask("fso.CopyFolder('d/', 'e');")
        self.assertEqual(self.names(), ["d", "e", "f"])
        self.assertEqual(self.show("fso.CopyFile('f/', 'g')"),
                         "error 800a0035 File not found Scripting.FileSystemObject\n")

    def test_an_empty_source(self):
        for command in ("Copy", "Move"):
            self.assertEqual(self.show(f"fso.{command}File('', 'd')"),
                             "error 800a0035 File not found Scripting.FileSystemObject\n")
            self.assertEqual(self.show(f"fso.{command}Folder('', 'd')"),
                             "error 800a004c Path not found Scripting.FileSystemObject\n")

    def test_paths(self):
        self.assertEqual(self.ask("""
            WScript.Echo(fso.BuildPath('/a', 'b'), fso.BuildPath('a/', '/b'), fso.BuildPath('a', '/b'),
                         fso.BuildPath('', 'b'), fso.BuildPath('a', ''), fso.BuildPath('a\\\\b/c', 'd'));
            WScript.Echo([fso.GetParentFolderName('/a'), fso.GetParentFolderName('/'), fso.GetDriveName('/a/b'),
                          fso.GetDriveName('a'), fso.GetFileName('c:a'), fso.GetBaseName('..')].join('|'));
            WScript.Echo(fso.GetAbsolutePathName('/a/../../b/./c/'), fso.GetAbsolutePathName('/'));"""),
                         "/a/b a/b a/b b a a\\b/c/d\n/||/||c:a|.\n/b/c /\n")
        self.assertEqual(self.ask("WScript.Echo(fso.GetAbsolutePathName('x/../y\\\\z'));"),
                         f"{self.folder.resolve()}/y/z\n")


class Folders(FileSystemTest):
    def test_collections_are_sorted_and_complete(self):
        self.make("d/", "d/b", "d/a", "d/.h", "d/z/", "d/y/")
        os.symlink("z", self.folder / "d/link")
        os.symlink("none", self.folder / "d/dead")
        self.assertEqual(self.ask("""var d = fso.GetFolder('d');
            WScript.Echo(list(d.Files), d.Files.Count, list(d.SubFolders), d.SubFolders.Count);
            WScript.Echo(d.Files('a'), d.SubFolders('z').Name);"""),
                         f".h,a,b,dead 4 link,y,z 3\n{self.folder.resolve()}/d/a z\n")

    def test_a_collection_has_no_paths(self):
        self.make("d/", "d/s/", "f")
        for item, kind in (("Files.Item('../f')", "35 File"), ("SubFolders.Item('..')", "4c Path"),
                           ("SubFolders.Item('.')", "4c Path"), ("Files.Item('s')", "35 File"), ("Files.Item('')", "35 File")):
            self.assertIn(f"error 800a00{kind} not found", self.show(f"fso.GetFolder('d').{item}"))

    def test_what_is_gone_is_not_found(self):
        self.make("d/", "f")
        self.assertEqual(self.ask("""var d = fso.GetFolder('d'), f = fso.GetFile('f');
            fso.DeleteFolder('d'); fso.DeleteFile('f');
            show(function () { return d.Files; }); show(function () { return d.Size; });
            show(function () { return f.Size; }); show(function () { f.Copy('g'); });
            show(function () { f.Attributes = 1; }); show(function () { d.Delete(); });"""),
                         "error 800a004c Path not found Folder\n" * 2
                         + "error 800a0035 File not found File\n" * 3
                         + "error 800a004c Path not found Folder\n")

    def test_sizes(self):
        self.make("d/", "d/s/")
        self.write("d/a", b"12345")
        self.write("d/s/b", b"123")
        os.symlink("/usr", self.folder / "d/s/link")
        with (self.folder / "large").open("wb") as large:
            large.truncate(3 << 30)
        self.assertEqual(self.show("[fso.GetFolder('d').Size, fso.GetFile('large').Size]"),
                         f"8,{3 << 30}\n")

    def test_deleting_never_leaves_the_folder(self):
        self.make("d/", "d/s/", "d/s/f", "kept/", "kept/f")
        os.symlink("../../kept", self.folder / "d/s/link")
        os.symlink("kept", self.folder / "to-kept")
        self.ask("fso.DeleteFolder('d', true); fso.DeleteFolder('to-kept');")
        self.assertEqual(self.names(), ["kept"])
        self.assertEqual(self.read("kept/f"), b"kept/f")

    def test_read_only_files_need_force(self):
        self.make("d/", "d/f")
        os.chmod(self.folder / "d/f", 0o444)
        self.assertEqual(self.show("fso.DeleteFolder('d')"), DENIED)
        self.assertEqual(self.read("d/f"), b"d/f")
        self.ask("fso.DeleteFolder('d', true);")
        self.assertEqual(self.names(), [])

    def deepen(self, depth, name="d"):
        """Makes folders within folders."""
        place = os.open(self.folder, os.O_RDONLY)
        for _ in range(depth):
            os.mkdir(name, dir_fd=place)
            inner = os.open(name, os.O_RDONLY, dir_fd=place)
            os.close(place)
            place = inner
        os.close(place)

    def test_a_folder_that_is_too_deep_is_an_error(self):
        self.deepen(1100)
        self.assertIn("error 800a0043 Too many files",
                      self.show("fso.DeleteFolder('d')",
                                preexec_fn=lambda: limit_descriptors(64)))
        self.assertIn("error 800a004b Path/File access error",
                      self.show("fso.DeleteFolder('d')",
                                preexec_fn=lambda: limit_descriptors(2000)))
        # In two parts.
        self.ask(f"fso.MoveFolder('{'/'.join('d' * 200)}', 'e'); fso.DeleteFolder('e');"
                 "fso.DeleteFolder('d');", preexec_fn=lambda: limit_descriptors(2000))
        self.assertEqual(self.names(), [])

    def test_paths_that_are_too_long_are_errors(self):
        name = "d" * 250
        self.deepen(20, name)
        for command in (f"CopyFolder('{name}', 'e')", f"GetFolder('{name}').Size"):
            self.assertIn("error 800a0034 Bad file name", self.show(f"fso.{command}"))
        self.ask(f"fso.DeleteFolder('{name}');")
        self.assertEqual(self.names(), ["e"])

    def test_the_root(self):
        self.assertEqual(self.show("[fso.GetFolder('/').IsRootFolder, fso.GetFolder('/').ParentFolder,"
                                   " '<' + fso.GetFolder('/').Name + '>', fso.GetFolder('/tmp').ParentFolder]"),
                         "true,,<>,/\n")


class Copies(FileSystemTest):
    def test_a_copy_has_permissions_and_time(self):
        self.make("f")
        os.chmod(self.folder / "f", 0o751)
        os.utime(self.folder / "f", (10 ** 9, 10 ** 9 + 5))
        self.ask("fso.CopyFile('f', 'g');")
        facts = (self.folder / "g").stat()
        self.assertEqual((stat.S_IMODE(facts.st_mode), facts.st_mtime, self.read("g")),
                         (0o751, 10 ** 9 + 5, b"f"))

    def test_a_copy_that_fails_leaves_the_old_file(self):
        self.write("f", b"x" * 9000)
        self.write("g", b"old")
        self.assertEqual(self.show("fso.CopyFile('f', 'g')", preexec_fn=limit_files(4096)),
                         "error 800a003d Disk full Scripting.FileSystemObject\n")
        self.assertEqual((self.names(), self.read("g")), (["f", "g"], b"old"))

    def test_targets_that_are_refused(self):
        self.make("f", "d/", "locked")
        os.chmod(self.folder / "locked", 0o444)
        os.symlink("f", self.folder / "link")
        os.mkfifo(self.folder / "pipe")
        for source, target in (("f", "d"), ("f", "f"), ("f", "link"), ("f", "locked"), ("f", "pipe"),
                               ("pipe", "g")):
            self.assertEqual(self.show(f"fso.CopyFile('{source}', '{target}')"), DENIED, (source, target))
        self.assertEqual(self.read("f"), b"f")

    def test_a_link_in_the_target_stays(self):
        self.make("f", "g")
        os.symlink("g", self.folder / "link")
        self.ask("fso.CopyFile('f', 'link');")
        self.assertEqual((self.read("g"), os.readlink(self.folder / "link")), (b"f", "g"))

    def test_links_in_folders_are_copied_as_links(self):
        self.make("d/", "d/f")
        os.symlink("f", self.folder / "d/link")
        os.symlink("..", self.folder / "d/up")
        os.chmod(self.folder / "d", 0o750)
        self.ask("fso.CopyFolder('d', 'e'); fso.CopyFolder('d', 'e');")
        self.assertEqual([os.readlink(self.folder / "e" / name) for name in ("link", "up")], ["f", ".."])
        self.assertEqual(stat.S_IMODE((self.folder / "e").stat().st_mode), 0o750)

    def test_a_folder_is_not_copied_into_itself(self):
        self.make("d/", "d/s/")
        os.symlink("d", self.folder / "link")
        for target in ("d/s/t", "d", "d/", "link/x", "d/s/../s"):
            self.assertEqual(self.show(f"fso.CopyFolder('d', '{target}')"), DENIED, target)
        self.assertEqual(os.listdir(self.folder / "d/s"), [])
        self.assertEqual(self.show("fso.MoveFolder('d', 'd/s/t')"), DENIED)

    def test_a_pipe_in_a_folder_is_refused(self):
        self.make("d/")
        os.mkfifo(self.folder / "d/pipe")
        self.assertEqual(self.show("fso.CopyFolder('d', 'e')"), DENIED)

    def test_folders_are_merged(self):
        self.make("d/", "d/f", "e/", "e/f", "e/g")
        self.ask("fso.CopyFolder('d', 'e');")
        self.assertEqual((self.read("e/f"), self.read("e/g")), (b"d/f", b"e/g"))


class Moves(FileSystemTest):
    def test_a_link_is_moved_itself(self):
        self.make("f")
        os.symlink("f", self.folder / "link")
        self.ask("fso.MoveFile('link', 'link2');")
        self.assertEqual(os.readlink(self.folder / "link2"), "f")

    def test_nothing_is_replaced(self):
        self.make("f", "g")
        os.symlink("none", self.folder / "dead")
        for target in ("g", "dead"):
            self.assertEqual(self.show(f"fso.MoveFile('f', '{target}')"),
                             "error 800a003a File already exists Scripting.FileSystemObject\n")
        self.assertEqual((self.read("f"), self.read("g")), (b"f", b"g"))

    def elsewhere(self):
        """A folder in another file system."""
        try:
            other = tempfile.TemporaryDirectory(dir="/dev/shm")
        except OSError as error:
            self.skipTest(f"/dev/shm cannot be used: {error}")
        self.addCleanup(other.cleanup)
        if os.stat(other.name).st_dev == self.folder.stat().st_dev:
            self.skipTest("/dev/shm is not another file system")
        return pathlib.Path(other.name)

    def test_between_file_systems(self):
        other = self.elsewhere()
        self.make("f", "d/", "d/s/", "d/s/f")
        os.chmod(self.folder / "f", 0o640)
        os.symlink("s", self.folder / "d/link")
        os.symlink("f", self.folder / "link")
        self.ask(f"fso.MoveFile('f', '{other}/f'); fso.MoveFile('link', '{other}/');"
                 f"fso.MoveFolder('d', '{other}/');")
        self.assertEqual(self.names(), [])
        self.assertEqual(((other / "f").read_bytes(), stat.S_IMODE((other / "f").stat().st_mode)),
                         (b"f", 0o640))
        self.assertEqual((other / "d/s/f").read_bytes(), b"d/s/f")
        self.assertEqual((os.readlink(other / "d/link"), os.readlink(other / "link")), ("s", "f"))

    def test_a_move_between_file_systems_that_fails_leaves_the_source(self):
        other = self.elsewhere()
        self.make("d/", "d/a")
        self.write("d/b", b"x" * 9000)
        for command in ("MoveFolder('d'", "MoveFile('d/b'"):
            self.assertEqual(self.show(f"fso.{command}, '{other}/')", preexec_fn=limit_files(4096)),
                             "error 800a003d Disk full Scripting.FileSystemObject\n")
            self.assertEqual(sorted(os.listdir(self.folder / "d")), ["a", "b"])
            self.assertEqual(os.listdir(other), [])


class Properties(FileSystemTest):
    def test_attributes(self):
        self.make("f", ".h", "d/")
        os.symlink("f", self.folder / "link")
        self.assertEqual(self.ask("""function at(n) { return fso.GetFile(n).Attributes; }
            WScript.Echo(at('f'), at('.h'), at('link'), fso.GetFolder('d').Attributes);
            var f = fso.GetFile('f'); f.Attributes = 33; WScript.Echo(f.Attributes);
            f.Attributes ^= 1; WScript.Echo(f.Attributes);
            show(function () { f.Attributes = 4096; }); show(function () { f.Attributes = 'x'; });"""),
                         "0 2 1024 16\n1\n0\n"
                         "error 800a0005 Invalid procedure call or argument File\n"
                         "error 80020005 Type mismatch File\n")
        os.chmod(self.folder / "f", 0o666)
        self.ask("fso.GetFile('f').Attributes = 1;")
        self.assertEqual(stat.S_IMODE((self.folder / "f").stat().st_mode), 0o444)
        self.ask("fso.GetFile('f').Attributes = 0;")
        self.assertEqual(stat.S_IMODE((self.folder / "f").stat().st_mode), 0o644)

    def test_dates(self):
        self.make("f")
        os.utime(self.folder / "f", (86400 * 365, 86400 * 366))
        for zone in ("UTC", "EAST-5:30", "WEST3"):
            self.assertEqual(self.show("[+new Date(f.DateLastAccessed), +new Date(f.DateLastModified),"
                                       " new Date(f.DateCreated) > new Date(2020, 0, 1)]"
                                       .replace("f.", "fso.GetFile('f')."), env={"TZ": zone}),
                             f"{86400 * 365000},{86400 * 366000},true\n", zone)

    def test_types_and_names(self):
        self.make("a.tar.gz", "noext", "d/")
        self.assertEqual(self.show("[fso.GetFile('a.tar.gz').Type, fso.GetFile('noext').Type,"
                                   " fso.GetFolder('d').Type, fso.GetFile('noext').ShortName,"
                                   " fso.GetFile('noext').ShortPath == fso.GetFile('noext').Path]"),
                         "GZ File,File,File folder,noext,true\n")

    def test_names_that_are_refused(self):
        self.make("f", "g")
        for name, kind in (("", "05 Invalid"), ("..", "05 Invalid"), ("a/b", "05 Invalid"),
                           ("g", "3a File already exists")):
            self.assertIn(f"error 800a00{kind}", self.ask(
                f"show(function () {{ fso.GetFile('f').Name = '{name}'; }});"))
        self.ask("fso.GetFile('f').Name = 'f';")
        self.assertEqual(self.names(), ["f", "g"])

    def test_drives(self):
        space = os.statvfs("/")
        out = self.ask("""var d = fso.GetDrive(fso.GetDriveName(fso.GetAbsolutePathName('x')));
            WScript.Echo([d, d.DriveType, d.IsReady, d.DriveLetter, d.RootFolder.Path, d.TotalSize, d.VolumeName,
                          d.ShareName, typeof d.SerialNumber, d.AvailableSpace <= d.FreeSpace].join('|'));
            var all = []; for (var e = new Enumerator(fso.Drives); !e.atEnd(); e.moveNext()) all.push(e.item().Path);
            WScript.Echo(all.length === fso.Drives.Count, all[0], fso.Drives('/').Path, fso.DriveExists('/'));
            WScript.Echo(fso.GetDrive('/proc').FileSystem, fso.GetFolder('/proc/self').Drive.Path);
            WScript.Echo(fso.DriveExists('/proc/self'), fso.DriveExists('c:'), fso.DriveExists(''));
            show(function () { fso.GetDrive('/proc/self'); });""")
        self.assertEqual(out, f"/|2|true||/|{space.f_blocks * space.f_frsize}|||number|true\n"
                              "-1 / / -1\nproc /proc\n0 0 0\n"
                              "error 800a0044 Device unavailable Scripting.FileSystemObject\n")

    def test_special_folders_and_streams(self):
        self.make("t/")
        self.assertEqual(self.ask("""WScript.Echo(fso.GetSpecialFolder(2).Name);
            show(function () { fso.GetSpecialFolder(0); }); show(function () { fso.GetSpecialFolder(3); });
            fso.GetStandardStream(1).WriteLine('out'); show(function () { fso.GetStandardStream(3); });
            WScript.Echo(fso.GetStandardStream(0).AtEndOfStream);""", env={"TMPDIR": "t"},
                                  stdin=subprocess.DEVNULL),
                         "t\nerror 800a004c Path not found Scripting.FileSystemObject\n"
                         "error 800a0005 Invalid procedure call or argument Scripting.FileSystemObject\nout\n"
                         "error 800a0005 Invalid procedure call or argument Scripting.FileSystemObject\n-1\n")

    def test_versions(self):
        self.make("f")
        self.assertEqual(self.show("'<' + fso.GetFileVersion('f') + '>'"), "<>\n")
        self.assertIn("error 800a0035", self.show("fso.GetFileVersion('none')"))

    def test_temporary_names_differ(self):
        self.assertEqual(self.show("fso.GetTempName() !== fso.GetTempName()"), "-1\n")

    @unittest.skipIf(os.geteuid() == 0, "root may do all of this")
    def test_what_the_system_forbids(self):
        self.make("d/", "d/f", "g")
        os.chmod(self.folder / "d", 0o500)
        self.addCleanup(os.chmod, self.folder / "d", 0o700)
        for command in ("DeleteFile('d/f')", "CreateTextFile('d/x')", "CopyFile('g', 'd/')",
                        "MoveFile('g', 'd/')", "CreateFolder('d/x')"):
            self.assertEqual(self.show(f"fso.{command}"), DENIED, command)


if __name__ == "__main__":
    unittest.main()
