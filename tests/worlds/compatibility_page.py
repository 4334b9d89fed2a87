"""Compares the tables of docs/scripts.md with the members that the objects of the host have.

  compatibility_page.py PAGE HOST HOST-CLASS-LISTING FOLDER-OF-CLASSES

A table of members stands under a heading that is the object's name. Its rows are

  | `Member(arguments)`, `Another` | same | |
  | `Third` | differs | how |

The second column is one of

  same, differs    the object here and that of the platform's host have the member
  refused          both have the member, and every call of it is an error here
  only here        the platform's host has no such member
  missing          the host has no such member

A member that differs, is refused or missing has a text in the third column. Tables whose first column is "behaviour"
have the same words, and are not compared.

The listing must have every class that the sources define.
"""
import pathlib
import re
import subprocess
import sys

HEADING = re.compile(r"^#+ `?([^`]*?)`?$")
CLASS = re.compile(r'\bHostClass [\w:]+ = ?\{"([^"]+)"')
NAME = re.compile(r"`([\w.]+)[^`]*`")
HAS = {"same": True, "differs": True, "refused": True, "only here": True, "missing": False}
NEEDS_TEXT = {"differs", "refused", "missing"}
# What the language itself has in every ECMAScript 5 engine.
LANGUAGE = set("""Array Boolean Date Error EvalError Function Infinity JSON Math NaN Number Object RangeError
  ReferenceError RegExp String SyntaxError TypeError URIError decodeURI decodeURIComponent encodeURI
  encodeURIComponent eval isFinite isNaN parseFloat parseInt undefined""".split())


def rows_of(page):
    """The rows of the tables: object, names of members, status, text; and the places of faulty rows."""
    rows, faults, heading, kind = [], [], "", ""
    for number, line in enumerate(page.split("\n"), 1):
        if HEADING.match(line):
            heading = HEADING.match(line)[1]
        cells = [cell.strip() for cell in re.split(r"(?<!\\)\|", line.strip())[1:-1]]
        if cells[1:] == ["here", ""]:
            kind = cells[0]
        if len(cells) != 3 or set(cells[1]) <= {"-", ":"} or cells[1] == "here":
            continue
        names = NAME.findall(cells[0])
        if cells[1] not in HAS:
            faults.append(f"line {number}: \"{cells[1]}\" is none of {', '.join(HAS)}")
        elif kind == "member" and cells[1] in NEEDS_TEXT and not cells[2]:
            faults.append(f"line {number}: says not how")
        elif kind == "member":
            rows.append((heading, names, cells[1], cells[2]))
    return rows, faults


def compare(page, members):
    """What is wrong with the page, for the members {object: names} that there are."""
    rows, faults = rows_of(page)
    named = {}
    for heading, names, status, _ in rows:
        for name in names:
            if (heading, name) in named:
                faults.append(f"{heading}.{name} has two rows")
            named[heading, name] = status
            if HAS[status] and name not in members.get(heading, []):
                faults.append(f"{heading}.{name} is \"{status}\" on the page, and missing in the host")
            if not HAS[status] and name in members.get(heading, []):
                faults.append(f"{heading}.{name} is missing on the page, and there in the host")
    headings = {row[0] for row in rows}
    for heading, names in members.items():
        if heading not in headings:
            faults.append(f"{heading} has no table")
            continue
        faults += [f"{heading}.{name} is not on the page" for name in names
                   if (heading, name) not in named]
    return faults


def members_of(host, listing):
    script = pathlib.Path(__file__).with_name("script_objects.js")
    members = {}
    for command in ([host, str(script)], [listing]):
        said = subprocess.run(command, capture_output=True, text=True, check=True).stdout
        for line in said.splitlines():
            words = line.split("\t")
            if words[0] == "Global" and words[1] in LANGUAGE or words[1].startswith("_"):
                continue
            members.setdefault(words[0], []).append(words[1])
    return members


def classes_of(folder):
    """The names of the classes that the sources define."""
    return {name for path in pathlib.Path(folder).glob("*.cpp") for name in CLASS.findall(path.read_text("utf-8"))}


def main(page, host, listing, classes):
    members = members_of(host, listing)
    faults = compare(pathlib.Path(page).read_text("utf-8"), members)
    faults += [f"{name} is not in the list of all classes" for name in sorted(classes_of(classes) - set(members))]
    for fault in faults:
        print(f"FAILED: {page}: {fault}")
    print(f"{sum(map(len, members.values()))} members of {len(members)} objects")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    main(*sys.argv[1:])
