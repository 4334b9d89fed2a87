"""Which mutants are tried: every change of the sources, drawn by folder, file and operator."""

import hashlib
import os
import re

from . import lexer, operators

# Folders of the code. The share says how a line counts when mutants are given to folders: less where
# a mutant costs a build of everything, or where the code is not in the module on Windows.
FOLDERS = {
    "include/mirolta": 0.3, "platform/seam": 1.0, "platform/portable": 0.3, "platform/runtime": 0.5,
    "platform/windows": 1.0,
    "automation": 1.0, "hash": 1.0, "cipher": 1.0, "bignum": 1.0, "rsa": 1.0, "streams": 1.0,
    "module": 1.0, "host": 0.5}
# Folders that only the Windows build compiles.
WINDOWS = {"platform/windows"}
# Folders whose sources all others include.
WIDE = {"include/mirolta", "platform/portable"}
FEWEST = 8
SOURCE = re.compile(r"\.(cpp|h|inc)$")
TARGET = re.compile(r'target\("([^"]*)"\)')


class Mutant:
    """One change of one source.

    start and end are offsets in characters, line counts from 1; old_lines and new_lines are the whole
    lines before and after with single spaces; occurrence counts from 0 where these come again in the
    file; weight is relative to all other mutants.
    """

    def __init__(self, folder, path, operator, start, end, old, new, line, old_lines, new_lines):
        self.folder = folder
        self.path = path
        self.operator = operator
        self.start = start
        self.end = end
        self.old = old
        self.new = new
        self.line = line
        self.old_lines = old_lines
        self.new_lines = new_lines
        self.occurrence = 0
        self.weight = 1.0

    @property
    def key(self):
        """key names the mutant as long as the changed lines stay, wherever they move in the file."""
        return "|".join((self.path, self.old_lines, self.new_lines, str(self.occurrence)))


def squeezed(text):
    """squeezed returns the text with each run of white space as one space, none at the ends."""
    return " ".join(text.split())


def folder_of(path):
    """folder_of returns the row of FOLDERS that a path below the root lies in, or None."""
    return next((f for f in FOLDERS if path.startswith(f + "/")), None)


def processor_features():
    """processor_features returns the flags of /proc/cpuinfo, an empty set if they are unknown."""
    try:
        with open("/proc/cpuinfo", encoding="utf-8") as file:
            return set(re.search(r"^flags\s*:(.*)$", file.read(), re.M).group(1).split())
    except (OSError, AttributeError):
        return set()


def runnable(text, features):
    """runnable says whether the features include what a source's target attributes name.

    With no features known every source counts as runnable.
    """
    needed = {f.strip().replace(".", "_") for group in TARGET.findall(text) for f in group.split(",")}
    names = {"sha": "sha_ni", "pclmul": "pclmulqdq", "avx512ifma": "avx512ifma"}
    return not features or all(names.get(f, f) in features for f in needed if f)


def sources(root, paths):
    """sources returns {path: text} of those paths below root that can have mutants.

    These are the sources of FOLDERS that this machine runs. Raises OSError if one cannot be read.
    """
    features = processor_features()
    texts = {}
    for path in sorted(paths):
        if folder_of(path) and SOURCE.search(path):
            with open(os.path.join(root, path), encoding="utf-8") as file:
                text = file.read()
            if runnable(text, features):
                texts[path] = text
    return texts


def all_mutants(texts):
    """all_mutants returns a Mutant for every change of the sources {path: text}, with its weight."""
    tokens = {path: lexer.tokenize(text) for path, text in texts.items()}
    names = operators.Names()
    for path in texts:
        names.collect(path, tokens[path])
    mutants = []
    for path, text in texts.items():
        mutants += mutants_of(path, text, tokens[path], names)
    return mutants


def mutants_of(path, text, tokens, names):
    """mutants_of returns the Mutants of one source; their weights add up to that of the file."""
    lines = lexer.Lines(text)
    found = []
    seen = {}
    for operator, start, end, new in operators.changes(path, text, tokens, names):
        first, last = lines.span(start, end)
        mutant = Mutant(folder_of(path), path, operator, start, end, text[start:end], new,
                        lines.number(start), squeezed(text[first:last]),
                        squeezed(text[first:start] + new + text[end:last]))
        pair = (mutant.old_lines, mutant.new_lines)
        mutant.occurrence = seen.get(pair, 0)
        seen[pair] = mutant.occurrence + 1
        found.append(mutant)
    places = {}
    for mutant in found:
        places.setdefault(mutant.operator, set()).add(mutant.start)
    # A file counts by the square root of its places, so that tables do not take all; an operator by
    # its own weight, a place as every other of its operator.
    total = sum(operators.WEIGHTS[o] for o in places)
    size = min(400, sum(len(p) for p in places.values())) ** 0.5
    per_place = {}
    for mutant in found:
        per_place[mutant.operator, mutant.start] = per_place.get((mutant.operator, mutant.start), 0) + 1
    for mutant in found:
        share = operators.WEIGHTS[mutant.operator] / total / len(places[mutant.operator])
        mutant.weight = size * share / per_place[mutant.operator, mutant.start]
    return found


def quotas(texts, count):
    """quotas returns {folder: number of mutants} of a sample of about `count`, by weighted lines.

    Each of several folders has at least FEWEST, or fewer where the sample is small.
    """
    lines = {}
    for path, text in texts.items():
        folder = folder_of(path)
        lines[folder] = lines.get(folder, 0) + text.count("\n") * FOLDERS[folder]
    total = sum(lines.values())
    if len(lines) == 1:
        return {next(iter(lines)): count}
    fewest = min(FEWEST, max(1, count // (2 * len(lines))))
    return {folder: max(fewest, round(count * n / total)) for folder, n in lines.items()}


def drawn(mutants, seed):
    """drawn returns {folder: mutants in the order in which they are tried}.

    The order depends on seed and key of each mutant alone: an edit elsewhere changes little of it.
    """
    def priority(mutant):
        digest = hashlib.sha256(f"{seed}|{mutant.key}".encode()).digest()
        uniform = (int.from_bytes(digest[:8], "big") + 1) / 2**64
        return uniform ** (1 / mutant.weight)

    folders = {}
    for mutant in sorted(mutants, key=priority, reverse=True):
        folders.setdefault(mutant.folder, []).append(mutant)
    return folders
