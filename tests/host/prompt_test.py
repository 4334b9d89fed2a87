"""The prompt: entries, results, completion, history and Ctrl-C."""
import fcntl
import os
import pty
import re
import select
import signal
import stat
import subprocess
import termios
import time
import unittest

from runner import HOST, HostTest

CAN_EDIT = "libedit" in subprocess.run([HOST, "--version"], capture_output=True, text=True,
                                       check=False).stdout
# What terminals obey and do not show.
CONTROLS = re.compile(r"\x1b\[[0-9;?]*[A-Za-z]|\x1b[=>]|\r|.\x08|\x07")


def open_text(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


class PipedTest(HostTest):
    """Without a terminal: no prompts, only results."""

    def prompt(self, text, *words):
        process = self.start(["-i", *words], stdin=subprocess.PIPE)
        output, errors = process.communicate(text.encode(), timeout=60)
        self.assertEqual(process.returncode, 0, errors)
        return output.decode(), errors.decode()

    def expect(self, text, output, errors="", words=()):
        self.assertEqual(self.prompt(text, *words), (output, errors))


class Results(PipedTest):
    def test_values(self):
        rows = {
            "6 * 7": "42",
            "1 / 3": "0.3333333333333333",
            "true": "true",
            "null": "null",
            "undefined": "",
            '"a\\"\\\\b\\n\\t" + String.fromCharCode(1, 0x416)': '"a\\"\\\\b\\n\\t\\x01\u0416"',
            "new Uint8Array([1, 0xAB, 255])": "3 bytes: 01 AB FF",
            "new Uint8Array(1)": "1 byte: 00",
            "new Uint8Array(0)": "0 bytes",
            "new Uint8Array(1000).length + 0": "1000",
            "[1, 'a', [], {}]": '[1, "a", [], {}]',
            "{ a: 1, b: { c: { d: { e: 1 } } } }": "{ a: 1, b: { c: { d: [object] } } }",
            "[[[[1, 2]]]]": "[[[[array of 2]]]]",
            "{}": "{}",
            "{ var block = 5; block }": "5",
            "(function f() {})": "[function f]",
            "new TypeError('text')": "[TypeError: text]",
            "/a+/g": "/a+/g",
            "WScript.MemoryStream()": "[stream]",
            "var s = WScript.MemoryStream(); s.Close(); s": "[closed stream]",
            'new ActiveXObject("Vardeko.crypt.HashObject")': "[HashObject]",
            'new ActiveXObject("Scripting.Dictionary")': "[Scripting.Dictionary]",
            'var d = new ActiveXObject("Scripting.Dictionary"); d.Add(1, 2); d.Keys()':
                "[array 0..0]",
            "var x = 5": "",
        }
        for entry, output in rows.items():
            with self.subTest(entry):
                self.expect(entry, output + "\n" if output else "")

    def test_long_results_are_cut(self):
        output, _ = self.prompt("new Uint8Array(100000)\nnew Array(100000).join('x')\n"
                                "new Array(100000)\n")
        bytes_, text, array = output.splitlines()
        self.assertEqual(bytes_, "100000 bytes: " + "00 " * 256 + "...")
        self.assertEqual(text, '"' + "x" * 9999 + '"... (99999 characters)')
        self.assertTrue(array.endswith("undefined, ... (100000 elements)]"))
        self.assertLess(len(array), 2000)

    def test_an_object_that_contains_itself(self):
        self.expect("var o = {}; o.o = o", "{ o: { o: { o: [object] } } }\n")

    def test_a_getter_that_throws(self):
        output, errors = self.prompt("({ get a() { throw new Error('no') } })\n1\n")
        self.assertEqual(output, "1\n")
        self.assertIn("no", errors)

    def test_the_last_result(self):
        self.expect("6\n_ + 1\nvoid 0\n_\nnoSuch = 8\n_\n", "6\n7\n7\n8\n8\n")


class Entries(PipedTest):
    def test_several_lines(self):
        self.expect("function f(a) {\n  return [a,\n  2];\n}\nf(\n1)\n", "[1, 2]\n")

    def test_brackets_in_texts_and_comments(self):
        self.expect("'(['\n/[(]/.source\n1 // {\n2 /* ( */\n",
                    '"(["\n"[(]"\n1\n2\n')

    def test_comment_of_several_lines(self):
        self.expect("/* one\ntwo */ 3\n", "3\n")

    def test_text_that_goes_on(self):
        self.expect("'a\\\nb'\n", '"ab"\n')

    def test_a_backslash_in_a_comment(self):
        self.expect("1 // c:\\\n2\n", "1\n2\n")

    def test_an_entry_that_input_ends(self):
        output, errors = self.prompt("1\nf(")
        self.assertEqual(output, "1\n")
        self.assertIn("SyntaxError", errors)

    def test_errors_are_reported_and_the_prompt_goes_on(self):
        output, errors = self.prompt("1\nnoSuch\n)\nthrow 'text'\n"
                                     "new ActiveXObject('No.Such')\n2\n")
        self.assertEqual(output, "1\n2\n")
        for pattern in (r"^prompt\(1[,)].*0x800A1391.*noSuch", r"0x800A03EA.*SyntaxError",
                        r"Exception thrown and not caught: text", r"0x800A01AD.*No\.Such"):
            self.assertRegex(errors, re.compile(pattern, re.MULTILINE))

    def test_an_error_in_a_later_line(self):
        _, errors = self.prompt("function f() {\n\nnoSuch() }\nf()\n")
        self.assertRegex(errors, r"\(3[,)].*noSuch")

    def test_assignments_to_calls(self):
        self.expect('var n = new ActiveXObject("Vardeko.crypt.Number")\nn.Text(65001) = "!"\n'
                    "n.Value\nn.Text(65001)\n", '"!"\n"33"\n"!"\n')

    def test_names_that_are_called_and_read(self):
        self.expect('var h = new ActiveXObject("Vardeko.crypt.HashObject")\nh.InitHash("MD5")\n'
                    'h.HashData("")\nh.Value\n', '"D41D8CD98F00B204E9800998ECF8427E"\n')

    def test_carriage_returns_and_empty_lines(self):
        self.expect("\r\n1\r\n\n2\r\n", "1\n2\n")

    def test_text_that_is_not_ascii(self):
        self.expect("'\u0416\U0001F600'.length\n'\u0416\U0001F600'\n", '3\n"\u0416\U0001F600"\n')

    def test_quit(self):
        process = self.start(["-i"], stdin=subprocess.PIPE)
        output, _ = process.communicate(b"1\nWScript.Quit(7)\n2\n", timeout=60)
        self.assertEqual((process.returncode, output), (7, b"1\n"))

    def test_files_are_closed_at_the_end(self):
        self.expect('var out = WScript.OpenFile("out", "w")\nout.Write(new Uint8Array(2))\n',
                    "2\n")
        self.assertEqual((self.read("out"), self.names()), (b"\0\0", ["out"]))

    def test_after_a_script(self):
        self.write("a.js", b"var a = WScript.Arguments(0); function f() { return a + n.Text; }\n"
                           b'var n = new ActiveXObject("Vardeko.crypt.Number"); n.Value = 33;')
        self.expect("f()\nn.Text(65001)\nn.Text\n", '"one!"\n"!"\n"!"\n', words=("a.js", "one"))

    def test_after_code_that_fails(self):
        output, errors = self.prompt("a\n", "-e", "var a = 5; noSuch")
        self.assertEqual(output, "5\n")
        self.assertRegex(errors, r"^-e\(1[,)].*noSuch")

    def test_no_memory(self):
        output, errors = self.prompt("var s = 'x'; for (;;) s += s\n1\n")
        self.assertEqual(output, "1\n")
        self.assertIn("error", errors)


class Help(PipedTest):
    def test_help_of_an_object(self):
        output, errors = self.prompt('var h = new ActiveXObject("Vardeko.crypt.HashObject")\n'
                                     "help(h)\n")
        self.assertEqual(errors, "")
        self.assertTrue(output.startswith("HashObject\n"), output)
        self.assertRegex(output, r"\n  InitHash\(.*method\n      \S.*\n")
        self.assertRegex(output, r"\n  Value.*property\n      \S")

    def test_help_of_an_object_of_the_host(self):
        output, _ = self.prompt('help(new ActiveXObject("Scripting.Dictionary"))\n')
        self.assertTrue(output.startswith("Scripting.Dictionary\n"), output)
        self.assertRegex(output, r"\n  Exists\(.*method\n      \S")

    def test_help_of_an_object_of_the_script(self):
        output, errors = self.prompt("help({ first: 1 })\nhelp(1)\n")
        self.assertEqual(errors, "")
        self.assertIn("  first\n", output)

    def test_help_of_a_class(self):
        output, errors = self.prompt('help("Vardeko.crypt.HashObject")\n')
        self.assertEqual(errors, "")
        self.assertIn("InitHash", output)
        _, errors = self.prompt('help("No.Such")\n')
        self.assertIn("No.Such", errors)

    def test_general_help(self):
        output, _ = self.prompt("help()\n")
        self.assertIn("help(object)", output)


class TerminalTest(HostTest):
    """At a terminal of its own."""

    def setUp(self):
        super().setUp()
        self.state = self.folder / "state"
        self.env = {"TERM": "xterm", "XDG_STATE_HOME": str(self.state), "HOME": str(self.folder)}
        self.shown = ""
        self.process = None

    def open(self, *words):
        self.close()
        master, slave = pty.openpty()

        def take_terminal():
            os.setsid()
            fcntl.ioctl(slave, termios.TIOCSCTTY, 0)

        self.process = self.start(words, self.env, take_terminal, stdin=slave, stdout=slave,
                                  stderr=slave)
        self.terminal = os.ttyname(slave)
        os.close(slave)
        self.master = master
        self.shown = ""
        self.wait_for_text("> ")

    def close(self):
        if self.process is not None:
            self.process.kill()
            self.process.wait(60)
            os.close(self.master)
            self.process = None

    def tearDown(self):
        self.close()
        super().tearDown()

    def receive(self, seconds):
        if not select.select([self.master], [], [], seconds)[0]:
            return False
        try:
            got = os.read(self.master, 65536)
        except OSError:  # the other side is closed
            return False
        self.shown += CONTROLS.sub("", got.decode(errors="replace"))
        return got != b""

    def wait_for_text(self, pattern, seconds=60):
        """Waits until the pattern is shown and forgets all before its end; returns that."""
        end = time.monotonic() + seconds
        while not (found := re.search(pattern, self.shown)):
            if not self.receive(0.1) and time.monotonic() > end:
                self.fail(f"{pattern!r} is not shown: {self.shown!r}")
        before, self.shown = self.shown[:found.end()], self.shown[found.end():]
        return before

    def send(self, text):
        os.write(self.master, text.encode())

    def type(self, text):
        """Sends what the line editor is to see: nothing may arrive before it has the terminal."""
        end = time.monotonic() + 60
        while CAN_EDIT and termios.tcgetattr(self.master)[3] & termios.ICANON:
            self.assertLess(time.monotonic(), end)
            self.receive(0.01)
        self.send(text)

    def expect(self, line, pattern):
        """Types a line and waits for its answer and the next prompt."""
        self.type(line + "\n")
        return self.wait_for_text(r"\n" + pattern + r"\n> ")

    def expect_end(self, status):
        end = time.monotonic() + 60
        while self.process.poll() is None and time.monotonic() < end:
            self.receive(0.1)
        while self.receive(0):
            pass
        self.assertEqual(self.process.poll(), status, self.shown)


class AtATerminal(TerminalTest):
    def test_without_arguments(self):
        self.open()
        self.expect("6 * 7", "42")

    def test_end_of_input(self):
        self.open()
        self.type("\x04")
        self.expect_end(0)

    def test_several_lines(self):
        self.open()
        self.type("function f() {\n")
        self.wait_for_text(r"\.\.\. ")
        self.type("return 5 }\n")
        self.wait_for_text("> ")
        self.expect("f()", "5")

    def test_ctrl_c_cancels_a_line(self):
        self.open()
        self.type("noSuch.")
        self.wait_for_text("noSuch.")
        self.type("\x03")
        self.wait_for_text("> ")
        self.expect("6 * 7", "42")

    def test_ctrl_c_cancels_an_entry(self):
        self.open()
        self.type("f(\n")
        self.wait_for_text(r"\.\.\. ")
        self.type("\x03")
        self.wait_for_text("> ")
        self.expect("6 * 7", "42")

    def interrupt(self, line, answer="Interrupted"):
        self.open()
        self.type(line + "\n")
        self.wait_for_text("running")
        time.sleep(0.2)
        self.send("\x03")
        # Waits for less than the command takes.
        self.wait_for_text(answer)
        self.wait_for_text("> ")
        self.expect("6 * 7", "42")

    # What is typed is shown as well; the text that is waited for is not in it.
    RUNNING = "WScript.StdErr.Write('run' + 'ning');"

    def test_ctrl_c_interrupts_sleep(self):
        self.interrupt(self.RUNNING + "WScript.Sleep(600000)")

    def test_ctrl_c_interrupts_a_loop_that_allocates(self):
        self.interrupt(self.RUNNING + "for (var i = 0;; i++) ({ a: [i] })")

    def test_ctrl_c_interrupts_a_loop_that_calls(self):
        self.interrupt(self.RUNNING + "for (;;) WScript.Echo()")

    def test_ctrl_c_interrupts_a_loop_of_members(self):
        self.interrupt("var h = new ActiveXObject('Vardeko.crypt.HashObject');" + self.RUNNING +
                       "for (;;) h.InitHash('MD5')")

    def test_ctrl_c_interrupts_a_loop_of_native_functions(self):
        # They allocate nothing in the engine.
        self.interrupt("var s = WScript.MemoryStream();" + self.RUNNING + "for (;;) s.Seek(0, 0)")

    def test_ctrl_c_interrupts_a_read_of_standard_input(self):
        self.interrupt(self.RUNNING + "WScript.StdIn.ReadLine()")

    def test_ctrl_c_interrupts_a_script_before_the_prompt(self):
        code = "WScript.StdErr.Write('running> '); WScript.Sleep(600000)"
        self.open("-i", "-e", code)
        self.send("\x03")
        self.wait_for_text("> ")
        self.expect("6 * 7", "42")

    def wait_for_work(self):
        """Waits until the command has computed for a while, which shows that it has come to its loop."""
        def ticks():
            return int(open_text(f"/proc/{self.process.pid}/stat").rsplit(")", 1)[1].split()[11])

        enough, end = ticks() + 10, time.monotonic() + 60
        while ticks() < enough:
            self.assertLess(time.monotonic(), end)
            time.sleep(0.01)

    def test_a_command_that_does_not_stop(self):
        self.write("out", b"old")
        self.open()
        self.type("var out = WScript.OpenFile('out', 'w');" + self.RUNNING + "for (;;) ;\n")
        self.wait_for_text("running")
        self.wait_for_work()
        self.send("\x03")
        self.wait_for_text("Ctrl-C again ends mirolta-host")
        self.assertIsNone(self.process.poll())
        self.send("\x03")
        self.expect_end(-signal.SIGINT)
        self.assertEqual(self.read("out"), b"old")
        self.assertFalse(self.has_temporary())


@unittest.skipUnless(CAN_EDIT, "the host is built without libedit")
class Editing(TerminalTest):
    def test_the_cursor_moves(self):
        self.open()
        self.type("6 * 7\x01")
        self.expect("10 + ", "52")

    def test_an_earlier_line(self):
        self.open()
        self.expect("6 * 7", "42")
        self.expect("\x1b[A + 1", "43")
        self.expect("\x10\x10", "42")

    def complete(self, typed, pattern):
        self.type(typed + "\t")
        self.wait_for_text(pattern)
        self.type("\x15")

    def test_completion_of_a_member(self):
        self.open()
        self.expect("var hash = new ActiveXObject('Vardeko.crypt.HashObject'); 1", "1")
        self.complete("hash.initH", "InitHash")
        self.complete("x = hash.HashD", "HashData")
        self.expect("hash.ini\t", r"\[function.*\]")

    def test_completion_of_a_variable(self):
        self.open()
        self.expect("var remarkable = { property: { within: 1 } }; 1", "1")
        self.expect("remark\t.prop\t.with\t", "1")
        self.complete("functio", "function")

    def test_several_completions(self):
        self.open()
        self.expect("var o = { first: 1, second: 2, secret: 3 }; 1", "1")
        self.type("o.s\t")
        self.wait_for_text("o.sec")
        self.type("\t")
        self.wait_for_text(r"\nsecond +secret\n")
        self.type("o\t")
        self.expect("", "2")

    def test_nothing_to_complete(self):
        self.open()
        self.type("noSuch.na\t")
        self.type("\x15")
        self.expect("6 * 7", "42")

    def test_completion_runs_no_script(self):
        self.open()
        self.expect("var o = { get a() { ran = 1; return { b: 1 } } }, ran = 0; 1", "1")
        self.type("o.a.\t\x15")
        self.expect("ran", "0")

    def test_bytes_that_are_not_utf8(self):
        self.open()
        self.type("'")
        os.write(self.master, b"\xe2\x82'.length\n")
        self.wait_for_text(r"\n2\n> ")
        # Ctrl-C within a character cancels the line, too.
        self.type("noSuch.")
        self.wait_for_text("noSuch.")
        os.write(self.master, b"\xe2")
        time.sleep(0.2)
        self.send("\x03")
        self.wait_for_text("> ")
        self.expect("6 * 7", "42")

    def test_text_that_is_not_ascii(self):
        self.open()
        self.expect("'\u0416\U0001F600'.length", "3")


@unittest.skipUnless(CAN_EDIT, "the host is built without libedit")
class TerminalModes(TerminalTest):
    def is_edited(self):
        return not termios.tcgetattr(self.master)[3] & termios.ICANON

    def wait_for_state(self, state):
        end = time.monotonic() + 60
        stat_file = f"/proc/{self.process.pid}/stat"
        while open_text(stat_file).rsplit(")", 1)[1].split()[0] not in state:
            self.assertLess(time.monotonic(), end)
            self.receive(0.01)

    def test_are_restored_when_a_signal_ends_the_prompt(self):
        for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT):
            with self.subTest(number):
                self.open()
                self.type("1 + ")
                # Without this side the terminal would end with the process.
                slave = os.open(self.terminal, os.O_RDWR | os.O_NOCTTY)
                self.addCleanup(os.close, slave)
                self.assertTrue(self.is_edited())
                self.process.send_signal(number)
                self.expect_end(-number)
                self.assertFalse(self.is_edited())

    def test_are_restored_while_the_prompt_is_stopped(self):
        self.open()
        self.type("6 * ")
        self.wait_for_text(r"6 \* ")
        self.send("\x1a")
        self.wait_for_state("T")
        self.assertFalse(self.is_edited())
        self.process.send_signal(signal.SIGCONT)
        self.wait_for_state("SR")
        self.expect("7", "42")


class HistoryTest(TerminalTest):
    def history(self):
        return self.state / "mirolta" / "history"

    def test_file(self):
        self.open()
        self.expect("6 * 7", "42")
        self.expect("5", "5")
        self.assertEqual(self.history().read_text(), "6 * 7\n5\n")
        self.assertEqual(stat.S_IMODE(self.history().stat().st_mode), 0o600)
        self.assertEqual(stat.S_IMODE(self.history().parent.stat().st_mode), 0o700)

    def test_is_read_at_the_next_start(self):
        if not CAN_EDIT:
            self.skipTest("the host is built without libedit")
        self.open()
        self.expect("6 * 7", "42")
        self.open()
        self.expect("\x10 + 1", "43")

    def test_keeps_lines_of_others_and_its_length(self):
        self.history().parent.mkdir(parents=True)
        self.open()
        self.history().write_text("".join(f"{i}\n" for i in range(2000)))
        self.expect("6 * 7", "42")
        lines = self.history().read_text().splitlines()
        self.assertEqual((len(lines), lines[0], lines[-2:]), (1000, "1001", ["1999", "6 * 7"]))

    def test_every_line_of_an_entry(self):
        self.open()
        self.type("[1,\n")
        self.wait_for_text(r"\.\.\. ")
        self.expect("2]", r"\[1, 2\]")
        self.assertEqual(self.history().read_text(), "[1,\n2]\n")

    def test_is_written_before_the_entry_runs(self):
        self.open()
        self.type("WScript.Quit(3)\n")
        self.expect_end(3)
        self.assertEqual(self.history().read_text(), "WScript.Quit(3)\n")

    def test_repeated_lines_are_kept_once(self):
        self.open()
        self.expect("5", "5")
        self.expect("5", "5")
        self.assertEqual(self.history().read_text(), "5\n")

    def test_switched_off(self):
        self.env["MIROLTA_HISTORY"] = ""
        self.open()
        self.expect("5", "5")
        self.assertFalse(self.state.exists())

    def test_another_file(self):
        self.env["MIROLTA_HISTORY"] = str(self.folder / "mine")
        self.open()
        self.expect("5", "5")
        self.assertEqual(self.read("mine"), b"5\n")

    def test_a_link_stays(self):
        self.history().parent.mkdir(parents=True)
        self.history().symlink_to(self.folder / "mine")
        self.open()
        self.expect("5", "5")
        self.assertEqual(self.read("mine"), b"5\n")
        self.assertTrue(self.history().is_symlink())

    def test_a_file_that_cannot_be_written(self):
        self.env["MIROLTA_HISTORY"] = str(self.folder)
        self.open()
        self.type("5\n")
        self.wait_for_text("cannot be written")
        self.wait_for_text("\n5\n> ")
        self.expect("6", "6")

    def test_none_without_a_terminal(self):
        subprocess.run([HOST, "-i"], input=b"5\n", env={**os.environ, **self.env}, check=True,
                       capture_output=True)
        self.assertFalse(self.state.exists())


if __name__ == "__main__":
    unittest.main()
