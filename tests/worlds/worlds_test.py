"""Tests of the runners of this folder. The platform's host is played by the native one, on which a script
that contains the word BEYOND prints nothing."""
import contextlib
import io
import os
import pathlib
import tempfile
import unittest
from unittest import mock

import both_scripts
import compatibility_page
import example_scripts
import manual_page
import page_scripts
import worlds
from example_scripts import Row

HOST = os.environ["MIROLTA_TEST_HOST"]
README = "```js\nWScript.Echo(1);\n```\n```text\n1\n```\n"
GOOD = "```js\nWScript.Echo('a');\n```\nIt prints\n```text\na\n```\n"
BEYOND = "```js\nWScript.Echo('BEYOND');\n```\n```text\nBEYOND\n```\n"
MARK = "Only on `mirolta-host`: it has streams.\n\n"
COMMENT = "<!-- Not with Wine: it lacks the object. -->\n"


def play_wine(_, runs):
    for run in runs:
        worlds.run_natively(HOST, [run])
        if "BEYOND" in run.script.read_text("utf-8"):
            run.output = ""


class WorldsTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    version = worlds.MARKED_FOR

    def write(self, name, text):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, "utf-8")
        return path

    def end(self, function, *words):
        """The status with which a check ends, and what it printed."""
        said = io.StringIO()
        with mock.patch.object(worlds, "run_by_wine", play_wine), \
                mock.patch.object(worlds, "wine_version", lambda: self.version), contextlib.redirect_stdout(said), \
                self.assertRaises(SystemExit) as ended:
            function(*words)
        return ended.exception.code, said.getvalue()


class PageScriptsTest(WorldsTest):
    def check(self, page, name="docs/page.md", with_wine=False, keep=False):
        if not keep:
            worlds.new_folder(self.folder / "project")
        self.write("project/README.md", README)
        self.write("project/" + name, page)
        return self.end(page_scripts.check, self.folder / "project", HOST, self.folder / "scratch",
                        with_wine)

    def passes(self, page, **options):
        status, said = self.check(page, **options)
        self.assertEqual(status, 0, said)
        return said

    def fails(self, page, why, **options):
        status, said = self.check(page, **options)
        self.assertEqual(status, 1, said)
        self.assertIn(why, said)

    def test_good_pages_pass(self):
        self.assertIn("2 scripts of 2 pages", self.passes(GOOD, name="docs/Class.md"))
        self.assertIn("1 scripts of 2 pages", self.passes("No script.\n```\nno script\n```\n"))

    def test_scripts_of_a_page_share_a_folder(self):
        self.passes("```js\nWScript.OpenFile('a', 'w').Close();\n```\n```text\n```\n"
                    "```js\nWScript.Echo(WScript.OpenFile('a').Size);\n```\n```text\n0\n```\n")

    def test_pages_of_any_folder_are_read(self):
        self.fails(GOOD.replace("\na\n", "\nb\n"), "host/README.md:1", name="host/README.md")

    def test_other_output_fails(self):
        self.fails(GOOD.replace("\na\n", "\nb\n"), "docs/page.md:1: output: other text")

    def test_a_script_needs_its_output(self):
        for page in (GOOD.split("It prints")[0], GOOD.replace("```text", "```"),
                     GOOD.split("It prints")[0] + GOOD):
            self.fails(page, "a script without its output")

    def test_errors_and_statuses_fail(self):
        self.fails("```js\nWScript.StdErr.WriteLine('a');\n```\n```text\n```\n", "status 0\na")
        self.fails("```js\nWScript.Quit(3);\n```\n```text\n```\n", "status 3")

    def test_the_page_of_a_class_needs_a_script(self):
        self.fails("No example.\n", "the page of a class without a script", name="docs/Class.md")

    def test_no_script_is_overlooked(self):
        self.fails("```\nWScript.Echo(1);\n```\n", "a script that is not between")
        self.fails("    var h = new ActiveXObject('x');\n", "a script that is not between")
        self.fails(GOOD.replace("```js", "```javascript"), "a block of the language javascript")
        self.fails(GOOD.rstrip("`\n"), "a block without end")
        self.fails("```text\n  ```js\n```\n", "1 scripts found at 2 places")

    def test_a_script_that_wine_cannot_run_needs_a_mark(self):
        self.fails(BEYOND, "docs/page.md:1: output with Wine: other text", with_wine=True)
        self.assertIn("1 of them by Wine too", self.passes(MARK + BEYOND, with_wine=True))
        self.assertIn("1 of them by Wine too", self.passes(COMMENT + BEYOND, with_wine=True))

    def test_the_platform_reads_bytes_from_the_library(self):
        self.write("project/lib/bytes.js", "// BEYOND\n")
        script = "```js\n%s('a');\n```\n```text\na\n```\n"
        self.passes(script % "WScript.Echo", with_wine=True, keep=True)
        self.fails(script % "WScript.Echo(Bytes.ToText(Bytes.FromText('a'))); void ",
                   "output with Wine", with_wine=True, keep=True)

    def test_languages_side_by_side_share_their_output(self):
        both = ("```js\nWScript.Echo('a');\n```\n\n```vbscript\nWScript.Echo \"a\"\n```\n\n"
                "```cpp\nint main() {}\n```\n\n```text\na\n```\n")
        # The platform's host is played by one that reads no VBScript.
        self.assertIn("3 scripts of 2 pages", self.passes(both))
        self.fails(both, "docs/page.md:5: status", with_wine=True)
        self.fails(both.replace("vbscript", "js"), "a script without its output")
        self.fails(both.split("```text")[0], "docs/page.md:5: a script without its output")
        self.fails(both.replace("```cpp", "```sh"), "a script without its output")

    def test_a_mark_holds_for_one_script(self):
        self.fails(MARK + BEYOND + BEYOND, "docs/page.md:9: output with Wine", with_wine=True)

    def test_a_mark_without_need_fails(self):
        self.fails(MARK + GOOD, "the mark is not needed", with_wine=True)

    def test_a_later_wine_may_have_what_a_mark_says_it_lacks(self):
        self.version += 1
        self.assertIn("the mark is not needed", self.passes(MARK + GOOD, with_wine=True))

    def test_a_mark_has_reason_and_script(self):
        self.fails("Only on `mirolta-host`:\n" + BEYOND, "a mark without a reason")
        self.fails(GOOD + MARK, "docs/page.md:8: a mark without a script")
        self.fails(MARK + MARK + GOOD, "docs/page.md:1: a mark without a script")


class BothScriptsTest(WorldsTest):
    def check(self, text, expected):
        script = self.write("both_x.js", text)
        self.write("both_x.expected", expected)
        return self.end(both_scripts.check, HOST, self.folder / "scratch", [script])

    def passes(self, text, expected):
        status, said = self.check(text, expected)
        self.assertEqual(status, 0, said)

    def fails(self, text, expected, why):
        status, said = self.check(text, expected)
        self.assertEqual(status, 1, said)
        self.assertIn(why, said)

    def test_output_status_arguments_and_files_are_compared(self):
        text = ("// arguments: a b|c\n// file: name|content\n// status: 3\n"
                "WScript.Echo(WScript.Arguments(0), WScript.Arguments(1));\nWScript.Quit(3);\n")
        self.passes(text, "a b c\n")
        self.fails(text, "a b\n", "with Wine: other text")
        self.fails(text.replace("status: 3", "status: 2"), "a b c\n", "status 3 with Wine, expected 2")
        self.passes("// file: name|content\nWScript.Echo(WScript.OpenFile('name').Size);\n", "7\n")

    def test_a_script_that_wine_cannot_run_needs_a_mark(self):
        self.fails("WScript.Echo('BEYOND');\n", "BEYOND\n", "with Wine: other text")
        self.passes("// wine: no streams\nWScript.Echo('BEYOND');\n", "BEYOND\n")
        self.fails("// wine: \nWScript.Echo('BEYOND');\n", "BEYOND\n", "a mark without a reason")
        self.fails("// wine: no streams\nWScript.Echo('a');\n", "a\n", "the mark is not needed")

    def test_the_expected_output_must_be_there(self):
        status, said = self.end(both_scripts.check, HOST, self.folder / "scratch",
                                [self.write("both_x.js", "")])
        self.assertEqual(status, 1)
        self.assertIn("no .expected file", said)

    def test_a_block_is_left_out(self):
        start, end = "// wine leaves out: no streams\n", "// wine continues\n"
        beyond = start + "WScript.Echo('BEYOND');\n" + end
        self.passes("WScript.Echo(1);\n" + beyond + "WScript.Echo(2);\n", "1\nBEYOND\n2\n")
        self.fails("WScript.Echo(1);\n" + beyond, "2\nBEYOND\n", "prints other lines")
        self.fails(beyond.replace("WScript", "Nothing"), "", "status 1 without blocks")
        self.fails(beyond.replace(" no streams", ""), "BEYOND\n", "a mark without a reason")
        self.fails(beyond.replace(end, ""), "BEYOND\n", "has no start or no end")
        self.fails(beyond + end, "BEYOND\n", "has no start or no end")

    def test_a_block_without_need_fails(self):
        block = "// wine leaves out: no streams\nWScript.Echo('%s');\n// wine continues\n"
        self.fails(block % "BEYOND" + block % "a", "BEYOND\na\n", "block 2 passes with Wine")


class ExampleScriptsTest(WorldsTest):
    ECHO = "WScript.Echo(WScript.Arguments.length);\n"
    STREAMS = "// Only on mirolta-host: streams.\n"
    FILES = "// Not with Wine: files.\n"

    def check(self, rows, copies=(), **texts):
        for name, text in texts.items():
            self.write(f"examples/{name}.js", text)
        return self.end(example_scripts.check, self.folder / "examples", HOST, self.folder / "scratch",
                        rows, copies)

    def passes(self, rows, copies=(), **texts):
        status, said = self.check(rows, copies, **texts)
        self.assertEqual(status, 0, said)

    def fails(self, why, rows, copies=(), **texts):
        status, said = self.check(rows, copies, **texts)
        self.assertEqual(status, 1, said)
        self.assertIn(why, said)

    def test_every_example_needs_a_row(self):
        self.passes([Row("a.js")], a=self.ECHO)
        self.fails("b.js: has no row", [Row("a.js")], a=self.ECHO, b=self.ECHO)

    def test_output_and_files_are_compared(self):
        beyond = self.ECHO + "// BEYOND\n"
        self.fails("a.js: status 0 with Wine", [Row("a.js")], a=beyond)
        writer = "WScript.OpenFile('f', 'w').Close();\n"
        self.passes([Row("a.js", names=["f"])], a=writer)
        self.fails("a.js: writes no g", [Row("a.js", names=["g"])], a=writer)
        self.fails("or other files (f)", [Row("a.js", names=["f"])],
                   a="var s = WScript.OpenFile('f', 'w');\ns.Write(new Uint8Array([Math.random() * 256, "
                     "Math.random() * 256, Math.random() * 256, Math.random() * 256]));\ns.Close();\n")

    def test_lines_can_be_left_out(self):
        timed = "WScript.Echo(new Date().getTime() + Math.random());\nWScript.Echo('end');\n"
        self.fails("or other text", [Row("a.js")], a=timed)
        self.passes([Row("a.js", unlike="[0-9]")], a=timed)

    def test_copies_are_compared(self):
        text = "var s = WScript.OpenFile('f', 'w');\ns.Write(new Uint8Array([1]));\ns.Close();\n"
        self.passes([Row("a.js")], [("f", "f", 1)], a=text)
        self.fails("f: is not plain", [Row("a.js")], [("f", "plain", 1287)], a=text)

    def test_marks(self):
        beyond = self.ECHO + "// BEYOND\n"
        rows = [Row("a.js"), Row("a.js", "file", of_files=True)]
        self.passes(rows, a=self.STREAMS + beyond)
        self.fails("a.js: is the same with Wine", rows, a=self.STREAMS + self.ECHO)
        self.fails("a.js file: is the same with Wine", rows, a=self.FILES + self.ECHO)
        self.fails("a.js: status 0 with Wine", rows, a=self.FILES + beyond)
        self.fails("no run to which it applies", rows[:1], a=self.FILES + self.ECHO)
        self.fails("without a reason", rows, a="// Not with Wine:\n" + self.ECHO)
        self.fails("more than one mark", rows, a=self.FILES + self.STREAMS + beyond)


class CompatibilityPageTest(unittest.TestCase):
    HEAD = "### Thing\n\n| member | here | |\n|---|---|---|\n"
    MEMBERS = {"Thing": ["One", "Two"]}

    def compare(self, rows):
        return compatibility_page.compare(self.HEAD + rows, self.MEMBERS)

    def test_a_page_of_all_members_passes(self):
        self.assertEqual(self.compare("| `One(a, b)`, `Two` | same | |\n| `No` | missing | why |\n"), [])
        self.assertEqual(self.compare("| `One` | differs | how |\n| `Two` | only here | |\n"), [])

    def test_members_must_be_on_the_page(self):
        self.assertEqual(self.compare("| `One` | same | |\n"), ["Thing.Two is not on the page"])
        self.assertIn("Thing has no table",
                      compatibility_page.compare("# Other\n", self.MEMBERS))

    def test_members_on_the_page_must_exist(self):
        for row in ("same | |", "differs | how |", "only here | |"):
            faults = self.compare(f"| `One`, `Two` | same | |\n| `No` | {row}\n")
            self.assertEqual(len(faults), 1)
            self.assertIn("Thing.No is", faults[0])
        self.assertEqual(len(compatibility_page.compare(
            self.HEAD + "| `One`, `Two` | same | |\n" + self.HEAD.replace("Thing", "Other") +
            "| `No` | same | |\n", self.MEMBERS)), 1)

    def test_missing_members_must_be_missing(self):
        self.assertEqual(self.compare("| `One` | same | |\n| `Two` | missing | why |\n"),
                         ["Thing.Two is missing on the page, and there in the host"])

    def test_faulty_rows_are_found(self):
        both = "| `One`, `Two` | same | |\n"
        for row, fault in (("| `No` | gone | |", "is none of"), ("| `No` | missing | |", "says not how"),
                           ("| `One` | same | |", "has two rows")):
            self.assertIn(fault, " ".join(self.compare(both + row + "\n")))


class ManualPageTest(unittest.TestCase):
    HELP = ("Usage: x\n\n  -e, --eval CODE  run it\n  //B   batch\n\nExit status: 0 or more; 1 for an\n"
            "error.\n\nEnvironment: MIROLTA_X\n")
    PAGE = (".SH OPTIONS\n.TP\n.BR \\-e \", \" \\-\\-eval \" \\fICODE\\fP\"\nRun it.\n.TP\n.B //B\nBatch.\n"
            ".SH EXIT STATUS\n.TP\n.B 0\nGood.\n.TP\n.B 1\nBad.\n.SH ENVIRONMENT\n.TP\n.B MIROLTA_X\nX.\n")

    def test_a_page_of_all_options_passes(self):
        self.assertEqual(manual_page.faults_of(self.PAGE, self.HELP), [])

    def test_what_differs_is_found(self):
        for old, new in (("//B", "//C"), ("CODE", "TEXT"), (".B 1", ".B 2"), ("MIROLTA_X", "MIROLTA_Y"),
                         (".TP\n.B //B\nBatch.\n", "")):
            self.assertEqual(len(manual_page.faults_of(self.PAGE.replace(old, new), self.HELP)), 1, new)
        self.assertIn("--help has no options",
                      " ".join(manual_page.faults_of(self.PAGE, self.HELP.replace("  ", ""))))


if __name__ == "__main__":
    unittest.main()
