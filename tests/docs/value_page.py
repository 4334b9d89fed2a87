"""Compares the tables of docs/values.md with what a run gives.

  value_page.py PAGE PROGRAM            fails if they differ
  value_page.py PAGE PROGRAM --write    writes what the run gives into the page

The tables are what follows the line MARK on the page; PROGRAM prints them (value_table.cpp).
"""
import difflib
import pathlib
import subprocess
import sys

MARK = "<!-- What follows is what tests/docs/value_table.cpp prints; value_page.py --write writes it. -->\n"


def main(arguments):
    if len(arguments) not in (2, 3) or arguments[2:] not in ([], ["--write"]):
        sys.exit(__doc__)
    page = pathlib.Path(arguments[0])
    head, mark, tables = page.read_text("utf-8").partition(MARK)
    if not mark:
        sys.exit(f"{page}: the mark is missing: {MARK}")
    got = "\n" + subprocess.run([arguments[1]], check=True, capture_output=True).stdout.decode("utf-8")
    if len(got.splitlines()) < 100:
        sys.exit(f"{arguments[1]} prints only {len(got.splitlines())} lines")
    if len(arguments) == 3:
        page.write_text(head + mark + got, "utf-8")
    elif tables != got:
        print(*difflib.unified_diff(tables.splitlines(), got.splitlines(), str(page), "the run", n=0,
                                    lineterm=""), sep="\n")
        sys.exit(f"{page} differs from a run: value_page.py --write writes it")
    print(f"{page}: {len(got.splitlines())} lines")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
