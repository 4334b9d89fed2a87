"""Compares the commands of the build that make tiny.dll with what their tools take for options.

llvm-rc and lld-link read "/check/tiny.rc" as the option "/c": what is no option is named without folders.

Input: build.ninja. Exit: 1 and the arguments, if a file with its folder is among them.
"""
import pathlib
import re
import shlex
import sys

TOOLS = re.compile(r"(llvm-rc|lld-link)(-\d+)?$")


def inputs(arguments):
    """What follows the tool and is neither an option nor the file after /fo."""
    previous = ""
    for argument in arguments:
        if argument.startswith("/") and argument.count("/") > 1 and previous != "/fo":
            yield argument
        previous = argument


def commands(text):
    """The arguments of each run of one of the tools."""
    for line in text.splitlines():
        if not line.strip().startswith("COMMAND ="):
            continue
        for command in line.split("=", 1)[1].split("&&"):
            words = shlex.split(command)
            if words and TOOLS.search(words[0]):
                yield words[1:]


found = list(commands(pathlib.Path(sys.argv[1]).read_text()))
wrong = [argument for command in found for argument in inputs(command)]
print(f"{len(found)} commands")
for argument in wrong:
    print(f"{argument}: would be an option below some folders")
sys.exit(1 if wrong or len(found) < 3 else 0)
