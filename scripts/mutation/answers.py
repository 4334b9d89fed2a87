"""Reasons for survivors: mutants whose behaviour no test can tell from the original's.

The file has blocks of "name: value" lines, with a blank line between them. file, old and new tell
the mutant: the changed lines before and after, runs of white space as one; new may be "*" for every
change of those lines. which, where the same lines come again in a file, counts them from 0.
reason says why nothing can be seen.
"""


def read(path):
    """read returns the reasons of a file as [(file, old, new, which or None, reason)].

    Raises ValueError for an unknown, repeated or missing field, OSError if the file cannot be read.
    """
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
            if name not in ("file", "old", "new", "which", "reason") or name in fields:
                raise ValueError(f"{path}: unexpected line: {line}")
            fields[name] = value.strip()
        if not fields:
            continue
        if not all(fields.get(name) for name in ("file", "old", "new", "reason")):
            raise ValueError(f"{path}: a field is missing in: {block}")
        which = int(fields["which"]) if "which" in fields else None
        out.append((fields["file"], fields["old"], fields["new"], which, fields["reason"]))
    return out


def fits(answer, mutant):
    """fits says whether an answer, as read returns it, is that of the mutant."""
    path, old, new, which, _ = answer
    return path == mutant.path and old == mutant.old_lines and \
        new in ("*", mutant.new_lines) and which in (None, mutant.occurrence)


def reason(answers, mutant):
    """reason returns the reason given for a mutant, or None."""
    return next((answer[-1] for answer in answers if fits(answer, mutant)), None)


def stale(answers, mutants):
    """stale returns the answers that fit no mutant of the sources any more."""
    return [answer for answer in answers if not any(fits(answer, mutant) for mutant in mutants)]
