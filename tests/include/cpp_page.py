"""Makes one program of the programs of docs/cpp.md, or compares their output with the page.

  cpp_page.py PAGE --source FILE.cpp            writes the program
  cpp_page.py PAGE --run WORD... PROGRAM        runs it, by the command WORD... if there is one

A block between ```cpp and ``` is a program; the next block, between ```text and ```, is its output. Other
blocks are commands (```sh).
"""
import pathlib
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import cpp_programs  # noqa: E402
import page_blocks  # noqa: E402

LIMIT = 120


def run(programs, command):
    failures = 0
    for number, (program, expected) in enumerate(programs):
        done = subprocess.run([*command, str(number)], stdin=subprocess.DEVNULL, capture_output=True,
                              timeout=LIMIT, check=False)
        output = done.stdout.decode("utf-8").replace("\r\n", "\n")
        if done.returncode != 0 or output != expected:
            failures += 1
            print(f"{program.place}: status {done.returncode} of\n{program.text}\nprints\n{output}\nnot\n{expected}"
                  f"{done.stderr.decode('utf-8', 'replace')}")
    print(f"{len(programs)} programs, {failures} failures")
    return 1 if failures or not programs else 0


def main(arguments):
    if len(arguments) < 3 or arguments[1] not in ("--source", "--run"):
        sys.exit(__doc__)
    page = pathlib.Path(arguments[0])
    programs = page_blocks.programs_of(page.read_text("utf-8"), page.name, "cpp", others=["sh"])
    if arguments[1] == "--run":
        return run(programs, arguments[2:])
    text = cpp_programs.joined([program for program, _ in programs], "cpp_page.py of docs/cpp.md")
    cpp_programs.write_if_changed(pathlib.Path(arguments[2]), text)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
