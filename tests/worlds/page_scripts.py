"""Runs every script of the pages on a host and compares its output with the page.

  page_scripts.py PROJECT HOST SCRATCH          on the native host
  page_scripts.py PROJECT HOST SCRATCH --wine   also on the platform's host, as far as Wine has it

The pages are all .md files of the project. A script is a block between ```js or ```vbscript and ```; the
next block between ```text and ``` has its standard output. A script ends with status 0 and prints nothing on
standard error. The scripts of a page run one after the other in a folder of their own. Between a script and
its output there may be the same in other languages, whose output is the same: at most one block of each.
VBScript runs on the platform's host only; tests/docs runs programs in C++ and Python.

A line before a script, or a comment around it, says why the platform's host cannot run the script:

  Only on `mirolta-host`: REASON
  <!-- Not with Wine: REASON -->

A script that passes there must have none. The page of a class, docs/Class.md, has at least one script.
Where scripts use Bytes, the file lib/bytes.js stands before them on the platform's host. It reads scripts in
its own code page.
"""
import os
import pathlib
import re
import sys

import worlds

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import page_blocks  # noqa: E402

LEFT_OUT = {"build", ".git"}
SCRIPTS = {"js": ".js", "vbscript": ".vbs"}
LANGUAGES = {"", "text", *SCRIPTS, "c", "cmake", "cpp", "python", "sh", "xml"}
# What may stand between a script and its output.
PROGRAMS = {"c", "cpp", "python"}
MARK = re.compile(r"^(?:<!-- )?(?:Only on `mirolta-host`|Not with Wine): *(.*?)(?: *-->)?$")
BYTES = re.compile(r"\bBytes\.")
# The code page of Wine in the locale of the tests.
CODE_PAGE = "cp1252"
# What a script has, and hardly anything else.
SCRIPT_WORDS = re.compile(r"WScript\.|new ActiveXObject\(")


class PageScript:
    def __init__(self, block, reason):
        self.place, self.language, self.text = block.place, block.language, block.text
        self.reason = reason
        self.expected = None


def pages_of(project):
    found = []
    for folder, folders, names in os.walk(project):
        folders[:] = [name for name in folders if name not in LEFT_OUT]
        found += [pathlib.Path(folder, name) for name in names if name.endswith(".md")]
    return sorted(found)


def scripts_of(page, name, report):
    """The scripts of one page in their order."""
    try:
        parts = page_blocks.parts_of(page.read_text("utf-8"), name)
    except page_blocks.PageError as error:
        report.fail(error.place, error.fault)
        return []
    scripts, mark, waiting = [], None, []
    for part in parts:
        if part.language is None:
            mark = mark_after(part, mark, report)
            continue
        if part.language not in LANGUAGES:
            report.fail(part.place, f"a block of the language {part.language}")
        if part.language in SCRIPTS:
            if any(script.language == part.language for script in waiting):
                end(waiting, None, report)
            scripts.append(PageScript(part, mark and mark[1]))
            waiting.append(scripts[-1])
            mark = None
            continue
        if part.language not in PROGRAMS:
            end(waiting, part.text if part.language == "text" else None, report)
        if SCRIPT_WORDS.search(part.text):
            report.fail(part.place, "a script that is not between ```js and ```")
    if mark:
        report.fail(mark[0], "a mark without a script")
    end(waiting, None, report)
    return scripts


def mark_after(line, mark, report):
    """The mark, a place and a reason, that holds for the next script after a line of prose."""
    match = MARK.match(line.text.rstrip("\n"))
    if not match:
        if line.text.startswith("    ") and SCRIPT_WORDS.search(line.text):
            report.fail(line.place, "a script that is not between ```js and ```")
        return mark
    if mark:
        report.fail(mark[0], "a mark without a script")
    if not match[1]:
        report.fail(line.place, "a mark without a reason")
    return line.place, match[1]


def end(waiting, output, report):
    """Gives the scripts that wait for their output that of a block, or none."""
    for script in waiting:
        if output is None:
            report.fail(script.place, "a script without its output")
        script.expected = output or ""
    waiting.clear()


def runs_of(page_scripts, scratch, world, encoding, library=""):
    """A run for each script of each page, behind the library if it uses Bytes."""
    runs = {}
    for name, scripts in page_scripts.items():
        folder = worlds.new_folder(pathlib.Path(scratch) / world / name)
        work = worlds.new_folder(folder / "work")
        for number, script in enumerate(scripts, 1):
            file = folder / f"{number}{SCRIPTS[script.language]}"
            text = library + script.text if BYTES.search(script.text) else script.text
            file.write_text(text, encoding, "replace")
            runs[script.place] = worlds.Run(script.place, file, work)
    return runs


def check(project, host, scratch, with_wine):
    project = pathlib.Path(project).resolve()
    report = worlds.Report()
    page_scripts, fences = {}, 0
    for page in pages_of(project):
        name = page.relative_to(project).as_posix()
        page_scripts[name] = scripts_of(page, name, report)
        fences += len(re.findall(r"^\s*```+\s*(?:js|vbscript)\b", page.read_text("utf-8"), re.MULTILINE))
        if re.fullmatch(r"docs/[A-Z]\w*[a-z]\w*\.md", name) and not page_scripts[name]:
            report.fail(name, "the page of a class without a script")
    scripts = [script for scripts in page_scripts.values() for script in scripts]
    if len(scripts) != fences:
        report.fail("pages", f"{len(scripts)} scripts found at {fences} places where one starts")
    if not page_scripts.get("README.md"):
        report.fail("README.md", "no script")

    native = {name: [script for script in scripts if script.language == "js"]
              for name, scripts in page_scripts.items()}
    runs = runs_of(native, scratch, "native", "utf-8")
    worlds.run_natively(host, list(runs.values()))
    for script in scripts:
        if script.language != "js":
            continue
        run = runs[script.place]
        if run.status != 0 or run.errors:
            report.fail(script.place, f"status {run.status}\n{run.errors}")
        report.same(script.place, "output", run.output, script.expected)
    summary = f"{len(scripts)} scripts of {len(page_scripts)} pages"
    if with_wine:
        library = project / "lib" / "bytes.js"
        runs = runs_of(page_scripts, scratch, "wine", CODE_PAGE,
                       library.read_text("utf-8") if library.exists() else "")
        worlds.run_by_wine(scratch, list(runs.values()))
        for script in scripts:
            check_wine(script, runs[script.place], report)
        summary += f", {sum(script.reason is None for script in scripts)} of them by Wine too"
    report.end(summary)


def check_wine(script, run, report):
    passes = run.status == 0 and run.output == script.expected
    if script.reason is not None:
        if passes:
            report.needless(script.place, "passes with Wine, so the mark is not needed")
        return
    if run.status != 0:
        report.fail(script.place, f"status {run.status} with Wine\n{run.errors}")
    report.same(script.place, "output with Wine", run.output, script.expected)


if __name__ == "__main__":
    if len(sys.argv) not in (4, 5) or sys.argv[4:] not in ([], ["--wine"]):
        sys.exit(__doc__)
    check(sys.argv[1], sys.argv[2], sys.argv[3], len(sys.argv) == 5)
