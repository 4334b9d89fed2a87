"""Compiles and runs the programs in C of a page, and compares their output with the page.

  c_page.py PAGE SCRATCH COMPILER [FLAGS...] [-- RUNNER...]

A program is a block between ```c and ```; the next block, between ```text and ```, has its output, and there
are no other blocks. FLAGS name what it is compiled and linked with, RUNNER is put before the program's name.
Warnings are errors.
"""
import pathlib
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import page_blocks  # noqa: E402

STRICT = ["-std=c11", "-Wall", "-Wextra", "-pedantic", "-Wconversion", "-Werror"]
LIMIT = 120


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
    programs = page_blocks.programs_of(page.read_text("utf-8"), page.name, "c")
    failures = 0
    for number, (program, output) in enumerate(programs, 1):
        failure = failure_of(program.text, output, scratch / f"{number}.c", compile_with, runner)
        if failure is not None:
            failures += 1
            print(f"{program.place}: {failure}")
    print(f"{len(programs)} programs, {failures} failures")
    return 1 if failures or not programs else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
