"""That no code block of a page is overlooked: tests/support/page_blocks.py and cpp_programs.py."""
import pathlib
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests" / "support"))
import cpp_programs  # noqa: E402
import page_blocks  # noqa: E402
from page_blocks import Part  # noqa: E402

PAGE = "# Title\n\n```cpp\nint main() {\n}\n```\nIt prints\n```text\na\n\n```\n\n```\nplain\n```\nlast\n"


class Reading(unittest.TestCase):
    def test_parts_have_their_places_languages_and_texts(self):
        self.assertEqual([(part.place, part.language, part.text) for part in page_blocks.parts_of(PAGE, "a.md")],
                         [("a.md:1", None, "# Title\n"), ("a.md:2", None, "\n"),
                          ("a.md:3", "cpp", "int main() {\n}\n"), ("a.md:7", None, "It prints\n"),
                          ("a.md:8", "text", "a\n\n"), ("a.md:12", None, "\n"), ("a.md:13", "", "plain\n"),
                          ("a.md:16", None, "last\n")])
        self.assertEqual(page_blocks.prose_of(PAGE, "a.md"), "# Title\n\nIt prints\n\nlast\n")

    def test_other_fences_are_faults(self):
        for text, place in (("```cpp\na\n", 1), ("a\n```\n```\n```\n", 4), (" ```\n```\n", 1), ("~~~\n~~~\n", 1),
                            ("``` cpp\n```\n", 1), ("```cpp x\n```\n", 1), ("````\n````\n", 1),
                            ("```\n```cpp\n```\n", 2), ("```text\n  ```\n```\n", 2), ("```\n``` \n", 2)):
            with self.subTest(text), self.assertRaises(page_blocks.PageError) as caught:
                page_blocks.blocks_of(text, "a.md")
            self.assertEqual(caught.exception.place, f"a.md:{place}", text)

    def test_the_parts_of_the_projects_pages_are_whole(self):
        count = 0
        for page in [*ROOT.glob("*.md"), *ROOT.glob("docs/*.md"), *ROOT.glob("host/*.md")]:
            text = page.read_text("utf-8")
            parts = page_blocks.parts_of(text, page.name)
            fenced = "".join(part.text if part.language is None else f"```{part.language}\n{part.text}```\n"
                             for part in parts)
            self.assertEqual(fenced, text, page)
            count += sum(part.language is not None for part in parts)
        self.assertGreater(count, 150)


class Programs(unittest.TestCase):
    def test_a_program_has_its_output(self):
        pairs = page_blocks.programs_of(PAGE, "a.md", "cpp", others=[""])
        self.assertEqual([(program.place, output) for program, output in pairs], [("a.md:3", "a\n\n")])

    def test_what_is_no_program_with_its_output_is_a_fault(self):
        for text in (PAGE, "```cpp\n```\n", "```cpp\n```\n```cpp\n```\n", "```text\n```\n",
                     "```cpp\n```\n```cpp\n```\n```text\n```\n", "```cpp\n```\n```\n```\n```text\n```\n",
                     "```c\n```\n```text\n```\n"):
            with self.subTest(text), self.assertRaises(page_blocks.PageError):
                page_blocks.programs_of(text, "a.md", "cpp")

    def test_joined_programs_are_called_by_their_numbers(self):
        programs = [Part("a.md:1", "cpp", "#include <b>\n#include <a>\n\nint main() {\n  A();\n}\n"),
                    Part("a.md:9", "cpp", "#include <a>\nint main() {\n  B();\n}\n")]
        text = cpp_programs.joined(programs, "a test")
        self.assertTrue(text.startswith("// Made by a test.\n#include <a>\n#include <b>\n#include <string>\n\n"), text)
        for number, call in enumerate("AB"):
            self.assertIn(f"namespace program_{number} {{\nvoid Main() {{\n  {call}();\n}}\n}}\n", text)
            self.assertIn(f'if (number == "{number}") return program_{number}::Main(), 0;\n', text)
        self.assertTrue(text.endswith("\n  return 2;\n}\n"), text)

    def test_a_program_has_one_main(self):
        for text in ("int main(int, char**) {\n}\n", "int main() {\n}\nint main() {\n}\n"):
            with self.subTest(text), self.assertRaises(ValueError):
                cpp_programs.joined([Part("a.md:1", "cpp", text)], "a test")


if __name__ == "__main__":
    unittest.main()
