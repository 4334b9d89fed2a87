"""The standard streams of a script: what reading waits for, bytes that are not UTF-8, closed
descriptors and devices that are full.

usage: standard_streams_test.py HOST SCRATCH [sanitized]
"""
import os
import pty
import resource
import select
import shutil
import subprocess
import sys
import unittest

HOST, SCRATCH = sys.argv[1:3]
SANITIZED = len(sys.argv) > 3
WAIT = 60  # seconds, for what is to come at once

# Runs what the test asks for and prints the outcome, or the error's number.
PRELUDE = r"""
function show(f) {
  try { WScript.Echo(JSON.stringify(f())); } catch (e) {
    WScript.Echo("error " + (e.number >>> 0).toString(16) + " " + e.description);
  }
}
var input = WScript.StdIn, output = WScript.StdOut;
"""


def start(script, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE, **options):
    """Starts the host on a script."""
    path = os.path.join(SCRATCH, "script.js")
    with open(path, "w", encoding="utf-8") as file:
        file.write(PRELUDE + script)
    return subprocess.Popen([HOST, path], stdin=stdin, stdout=stdout, stderr=stderr, **options)


def run(script, text=b"", **options):
    """Runs a script with this input; its output."""
    process = start(script, **options)
    out, errors = process.communicate(text, WAIT)
    assert not errors and process.returncode == 0, (errors, process.returncode)
    return out


def end(process):
    """Ends a process that a failed test left."""
    process.kill()
    process.wait()
    for stream in (process.stdin, process.stdout, process.stderr):
        if stream is not None:
            stream.close()


def limit_memory():
    """Limits the address space of a child."""
    resource.setrlimit(resource.RLIMIT_AS, (48 << 20, 48 << 20))


class StandardStreams(unittest.TestCase):
    def answer(self, process):
        """The next output of a process whose input stays open."""
        self.assertTrue(select.select([process.stdout], [], [], WAIT)[0], "no output")
        return os.read(process.stdout.fileno(), 65536)

    def converse(self, script, turns):
        """Sends each text and compares what the script prints then."""
        process = start(script)
        try:
            for text, expected in turns:
                os.write(process.stdin.fileno(), text)
                if expected:
                    self.assertEqual(self.answer(process), expected)
            rest = process.communicate(b"", WAIT)[0]
            self.assertEqual(process.returncode, 0)
            return rest
        finally:
            end(process)

    def test_a_line_is_returned_when_it_ends(self):
        script = """while (!input.AtEndOfStream) { output.Write('<' + input.ReadLine() + '>'); }
                    output.WriteLine(input.Line);"""
        rest = self.converse(script, [(b"one\n", b"<one>"), (b"two\r\nthr", b"<two>"),
                                      (b"ee\n\n", b"<three><>"), (b"last", b"")])
        self.assertEqual(rest, b"<last>5\n")

    def test_characters_are_returned_when_they_are_there(self):
        script = """output.Write(input.Read(1)); output.Write(input.Read(2));
                    input.Skip(1); output.Write(input.Read(1));"""
        self.converse(script, [(b"a", b"a"), (b"b\xc3", b""), (b"\xa9", "b\u00e9".encode()),
                               (b"xy", b"y")])

    def test_the_end_waits_for_one_byte(self):
        self.converse("show(function () { return input.AtEndOfStream });"
                      "show(function () { return input.AtEndOfLine });",
                      [(b"\r", b"false\n"), (b"\n", b"true\n")])

    def test_output_is_there_before_input_is_read(self):
        process = start("output.Write('Name: '); WScript.Echo('Hello ' + input.ReadLine());")
        self.assertEqual(self.answer(process), b"Name: ")
        self.assertEqual(process.communicate(b"Ann\n", WAIT)[0], b"Hello Ann\n")

    def test_a_terminal_gives_its_lines(self):
        leader, follower = pty.openpty()
        process = start("output.Write(input.IsTerminal + input.ReadLine() + '.');"
                        "output.Write(String(input.AtEndOfStream));", stdin=follower)
        self.addCleanup(end, process)
        os.write(leader, b"typed\n")
        os.write(leader, b"\x04")
        self.assertEqual(process.communicate(timeout=WAIT)[0], b"truetyped.true")
        os.close(leader)
        os.close(follower)

    def test_bytes_survive(self):
        every = bytes(range(1, 256)) * 700 + b"\xe2\x82"
        self.assertEqual(run("output.Write(input.ReadAll());", every), every)
        self.assertEqual(run("while (!input.AtEndOfStream) output.Write(input.Read(1));", every[:700]),
                         every[:700])
        text = ("\u20ac\U0001f600\u00e9a" * 30000).encode()
        self.assertEqual(run("while (!input.AtEndOfStream) output.Write(input.Read(999));", text), text)

    def test_a_byte_order_mark_is_a_character(self):
        self.assertEqual(run("show(function () { return [input.ReadAll().charCodeAt(0), input.AtEndOfStream]; });",
                             "\ufeffa".encode()), b"[65279,true]\n")

    def test_zeros_are_characters(self):
        self.assertEqual(run("output.Write(input.ReadLine().length);", b"a\0b\n"), b"3")

    def test_line_ends(self):
        text = b"one\rtwo\r\r\n\n\r\nlast\r"
        script = "var a = []; while (!input.AtEndOfStream) a.push(input.ReadLine());" \
                 "show(function () { return a });"
        self.assertEqual(run(script, text), b'["one\\rtwo\\r","","","last\\r"]\n')

    def test_lines_and_columns(self):
        script = """function place() { show(function () {
                      return [input.Line, input.Column, input.AtEndOfLine, input.AtEndOfStream] }); }
                    place(); input.Read(2); place(); input.Read(1); place(); input.SkipLine(); place();
                    input.Skip(3); place(); input.ReadAll(); place();"""
        self.assertEqual(run(script, b"ab\r\ncd\nend").decode().split("\n"),
                         ["[1,1,false,false]", "[1,3,true,false]", "[1,4,true,false]",
                          "[2,1,false,false]", "[3,1,false,false]", "[3,4,true,true]", ""])

    def test_a_long_line(self):
        self.assertEqual(run("output.Write(input.ReadLine().length);", b"x" * 3000000 + b"\r\n"),
                         b"3000000")

    @unittest.skipIf(SANITIZED, "the sanitizers need more address space")
    def test_an_endless_line_is_out_of_memory(self):
        with open("/dev/zero", "rb") as zeros:
            out = run("show(function () { return input.ReadLine() });", None, stdin=zeros,
                      preexec_fn=limit_memory)
        self.assertIn(b"error 8007000e", out)

    def test_a_closed_input_is_an_error(self):
        for use in ("ReadLine()", "ReadAll()", "AtEndOfStream", "Skip(1)"):
            out = run("var f = WScript.OpenFile('/dev/zero', 'r');"
                      f"show(function () {{ return input.{use} }});", None, stdin=None,
                      preexec_fn=lambda: os.close(0))
            self.assertEqual(out, b"error 80070006 The handle is invalid\n", use)

    def test_a_closed_output_takes_no_file(self):
        target = os.path.join(SCRATCH, "target")
        process = start("var f = WScript.OpenFile(%r, 'w'); output.Write('lost'); f.Close();" % target,
                        stdout=None, preexec_fn=lambda: os.close(1))
        errors = process.communicate(b"", WAIT)[1]
        self.assertEqual(process.returncode, 1)
        self.assertIn(b"the output cannot be written", errors)
        self.assertEqual(os.path.getsize(target), 0)

    def test_a_folder_as_input_is_an_error(self):
        folder = os.open("/", os.O_RDONLY)
        out = run("show(function () { return input.Read(1) });", None, stdin=folder)
        os.close(folder)
        self.assertEqual(out, b"error 800a0046 Permission denied\n")

    def test_a_full_device_is_an_error(self):
        script = """var said = 'none', text = new Array(70000).join('x');
                    try { output.Write(text); output.Write(text); } catch (e) {
                      said = (e.number >>> 0).toString(16) + ' ' + e.description; }
                    WScript.StdErr.Write(said);"""
        with open("/dev/full", "wb") as full:
            process = start(script, stdout=full)
            errors = process.communicate(b"", WAIT)[1]
        self.assertTrue(errors.startswith(b"8003001d The output cannot be written"), errors)
        self.assertEqual(process.returncode, 1)

    def test_closing_an_output_that_is_full_is_an_error(self):
        script = """output.Write('x');
                    try { output.Close(); } catch (e) { WScript.StdErr.Write(e.number + ' '); }"""
        with open("/dev/full", "wb") as full:
            process = start(script, stdout=full)
            errors = process.communicate(b"", WAIT)[1]
        self.assertTrue(errors.startswith(b"-2147287011 "), errors)

    def test_both_outputs_keep_their_order(self):
        process = start("output.Write('1'); WScript.StdErr.Write('2'); WScript.Echo('3');",
                        stderr=subprocess.STDOUT)
        self.assertEqual(process.communicate(b"", WAIT)[0], b"123\n")


if __name__ == "__main__":
    shutil.rmtree(SCRATCH, ignore_errors=True)
    os.makedirs(SCRATCH)
    unittest.main(argv=sys.argv[:1])
