"""One C++ program out of many, which is compiled once."""
import re

MAIN = re.compile(r"^int main\(\) \{$", re.M)


def joined(programs, maker):
    """The text of the program that runs the one whose number, from 0, is its argument, or ends with status 2.

    The programs are blocks of pages. Their main has the line `int main() {` and returns nothing, so that it can
    be a function. `maker` says in the first line who has made the text.
    """
    includes, bodies, calls = {"#include <string>"}, [], []
    for number, program in enumerate(programs):
        lines = program.text.split("\n")
        includes |= {line for line in lines if line.startswith("#include ")}
        body = "\n".join(line for line in lines if not line.startswith("#include ")).strip()
        body, mains = MAIN.subn("void Main() {", body)
        if mains != 1:
            raise ValueError(f"{program.place}: {mains} lines int main() {{")
        bodies.append(f"// {program.place}\nnamespace program_{number} {{\n{body}\n}}\n")
        calls.append(f'  if (number == "{number}") return program_{number}::Main(), 0;')
    return "\n".join([f"// Made by {maker}.", *sorted(includes), "", "namespace {", "", *bodies, "}  // namespace",
                      "", "int main(int count, char** words) {",
                      '  const std::string number = count == 2 ? words[1] : "";', *calls, "  return 2;", "}", ""])


def write_if_changed(path, text):
    """So that what depends on an unchanged program is not built again."""
    if not path.exists() or path.read_text("utf-8") != text:
        path.write_text(text, "utf-8")
