"""The site of the pages is built, and what would be wrong with it is an error.

  site_test.py SCRATCH

Builds the pages (scripts/docs.py) twice and looks at the result; then builds small sites with a mistake each.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))
import docs  # noqa: E402

SCRATCH = pathlib.Path(os.environ.get("MIROLTA_SCRATCH", "build/site-test")).resolve()


def contents(folder):
    return {path.relative_to(folder).as_posix(): path.read_bytes() for path in sorted(folder.rglob("*"))
            if path.is_file()}


class Site(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        shutil.rmtree(SCRATCH, ignore_errors=True)
        for name in ("first", "second"):
            docs.build(SCRATCH / name)
        cls.html = SCRATCH / "first" / "html"

    def read(self, name):
        return (self.html / name).read_text("utf-8")

    def test_two_builds_give_the_same_bytes(self):
        for part in ("html", "man"):
            first, second = contents(SCRATCH / "first" / part), contents(SCRATCH / "second" / part)
            self.assertEqual(list(first), list(second))
            self.assertEqual([name for name in first if first[name] != second[name]], [])

    def test_every_page_is_there(self):
        for page in docs.pages():
            self.assertTrue((self.html / page.with_suffix(".html")).exists(), page)

    def test_nothing_comes_from_elsewhere(self):
        for path in self.html.rglob("*.html"):
            text = path.read_text("utf-8")
            for link in docs.Document(text).resources:
                self.assertNotRegex(link, r"^(https?:)?//", path)

    def test_the_search_has_its_words_without_a_server(self):
        page, index = self.read("search.html"), self.read("searchindex.js")
        self.assertTrue("searchindex.js" in page)
        self.assertTrue(index.startswith("Search.setIndex("))
        # By their stems.
        for word in ("hmac", "padtyp", "codepag", "registri", "pbkdf2"):
            self.assertTrue(f'"{word}"' in index, word)

    def test_examples_stand_side_by_side(self):
        for name in ("HashObject", "SymmetricCryptObject", "PexBigNumber", "RSACrypt", "ToviStreamDigest",
                     "ToviStreamCrypt"):
            text = self.read(f"docs/{name}.html")
            for language in ("JScript", "VBScript", "C++", "Python"):
                self.assertTrue(f">{language}</label>" in text, f"{name}: {language}")

    def test_pictures_are_drawn(self):
        page = self.read("docs/architecture.html")
        self.assertTrue("architecture.svg" in page and "late-bound calls  |" not in page)
        for page in (ROOT / "docs" / "benchmarks").glob("*.md"):
            # The comparison of builds has one or two sizes of a task, the one with SSE2 no numbers.
            command = re.search(r"^Written by `make ([\w-]+)`", page.read_text("utf-8"), re.M)[1]
            least = {"bench-windows": 0, "bench-sse2": 19}.get(command, 21)
            self.assertGreaterEqual(self.read(f"docs/benchmarks/{page.stem}.html").count(".svg"), least, page)
        for path in self.html.rglob("*.svg"):
            self.assertIn("</svg>", path.read_text("utf-8"), path)

    def test_manual_pages_can_be_read(self):
        pages = sorted((SCRATCH / "first" / "man").iterdir())
        self.assertEqual([page.name for page in pages],
                         ["mirolta-host.1", "mirolta-registry.5", "mirolta.7"])
        for page in pages:
            # Lines of narrow columns that cannot be adjusted do no harm.
            read = ["groff", "-t", "-man", "-Tutf8", "-Kutf8", "-ww", "-Wbreak"]
            done = subprocess.run([*read, "-z", page], capture_output=True, text=True, check=True)
            self.assertEqual(done.stderr, "", page)
            done = subprocess.run([*read, "-P-cbu", page], capture_output=True, text=True, check=True)
            self.assertTrue("NAME" in done.stdout, page)


class Mistakes(unittest.TestCase):
    """Copies of the project's pages with a mistake each, which the build must refuse."""

    def refuses(self, change, why):
        root = SCRATCH / "mistake"
        shutil.rmtree(root, ignore_errors=True)
        for name in ("docs", "scripts", "bench", "host/mirolta-host.1", "VERSION", "examples", "include"):
            (root / name).parent.mkdir(parents=True, exist_ok=True)
            (shutil.copytree if (ROOT / name).is_dir() else shutil.copy)(ROOT / name, root / name)
        # A small site: most pages are left out.
        kept = {"README.md", "bytes.md", "architecture.md", "manual.md", "registry.md"}
        shutil.rmtree(root / "docs" / "benchmarks")
        for page in (root / "docs").glob("*.md"):
            if page.name not in kept:
                page.unlink()
        for page in kept:
            (root / "docs" / page).write_text(f"# {page}\n\n## Other\n", "utf-8")
        listed = "".join(f"- [{page}]({page})\n" for page in sorted(kept - {"README.md"}))
        (root / "docs" / "README.md").write_text(f"# Pages\n\n## All\n\n{listed}", "utf-8")
        change(root / "docs")
        done = subprocess.run([sys.executable, "-B", root / "scripts" / "docs.py", root / "out"],
                              capture_output=True, text=True, check=False)
        if why is None:
            self.assertEqual(done.returncode, 0, done.stderr)
        else:
            self.assertNotEqual(done.returncode, 0)
            self.assertIn(why, done.stderr)

    def test_a_site_without_a_mistake_passes(self):
        self.refuses(lambda docs_folder: None, None)

    def test_a_page_that_is_not_listed(self):
        self.refuses(lambda folder: (folder / "alone.md").write_text("# Alone\n", "utf-8"),
                     "document isn't included in any toctree")

    def test_a_link_to_no_page(self):
        self.refuses(lambda folder: (folder / "bytes.md").write_text("# B\n\n[x](none.md)\n", "utf-8"),
                     "none.md")

    def test_a_link_to_no_heading(self):
        self.refuses(lambda folder: (folder / "bytes.md").write_text(
            "# B\n\n[x](registry.md#nothing)\n", "utf-8"), "nothing")

    def test_a_link_to_no_file(self):
        self.refuses(lambda folder: (folder / "bytes.md").write_text("# B\n\n[x](none.txt)\n", "utf-8"),
                     "none.txt")


if __name__ == "__main__":
    unittest.main()
