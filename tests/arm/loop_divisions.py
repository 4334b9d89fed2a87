#!/usr/bin/env python3
"""Lists the calls of helpers for 64-bit division that stand in a loop of 32-bit ARM object code.

    loop_divisions.py OBJDUMP FILE...

A FILE is an object or an archive. A loop is a cycle of the function's control flow; a function that may
jump anywhere in itself (a jump table of Thumb) counts as jumping everywhere. Prints a line a call, and
the number of functions and of divisions at the end; fails if a call stands in a loop, or if there is no
function at all.
"""
import re
import subprocess
import sys

HELPER = re.compile(r"__aeabi_u?ldivmod|__u?(?:div|mod|divmod)di[34]|__rt_[us]div64\w*")
FUNCTION = re.compile(r"^([0-9a-f]{8,}) <(.+)>:$")
INSTRUCTION = re.compile(r"^\s*([0-9a-f]+):\t(?:[0-9a-f]{4,8} ?)+\s*\t([a-z][a-z0-9.]*)(?:\t(.*))?$")
RELOCATION = re.compile(r"^\s*[0-9a-f]+: R_ARM_(?:CALL|JUMP24|PC24|PLT32|THM_\w+)\s+(\S+)")
CONDITIONS = "eq ne cs cc hs lo mi pl vs vc hi ls ge lt gt le".split()
JUMP = re.compile(rf"^(b|bx)({'|'.join(CONDITIONS)})?(\.[nw])?$")
CALL = re.compile(rf"^blx?({'|'.join(CONDITIONS)})?(\.[nw])?$")
RETURN = re.compile(rf"^(?:pop|ldm(?:ia|fd|ib)?)({'|'.join(CONDITIONS)})?(\.[nw])?$")
TO_PC = re.compile(rf"^(?:ldr|add|mov|sub)({'|'.join(CONDITIONS)})?(\.[nw])?$")


class Instruction:
    def __init__(self, address, name, operands):
        self.address, self.name, self.operands = address, name, operands
        self.symbol = None  # what a relocation names
        self.next = []


def functions(lines):
    """The instructions of each function; those of an outlined part are its own."""
    name, body = None, []
    for line in lines:
        if found := FUNCTION.match(line):
            if body:
                yield name, body
            name, body = found[2], []
        elif found := RELOCATION.match(line):
            if body:
                body[-1].symbol = found[1]
        elif (found := INSTRUCTION.match(line)) and name:
            body.append(Instruction(int(found[1], 16), found[2], found[3] or ""))
    if body:
        yield name, body


def target_of(instruction):
    found = re.match(r"(?:r\d+, |[a-z]+, )?([0-9a-f]+)(?: <|$)", instruction.operands)
    return int(found[1], 16) if found else None


def link(body):
    """Sets what may follow each instruction within the function."""
    at = {instruction.address: index for index, instruction in enumerate(body)}
    for index, instruction in enumerate(body):
        name, operands = instruction.name, instruction.operands
        following = [index + 1] if index + 1 < len(body) else []
        conditional = None
        if jump := JUMP.match(name):
            conditional = jump[2]
            if jump[1] == "b":
                target = None if instruction.symbol else target_of(instruction)
                instruction.next = [at[target]] if target in at else []
            elif operands.strip() != "lr":
                instruction.next = list(range(len(body)))
            else:
                instruction.next = []
        elif name in ("cbz", "cbnz"):
            target = target_of(instruction)
            instruction.next = following + ([at[target]] if target in at else [])
            continue
        elif name in ("tbb", "tbh"):
            instruction.next = list(range(len(body)))
            continue
        elif (found := RETURN.match(name)) and re.search(r"\bpc\b", operands):
            conditional = found[1]
        elif (found := TO_PC.match(name)) and operands.startswith("pc,"):
            conditional = found[1]
            if "lr" not in operands and "[sp" not in operands:  # a jump table
                instruction.next = list(range(len(body)))
        else:
            instruction.next = following
            continue
        if conditional:
            instruction.next = instruction.next + following


def reaches_itself(body, start):
    seen, waiting = set(), list(body[start].next)
    while waiting:
        index = waiting.pop()
        if index == start:
            return True
        if index not in seen:
            seen.add(index)
            waiting.extend(body[index].next)
    return False


def main():
    objdump, files = sys.argv[1], sys.argv[2:]
    count, divisions, found = 0, 0, []
    for path in files:
        listing = subprocess.run([objdump, "-drC", "--no-recurse-limit", path], check=True, text=True,
                                 capture_output=True).stdout.splitlines()
        for name, body in functions(listing):
            count += 1
            calls = [index for index, instruction in enumerate(body)
                     if (CALL.match(instruction.name) or JUMP.match(instruction.name))
                     and HELPER.fullmatch((instruction.symbol or "").split("@")[0])]
            divisions += len(calls)
            if not calls:
                continue
            link(body)
            found += [f"{path.split('/')[-1]}: {name}: {body[index].symbol} in a loop" for index in calls
                      if reaches_itself(body, index)]
    print("\n".join(found + [f"{count} functions, {divisions} divisions, {len(found)} in a loop"]))
    if found or not count:
        sys.exit(1)


if __name__ == "__main__":
    main()
