"""A small lexer for C++ sources that clang-format has laid out."""

import bisect
import re

PUNCTUATION = sorted(
    ["<<=", ">>=", "<=>", "...", "->*", "::", "->", "++", "--", "<<", ">>", "<=", ">=", "==", "!=",
     "&&", "||", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", ".*"] + list("{}[]()<>;:,.?~!+-*/%^&|=#"),
    key=len, reverse=True)

TOKEN = re.compile(
    r'(?P<space>[ \t\r\n]+)'
    r'|(?P<comment>//[^\n]*|/\*.*?\*/)'
    r'|(?P<raw>(?:u8|u|U|L)?R"(?P<mark>[^(]*)\(.*?\)(?P=mark)")'
    r'|(?P<string>(?:u8|u|U|L)?"(?:\\.|[^"\\])*")'
    r"|(?P<char>(?:u8|u|U|L)?'(?:\\.|[^'\\])*')"
    r"|(?P<number>\.?[0-9](?:'?[0-9A-Za-z_.]|(?<=[eEpP])[+-])*)"
    r'|(?P<name>[A-Za-z_][A-Za-z_0-9]*)'
    r'|(?P<punct>' + "|".join(re.escape(p) for p in PUNCTUATION) + r')'
    r'|(?P<other>.)', re.S)

DIRECTIVE = re.compile(r'^[ \t]*#(?:[^\n\\]|\\\n|\\.)*', re.M)


class Token:
    """One token of a source.

    kind is name, number, char, string, punct or other; start and end are offsets into the text in
    characters; match is the index of a bracket's partner, None where it has none.
    """

    __slots__ = ("kind", "text", "start", "end", "space_before", "space_after", "match")

    def __init__(self, kind, text, start):
        self.kind = kind
        self.text = text
        self.start = start
        self.end = start + len(text)
        self.space_before = False
        self.space_after = False
        self.match = None

    @property
    def spaced(self):
        """spaced says whether white space stands on both sides, as around a binary operator."""
        return self.space_before and self.space_after

    def __repr__(self):
        return self.text


def tokenize(text):
    """tokenize returns the list of Tokens of a text, without comments and preprocessor lines.

    Brackets are matched by index. No text is refused: what is no token of C++ has the kind other.
    """
    directives = {m.start(): m.end() for m in DIRECTIVE.finditer(text)}
    starts = {start + (len(text[start:end]) - len(text[start:end].lstrip())): end
              for start, end in directives.items()}
    tokens = []
    position = 0
    space = True
    while position < len(text):
        if position in starts:
            position = starts[position]
            space = True
            continue
        found = TOKEN.match(text, position)
        kind = found.lastgroup
        if kind == "mark":
            kind = "raw"
        if kind in ("space", "comment"):
            if tokens:
                tokens[-1].space_after = True
            space = True
        else:
            kind = "string" if kind == "raw" else kind
            token = Token(kind, found.group(), position)
            token.space_before = space
            tokens.append(token)
            space = False
        position = found.end()
    match_brackets(tokens)
    return tokens


def match_brackets(tokens):
    """match_brackets sets match of every bracket of a list of tokens; unmatched ones keep None."""
    closing = {")": "(", "]": "[", "}": "{"}
    stack = []
    for index, token in enumerate(tokens):
        if token.kind != "punct":
            continue
        if token.text in "([{":
            stack.append(index)
        elif token.text in closing:
            # A directive may have hidden a bracket; what is left unmatched is not changed.
            if stack and tokens[stack[-1]].text == closing[token.text]:
                token.match = stack.pop()
                tokens[token.match].match = index


class Lines:
    """The lines of a text. Positions are offsets in characters."""

    def __init__(self, text):
        self.text = text
        self.starts = [0] + [m.end() for m in re.finditer(r"\n", text)]

    def number(self, position):
        """number returns the line of a position, the first line being 1."""
        return bisect.bisect_right(self.starts, position)

    def span(self, start, end):
        """span returns the offsets at which the first line of text[start:end] begins and its last one
        ends, without the newline."""
        first = self.starts[self.number(start) - 1]
        last = self.text.find("\n", max(start, end - 1))
        return first, len(self.text) if last < 0 else last
