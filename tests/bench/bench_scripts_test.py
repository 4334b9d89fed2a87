"""Tests of what the benchmark measures of scripts, and of its tables. Other hosts are played by the native one."""
import contextlib
import io
import json
import os
import pathlib
import sys
import tempfile
import unittest
from unittest import mock

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "bench"))
import measure  # noqa: E402
import processor  # noqa: E402
import script_rows  # noqa: E402
import scripts  # noqa: E402
import table  # noqa: E402

HOST = os.environ["MIROLTA_TEST_HOST"]
CONTEXT = {**{peer: "1" for peer in table.PEERS}, "features": "AVX-512", "num_cpus": 2, "mhz_per_cpu": 1}
CALL = script_rows.Call("sum", "var o = {n: 7}, a = 5;", "x = o.n + a;")


class Played(scripts.Native):
    """A host whose output has something in front."""

    def __init__(self, front):
        super().__init__([HOST])
        self.front = front

    def measure(self, path):
        nanoseconds, output = super().measure(path)
        return nanoseconds, self.front + output


class ScriptsTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        for name, value in (("LEAST_MILLISECONDS", 3), ("REPETITIONS", 3)):
            changed = mock.patch.object(scripts, name, value)
            changed.start()
            self.addCleanup(changed.stop)

    def measured(self, function, *words):
        said = io.StringIO()
        with contextlib.redirect_stderr(said):
            return function(*words), said.getvalue()

    def test_a_call_is_measured_on_each_host(self):
        worlds = {"ours": Played(""), "cscript": Played(""), "Node": Played("other ")}
        entries, _ = self.measured(scripts.measure_call, CALL, worlds, self.folder)
        # Node runs another script, so its output may be another.
        self.assertEqual([one["run_name"] for one in entries],
                         ["script/sum|ours", "script/sum|cscript", "script/sum|Node"])
        self.assertGreater(min(one["real_time"] for one in entries), 0)
        nanoseconds, output = worlds["ours"].measure(self.folder / "ours.js")
        self.assertEqual(output, "12")
        self.assertLess(nanoseconds, 1e6)

    def test_the_time_of_the_loop_is_not_that_of_the_call(self):
        # The script's own clock: three milliseconds an iteration with the call, one without.
        call = script_rows.Call("step", "var o = null, clock = 0; now = function () { return clock; };",
                                "clock += 3; x = i;", idle="clock += 1;", output="taken")
        worlds = {"ours": Played("")}
        entries, _ = self.measured(scripts.measure_call, call, worlds, self.folder)
        self.assertEqual(entries[0]["real_time"], 2e6)

    def test_other_outputs_are_refused(self):
        worlds = {"ours": Played(""), "cscript": Played("other ")}
        self.assertEqual(self.measured(scripts.measure_call, CALL, worlds, self.folder),
                         (None, "script/sum: the output of cscript differs\n"))

    def test_a_script_that_fails_is_no_measurement(self):
        call = script_rows.Call("nothing", "var o = null;", "x = o.n;")
        with self.assertRaisesRegex(ValueError, "status 1"):
            scripts.measure_call(call, {"ours": Played("")}, self.folder)

    def test_programs_hash_the_same_files(self):
        program = script_rows.Program("two files", 2, 10, 0.9)
        commands = {"ours": ["sha256sum", "--tag"], "sha256sum": ["sha256sum"]}
        entries, _ = self.measured(scripts.measure_program, program, commands, {}, self.folder)
        self.assertEqual([(one["run_name"], one["bytes"]) for one in entries],
                         [("script/two files|ours", 20), ("script/two files|sha256sum", 20)])
        contents = {path.read_bytes() for path in (self.folder / "2").iterdir()}
        self.assertEqual([len(content) for content in contents], [10, 10])
        commands["sha256sum"] = ["sha512sum"]
        self.assertEqual(self.measured(scripts.measure_program, program, commands, {}, self.folder)[0], None)

    def test_every_call_has_a_text_for_the_script_hosts(self):
        for row in script_rows.CALLS:
            self.assertIn(row.work, scripts.Native([HOST]).text(row))
            # Wine's engine ends a script without a word at typeof of a byte array.
            self.assertNotIn("typeof a", scripts.Native([HOST]).text(row))
            text = scripts.Node([HOST], printer="console.log").text(row)
            self.assertEqual(text is not None, bool(row.node), row.name)
            self.assertNotIn("ActiveXObject", text or "")
        self.assertEqual(len(set(scripts.names())), len(script_rows.CALLS + script_rows.PROGRAMS))

    def test_rows_replace_those_of_the_report(self):
        results = self.folder / "results.json"
        results.write_text(json.dumps({"context": CONTEXT, "benchmarks": [
            {"run_name": "kernel/MD5|ours"}, scripts.entry(CALL, "ours", 5)]}))
        scripts.add_to_report(results, [scripts.entry(CALL, "ours", 7)], {"Wine": "8.0"})
        report = json.loads(results.read_text())
        self.assertEqual([one.get("real_time") for one in report["benchmarks"]], [None, 7])
        self.assertEqual(report["context"]["Wine"], "8.0")

    def test_missing_peers_are_named(self):
        with mock.patch("shutil.which", lambda name: None):
            self.assertIsNone(scripts.wine_host("Mirolta.dll", self.folder))
            self.assertEqual(scripts.installed({"openssl dgst": ["openssl"]}), {})


class MeasureTest(unittest.TestCase):
    def run_with(self, pattern, *flags):
        """(pattern that the program got, whether scripts were measured, rows of the program that stay)"""
        got, measured = [], []
        with tempfile.TemporaryDirectory() as folder:
            results = pathlib.Path(folder, "results.json")

            def play(command, **_):
                got.append(command[2])
                results.write_text('{"benchmarks": [1]}')
                return mock.Mock(returncode=0)

            with mock.patch.object(measure, "rows_of", lambda _: ["kernel/MD5", "engine/RSA"]), \
                    mock.patch("subprocess.run", play), \
                    mock.patch.object(scripts, "main", lambda words: measured.append(words[1]) or 0):
                status = measure.main([*flags, folder, pattern])
            return got, measured, json.loads(results.read_text())["benchmarks"], status

    def test_the_pattern_chooses_what_is_measured(self):
        self.assertEqual(self.run_with(""), ([""], [""], [1], 0))
        self.assertEqual(self.run_with("kernel"), (["kernel"], [], [1], 0))
        self.assertEqual(self.run_with("script/"), ([measure.SHORTEST_ROW], ["script/"], [], 0))
        self.assertEqual(self.run_with("", "--without-scripts"), ([""], [], [1], 0))
        self.assertEqual(self.run_with("no row"), (["no row"], [], [1], 0))


class TableTest(unittest.TestCase):
    def line(self, times, missing=()):
        report = {"context": {**CONTEXT, "Node": "20"}, "benchmarks": [
            {**scripts.entry(CALL, name, time), "missing": missing} for name, time in times.items()]}
        rows = table.merged_rows([report])
        page = table.markdown([report], rows)
        self.assertIn("## Scripts", page)
        self.assertIn(", Node 20\n", page)
        return table.table_line("script/sum", rows["script/sum"], processor.Processor(CONTEXT))

    def test_node_counts_for_no_ratio(self):
        line = self.line({"ours": 100, "cscript": 290, "Node": 10})
        self.assertEqual(line, ["sum", "100 ns", "Node 10 ns, cscript 290 ns", "2.90", "3.00", "", "short"])

    def test_a_missing_peer_is_named(self):
        line = self.line({"ours": 100, "Node": 10}, ["cscript"])
        self.assertEqual(line, ["sum", "100 ns", "Node 10 ns, cscript missing", "", "3.00", "", ""])
        self.assertEqual(self.line({"ours": 100}, ["cscript"])[2], "cscript missing")

    def test_blocks_of_aes_are_limited_by_maker_and_peers(self):
        row, ours = "kernel/AES-128 encrypt/16 KiB", {"required": 3.5, "stretch": 4}
        vectors = {**CONTEXT, "features": "AVX-512 VAES"}
        for contexts, required in (
                ([{"maker": "AuthenticAMD"}], 3.5),
                ([{"maker": "AuthenticAMD", "Botan": "3.5.9"}], 3.5),
                ([{"maker": "AuthenticAMD"}, {"Botan": "3.7.1"}], 1.9),
                ([{"maker": "AuthenticAMD", "libgcrypt": "1.11.0"}], 1.9),
                ([{"maker": "AuthenticAMD", "features": "AVX-512"}, {"Botan": "3.7.1"}], 3.5),
                ([{"maker": "AuthenticAMD", "family": "25"}], 1.9),
                ([{"maker": "AuthenticAMD", "family": "25"}, {"Botan": "3.7.1"}], 0.95),
                ([{"maker": "GenuineIntel"}], 1.95)):
            measured = processor.Processor(*({**vectors, **context} for context in contexts))
            self.assertEqual(measured.requirement(row, ours, {})[0], required, contexts)
            self.assertEqual(len(measured.limits()), 0 if required == 3.5 else 1)
            self.assertEqual(measured.requirement("kernel/AES-128 encrypt/16 bytes", ours, {})[0], 3.5)


if __name__ == "__main__":
    unittest.main()
