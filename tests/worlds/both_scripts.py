"""Runs test scripts on both hosts: their output must be that of the .expected file beside them.

  both_scripts.py HOST SCRATCH SCRIPT...

The head of a script is that of run_script.cmake: arguments, files, status. The standard error of the
platform's host is not compared. What the object of Wine lacks is marked in the script:

  // wine: REASON               the script is not expected to pass there
  // wine leaves out: REASON    the lines from here to ...
  // wine continues             ... here are left out there

A mark without need is an error: a script, or a block, that passes with Wine must have none.
"""
import pathlib
import re
import sys

import worlds

HEAD = re.compile(r"^// ([a-z]+): (.*)$", re.MULTILINE)
BLOCK = re.compile(r"^// wine leaves out: *(.*)\n((?:.*\n)*?)// wine continues *\n", re.MULTILINE)
LOOSE = re.compile(r"^// wine (?:leaves out|continues).*$", re.MULTILINE)


class Script:
    def __init__(self, path, scratch):
        self.path = pathlib.Path(path)
        self.name = self.path.stem
        self.scratch = pathlib.Path(scratch) / self.name
        self.text = self.path.read_text("utf-8")
        expected = self.path.with_suffix(".expected")
        self.expected = expected.read_text("utf-8") if expected.exists() else None
        head = HEAD.findall(self.text)
        values = dict(head)
        self.reason = values.get("wine")
        self.status = int(values.get("status", "0"))
        self.arguments = values["arguments"].split("|") if "arguments" in values else []
        self.files = [value.split("|", 1) for key, value in head if key == "file"]
        self.blocks = [match[0] for match in BLOCK.findall(self.text)]

    def without_blocks(self, kept=None):
        """The text without the blocks that Wine leaves out, but for the one that is kept."""
        count = iter(range(len(self.blocks)))
        return BLOCK.sub(lambda match: match[2] if next(count) == kept else "", self.text)

    def run(self, world, text):
        folder = worlds.new_folder(self.scratch / world / "work")
        for name, content in self.files:
            (folder / name).write_text(content, "utf-8")
        script = folder.parent / self.path.name
        script.write_text(text, "utf-8")
        return worlds.Run(self.name, script, folder, self.arguments)


def is_part(lines, whole):
    """Whether the lines are among the whole ones, in this order."""
    rest = iter(whole)
    return all(line in rest for line in lines)


def check(host, scratch, paths):
    report = worlds.Report()
    scripts = []
    for script in (Script(path, scratch) for path in paths):
        if script.expected is None:
            report.fail(script.name, "there is no .expected file")
        else:
            scripts.append(script)
    wine, native, needless = [], {}, []
    for script in scripts:
        if LOOSE.search(BLOCK.sub("", script.text)):
            report.fail(script.name, "a block that is left out has no start or no end")
        if "" in [script.reason, *script.blocks]:
            report.fail(script.name, "a mark without a reason")
        if script.blocks:
            native[script.name] = script.run("native", script.without_blocks())
            needless += [(script, number, script.run(f"wine-{number}", script.without_blocks(number)),
                          script.run(f"native-{number}", script.without_blocks(number)))
                         for number in range(len(script.blocks))]
        wine.append((script, script.run("wine", script.without_blocks())))
    worlds.run_natively(host, [*native.values(), *(row[3] for row in needless)])
    worlds.run_by_wine(scratch, [run for _, run in wine] + [row[2] for row in needless])

    for script in scripts:
        runs = [row[3] for row in needless if row[0] is script]
        for run in [native[script.name], *runs] if script.blocks else []:
            if run.status != script.status:
                report.fail(script.name, f"status {run.status} without blocks\n{run.errors}")
    for script, run in wine:
        expected = script.expected
        if script.name in native:
            expected = native[script.name].output
            if not is_part(expected.splitlines(), script.expected.splitlines()):
                report.fail(script.name, "without its blocks the native host prints other lines\n" + expected)
        passes = run.status == script.status and run.output == expected
        if script.reason is not None:
            if passes:
                report.needless(script.name, "passes with Wine, so the mark is not needed")
            else:
                print(f"{script.name}: not with Wine: {script.reason}")
            continue
        if run.status != script.status:
            report.fail(script.name, f"status {run.status} with Wine, expected {script.status}\n{run.errors}")
        report.same(script.name, "with Wine", run.output, expected)
    for script, number, run, natively in needless:
        if script.reason is None and run.status == script.status and run.output == natively.output:
            report.needless(script.name, f"block {number + 1} passes with Wine ({script.blocks[number]})")
    report.end(f"{len(scripts)} scripts run by Wine, {sum(s.reason is not None for s in scripts)} marked, "
               f"{sum(len(s.blocks) for s in scripts)} blocks left out")


if __name__ == "__main__":
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    check(sys.argv[1], sys.argv[2], sys.argv[3:])
