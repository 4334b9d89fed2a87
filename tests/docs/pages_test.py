"""What the pages say of the project: links, contents, errors, and the picture of the architecture."""
import os
import pathlib
import re
import sys
import unittest
import urllib.parse
import xml.dom.minidom
import xml.parsers.expat

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "bench"), str(ROOT / "bench" / "windows"), str(ROOT / "tests" / "support")]
import compare  # noqa: E402
import page_blocks  # noqa: E402
import plots  # noqa: E402
import processor  # noqa: E402
import table  # noqa: E402
LEFT_OUT = {"build", ".git", "tests"}
CLASSES = ["HashObject", "SymmetricCryptObject", "PexBigNumber", "RSACrypt", "ToviStreamDigest",
           "ToviStreamCrypt"]
LINK = re.compile(r"!?\[[^\]]*\]\(([^)\s]+)\)")
STATUS = re.compile(r"0x[0-9A-F]{8}")


def read(path):
    return (ROOT / path).read_text("utf-8")


def pages():
    found = []
    for folder, folders, names in os.walk(ROOT):
        folders[:] = [name for name in folders if name not in LEFT_OUT]
        found += [pathlib.Path(folder, name).relative_to(ROOT) for name in names if name.endswith(".md")]
    return sorted(found)


def prose_of(page):
    return page_blocks.prose_of(read(page), page)


def places_of(page):
    """The anchors of a page's headings."""
    headings = re.findall(r"^#+ (.*)$", prose_of(page), re.M)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def links_of(page):
    """(path in the project, place) of each local link."""
    for link in LINK.findall(re.sub(r"`[^`\n]*`", "", prose_of(page))):
        parts = urllib.parse.urlsplit(link)
        if not parts.scheme:
            path = page.parent / urllib.parse.unquote(parts.path) if parts.path else page
            yield link, (ROOT / path).resolve(), parts.fragment


def section(text, title):
    match = re.search(rf"^## {title}\n(.*?)(?=^## |\Z)", text, re.M | re.S)
    return match[1] if match else ""


def rows_of(text):
    """The cells of the rows of a section's table, without its heading."""
    lines = [line for line in text.splitlines() if line.startswith("|")][2:]
    return [[cell.strip() for cell in re.split(r"(?<!\\)\|", line)[1:-1]] for line in lines]


class Pages(unittest.TestCase):
    def test_links_lead_somewhere(self):
        count = 0
        for page in pages():
            for link, file, place in links_of(page):
                count += 1
                self.assertTrue(file.exists(), f"{page}: {link}")
                self.assertIn(ROOT, file.parents, f"{page}: {link}")
                if place and file.suffix == ".md":
                    self.assertIn(place, places_of(file.relative_to(ROOT)), f"{page}: {link}")
        self.assertGreater(count, 60)

    def test_the_contents_list_every_page_once(self):
        listed = [file for link, file, _ in links_of(pathlib.Path("docs/README.md")) if link.endswith(".md")]
        listed = [file.relative_to(ROOT).as_posix() for file in listed]
        lines = re.findall(r"^- \[[^\]]*\]\(([^)]*)\)$", read("docs/README.md"), re.M)
        self.assertEqual(len(lines), len(set(lines)))
        wanted = {page.as_posix() for page in pages()} - {"docs/README.md"}
        self.assertEqual(wanted - set(listed), set(), "pages that docs/README.md does not list")

    def test_every_page_has_one_title(self):
        for page in pages():
            titles = re.findall(r"^# .*$", prose_of(page), re.M)
            self.assertEqual(len(titles), 1, page)


class Commands(unittest.TestCase):
    """What a reader types: targets of make, options and files that there are."""

    def words_of(self, pattern):
        return [(page, found) for page in pages() for found in re.findall(pattern, read(page), re.M)]

    def test_targets_of_make_exist(self):
        targets = set(re.search(r"^\.PHONY: ((?:.*\\\n)*.*)$", read("Makefile"), re.M)[1].split())
        typed = self.words_of(r"(?:^    |`)make ([a-z][a-z0-9-]*)")
        self.assertGreater(len(typed), 20)
        for page, target in typed:
            self.assertIn(target, targets, page)

    def test_options_of_the_host_exist(self):
        manual = read("host/mirolta-host.1").replace("\\-", "-")
        typed = self.words_of(r"mirolta-host (--[a-z-]+)")
        self.assertGreater(len(typed), 10)
        for page, option in typed:
            self.assertIn(option, manual, page)

    def test_examples_exist(self):
        typed = self.words_of(r"`examples[/\\]([\w.-]+)`")
        self.assertGreater(len(typed), 15)
        for page, name in typed:
            self.assertTrue((ROOT / "examples" / name).exists(), f"{page}: {name}")

    def test_manifests_have_the_version(self):
        version = read("VERSION").strip() + ".0"
        typed = self.words_of(r'<assemblyIdentity type="win32" name="Mirolta" version="([^"]*)"')
        self.assertGreater(len(typed), 1)
        for page, found in typed:
            self.assertEqual(found, version, page)

    def test_blocks_of_xml_are_well_formed(self):
        blocks = [block for page in pages() for block in page_blocks.blocks_of(read(page), page)
                  if block.language == "xml"]
        self.assertGreater(len(blocks), 0)
        for block in blocks:
            try:
                xml.dom.minidom.parseString(block.text)
            except xml.parsers.expat.ExpatError as error:
                self.fail(f"{block.place}: {error}")


class Errors(unittest.TestCase):
    def setUp(self):
        page = read("docs/errors.md")
        self.members = rows_of(section(page, "Members"))
        self.creating = rows_of(section(page, "Creating objects"))

    def test_rows_are_complete(self):
        for row in self.members:
            self.assertEqual(len(row), 5, row)
            self.assertTrue(row[3] and row[4], row)
        for row in self.members + self.creating:
            number = int(row[0], 16)
            self.assertEqual(int(row[1]), number - (1 << 32) if number >> 31 else number, row)
        for rows in (self.members, self.creating):
            self.assertEqual(len({row[0] for row in rows}), len(rows))

    def test_the_texts_are_the_messages(self):
        header = re.sub(r"\s+", " ", read("module/messages/messages.h"))
        ids = dict(re.findall(r"constexpr UINT (kMessage\w+) = (\d+);", header))
        messages = {f"0x{0x80040000 + int(ids[name]):08X}": text
                    for name, text in re.findall(r'\{(kMessage\w+), OLESTR\("([^"]*)"\)\}', header)}
        self.assertEqual(len(messages), len(ids))
        self.assertGreaterEqual(len(messages), 6)
        self.assertEqual({row[0]: row[2] for row in self.members if row[2]}, messages)

    def test_the_rows_are_the_statuses_of_the_classes(self):
        # Those pages are compared with the classes by documented_statuses_test.
        given = set()
        for name in CLASSES:
            page = read(f"docs/{name}.md")
            given |= set(STATUS.findall(section(page, "Statuses") + section(page, "As a stream")))
        self.assertEqual({row[0] for row in self.members}, given)


class Plots(unittest.TestCase):
    def test_the_tasks_of_the_benchmark_are_drawn(self):
        page = "docs/benchmarks/amd-26-2.md"
        levels = plots.read_plots(ROOT / page)
        self.assertLessEqual({"kernel", "engine"}, set(levels))
        drawn = levels["engine"]
        self.assertGreater(len(drawn), 15)
        self.assertIn("SHA-256", drawn)
        plot = drawn["AES-128 encrypt"]
        self.assertIn(1 << 20, plot.sizes())
        self.assertGreater(len(plot.series), 3)
        table = section(read(page), "Engines")
        line = re.search(r"^\| AES-128 encrypt, 1 MiB \| ([\d.]+) GB/s", table, re.M)
        self.assertAlmostEqual(plot.series["ours"][1 << 20], float(line[1]) * 1e9)
        for task, plot in [item for level in levels.values() for item in level.items()]:
            self.assertIn('title "ours"', plots.program(task, plot, "x.svg"))

    def test_a_report_gives_the_speeds_of_its_medians(self):
        entries = [{"aggregate_name": name, "run_name": f"engine/AES/{size} bytes|{who}/0", "bytes": size,
                    "cpu_time": time, "real_time": 0, "has_threads": False, "time_unit": "ns"}
                   for size in (16, 64, 1024) for who, time in (("ours", size / 2), ("nettle", size))
                   for name in ("median", "mean")]
        drawn = plots.plots_of(plots.rows_of_report({"benchmarks": entries}, "engine"))
        self.assertEqual({name: round(values[1024]) for name, values in drawn["AES"].series.items()},
                         {"ours": 2 * 10**9, "nettle": 10**9})


class BenchmarkTable(unittest.TestCase):
    PROCESSOR = {"features": "AVX-512 VAES", "maker": "GenuineIntel", "family": "6", "model": "143",
                 "processor": "Some name"}

    @classmethod
    def report(cls, version, times):
        entries = [{"aggregate_name": "median", "run_name": f"kernel/MD5/16 KiB|{who}", "bytes": 100, "required": 1,
                    "stretch": 0, "cpu_time": time, "real_time": 0, "has_threads": False, "time_unit": "ns"}
                   for who, time in times.items()]
        context = {**{peer: version for peer in table.PEERS}, "num_cpus": 2, "mhz_per_cpu": 1}
        return {"benchmarks": entries, "context": {**context, **cls.PROCESSOR}}

    def test_a_row_is_compared_with_the_best_peer_of_all_runs(self):
        reports = [self.report("3.0", {"ours": 10, "OpenSSL": 20, "nettle": 30}),
                   self.report("3.5", {"ours": 20, "OpenSSL EVP": 30})]
        rows = table.merged_rows(reports)
        self.assertEqual(set(rows["kernel/MD5/16 KiB"]), {"ours", "OpenSSL", "nettle", "OpenSSL EVP 3.5"})
        # 30 beside 20, though 20 beside 10 is the shorter time.
        line = table.table_line("kernel/MD5/16 KiB", rows["kernel/MD5/16 KiB"],
                                processor.Processor(self.PROCESSOR))
        self.assertEqual(line[3], "1.50")
        self.assertTrue(line[2].startswith("OpenSSL EVP 3.5 "), line[2])
        page = table.markdown(reports, rows)
        self.assertIn("OpenSSL 3.0, nettle 3.0", page)
        self.assertIn("; OpenSSL 3.5, nettle 3.5", page)
        self.assertIn("- processor: Some name, family 6, model 143; AVX-512 VAES; 2 cores", page)
        self.assertIn("- limit of this processor: one 512-bit AES round a cycle", page)

    def test_limits_hold_on_their_makers_processors_only(self):
        row, ours = "kernel/AES-128 encrypt/16 KiB", {"required": 3.5, "stretch": 4}
        intel = processor.Processor(self.PROCESSOR)
        self.assertEqual(intel.requirement(row, ours, {})[:2], (1.95, 0))
        self.assertEqual(intel.requirement("kernel/AES-128 encrypt/16 bytes", ours, {})[:2], (3.5, 4))
        self.assertEqual(intel.requirement("kernel/DES encrypt/16 KiB", ours, {})[:2], (3.5, 4))
        for change in ({"maker": "AuthenticAMD"}, {"features": "AVX-512"}):
            other = processor.Processor({**self.PROCESSOR, **change})
            self.assertEqual(other.requirement(row, ours, {})[:2], (3.5, 4))
            self.assertEqual(other.limits(), [])
        narrow = processor.Processor({**self.PROCESSOR, "features": "AVX2 AES"})
        self.assertEqual(narrow.requirement(row, ours, {"nettle": {}})[:2], (1.0, 0))
        narrowest = processor.Processor({**self.PROCESSOR, "features": "SSE2"})
        for text, required in ((row, 1.0), ("kernel/AES-128 encrypt/16 bytes", 0), ("kernel/DES decrypt/4 KiB", 4.0),
                               ("kernel/Triple DES encrypt/1 KiB", 4.0), ("engine/MD5/16 KiB", 0)):
            self.assertEqual(narrowest.requirement(text, ours, {"nettle": {}})[:2], (required, 0), text)

    def test_programs_for_32_bit_x86_have_their_own_requirements(self):
        ours, peers = {"required": 3.5, "stretch": 4}, {"GMP": {}, "OpenSSL": {}}
        x86 = {**self.PROCESSOR, "pointer_bits": "32"}
        levels = [processor.Processor({**x86, "features": features})
                  for features in ("AVX-512 VAES IFMA", "SSE2 AVX2", "SSE2")]
        for row, ratios in (("kernel/AES-128 encrypt/16 KiB", [2.5, 1.0, 1.0]),
                            ("kernel/Triple DES decrypt/64 KiB", [5, 5, 5]), ("kernel/DES decrypt/64 KiB", [4, 4, 4]),
                            ("engine/power modulo odd/512 bits", [1.0, 0.9, 0.9]),
                            ("engine/RSA private by primes/2048 bits", [1.5, 0.9, 0.9]),
                            ("engine/SHA-256/16 KiB", [0.98, 0.98, 0.98]), ("engine/gcd/256 bits", [0, 0, 0])):
            self.assertEqual([level.requirement(row, ours, peers)[0] for level in levels], ratios, row)
        required, _, counting = levels[0].requirement("kernel/multiply/512 bits", ours, peers)
        self.assertEqual((required, list(counting)), (0.8, ["GMP"]))
        self.assertEqual(levels[0].limits(), [])

    def test_each_benchmark_is_named_where_its_users_look(self):
        commands = set(re.findall(r"^(?:bench|arm-bench)[\w -]*:", read("Makefile"), re.M))
        commands = {name for line in commands for name in line.rstrip(":").split()
                    if not name.endswith("-packages")}
        self.assertLessEqual({"bench", "bench-avx2", "bench-sse2", "bench-x86", "arm-bench"}, commands)
        for name in commands:
            for page in ("Makefile", "CONTRIBUTING.md"):
                self.assertIsNotNone(re.search(rf"(^|`)make {name}[ `]", read(page), re.M), (page, name))
            lists = re.search(rf"^lists-{name} = (.+)$", read("Makefile"), re.M)
            for file in lists[1].split() if lists else ():
                self.assertTrue((ROOT / "scripts" / file).is_file(), file)

    def test_each_processor_has_its_pages(self):
        amd = {**self.PROCESSOR, "maker": "AuthenticAMD", "family": "26", "model": "2"}
        self.assertEqual(processor.Processor(amd).page(), "amd-26-2.md")
        self.assertEqual(processor.Processor({**amd, "features": "AVX2"}).page(), "amd-26-2-avx2.md")
        self.assertEqual(processor.Processor({**amd, "features": "SSE2"}).page(), "amd-26-2-sse2.md")
        self.assertEqual([processor.Processor({**amd, "features": features}).command()
                          for features in ("AVX-512 AVX2", "AVX2", "SSE2")], ["bench", "bench-avx2", "bench-sse2"])
        self.assertEqual(processor.Processor({**amd, "maker": "Other Inc."}).page(), "other-inc-26-2.md")
        x86 = {**amd, "pointer_bits": "32"}
        for features, page in (("AVX-512", "amd-26-2-x86.md"), ("SSE2 AVX2", "amd-26-2-x86-avx2.md"),
                               ("SSE2", "amd-26-2-x86-sse2.md")):
            self.assertEqual(processor.Processor({**x86, "features": features}).page(), page)
        for page in (ROOT / "docs" / "benchmarks").glob("*.md"):
            command = re.search(r"^Written by `make ([\w-]+)`", read(f"docs/benchmarks/{page.name}"), re.M)[1]
            self.assertEqual(command, "bench-windows" if "-windows" in page.name else
                             "bench-x86" if "-x86" in page.name else
                             "bench-avx2" if "-avx2" in page.name else
                             "bench-sse2" if "-sse2" in page.name else "bench")
        listed = read("docs/benchmarks.md")
        for page in (ROOT / "docs" / "benchmarks").glob("*.md"):
            self.assertIn(f"(benchmarks/{page.name})", listed)


class WindowsTable(unittest.TestCase):
    def test_medians_are_compared_with_what_is_required(self):
        runs = [{"kernel/MD5/16 KiB": (16384, time, "8f"), "engine/power/512 bits": (0, 3000 * time, "07"),
                 "class/created": (0, 5, "11")} for time in (90.0, 10.0, 11.0)]
        native = compare.medians(runs)
        self.assertEqual(native["kernel/MD5/16 KiB"], (16384, 11.0))
        slower = {row: (size, time * 1.1) for row, (size, time) in native.items()}
        lines, short = compare.table({"native": native, "x64": slower, "x86": native})
        self.assertEqual(short, 1)
        self.assertIn("| kernel, MD5, 16 KiB | 1489.45 GB/s | 1354.05 GB/s | 0.91 | 1489.45 GB/s | 1.00 | 0.95 | short |",
                      lines)
        self.assertIn("| engine, power, 512 bits | 33 µs | 36.3 µs | 0.91 | 33 µs | 1.00 | 0.90 | met |", lines)
        self.assertTrue(lines[-1].endswith("| 1.00 |  |  |"), lines[-1])

    def test_builds_whose_results_differ_are_refused(self):
        runs = [{"class/created": (0, 5.0, digits)} for digits in ("11", "12")]
        with self.assertRaisesRegex(SystemExit, "class/created: the results differ"):
            compare.medians(runs)
        with self.assertRaisesRegex(SystemExit, "status 3"):
            compare.run(["sh", "-c", "echo a row without figures; exit 3"], "")


class Architecture(unittest.TestCase):
    # Targets that stand for no layer, and those that the picture does not show.
    HIDDEN = {"module_messages", "mirolta_api"}

    def test_the_picture_has_the_arrows_of_the_layers(self):
        arrows = set()
        for file in sorted(ROOT.glob("*/CMakeLists.txt")):
            text = file.read_text("utf-8")
            for name, words in re.findall(r"mirolta_layer\((\w+) [^)]*?KNOWS ([^)]*)\)", text):
                arrows |= {(name, known) for known in words.split() if known not in self.HIDDEN}
        layers = {name for name, _ in arrows}
        self.assertGreater(len(layers), 12)
        drawn = set(re.findall(r"^  (\w+) -> (\w+);$", read("docs/architecture.dot"), re.M))
        self.assertEqual({arrow for arrow in drawn if arrow[0] in layers}, arrows)


if __name__ == "__main__":
    unittest.main()
