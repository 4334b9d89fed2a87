"""The programs of one mutant, made beside those of the unchanged sources."""

import os
import shlex
import shutil
import subprocess

UNCHANGED = ".unchanged"  # ends the names of binaries that are put aside
OPTIONS_WITH_NAME = ("-MT", "-MF", "-o")


def compiler_words(command, root, build):
    """compiler_words returns the arguments of a compiler's call without its output.

    Left out are the compiler's cache, warnings and the list of dependencies. Names of the folder root
    become relative to the folder build, as the cache makes them: they may be in the object.
    """
    words = shlex.split(command)
    words = words[1:] if words[0].endswith("ccache") else words
    upwards = os.path.relpath(root, build)
    kept, skip = [], False
    for word in words:
        if skip or word == "-MD" or (word.startswith("-W") and not word.startswith("-Wp,")):
            skip = False
        elif word in OPTIONS_WITH_NAME:
            skip = True
        else:
            kept.append(word.replace(root + os.sep, upwards + os.sep))
    return kept + ["-w"]


class Shadow:
    """What a mutant changes in the build of a Tree. The build's own files are kept and put back.

    graph: the Graph of the build. The mutant has to be in the tree's sources while objects are
    compiled. Raises OSError where files cannot be written.
    """

    def __init__(self, tree, graph):
        self.tree = tree
        self.graph = graph
        self.folder = os.path.join(tree.build, "mutant")
        shutil.rmtree(self.folder, ignore_errors=True)
        os.makedirs(self.folder)
        self.changed = {}  # {object: file of the mutant's, None if it is the same}
        self.placed = {}  # {binary: (its differing objects, whether it is linked from the unchanged)}

    def compile(self, names):
        """compile makes the mutant's form of objects that were not made before.

        Returns the output of the compiler if it fails, else None.
        """
        for name in sorted(names):
            if name in self.changed:
                continue
            out = os.path.join(self.folder, f"{len(self.changed)}.o")
            words = compiler_words(self.graph.commands[name], self.tree.folder, self.tree.build)
            done = subprocess.run(["nice", "-n", "5"] + words + ["-o", out],
                                  cwd=self.tree.build, capture_output=True, text=True)
            if done.returncode != 0:
                return done.stderr
            self.changed[name] = out if self.tree.digest(out) != self.tree.digest(name) else None
        return None

    def differing(self, binary):
        """differing returns the set of objects of a binary that were made and differ."""
        return {name for name in self.graph.objects(binary) if self.changed.get(name)}

    def place(self, binaries, unchanged=False):
        """place links the binaries that have differing objects and puts them where the tests are.

        All their objects have to be made before. unchanged: they are linked in the same way, but from
        the build's own objects. Returns the output of a linker that fails, else None.
        """
        for binary in binaries:
            differing = self.differing(binary)
            if not differing or self.placed.get(binary) == (differing, unchanged):
                continue
            words = []
            for word in self.graph.link_command(binary):
                # Members by name: the archive would bring back the unchanged one too, where that has an
                # instance of a template which the mutant's lacks.
                members = [n for n in self.graph.inputs.get(word, ()) if n.endswith(".o")]
                if word.endswith(".a") and members:
                    words += ["-Wl,--start-lib"] + members + ["-Wl,--end-lib"]
                else:
                    words.append(word)
            if not unchanged:
                words = [self.changed.get(word) or word for word in words]
            new = os.path.join(self.folder, "linked")
            words[words.index("-o") + 1] = new
            done = subprocess.run(["nice", "-n", "5"] + words, cwd=self.tree.build, capture_output=True,
                                  text=True)
            if done.returncode != 0:
                return done.stderr
            path = os.path.join(self.tree.build, binary)
            if binary not in self.placed:
                os.rename(path, path + UNCHANGED)
            os.rename(new, path)
            self.placed[binary] = (differing, unchanged)
        return None

    def restore(self):
        """restore puts the build's own binaries back."""
        for binary in self.placed:
            path = os.path.join(self.tree.build, binary)
            os.rename(path + UNCHANGED, path)
        self.placed = {}


def recover(tree, graph):
    """recover puts binaries back that an interrupted run left."""
    for binary in graph.linked:
        path = os.path.join(tree.build, binary)
        if os.path.exists(path + UNCHANGED):
            os.rename(path + UNCHANGED, path)
