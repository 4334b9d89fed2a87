#!/usr/bin/env python3
"""Checks the form of the contracts in comments.

contracts.py [PATH...]

A contract is the comment above a declaration. After its sentences come those of these labels that say
something, in this order:

    // MulAdd computes z += x * y and returns the carry word.
    // Shapes: x[m], y[n], z[k], k >= m + n; words least significant first, and so on over
    //         another line.
    // Alias:  x may be y; z overlaps neither.
    // Errors: none.
    // Time:   depends on m, n and k only.
    // Source: Knuth TAOCP 2, 4.3.1, algorithm M.

Each label begins a line, the text of all of them the same column. Without PATHs (files or folders)
every header and source file is read. Prints the faults; exits 1 if there are any.
"""
import pathlib
import re
import sys

SOURCE = pathlib.Path(__file__).resolve().parent.parent
LABELS = ["Shapes", "Alias", "Errors", "Time", "Source"]
TEXT_COLUMN = len("Shapes: ")
LABEL = re.compile(rf"\b({'|'.join(LABELS)}):")
COMMENT_LINE = re.compile(r"\s*// ?(.*)")


def find_faults(text):
    """The faults of one file as pairs of line number and message."""
    found = []
    labels = []  # of the contract that the line before belongs to
    for number, line in enumerate(text.splitlines(), 1):
        comment = COMMENT_LINE.fullmatch(line)
        if comment is None:
            labels = []
            code, mark, rest = line.partition("//")
            if mark and LABEL.search(rest) and code.count('"') % 2 == 0:
                found.append((number, "a label stands in a comment beside code"))
            continue
        words = comment[1]
        label = LABEL.match(words)
        if LABEL.search(words, label.end() if label else 0):
            found.append((number, "a label stands inside a line"))
        if label:
            name = label[1]
            if labels and LABELS.index(name) <= LABELS.index(labels[-1]):
                found.append((number, f"{name} stands behind {labels[-1]}"))
            if len(words) - len(words[label.end():].lstrip()) != TEXT_COLUMN:
                found.append((number, f"the text of {name} does not begin in column {TEXT_COLUMN}"))
            labels.append(name)
        elif not words:
            labels = []
        elif labels and len(words) - len(words.lstrip()) != TEXT_COLUMN:
            found.append((number, f"a line below {labels[-1]} is not indented as its text"))
            labels = []
    return found


def files_below(places):
    for place in places:
        if place.is_file():
            yield place
            continue
        for path in sorted(place.rglob("*")):
            top = path.relative_to(SOURCE).parts[0] if SOURCE in path.parents else ""
            if path.suffix in (".h", ".cpp") and top != "build" and not top.startswith("."):
                yield path


def check(places):
    """The number of files read and the faults, a line each."""
    count, lines = 0, []
    for path in files_below(places or [SOURCE]):
        count += 1
        name = path.relative_to(SOURCE) if SOURCE in path.parents else path
        for number, message in find_faults(path.read_text(encoding="utf-8")):
            lines.append(f"{name}:{number}:1: warning: {message} [contract]")
    return count, lines


def main():
    _, lines = check([pathlib.Path(word).resolve() for word in sys.argv[1:]])
    print("\n".join(lines), end="\n" if lines else "")
    return 1 if lines else 0


if __name__ == "__main__":
    sys.exit(main())
