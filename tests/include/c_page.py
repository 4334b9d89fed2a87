"""Compiles and runs the programs in C of a page, and compares their output with the page.

  c_page.py PAGE SCRATCH COMPILER [FLAGS...] [-- RUNNER...]

A program is a block between ```c and ```; the next block, between ```text and ```, has its output. FLAGS name
what it is compiled and linked with, RUNNER is put before the program's name. Warnings are errors.
"""
import pathlib
import re
import subprocess
import sys

BLOCK = re.compile(r"^```(\w*)[^\n]*\n(.*?)^```$", re.M | re.S)
STRICT = ["-std=c11", "-Wall", "-Wextra", "-pedantic", "-Wconversion", "-Werror"]
LIMIT = 120


def programs_of(page):
    """Place, text and expected output of each program."""
    text = page.read_text("utf-8")
    blocks = [(f"{page.name}:{text.count(chr(10), 0, match.start()) + 1}", match[1], match[2])
              for match in BLOCK.finditer(text)]
    for (place, language, program), (_, kind, output) in zip(blocks, blocks[1:] + [("", "", "")]):
        if language == "c":
            if kind != "text":
                sys.exit(f"{place}: a program without its output")
            yield place, program, output


def failure_of(program, output, source, compile_with, runner):
    source.write_text(program, "utf-8")
    binary = source.with_suffix(".exe")
    done = subprocess.run([compile_with[0], *STRICT, str(source), "-o", str(binary), *compile_with[1:]],
                          capture_output=True, text=True, check=False)
    if done.returncode != 0:
        return done.stderr
    done = subprocess.run([*runner, str(binary)], stdin=subprocess.DEVNULL, capture_output=True, timeout=LIMIT,
                          check=False)
    printed = done.stdout.decode("utf-8", "replace").replace("\r\n", "\n")
    if done.returncode != 0 or printed != output:
        return f"status {done.returncode}, prints\n{printed}{done.stderr.decode('utf-8', 'replace')}"
    return None


def main(arguments):
    if len(arguments) < 3:
        sys.exit(__doc__)
    page, scratch = pathlib.Path(arguments[0]), pathlib.Path(arguments[1]).resolve()
    compile_with, runner = arguments[2:], []
    if "--" in compile_with:
        place = compile_with.index("--")
        compile_with, runner = compile_with[:place], compile_with[place + 1:]
    scratch.mkdir(parents=True, exist_ok=True)
    programs = list(programs_of(page))
    failures = 0
    for number, (place, program, output) in enumerate(programs, 1):
        failure = failure_of(program, output, scratch / f"{number}.c", compile_with, runner)
        if failure is not None:
            failures += 1
            print(f"{place}: {failure}")
    print(f"{len(programs)} programs, {failures} failures")
    return 1 if failures or not programs else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
