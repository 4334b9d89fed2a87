"""What the programs and libraries of a build consist of, as ninja knows it."""

import json
import os
import re
import shlex
import subprocess

EDGE = re.compile(r"^build (.*?): (\S+) ?(.*)$")
LINKED = re.compile(r"^CXX_(EXECUTABLE|SHARED_LIBRARY|MODULE_LIBRARY)_LINKER")
MEMBER = re.compile(r"^(\S+\.a)\(([^()]+)\)$")


class Graph:
    """The graph of a build that is done, in the folder `build`. Names are relative to that.

    Programs and shared libraries are called binaries. Raises OSError or CalledProcessError where
    ninja, its files or the linker fail.
    """

    def __init__(self, build):
        self.build = build
        listed = subprocess.run(["ninja", "-t", "compdb"], cwd=build, capture_output=True, text=True,
                                check=True).stdout
        self.commands = {edge["output"]: edge["command"] for edge in json.loads(listed)}
        self.inputs = {}
        self.linked = set()
        with open(os.path.join(build, "build.ninja"), encoding="utf-8") as file:
            for line in file:
                edge = EDGE.match(line)
                if edge:
                    self.add_edge(edge.group(1).split(), edge.group(2), edge.group(3).split())
        self.known_binaries = {}
        self.known_objects = {}

    def add_edge(self, outputs, rule, inputs):
        """add_edge notes a line of ninja's file; the inputs include those that only come first."""
        for output in outputs:
            if output != "|":
                self.inputs[output] = [name for name in inputs if name not in ("|", "||")]
                if LINKED.match(rule):
                    self.linked.add(output)

    def binaries(self, target):
        """binaries returns the set of binaries that a target is or needs."""
        if target not in self.known_binaries:
            reached, waiting = set(), [target]
            while waiting:
                name = waiting.pop()
                if name not in reached:
                    reached.add(name)
                    waiting += [i for i in self.inputs.get(name, ()) if not i.endswith((".o", ".a"))]
            self.known_binaries[target] = reached & self.linked
        return self.known_binaries[target]

    def link_command(self, binary):
        """link_command returns the arguments that link a binary, by the quick linker."""
        # The shell's own rule within quotes, which shlex lacks.
        words = shlex.split(self.commands[binary].replace("\\$", "$"))
        words = words[words.index("&&") + 1:]
        return words[:words.index("&&")] + ["-fuse-ld=lld"]

    def objects(self, binary):
        """objects returns the set of objects that a binary is linked from, members of archives included."""
        if binary not in self.known_objects:
            words = self.link_command(binary)
            words[words.index("-o") + 1] = os.devnull
            done = subprocess.run(words + ["-Wl,--trace"], cwd=self.build, capture_output=True, text=True,
                                  check=True)
            found = {word for word in words if word.endswith(".o")}
            for line in done.stdout.splitlines():
                member = MEMBER.match(line)
                if member:
                    found.update(name for name in self.inputs.get(member.group(1), ())
                                 if os.path.basename(name) == member.group(2))
            self.known_objects[binary] = found
        return self.known_objects[binary]
