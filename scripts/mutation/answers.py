"""Reasons for survivors: mutants whose behaviour no test can tell from the original's.

The file has blocks of "name: value" lines, with a blank line between them. file, old and new tell
the mutant: the changed lines before and after, runs of white space as one; new may be "*" for every
change of those lines. reason says why nothing can be seen.
"""


def read(path):
    """read returns [(file, old, new, reason)] and fails on a block that lacks a field."""
    out = []
    with open(path, encoding="utf-8") as file:
        blocks = file.read().split("\n\n")
    for block in blocks:
        fields = {}
        for line in block.splitlines():
            if line.startswith("#") or not line.strip():
                continue
            name, _, value = line.partition(":")
            if line.startswith("  ") and fields:
                fields[next(reversed(fields))] += " " + line.strip()
                continue
            if name not in ("file", "old", "new", "reason") or name in fields:
                raise ValueError(f"{path}: unexpected line: {line}")
            fields[name] = value.strip()
        if not fields:
            continue
        if len(fields) != 4 or not all(fields.values()):
            raise ValueError(f"{path}: a field is missing in: {block}")
        out.append((fields["file"], fields["old"], fields["new"], fields["reason"]))
    return out


def reason(answers, mutant):
    """reason returns the reason given for a mutant, or None."""
    for path, old, new, text in answers:
        if path == mutant.path and old == mutant.old_lines and new in ("*", mutant.new_lines):
            return text
    return None


def stale(answers, mutants):
    """stale returns the answers that fit no mutant of the sources any more."""
    return [a for a in answers if not any(
        a[0] == m.path and a[1] == m.old_lines and a[2] in ("*", m.new_lines) for m in mutants)]
