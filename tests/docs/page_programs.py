"""Runs the examples in C++ and Python of the pages and compares their output with the page.

  page_programs.py PROJECT --source FILE.cpp            writes all C++ examples as one program
  page_programs.py PROJECT --run PROGRAM SCRATCH        runs them, and those in Python
  page_programs.py PROJECT --run PROGRAM SCRATCH cpp    runs those in C++ only

A block between ```cpp or ```python and ``` is an example if output, the next block between ```text and ```,
follows it, with nothing but examples in other languages in between. On the page of a class every block is
one, and there is at least one in each language. The pages of the languages have tests of their own.

The environment variable PYTHONPATH leads to the package of those in Python.
"""
import os
import pathlib
import re
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import cpp_programs  # noqa: E402
import page_blocks  # noqa: E402

ROOT_FOLDERS = ["", "docs", "host"]
# Their own tests run these: tests/include, tests/python, tests/consumers.
OF_LANGUAGES = {"docs/cpp.md", "docs/c.md", "docs/python.md", "docs/embedding.md"}
LANGUAGES = {"cpp", "python"}
SCRIPTS = {"js", "vbscript"}
CLASS_PAGE = re.compile(r"docs/[A-Z]\w*[a-z]\w*\.md")
LIMIT = 120


class Example:
    def __init__(self, block):
        self.place, self.language, self.text = block.place, block.language, block.text
        self.expected = None


def pages_of(project):
    for folder in ROOT_FOLDERS:
        yield from sorted((project / folder).glob("*.md"))


def examples_of(project, failures):
    """All examples; what the pages lack is added to failures."""
    found = []
    for page in pages_of(project):
        name = page.relative_to(project).as_posix()
        if name in OF_LANGUAGES:
            continue
        is_class = CLASS_PAGE.fullmatch(name)
        here, waiting = [], []
        for block in page_blocks.blocks_of(page.read_text("utf-8"), name):
            if block.language in LANGUAGES:
                waiting.append(Example(block))
            elif block.language == "text":
                for example in waiting:
                    example.expected = block.text
                here += waiting
                waiting = []
            elif block.language not in SCRIPTS:
                failures += [f"{example.place}: no output" for example in waiting if is_class]
                waiting = []
        failures += [f"{example.place}: no output" for example in waiting if is_class]
        if is_class:
            missing = LANGUAGES - {example.language for example in here}
            failures += [f"{name}: no example in {language}" for language in sorted(missing)]
        found += here
    return found


def run(example, command, folder):
    done = subprocess.run(command, cwd=folder, stdin=subprocess.DEVNULL, capture_output=True,
                          timeout=LIMIT, check=False, text=True, encoding="utf-8")
    if done.returncode != 0 or done.stderr:
        return f"{example.place}: status {done.returncode}\n{done.stderr}"
    if done.stdout != example.expected:
        return f"{example.place}: prints\n{done.stdout}and the page says\n{example.expected}"
    return None


def main(arguments):
    if len(arguments) < 3 or arguments[1] not in ("--source", "--run"):
        sys.exit(__doc__)
    project = pathlib.Path(arguments[0]).resolve()
    failures = []
    examples = examples_of(project, failures)
    programs = [example for example in examples if example.language == "cpp"]
    if arguments[1] == "--source":
        cpp_programs.write_if_changed(pathlib.Path(arguments[2]),
                                      cpp_programs.joined(programs, "page_programs.py of the pages"))
        return 0
    folder = pathlib.Path(arguments[3])
    folder.mkdir(parents=True, exist_ok=True)
    for number, example in enumerate(programs):
        failures.append(run(example, [os.path.abspath(arguments[2]), str(number)], folder))
    for example in examples:
        if example.language == "python" and arguments[4:] != ["cpp"]:
            failures.append(run(example, [sys.executable, "-B", "-W", "error", "-c", example.text], folder))
    failures = [failure for failure in failures if failure]
    print("\n".join(failures))
    print(f"{len(examples)} examples, {len(failures)} failures")
    return 1 if failures or not examples else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
