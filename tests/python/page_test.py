"""Runs each program of docs/python.md and compares its output with the page.

A program is a block between ```python and ```; the next block, between ```text and ```, is its standard
output.
"""
import contextlib
import io
import pathlib
import sys
import unittest

from support import ObjectTest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import page_blocks  # noqa: E402

PAGE = pathlib.Path(__file__).resolve().parents[2] / "docs" / "python.md"


class PageTest(ObjectTest):
    def test_every_program_prints_what_the_page_says(self):
        programs = page_blocks.programs_of(PAGE.read_text("utf-8"), PAGE.name, "python")
        self.assertGreater(len(programs), 8)
        for program, expected in programs:
            with self.subTest(program.place):
                printed = io.StringIO()
                names = {"__name__": "__main__"}
                with contextlib.redirect_stdout(printed):
                    exec(compile(program.text, program.place, "exec"), names)
                # A filter among the names, bound to a file whose class refers to the names: such a
                # cycle nobody collects.
                names.clear()
                self.assertEqual(printed.getvalue(), expected)


if __name__ == "__main__":
    unittest.main()
