"""What the tokens of a source are part of: function bodies, statements, places that no change fits.

All functions take the list of tokens that lexer.tokenize returns; positions are indexes into it. They
know the layout that clang-format gives, and guess where it is not enough.
"""

BLOCK_BEFORE = {")", "const", "noexcept", "override", "else", "do", "final", "mutable", "try"}
NOT_STATEMENTS = {
    "return", "break", "continue", "using", "const", "constexpr", "auto", "static", "goto", "case",
    "default", "else", "do", "while", "for", "switch", "typedef", "template", "public", "private",
    "protected", "struct", "class", "union", "enum", "friend", "namespace", "extern", "inline",
    "virtual", "explicit", "operator", "static_assert", "thread_local", "volatile", "unsigned", "alignas"}
ASSIGNMENTS = {"=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "<<=", ">>="}


def brace_kinds(tokens):
    """brace_kinds returns {index of an opening brace: "block", "type", "namespace" or "values"}."""
    kinds = {}
    open_braces = []
    for index, token in enumerate(tokens):
        if token.kind != "punct":
            continue
        if token.text == "{":
            kinds[index] = brace_kind(tokens, index, kinds.get(open_braces[-1]) if open_braces else None)
            open_braces.append(index)
        elif token.text == "}" and open_braces:
            open_braces.pop()
    return kinds


def brace_kind(tokens, index, outer):
    """brace_kind returns the kind of the brace at `index`; outer is that around it, or None."""
    head = []
    at = index - 1
    while at >= 0 and tokens[at].text not in (";", "{", "}"):
        if tokens[at].text in (")", "]") and tokens[at].match is not None:
            head.append(tokens[at].text)
            at = tokens[at].match
        head.append(tokens[at].text)
        at -= 1
    words = set(head)
    before = tokens[index - 1].text if index else ""
    if "namespace" in words or (tokens[index - 1].kind == "string" and "extern" in words):
        return "namespace"
    if before in BLOCK_BEFORE or (outer == "block" and before in ("{", "}", ";", ":")):
        return "block"
    if words & {"struct", "class", "union", "enum"} and "=" not in words:
        return "type"
    if "->" in words and ")" in words:
        return "block"
    # A constructor's list of members may end with braces.
    if before == "}" and ":" in words:
        return "block"
    return "values"


def enclosing_blocks(tokens, kinds):
    """enclosing_blocks returns, for each token, whether the nearest brace around it is a block's.

    kinds: as brace_kinds returns them.
    """
    inside = []
    stack = []
    for index, token in enumerate(tokens):
        if token.text == "}" and token.kind == "punct" and stack:
            stack.pop()
        inside.append(bool(stack) and kinds.get(stack[-1]) == "block")
        if token.text == "{" and token.kind == "punct":
            stack.append(index)
    return inside


def excluded(tokens):
    """excluded returns the indexes of the tokens that are never changed.

    These are attributes, assertions of the compiler, operator and using declarations, and the zero
    of = 0.
    """
    out = set()
    for index, token in enumerate(tokens):
        following = tokens[index + 1] if index + 1 < len(tokens) else None
        if token.text in ("static_assert", "alignas", "__attribute__", "decltype", "asm", "noexcept") \
                and following is not None and following.text == "(" and following.match:
            out.update(range(index, following.match + 1))
        elif token.text == "[" and following is not None and following.text == "[" and token.match:
            out.update(range(index, token.match + 1))
        elif token.text == "operator" and following is not None:
            out.add(index + 1)
        elif token.text == "using":
            at = index
            while at < len(tokens) and tokens[at].text != ";":
                out.add(at)
                at += 1
        elif token.text == "0" and index and tokens[index - 1].text == "=" and \
                tokens[index - 2].text in (")", "const", "noexcept", "override"):
            out.add(index)
    return out


def is_postfix_chain(tokens, first, last):
    """is_postfix_chain says whether tokens[first:last] is an expression like *a.b->c[i](x)++."""
    at = first
    while at < last and tokens[at].text in ("*", "++", "--") and tokens[at].kind == "punct":
        at += 1
    if at >= last:
        return False
    if tokens[at].text == "(" and tokens[at].match is not None:
        at = tokens[at].match + 1
    elif tokens[at].text == "::" and at + 1 < last:
        at += 2
    elif tokens[at].kind == "name" and tokens[at].text not in NOT_STATEMENTS:
        at += 1
    else:
        return False
    while at < last:
        text = tokens[at].text
        if text in ("::", ".", "->") and at + 1 < last and tokens[at + 1].kind == "name":
            at += 2
        elif text in ("(", "[") and tokens[at].match is not None:
            at = tokens[at].match + 1
        elif text in ("++", "--"):
            at += 1
        else:
            return False
    return at == last


def statement_end(tokens, first):
    """statement_end returns the index of the semicolon that ends the statement at `first`.

    None if the block ends before, or a bracket has no partner.
    """
    at = first
    while at < len(tokens):
        token = tokens[at]
        if token.kind == "punct":
            if token.text == ";":
                return at
            if token.text in "([{":
                if token.match is None:
                    return None
                at = token.match
            elif token.text in ")]}":
                return None
        at += 1
    return None


def statement_starts(tokens, inside):
    """statement_starts yields the indexes at which a statement of a function begins.

    inside: as enclosing_blocks returns it.
    """
    heads = set()
    for index, token in enumerate(tokens):
        if token.text in ("if", "for", "while", "switch"):
            at = index + 1
            if at < len(tokens) and tokens[at].text == "constexpr":
                at += 1
            if at < len(tokens) and tokens[at].text == "(" and tokens[at].match is not None:
                heads.add(tokens[at].match)
    # The parts of a for's head are no statements.
    in_parentheses = 0
    for index, token in enumerate(tokens):
        if token.kind == "punct" and token.text == "(":
            in_parentheses += 1
        elif token.kind == "punct" and token.text == ")":
            in_parentheses -= 1
        if index == 0 or not inside[index]:
            continue
        before = tokens[index - 1]
        after_label = before.text == ":" and before.space_after and not before.space_before
        if before.text in (";", "{", "}", "else") or index - 1 in heads or after_label:
            if not surrounded_by_head(tokens, index):
                yield index


def surrounded_by_head(tokens, index):
    """surrounded_by_head says whether the token at `index` stands inside parentheses, as a for's
    head."""
    at = index - 1
    while at >= 0:
        token = tokens[at]
        if token.kind == "punct":
            if token.text in ")]}":
                if token.match is None:
                    return True
                at = token.match
            elif token.text == "{":
                return False
            elif token.text == "(":
                return True
        at -= 1
    return False
