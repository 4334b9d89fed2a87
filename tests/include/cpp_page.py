"""Makes one program of the programs of docs/cpp.md, or compares their output with the page.

  cpp_page.py PAGE --source FILE.cpp            writes the program
  cpp_page.py PAGE --run WORD... PROGRAM        runs it, by the command WORD... if there is one

A block between ```cpp and ``` is a program; the next block, between ```text and ```, is its output. Its
main returns nothing, so that it can be a function of the one program.
"""
import pathlib
import re
import subprocess
import sys

BLOCK = re.compile(r"^```(\w*)\n(.*?)^```$", re.M | re.S)
LIMIT = 120


def programs_of(page):
    """Pairs of a program and its output."""
    found, waiting = [], None
    for match in BLOCK.finditer(page):
        language, text = match.groups()
        if waiting is not None:
            if language != "text":
                sys.exit(f"a program without its output:\n{waiting}")
            found.append((waiting, text))
            waiting = None
        elif language == "cpp":
            waiting = text
        elif language != "sh":
            sys.exit(f"a block of another kind:\n{text}")
    if waiting is not None or len(found) != len(re.findall(r"^\s*```+\s*cpp", page, re.M)):
        sys.exit("programs and outputs do not go together")
    return found


def source_of(programs):
    includes, bodies, calls = set(), [], []
    for number, (text, _) in enumerate(programs):
        lines = text.split("\n")
        includes |= {line for line in lines if line.startswith("#include ")}
        body = "\n".join(line for line in lines if not line.startswith("#include "))
        if body.count("\nint main() {\n") != 1:
            sys.exit(f"a program without main:\n{text}")
        body = body.replace("\nint main() {\n", "\nvoid Main() {\n").strip()
        bodies.append(f"namespace program_{number} {{\n{body}\n}}\n")
        calls.append(f'  if (name == "{number}") program_{number}::Main();')
    return "\n".join(["// Made by cpp_page.py of docs/cpp.md.", *sorted(includes), "#include <string>", "",
                      "namespace {", "", *bodies, "}  // namespace", "",
                      "int main(int count, char** words) {",
                      "  const std::string name = count == 2 ? words[1] : std::string();", *calls, "}", ""])


def run(programs, command):
    failures = 0
    for number, (text, expected) in enumerate(programs):
        done = subprocess.run([*command, str(number)], stdin=subprocess.DEVNULL, capture_output=True,
                              timeout=LIMIT, check=False)
        output = done.stdout.decode("utf-8").replace("\r\n", "\n")
        if done.returncode != 0 or output != expected:
            failures += 1
            print(f"status {done.returncode} of\n{text}\nprints\n{output}\nnot\n{expected}"
                  f"{done.stderr.decode('utf-8', 'replace')}")
    print(f"{len(programs)} programs, {failures} failures")
    return 1 if failures or not programs else 0


def main(arguments):
    if len(arguments) < 3 or arguments[1] not in ("--source", "--run"):
        sys.exit(__doc__)
    programs = programs_of(pathlib.Path(arguments[0]).read_text("utf-8"))
    if arguments[1] == "--run":
        return run(programs, arguments[2:])
    out = pathlib.Path(arguments[2])
    text = source_of(programs)
    if not out.exists() or out.read_text("utf-8") != text:
        out.write_text(text, "utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
