"""The mutation operators, which find changes on the tokens of a source.

A change is (operator, start, end, new): text[start:end] becomes new, start and end being offsets in
characters. The functions that yield changes yield only what may compile; whether it does, the
compiler says.
"""

import re

from . import structure

COMPARISONS = {"<": ("<=", ">="), ">": (">=", "<="), "<=": ("<", ">"), ">=": (">", "<"),
               "==": ("!=",), "!=": ("==",)}
LOGIC = {"&&": "||", "||": "&&"}
ARITHMETIC = {"+": "-", "-": "+", "+=": "-=", "-=": "+="}
SHIFTS = {"<<": ">>", ">>": "<<", "<<=": ">>=", ">>=": "<<="}
BITS = {"&": "|", "|": "&", "&=": "|=", "|=": "&=", "^": "|", "^=": "|="}

# How often each operator is drawn against the others.
WEIGHTS = {"compare": 3, "number": 2, "bound": 1, "drop": 3, "constant": 2, "logic": 2,
           "arithmetic": 2, "shift": 1, "bits": 1, "negate": 2}

INTEGER = re.compile(r"^(0[xX][0-9A-Fa-f']+|[0-9][0-9']*)([uUlLzZ]*)$")
FAMILY = re.compile(r"^((?:S|E|DISP_E|STG_E|TYPE_E|CLASS_E|REGDB_E|CO_E)(?=_)|[A-Z]+(?=_))_?[A-Z0-9_]+$")
STATUS = {"S", "E", "DISP_E", "STG_E", "TYPE_E", "CLASS_E", "REGDB_E", "CO_E"}
CONSTANT = re.compile(r"^k[A-Z][A-Za-z0-9]*$")


def family_of(name):
    """family_of returns the family of a constant in capitals, None for a name of no family.

    All statuses, of success and failure, are one family.
    """
    found = FAMILY.match(name)
    if not found or name.startswith(("MIROLTA_", "STDMETHOD", "STDAPI", "_")):
        return None
    return "status" if found.group(1) in STATUS else found.group(1)


class Names:
    """The constants of all sources by family: one may stand instead of another."""

    def __init__(self):
        self.families = {}

    def collect(self, path, tokens):
        """collect adds the constants of a source."""
        for index, token in enumerate(tokens):
            if token.kind != "name":
                continue
            for family in self.families_of(path, tokens, index):
                self.families.setdefault(family, set()).add(token.text)

    @staticmethod
    def families_of(path, tokens, index):
        """families_of returns the families of a name as a list of at most one (kind, name)."""
        token = tokens[index]
        if CONSTANT.match(token.text):
            if index and tokens[index - 1].text == "::":
                return [("scope", tokens[index - 2].text)]
            return [("file", path)]
        family = family_of(token.text)
        return [("capitals", family)] if family else []

    def others(self, path, tokens, index):
        """others returns the names of the constant's families but its own, sorted."""
        out = set()
        for family in self.families_of(path, tokens, index):
            out |= self.families.get(family, set())
        return sorted(out - {tokens[index].text})


def changes(path, text, tokens, names):
    """changes yields every change of the source with this text and these tokens.

    names: a Names that has collected all sources, for constants of the same family.
    """
    kept = structure.excluded(tokens)
    kinds = structure.brace_kinds(tokens)
    inside = structure.enclosing_blocks(tokens, kinds)
    for index, token in enumerate(tokens):
        if index in kept:
            continue
        if token.kind == "punct":
            yield from punctuation(tokens, index, text)
        elif token.kind == "number":
            yield from number(token, is_room(tokens, index))
        elif token.kind == "name":
            yield from constant(path, tokens, index, names)
            yield from negation(tokens, index, text)
    for index in structure.statement_starts(tokens, inside):
        if index not in kept:
            yield from dropped(tokens, index)


def punctuation(tokens, index, text):
    """punctuation yields the changes of a binary operator, and of the index that a ] ends."""
    token = tokens[index]
    if token.text == "]":
        yield from bound(tokens, index, text)
    if not token.spaced or index == 0 or tokens[index - 1].text == "template":
        return
    for new in COMPARISONS.get(token.text, ()):
        yield "compare", token.start, token.end, new
    for operator, table in (("logic", LOGIC), ("arithmetic", ARITHMETIC), ("shift", SHIFTS),
                            ("bits", BITS)):
        if token.text in table:
            yield operator, token.start, token.end, table[token.text]


def bound(tokens, index, text):
    """bound yields the neighbours of the index that the ] at `index` ends.

    Indexes that are one literal are left to number. The bound of a declaration is only made smaller.
    """
    first = tokens[index].match
    if not first or first + 1 == index:
        return
    before = tokens[first - 1]
    owner = before.kind == "name" and before.text not in structure.NOT_STATEMENTS or before.text in (")", "]")
    content = tokens[first + 1:index]
    if not owner or (len(content) == 1 and content[0].kind != "name"):
        return
    inner = text[content[0].start:content[-1].end]
    shown = inner if len(content) == 1 else "(" + inner + ")"
    for change in (" - 1",) if declares(tokens, first) else (" + 1", " - 1"):
        yield "bound", content[0].start, content[-1].end, shown + change


def is_room(tokens, index):
    """is_room says whether the token at `index` stands in the bound of an array's declaration."""
    at = index
    while at >= 0 and tokens[at].text not in (";", "{", "}", "[", "("):
        at -= 1
    return at >= 2 and tokens[at].text == "[" and declares(tokens, at)


def declares(tokens, bracket):
    """declares says whether the [ at index `bracket` belongs to a declaration, T a[...]."""
    name, before = tokens[bracket - 1], tokens[bracket - 2]
    if name.text == "]" and name.match:
        return declares(tokens, name.match)
    return name.kind == "name" and (before.text == ">" or before.kind == "name" and
                                    before.text not in structure.NOT_STATEMENTS)


def number(token, room):
    """number yields the neighbours of an integer literal, in its base and with its suffix.

    room: the literal is an array's bound; the larger neighbour would be room that nothing uses.
    """
    found = INTEGER.match(token.text)
    if not found:
        return
    digits, suffix = found.group(1).replace("'", ""), found.group(2)
    hexadecimal = digits[:2] in ("0x", "0X")
    value = int(digits, 16 if hexadecimal else 10)
    for new in (value + 1, value - 1):
        if new < 0 or (room and new > value):
            continue
        if hexadecimal:
            body = format(new, "X" if digits.upper()[2:] == digits[2:] else "x").rjust(len(digits) - 2, "0")
            yield "number", token.start, token.end, digits[:2] + body + suffix
        else:
            yield "number", token.start, token.end, str(new) + suffix


def constant(path, tokens, index, names):
    """constant yields what may replace a constant that is used: its family, false for true."""
    token = tokens[index]
    following = tokens[index + 1].text if index + 1 < len(tokens) else ""
    if token.text in ("true", "false"):
        yield "constant", token.start, token.end, "false" if token.text == "true" else "true"
        return
    # Definitions and calls are not uses.
    if following in ("=", "{", "(") or (index and tokens[index - 1].text in ("class", "struct", "namespace")):
        return
    # Nor are declarations, and names of types.
    before = tokens[index - 1] if index else None
    if before is not None and before.kind == "name" and before.text not in ("return", "case", "else"):
        return
    if index + 1 < len(tokens) and tokens[index + 1].kind == "name":
        return
    if following == "," and index and tokens[index - 1].text in ("{", ",") and CONSTANT.match(token.text) \
            and enumerator(tokens, index):
        return
    for other in names.others(path, tokens, index):
        yield "constant", token.start, token.end, other


def enumerator(tokens, index):
    """enumerator says whether the braces around the token are those of an enum."""
    at = index
    while at >= 0 and tokens[at].text != "{":
        at -= 1
    return any(t.text == "enum" for t in tokens[max(0, at - 5):at])


def negation(tokens, index, text):
    """negation yields the negated condition of an if or while that declares nothing."""
    if tokens[index].text not in ("if", "while"):
        return
    at = index + 1
    if tokens[at].text == "constexpr":
        at += 1
    if tokens[at].text != "(" or tokens[at].match is None:
        return
    content = tokens[at + 1:tokens[at].match]
    if not content or any(t.text in (";", "=") for t in content):
        return
    start, end = content[0].start, content[-1].end
    yield "negate", start, end, "!(" + text[start:end] + ")"


def dropped(tokens, index):
    """dropped yields the removal of the statement that begins at `index`.

    Removed are calls, assignments, increments, delete, and an if without else that only leaves: a
    guard. Declarations and other statements are kept.
    """
    end = structure.statement_end(tokens, index)
    if end is None or end == index:
        return
    if tokens[index].text == "if":
        head = tokens[index + 1]
        if head.text == "(" and head.match is not None and \
                tokens[head.match + 1].text in ("return", "break", "continue") and \
                (end + 1 >= len(tokens) or tokens[end + 1].text != "else"):
            yield "drop", tokens[index].start, tokens[end].end, ";"
        return
    stop = end
    at = index
    while at < end:
        token = tokens[at]
        if token.kind == "punct" and token.text in "([{" and token.match is not None:
            at = token.match
        elif token.text in structure.ASSIGNMENTS:
            stop = at
            break
        at += 1
    if stop == end and tokens[index].text == "delete":
        yield "drop", tokens[index].start, tokens[end].end, ";"
        return
    if not structure.is_postfix_chain(tokens, index, stop):
        return
    if stop < end or tokens[end - 1].text in (")", "++", "--") or tokens[index].text in ("++", "--"):
        yield "drop", tokens[index].start, tokens[end].end, ";"
