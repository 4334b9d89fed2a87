#!/usr/bin/env python3
"""Checks what the sources define, by an index of all of them that ctags makes.

definitions.py [FOLDER]

- one-definition  A type, function or variable outside anonymous namespaces is defined in one file: two
                  programs of the project may be linked from any of its files. Sources that stand for
                  each other (the Windows and the portable side of the seam, stubs of the tests) are
                  named with their reason in scripts/definitions-allowed.txt.
- unused          Whatever has a name is named somewhere else; what production code defines is named
                  outside tests, harnesses and benchmark. That is looked for in the text, so it covers
                  every build at once, inline functions and templates included. Exceptions, with their
                  reason, are in the same list.

FOLDER is the source folder, the project's own if none is given. Prints the faults; exits 1 if there
are any. An exception that excuses nothing is a fault.
"""
import collections
import fnmatch
import json
import pathlib
import re
import subprocess
import sys

SOURCE = pathlib.Path(__file__).resolve().parent.parent
LIST = "scripts/definitions-allowed.txt"
TYPES = {"class", "struct", "union", "enum"}
# An enumeration may have a name only to say what its constants are.
NAMED = TYPES - {"enum"} | {"function", "prototype", "enumerator", "macro", "typedef", "variable", "member"}
NOT_PRODUCTION = ("tests/", "fuzz/", "bench/")
# What callers and the system use: interfaces, and names of the system.
PUBLIC = ("include/", "platform/portable/")
ENTRY_POINT = re.compile(r"\b(STDMETHODCALLTYPE|STDAPICALLTYPE|WINAPI|MIROLTA_ENTRY)\b")
# Names that compilers and the test framework call.
CALLED_BY_OTHERS = re.compile(r"__.*|~.*|operator\b.*|main|TEST\w*|TYPED_TEST\w*|INSTANTIATE_\w+|(SetUp|TearDown)\w*")
TEXT = re.compile(r'//[^\n]*|/\*.*?\*/|"((?:\\.|[^"\\\n])*)"', re.S)


def read_index(folder):
    """The tags of all headers and sources, and the text of each file."""
    # Builds change while this runs.
    tops = [top for top in folder.iterdir() if top.name != "build" and not top.name.startswith(".")]
    paths = sorted(path.relative_to(folder).as_posix() for top in tops
                   for path in ([top] if top.is_file() else top.rglob("*"))
                   if path.suffix in (".h", ".cpp", ".inc"))
    version = subprocess.run(["ctags", "--version"], capture_output=True, text=True)
    if "Universal Ctags" not in version.stdout:
        sys.exit("definitions.py needs Universal Ctags (package universal-ctags); ctags is another program")
    run = subprocess.run(
        ["ctags", "--options=NONE", "--language-force=C++", "--kinds-C++=+pxz", "--fields=+neKSst",
         "--fields-C++={properties}{specialization}", "--output-format=json", "-L", "-", "-f", "-"],
        cwd=folder, input="\n".join(paths), capture_output=True, text=True, check=True)
    tags = [json.loads(line) for line in run.stdout.splitlines()]
    # A static assertion looks like a declaration.
    tags = [tag for tag in tags if "static_assert(" not in tag.get("pattern", "")]
    return tags, {path: (folder / path).read_text(encoding="utf-8") for path in paths}


class Exceptions:
    """Rows "CHECK PATTERN reason": for one-definition a pattern of file names, for unused one of names."""

    def __init__(self, path):
        self.path = path
        self.rows = []
        if path.exists():
            for number, line in enumerate(path.read_text().splitlines(), 1):
                if line.strip() and not line.startswith("#"):
                    check, pattern, _ = line.split(None, 2)
                    self.rows.append([check, pattern, number, False])

    def excuses(self, check, name):
        found = False
        for row in self.rows:
            if row[0] == check and fnmatch.fnmatchcase(name, row[1]):
                found = row[3] = True
        return found

    def idle(self):
        return [f"{LIST}:{number}:1: warning: {check} {pattern} excuses nothing [definitions]"
                for check, pattern, number, used in self.rows if not used]


def local_types(tags):
    """For each file the types that its anonymous namespaces hold."""
    found = collections.defaultdict(set)
    for tag in tags:
        if tag["kind"] in TYPES and "__anon" in tag.get("scope", ""):
            found[tag["path"]].add(tag["name"])
    return found


def key_of_definition(tag, local):
    """What the linker and the language know a definition by; None for what is one file's own."""
    kind, scope, name = tag["kind"], tag.get("scope", ""), tag["name"]
    properties = tag.get("properties", "").split(",")
    in_namespace = tag.get("scopeKind") in (None, "namespace")
    if name.startswith("__anon") or tag.get("scopeKind") == "function":
        return None  # the index gives every anonymous namespace a name of its own
    if CALLED_BY_OTHERS.fullmatch(name) and not name.startswith("~"):
        return None
    if scope.split("::")[-1] in local[tag["path"]]:
        return None
    key = f"{scope}::{name}{tag.get('specialization', '')}"
    if kind in TYPES:
        return key
    if not scope or "static" in properties and in_namespace:
        return None  # the system's functions, which tests replace, and static ones
    if kind == "function":
        parameters = re.sub(r"\b\w+(?=[,)])", "", tag.get("signature", ""))
        return key + parameters.replace(" ", "")
    if kind == "variable" and in_namespace:
        words = tag["pattern"]
        constant = re.search(r"\bconst(expr)?\b", words) and not re.search(r"\b(inline|extern)\b", words)
        return None if constant or re.search(r"\bstatic\b", words) else key
    return None


def check_one_definition(tags, exceptions):
    local = local_types(tags)
    places = collections.defaultdict(dict)
    for tag in tags:
        key = key_of_definition(tag, local)
        if key is not None:
            places[key].setdefault(tag["path"], tag["line"])
    found = []
    for key, files in sorted(places.items()):
        if len(files) < 2:
            continue
        files = {path: line for path, line in files.items()
                 if not exceptions.excuses("one-definition", path)}
        if len(files) > 1:
            (path, line), *others = sorted(files.items())
            found.append(f"{path}:{line}:1: warning: {key} is defined in "
                         f"{', '.join(other for other, _ in others)} too [one-definition]")
    return len(places), found


def count_names(texts):
    """How often each file names each identifier; a string that is one name counts too."""
    def code_of(match):
        return f" {match[1]} " if match[1] and match[1].isidentifier() else " "
    return {path: collections.Counter(re.findall(r"[A-Za-z_]\w*", TEXT.sub(code_of, text)))
            for path, text in texts.items()}


def is_candidate(name, tags):
    if CALLED_BY_OTHERS.fullmatch(name) or name.startswith("__anon"):
        return False
    overrides = [tag for tag in tags if "override" in tag.get("properties", "")]
    if overrides and all(tag in overrides or tag["kind"] == "function" for tag in tags):
        return False  # the base is another's
    return not any(tag["path"].startswith(PUBLIC) or ENTRY_POINT.search(tag["pattern"]) for tag in tags)


def count_own_uses(name, tags, tags_by_scope, texts):
    """How often types of that name are named by themselves: in their bodies, and by their members'
    definitions elsewhere."""
    bodies = [(tag["path"], range(tag["line"], tag["end"] + 1)) for tag in tags if tag["kind"] in TYPES]
    count = 0
    for path, lines in bodies:
        body = "\n".join(texts[path].splitlines()[lines[0] - 1:lines[-1]])
        count += count_names({path: body})[path][name]
    for member in tags_by_scope[name]:
        inside = any(member["path"] == path and member["line"] in lines for path, lines in bodies)
        if member["kind"] == "function" and not inside:
            count += 2 if member["name"] in (name, "~" + name) else 1
    return count


def check_unused(tags, texts, exceptions):
    named = count_names(texts)
    uses, production_uses = collections.Counter(), collections.Counter()
    by_name, by_scope = collections.defaultdict(list), collections.defaultdict(list)
    for path, counter in named.items():
        uses.update(counter)
        if not path.startswith(NOT_PRODUCTION):
            production_uses.update(counter)
    for tag in tags:
        uses[tag["name"]] -= 1
        if not tag["path"].startswith(NOT_PRODUCTION):
            production_uses[tag["name"]] -= 1
        by_scope[tag.get("scope", "").split("::")[-1]].append(tag)
        if tag["kind"] in NAMED:
            by_name[tag["name"]].append(tag)
    total = sum(named.values(), collections.Counter())
    found = []
    for name, those in sorted(by_name.items()):
        if not is_candidate(name, those):
            continue
        production = not any(tag["path"].startswith(NOT_PRODUCTION) for tag in those)
        if TYPES & {tag["kind"] for tag in those}:
            uses[name] = total[name] - count_own_uses(name, those, by_scope, texts)
        macros = sum(tag["kind"] == "macro" for tag in those)
        if macros:  # a call of a macro outside functions looks like a declaration
            uses[name] = total[name] - macros
        if uses[name] <= 0:
            message = "is not used"
        elif production and production_uses[name] <= 0:
            message = "is used by tests only"
        else:
            continue
        if not exceptions.excuses("unused", name):
            place = min(those, key=lambda tag: (tag["kind"] != "function", tag["path"]))
            found.append(f"{place['path']}:{place['line']}:1: warning: {name} {message} [unused]")
    return len(by_name), found


def check(folder=SOURCE):
    """The number of definitions and of names read, and the faults, a line each."""
    tags, texts = read_index(folder)
    exceptions = Exceptions(folder / LIST)
    definitions, doubles = check_one_definition(tags, exceptions)
    names, unused = check_unused(tags, texts, exceptions)
    return definitions, names, doubles + unused + exceptions.idle()


def main():
    _, _, found = check(pathlib.Path(sys.argv[1]).resolve() if sys.argv[1:] else SOURCE)
    print("\n".join(found), end="\n" if found else "")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
