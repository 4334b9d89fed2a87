"""The code blocks of Markdown pages.

A block is between a line ```LANGUAGE and a line ```. Any other line that starts like a fence, after blanks
or of another form, is a fault: a block that is not read is not tested.
"""
import io
import re

FENCE = re.compile(r"\s*(?:```|~~~)")
START = re.compile(r"```(\w*)")


class PageError(Exception):
    def __init__(self, place, fault):
        super().__init__(f"{place}: {fault}")
        self.place, self.fault = place, fault


class Part:
    """A block, with the place of its first fence; or with the language None a line outside blocks."""

    def __init__(self, place, language, text=""):
        self.place, self.language, self.text = place, language, text


def parts_of(text, page):
    """The parts of a page's text, whose name is `page`, in their order."""
    parts, block = [], None
    for number, line in enumerate(io.StringIO(text), 1):
        place = f"{page}:{number}"
        if not FENCE.match(line):
            if block:
                block.text += line
            else:
                parts.append(Part(place, None, line))
            continue
        start = START.fullmatch(line.rstrip("\n"))
        if not start or (block and start[1]):
            raise PageError(place, "a fence that is not read")
        if block:
            parts.append(block)
            block = None
        else:
            block = Part(place, start[1])
    if block:
        raise PageError(block.place, "a block without end")
    return parts


def blocks_of(text, page):
    return [part for part in parts_of(text, page) if part.language is not None]


def prose_of(text, page):
    """The text without its blocks."""
    return "".join(part.text for part in parts_of(text, page) if part.language is None)


def programs_of(text, page, language, others=()):
    """Pairs of a program and its output: blocks of the language, each followed by one of text. Between the pairs
    there may be blocks of the other languages."""
    pairs, program = [], None
    for block in blocks_of(text, page):
        if program:
            if block.language != "text":
                raise PageError(program.place, "a program without its output")
            pairs.append((program, block.text))
            program = None
        elif block.language == language:
            program = block
        elif block.language not in others:
            raise PageError(block.place, f"a block of the language {block.language}")
    if program:
        raise PageError(program.place, "a program without its output")
    return pairs
