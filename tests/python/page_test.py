"""Runs each program of docs/python.md and compares its output with the page.

A program is a block between ```python and ```; the next block, between ```text and ```, is its standard
output.
"""
import contextlib
import io
import pathlib
import re
import unittest

from support import ObjectTest

PAGE = pathlib.Path(__file__).resolve().parents[2] / "docs" / "python.md"
BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$", re.MULTILINE | re.DOTALL)


class PageTest(ObjectTest):
    def test_every_program_prints_what_the_page_says(self):
        text = PAGE.read_text("utf-8")
        blocks = BLOCK.findall(text)
        programs = [content for language, content in blocks if language == "python"]
        outputs = [content for language, content in blocks if language == "text"]
        self.assertEqual([language for language, _ in blocks], ["python", "text"] * len(programs))
        self.assertEqual(len(re.findall("^```", text, re.MULTILINE)), 2 * len(blocks))
        self.assertGreater(len(programs), 8)
        for program, expected in zip(programs, outputs):
            with self.subTest(program):
                printed = io.StringIO()
                names = {"__name__": "__main__"}
                with contextlib.redirect_stdout(printed):
                    exec(compile(program, str(PAGE), "exec"), names)
                # A filter among the names, bound to a file whose class refers to the names: such a
                # cycle nobody collects.
                names.clear()
                self.assertEqual(printed.getvalue(), expected)


if __name__ == "__main__":
    unittest.main()
