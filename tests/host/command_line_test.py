"""The command line of the host: where scripts come from, time limits, and Ctrl-C."""
import os
import signal
import subprocess
import time
import unittest

from runner import HOST, HostTest

ECHO_ARGUMENTS = "for (var i = 0, a = WScript.Arguments; i < a.length; i++) WScript.Echo(a(i))"


class CommandLineTest(HostTest):
    def run_input(self, text, *words):
        process = self.start(words, stdin=subprocess.PIPE)
        output, errors = process.communicate(text.encode(), timeout=60)
        return process.returncode, output.decode(), errors.decode()


class WhereScriptsComeFrom(CommandLineTest):
    def test_code(self):
        run = self.run_host("-e", ECHO_ARGUMENTS, "one", "-e", "//nologo", "two")
        self.assertEqual((run.returncode, run.stdout, run.stderr), (0, "one\n-e\ntwo\n", ""))

    def test_code_with_an_assignment_to_a_call(self):
        run = self.run_host("-e", 'var n = new ActiveXObject("Vardeko.crypt.Number");'
                                  'n.Text(65001) = "12"; WScript.Echo(n.Text);')
        self.assertEqual((run.returncode, run.stdout, run.stderr), (0, "12\n", ""))

    def test_an_error_of_code(self):
        run = self.run_host("-e", "var x;\nnoSuch")
        self.assertEqual(run.returncode, 1)
        self.assertRegex(run.stderr, r"^-e\(2[,)].*noSuch")

    def test_dash(self):
        self.assertEqual(self.run_input(ECHO_ARGUMENTS, "-", "one", "two"), (0, "one\ntwo\n", ""))

    def test_piped_input(self):
        self.assertEqual(self.run_input("WScript.Echo(1)"), (0, "1\n", ""))
        self.assertEqual(self.run_input(""), (0, "", ""))

    def test_piped_input_with_options(self):
        self.assertEqual(self.run_input("WScript.Echo(1)", "//nologo"), (0, "1\n", ""))

    def test_an_error_of_piped_input(self):
        status, _, errors = self.run_input("\n\nnoSuch")
        self.assertEqual(status, 1)
        self.assertRegex(errors, r"^standard input\(3[,)].*noSuch")

    def test_input_that_cannot_be_read(self):
        folder = os.open(self.folder, os.O_RDONLY)
        self.addCleanup(os.close, folder)
        run = self.run_host("-", stdin=folder)
        self.assertEqual((run.returncode, run.stdout), (1, ""))
        self.assertIn("cannot read the script from standard input", run.stderr)

    def test_charset(self):
        self.write("a.js", 'WScript.Echo("\u0416")'.encode("koi8-r"))
        run = self.run_host("--charset", "koi8-r", "a.js")
        self.assertEqual((run.returncode, run.stdout, run.stderr), (0, "\u0416\n", ""))


class EncodingsOfScripts(CommandLineTest):
    TEXT = "WScript.Echo('\u00e9');\r\n'\u00e9' + null.x;"
    REPORT = ("(2, 1): error 0x800A138F (-2146823281): TypeError: cannot read property 'x' of null\n"
              "    '\u00e9' + null.x;\n    ^\n")
    MARKS = {"utf-8": b"\xef\xbb\xbf", "utf-16-le": b"\xff\xfe", "utf-16-be": b"\xfe\xff"}

    def make(self, name, content):
        self.write(name, content)
        return str(self.folder / name)

    def check(self, name, data, *words):
        run = self.run_host(*words, self.make("a.js", data))
        report = str(self.folder / "a.js") + self.REPORT
        self.assertEqual((run.returncode, run.stdout, run.stderr), (1, "\u00e9\n", report), name)
        status, output, errors = self.run_bytes(data, *words, "-")
        self.assertEqual((status, output, errors), (1, "\u00e9\n", "standard input" + self.REPORT), name)

    def run_bytes(self, data, *words):
        process = self.start(words, stdin=subprocess.PIPE)
        output, errors = process.communicate(data, timeout=60)
        return process.returncode, output.decode(), errors.decode()

    def test_with_and_without_mark(self):
        for name, mark in self.MARKS.items():
            self.check(name, self.TEXT.encode(name))
            self.check(name + " with mark", mark + self.TEXT.encode(name))

    def test_saved_in_a_windows_code_page(self):
        self.check("windows-1252", self.TEXT.encode("cp1252"))

    def test_chosen(self):
        for name, charset in (("cp437", "437"), ("cp850", "CP850"), ("iso-8859-15", "ISO-8859-15"),
                              ("utf-16-be", "1201"), ("utf-8", "65001")):
            self.check(name, self.TEXT.encode(name), "--charset", charset)

    # Names of Python's codecs, with characters that other sets of the kind have elsewhere or lack.
    CODE_PAGES = {
        1200: ("utf-16-le", "\u0436"), 1201: ("utf-16-be", "\u0436"), 10000: ("mac-roman", "\u00e9"),
        12000: ("utf-32-le", "\u0436"), 12001: ("utf-32-be", "\u0436"), 20127: ("ascii", "z"),
        20866: ("koi8-r", "\u0436"), 20932: ("euc-jp", "\u4e9c"), 21866: ("koi8-u", "\u0457"),
        28591: ("iso8859-1", "\u00f0"), 28592: ("iso8859-2", "\u0142"), 28593: ("iso8859-3", "\u0127"),
        28594: ("iso8859-4", "\u0138"), 28595: ("iso8859-5", "\u0436"), 28596: ("iso8859-6", "\u0628"),
        28597: ("iso8859-7", "\u03bb"), 28598: ("iso8859-8", "\u05e9"), 28599: ("iso8859-9", "\u011f"),
        28600: ("iso8859-10", "\u014b"), 28601: ("iso8859-11", "\u0e01"), 28603: ("iso8859-13", "\u0173"),
        28604: ("iso8859-14", "\u0175"), 28605: ("iso8859-15", "\u0153"), 50220: ("iso2022-jp", "\u4e9c"),
        51932: ("euc-jp", "\uff71"), 51936: ("gb2312", "\u6c49"), 51949: ("euc-kr", "\uac00"),
        54936: ("gb18030", "\u6c49"), 65000: ("utf-7", "\u0436"), 65001: ("utf-8", "\u0436")}

    def test_chosen_by_number(self):
        for number, (codec, character) in self.CODE_PAGES.items():
            data = f"WScript.Echo('{character}')".encode(codec)
            for charset in (str(number), f"cp{number}"):
                run = self.run_host("--charset", charset, self.make("a.js", data))
                self.assertEqual((run.returncode, run.stdout, run.stderr), (0, character + "\n", ""), charset)

    def test_not_valid(self):
        path = self.make("a.js", b"x;\n'\xc3\xa9\xe9';")
        run = self.run_host(path)
        self.assertEqual((run.returncode, run.stdout), (1, ""))
        self.assertEqual(run.stderr, f"mirolta-host: {path}(2): the byte 0xE9 at offset 6 is not valid UTF-8; "
                                     "--charset NAME chooses the character set, for example windows-1252\n")

    def test_an_unknown_set(self):
        run = self.run_host("--charset", "no-such-set", self.make("a.js", b"x"))
        self.assertEqual((run.returncode, run.stdout), (1, ""))
        self.assertRegex(run.stderr, "^mirolta-host: unknown character set no-such-set; ")

    def test_of_another_language(self):
        path = self.make("a.vbs", b"MsgBox 1")
        run = self.run_host(path)
        self.assertEqual((run.returncode, run.stdout), (1, ""))
        self.assertEqual(run.stderr, f"mirolta-host: cannot run {path}: this is a VBScript script; "
                                     "mirolta-host runs JScript (ECMAScript 5) in .js files\n")

    def test_of_more_than_256_megabytes(self):
        with open("/dev/zero", "rb") as zeros:
            run = self.run_host("-", stdin=zeros)
        self.assertEqual((run.returncode, run.stdout), (1, ""))
        self.assertEqual(run.stderr,
                         "mirolta-host: cannot read the script from standard input: File too large\n")


class WhatItPrints(CommandLineTest):
    def test_help_on_standard_output(self):
        for word in ("--help", "-h", "//?"):
            run = self.run_host(word)
            self.assertEqual((run.returncode, run.stderr), (0, ""))
            self.assertTrue(run.stdout.startswith("Usage: mirolta-host "), run.stdout)

    def test_output_that_cannot_be_written(self):
        with open("/dev/full", "wb") as full:
            for words in (("--help",), ("--version",), ("--list",), ("--describe", "Scripting.Dictionary")):
                run = self.run_host(*words, stdout=full)
                self.assertEqual((run.returncode, run.stderr),
                                 (1, "mirolta-host: the output cannot be written\n"), words)

    def test_version(self):
        run = self.run_host("--version")
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        self.assertRegex(run.stdout, r"^mirolta-host \d+\.\d+\.\d+ \(Duktape \d+\.\d+\.\d+(, libedit)?\)\n$")

    def test_usage_errors_on_standard_error(self):
        run = self.run_host("--nonsense")
        self.assertEqual((run.returncode, run.stdout), (2, ""))
        self.assertEqual(run.stderr, "mirolta-host: unknown option --nonsense\n"
                                     "Try mirolta-host --help.\n")

    def test_batch_mode_has_no_error_reports(self):
        run = self.run_host("//B", "-e", "noSuch")
        self.assertEqual((run.returncode, run.stdout, run.stderr), (1, "", ""))


    def test_batch_mode_has_no_echo(self):
        code = 'WScript.Echo(1); WScript.StdOut.WriteLine(WScript.Interactive);'
        self.assertEqual(self.run_host("//B", "-e", code).stdout, "0\n")
        code = 'WScript.Interactive = false; WScript.Echo(1); WScript.Interactive = true; WScript.Echo(2)'
        self.assertEqual(self.run_host("-e", code).stdout, "2\n")


class Check(CommandLineTest):
    def test_every_algorithm_passes(self):
        run = self.run_host("--check")
        self.assertEqual((run.returncode, run.stderr), (0, ""), run.stdout)
        for row in ("MD5", "SHA1", "SHA256", "AES", "DES", "RSA"):
            self.assertRegex(run.stdout, rf"(?m)^.*{row}.* +\d+ +passed$")
        self.assertRegex(run.stdout, r"\n\d+ cases, 0 failed\n$")

    def test_failures_are_told(self):
        # The class leads nowhere.
        self.write("registry.reg", b"REGEDIT4\n[HKEY_CLASSES_ROOT\\Vardeko.crypt.HashObject\\CLSID]\n"
                                   b'@="{00000000-0000-0000-0000-000000000001}"\n')
        run = self.run_host("--check", env={"MIROLTA_REGISTRY": str(self.folder / "registry.reg")})
        self.assertEqual(run.returncode, 1)
        self.assertRegex(run.stdout, r"(?m)^MD5 .*FAILED$")


def ended(seconds):
    return f"mirolta-host: -e was ended: it ran longer than {seconds} second{'s' * (seconds > 1)}\n"


class TimeLimit(CommandLineTest):
    def expect_in_time(self, output, words_of, status, errors_of):
        """Expects an output that is complete before the limit: on a busy machine a longer one."""
        for seconds in (1, 5, 30):
            run = self.run_host(*words_of(seconds))
            if run.stdout == output(seconds):
                break
        self.assertEqual((run.returncode, run.stdout, run.stderr), (status, output(seconds), errors_of(seconds)))

    def expect_end(self, code, *words, errors=ended(1)):
        start = time.monotonic()
        run = self.run_host("//T:1", *words, "-e", code)
        self.assertEqual((run.returncode, run.stderr), (1, errors))
        self.assertGreater(time.monotonic() - start, 0.9)

    def test_ends_a_loop(self):
        self.expect_end("for (;;) ;")

    def test_keeps_the_output_before_it(self):
        self.expect_in_time(lambda _: "before",
                            lambda limit: (f"//T:{limit}", "-e", 'WScript.StdOut.Write("before"); for (;;) ;'),
                            1, ended)

    def test_ends_sleep(self):
        self.expect_end("WScript.Sleep(60000)")

    def test_ends_what_catches_errors(self):
        self.expect_end("for (;;) try { WScript.Sleep(60000) } catch (e) {} finally { continue }")

    def test_keeps_files(self):
        self.write("out", b"old")
        self.expect_end('var out = WScript.OpenFile("out", "w");'
                        "out.Write(new Uint8Array(9)); for (;;) ;")
        self.assertEqual((self.read("out"), self.names()), (b"old", ["out"]))

    def test_says_nothing_in_batch_mode(self):
        self.expect_end("for (;;) ;", "//B", errors="")

    def test_leaves_quick_scripts_alone(self):
        run = self.run_host("//T:60", "-e", "WScript.Echo(1)")
        self.assertEqual((run.returncode, run.stdout, run.stderr), (0, "1\n", ""))
        self.assertEqual(self.run_host("//T:0", "-e", "WScript.Sleep(1)").returncode, 0)

    def test_of_the_script_itself(self):
        self.expect_in_time(lambda limit: f"0\nbefore {limit}",
                            lambda limit: ("-e", f"WScript.Echo(WScript.Timeout); WScript.timeout = {limit};"
                                           'WScript.StdOut.Write("before " + WScript.Timeout); for (;;) ;'),
                            1, ended)

    def test_of_the_script_itself_keeps_files(self):
        self.write("out", b"old")
        run = self.run_host("-e", 'WScript.Interactive = false; var out = WScript.OpenFile("out", "w");'
                                  "out.Write(new Uint8Array(9)); WScript.Timeout = 1; WScript.Sleep(60000)")
        self.assertEqual((run.returncode, run.stdout, run.stderr), (1, "", ""))
        self.assertEqual((self.read("out"), self.names()), (b"old", ["out"]))

    def test_can_be_removed(self):
        self.expect_in_time(lambda limit: f"{limit}\n0\n",
                            lambda limit: (f"//T:{limit}", "-e", "WScript.Echo(WScript.Timeout);"
                                           f"WScript.Timeout = 0; WScript.Sleep({limit}500);"
                                           "WScript.Echo(WScript.Timeout)"),
                            0, lambda _: "")

    def test_must_be_a_number_of_seconds(self):
        for value in ("-1", "40000", "'x'", "NaN", "{}"):
            run = self.run_host("-e", "WScript.Timeout = " + value)
            self.assertEqual(run.returncode, 1)
            self.assertIn("Invalid procedure call or argument", run.stderr)

    def test_ends_a_process_that_ignores_the_signal(self):
        def ignore():
            signal.signal(signal.SIGALRM, signal.SIG_IGN)
            signal.pthread_sigmask(signal.SIG_BLOCK, [signal.SIGALRM])
        run = self.run_host("//T:1", "-e", "for (;;) ;", preexec_fn=ignore)
        self.assertEqual(run.returncode, 1)


class CtrlC(CommandLineTest):
    """Ends a script at once, wherever it is."""

    START = 'var out = WScript.OpenFile("out", "w"); out.Write(new Uint8Array(9));'

    def expect_end(self, code, **options):
        self.write("out", b"old")
        process = self.start(["-e", self.START + code], **options)
        self.wait_for(self.has_temporary, process)
        time.sleep(0.2)
        self.assertIsNone(process.poll())
        # Waits for less than the code takes.
        output, _ = self.interrupt(process)
        self.assertEqual(process.returncode, -signal.SIGINT)
        self.assertEqual((self.read("out"), self.names()), (b"old", ["out"]))
        return output

    def test_in_a_loop(self):
        self.expect_end("for (;;) ;")

    def test_in_a_loop_that_catches_errors(self):
        self.expect_end("for (;;) try { WScript.Sleep(1) } catch (e) {}")

    def test_in_sleep(self):
        self.expect_end("WScript.Sleep(600000)")

    def test_in_a_key_generation(self):
        self.expect_end('new ActiveXObject("Vardeko.crypt.RSA").CreateRandKeys(16384, true)')

    def test_in_a_big_power(self):
        self.expect_end('var a = new ActiveXObject("Vardeko.crypt.Number"), b = a.NewNumber(0);'
                        "a.Random(100000, true, true); b.Random(100000, true, true);"
                        "a.ModExp(b, a.Add(2))")

    def test_in_a_read_of_standard_input(self):
        self.expect_end('WScript.OpenFile("/dev/stdin").Read(1)', stdin=subprocess.PIPE)

    def test_is_status_130(self):
        # As a shell sees it.
        run = subprocess.run(["timeout", "--preserve-status", "--signal", "INT", "0.5",
                              HOST, "-e", "WScript.Sleep(60000)"], check=False)
        self.assertEqual(run.returncode, 128 + signal.SIGINT)


if __name__ == "__main__":
    unittest.main()
