"""The deepest chain of calls, in bytes of stack.

Rules say what object code does not: a file of lines "kind | functions | value | reason", where functions are a
regular expression of demangled names.

  indirect   calls through registers in these functions reach all functions whose address is taken somewhere and
             whose name the value matches; "outside": only functions that do not belong to the program
  callback   "function > function": the first one's callers pass it functions, which the second one calls: of those
             whose address the caller takes, the ones that the value matches
  through    "caller > function + function ...": calls of the caller that come back by way of these functions, whose
             frames count once each, and of functions outside, to the functions that the value matches; a caller
             "script" is none of the program
  recursion  at most so many frames of each of these functions are on the stack at a time
  sized      "function + function": recursion on numbers, where the frames of both together come so many times at
             most for each halving of the size
  halvings   of all sized recursion of one chain together: between the largest number and the smallest that recurses
  wiped      what these functions pass as callbacks may use so many bytes of stack, callback frames included, but
             not what wipes its own part

Assumptions: a function calls what its instructions name, and by registers what the rules say. Functions that the
program does not define (the system's, the language library's, the compiler's) use stack of their owner's, which
is not counted. A jump to another function at a function's end counts as a call.
"""
import math
import re
import subprocess
from collections import namedtuple

from .object_code import ObjectError, tool

Rule = namedtuple("Rule", "line kind functions value reason")
KINDS = ("indirect", "callback", "through", "recursion", "sized", "halvings", "wiped")


def read_rules(path):
    """The rules of a file."""
    rules = []
    with open(path, encoding="utf-8") as file:
        for number, line in enumerate(file, 1):
            if not line.strip() or line.startswith("#"):
                continue
            fields = [field.strip() for field in line.split(" | ")]
            if len(fields) != 4 or fields[0] not in KINDS or not all(fields):
                raise ObjectError(f"{path}:{number}: not a rule: {line.rstrip()}")
            rules.append(Rule(number, *fields))
    return rules


def readable_names(names):
    """Dictionary from names of the linker to demangled ones; a local one loses its object's."""
    names = sorted(names)
    text = "\n".join(name.rsplit(":", 1)[-1] if re.search(r"^/|\.o(bj)?:", name) else name for name in names)
    shown = subprocess.run([tool("llvm-cxxfilt")], input=text, check=True, capture_output=True,
                           text=True).stdout.split("\n")
    # Newer compilers' names of closures, which the demangler may not know.
    return {name: line.replace("mirolta::", "").replace("(anonymous namespace)::", "")
            for name, line in zip(names, shown)}


class CallGraph:
    """Functions with their frames and callees, after the rules."""

    def __init__(self, program, rules):
        self.program = program
        self.rules = rules
        self.names = readable_names(program.functions)
        self.problems = []
        self.frames = {}
        for function in program.functions:
            if function in program.frames:
                self.frames[function] = program.frames[function]
            else:
                self.problems.append(f"no frame size: {self.names[function]}")
                self.frames[function] = 0
        self.edges = {function: {callee for callee in program.calls[function] if callee in program.functions}
                      for function in program.functions}
        self.taken = set()
        for owner, targets in program.references.items():
            self.taken |= {target for target in targets if target in program.functions}
        self.callbacks = {}  # (caller, first function) -> node
        self.ways = set()
        self.add_callbacks()
        self.add_through()
        self.add_indirect()
        self.limits = self.recursion_limits()
        self.sized, self.sized_bytes = self.sized_recursion()

    def matching(self, pattern, functions):
        """Those of the functions whose name a pattern finds."""
        found = re.compile(pattern)
        return {function for function in functions if found.search(self.names[function])}

    def of_kind(self, kind):
        """The rules of one kind."""
        return [rule for rule in self.rules if rule.kind == kind]

    def unused(self, rule, what):
        """A rule without effect is wrong."""
        self.problems.append(f"rule in line {rule.line} ({rule.kind} {rule.functions}): {what}")

    def add_callbacks(self):
        """For each caller a node of its own with both functions' frames, which calls what the caller passes."""
        self.callers_of_callbacks = set()
        self.wiping = set()
        for rule in self.of_kind("callback"):
            first, last = (part.strip() for part in rule.functions.split(">"))
            firsts = self.matching(first, self.program.functions)
            lasts = self.matching(last, self.program.functions)
            if not firsts or not lasts:
                self.unused(rule, "no such function")
                continue
            self.callers_of_callbacks |= lasts
            self.wiping |= firsts
            frame = max(self.frames[f] for f in firsts) + (0 if firsts == lasts else
                                                           max(self.frames[f] for f in lasts))
            for caller in sorted(self.program.functions):
                if not self.program.calls[caller] & firsts:
                    continue
                passed = self.matching(rule.value, self.program.references[caller] & self.program.functions)
                if not passed:
                    # One that passes on what its own caller passes has none itself.
                    if caller not in firsts:
                        self.unused(rule, f"{self.names[caller]} passes no such function")
                    continue
                node = f"{caller} > {rule.line}"
                self.names[node] = f"{self.names[min(firsts)]} > {self.names[min(lasts)]}"
                self.frames[node] = frame
                self.edges[node] = passed
                self.edges[caller].add(node)
                self.callbacks[caller] = node

    def add_through(self):
        """For each such rule a node with the frames of all functions on the way."""
        for rule in self.of_kind("through"):
            caller, way = rule.functions.split(" > ")
            node = f"through > {rule.line}"
            self.frames[node] = 0
            for pattern in way.split(" + "):
                found = self.matching(pattern, self.program.functions)
                if not found:
                    self.unused(rule, f"no function {pattern}")
                self.frames[node] += max((self.frames[function] for function in found), default=0)
            callers = set() if caller == "script" else self.matching(caller, self.program.functions)
            if not callers and caller != "script":
                self.unused(rule, "no such function")
            self.edges[node] = self.matching(rule.value, self.taken)
            if not self.edges[node]:
                self.unused(rule, "no function whose address is taken")
            for function in callers:
                self.edges[function].add(node)
            self.names[node] = f"calls by name ({caller})"
            self.ways.add(node)

    def add_indirect(self):
        """Edges of calls through registers."""
        explained = set(self.callers_of_callbacks)
        for rule in self.of_kind("indirect"):
            callers = self.matching(rule.functions, self.program.indirect)
            if not callers:
                self.unused(rule, "no such function has calls through registers")
            explained |= callers
            if rule.value == "outside":
                continue
            targets = self.matching(rule.value, self.taken)
            if not targets:
                self.unused(rule, "no function whose address is taken")
            for caller in callers:
                self.edges[caller] |= targets
        # In a DLL calls of imported functions are calls through registers too.
        explained |= {function for function in self.program.indirect
                      if any(target.startswith("__imp_") for target in self.program.references[function])}
        for function in sorted(self.program.indirect - explained):
            self.problems.append(f"calls through registers without a rule: {self.names[function]}")

    def recursion_limits(self):
        """Frames of a function on the stack at a time."""
        limits = {}
        for rule in self.of_kind("recursion"):
            functions = self.matching(rule.functions, self.program.functions)
            if not functions:
                self.unused(rule, "no such function")
            for function in functions:
                limits[function] = int(rule.value)
        return limits

    def sized_recursion(self):
        """The functions of sized recursion, and the bytes of all their frames beyond one of each."""
        functions, rate = set(), 0.0
        for rule in self.of_kind("sized"):
            frames = 0
            for pattern in rule.functions.split(" + "):
                found = self.matching(pattern, self.program.functions)
                if not found:
                    self.unused(rule, f"no function {pattern}")
                functions |= found
                frames += max((self.frames[function] for function in found), default=0)
            rate = max(rate, frames * float(rule.value))
        halvings = sum(float(rule.value) for rule in self.of_kind("halvings"))
        return functions, math.ceil(rate * halvings)

    def components(self):
        """Strongly connected components, callees first (Tarjan 1972, without recursion)."""
        index, low, stack, on_stack, out = {}, {}, [], set(), []
        for root in sorted(self.edges):
            if root in index:
                continue
            work = [(root, iter(sorted(self.edges[root])))]
            index[root] = low[root] = len(index)
            stack.append(root)
            on_stack.add(root)
            while work:
                node, callees = work[-1]
                for callee in callees:
                    if callee not in index:
                        index[callee] = low[callee] = len(index)
                        stack.append(callee)
                        on_stack.add(callee)
                        work.append((callee, iter(sorted(self.edges[callee]))))
                        break
                    if callee in on_stack:
                        low[node] = min(low[node], index[callee])
                else:
                    work.pop()
                    if work:
                        low[work[-1][0]] = min(low[work[-1][0]], low[node])
                    if low[node] == index[node]:
                        component = set()
                        while True:
                            member = stack.pop()
                            on_stack.discard(member)
                            component.add(member)
                            if member == node:
                                break
                        out.append(component)
        return out

    def find_depths(self):
        """Sets the depth of every function: (bytes, whether sized recursion is among them), and its next callee."""
        self.recursive = set()
        order = self.components()
        for component in order:
            member = next(iter(component))
            if len(component) > 1 or member in self.edges[member]:
                self.recursive |= component
                self.problems += ["recursion without a rule: " + self.names[member] for member in sorted(component)
                                  if member not in self.limits and member not in self.sized]
        for rule in self.of_kind("recursion"):
            if not self.matching(rule.functions, self.recursive & self.program.functions):
                self.unused(rule, "no recursive function")
        self.depths, self.next = self.depths_of(order, set())

    def depths_of(self, order, cut):
        """Depths and next callees; functions in `cut` count as if they called nothing."""
        best = {}  # function -> {with sized recursion or not: (bytes, next component's function)}
        for component in order:
            weight = sum(self.frames[member] * self.limits.get(member, 1) for member in component)
            is_sized = bool(component & self.sized)
            found = {is_sized: (weight, None)}
            outside = set() if component & cut else {callee for member in component
                                                     for callee in self.edges[member]} - component
            for callee in sorted(outside):
                for sized, (size, _) in best[callee].items():
                    total = (weight + size, callee)
                    if total[0] > found.get(sized or is_sized, (-1,))[0]:
                        found[sized or is_sized] = total
            for member in component:
                best[member] = found
        self.components_of = {member: component for component in order for member in component}
        depths, following = {}, {}
        for function, found in best.items():
            depths[function] = max(size + (self.sized_bytes if sized else 0) for sized, (size, _) in found.items())
            following[function] = found
        return depths, following

    def depth(self, function):
        """Bytes of the deepest chain from a function."""
        return self.depths[function]

    def chain(self, function):
        """The deepest chain from a function: [(name, bytes)]."""
        found = self.next[function]
        sized = max(found, key=lambda key: found[key][0] + (self.sized_bytes if key else 0))
        out = [("sized recursion", self.sized_bytes)] if sized else []
        while function is not None:
            component = self.components_of[function]
            out += [(self.names[member], self.frames[member] * self.limits.get(member, 1))
                    for member in [function] + sorted(component - {function})]
            found = self.next[function]
            following = found.get(sized) or found[False]
            # Once the sized functions have passed, what follows need not have any.
            function = following[1]
            if function is not None and sized and sized not in self.next[function]:
                sized = False
        return out

    def check_wiped(self):
        """Problems of callbacks that use more stack than is wiped after them. Returns [(name, used, wiped)]."""
        out = []
        order = self.components()
        # Nested ones wipe what is below themselves.
        depths, _ = self.depths_of(order, set(self.callbacks.values()) | self.wiping)
        unchecked = set(self.callbacks)
        for rule in self.of_kind("wiped"):
            callers = self.matching(rule.functions, unchecked)
            if not callers:
                self.unused(rule, "no such caller of a callback")
            unchecked -= callers
            for caller in sorted(callers):
                node = self.callbacks[caller]
                used = self.frames[node] + max(depths[callee] for callee in self.edges[node])
                out.append((self.names[caller], used, int(rule.value)))
                if used > int(rule.value):
                    self.problems.append(f"{self.names[caller]} uses {used} bytes, of which {rule.value} are wiped")
        self.problems += [f"no rule says how much is wiped after {self.names[caller]}" for caller in sorted(unchecked)]
        return out
