"""Compares the manual page of the host with its --help, and has groff read it.

  manual_page.py PAGE HOST

Every option of --help, with its argument, is a paragraph of the page in the same order, and the page has no
other; so are the variables of the environment and the exit statuses.
"""
import pathlib
import re
import subprocess
import sys

HELP_ROW = re.compile(r"^  (-\S.*?|//\S+)(?:  +|$)", re.MULTILINE)
FONT = re.compile(r"\\f.|[ \"]")
SECTION = re.compile(r"^\.SH (.*)$", re.MULTILINE)


def heads(page, section):
    """The first lines of the paragraphs of a section, without fonts and spaces."""
    parts = SECTION.split(page)
    body = dict(zip(parts[1::2], parts[2::2]))[section]
    lines = re.findall(r"^\.TP\n\.(?:B|BR|BI) (.*)$", body, re.MULTILINE)
    return [FONT.sub("", line).replace("\\-", "-") for line in lines]


def faults_of(page, help_text):
    faults = []
    options = [row.replace(" ", "") for row in HELP_ROW.findall(help_text)]
    if not options:
        faults.append("--help has no options")
    if heads(page, "OPTIONS") != options:
        faults.append(f"options {heads(page, 'OPTIONS')}\n  but --help has {options}")
    variables = sorted(set(re.findall(r"\bMIROLTA_\w+", help_text)))
    if sorted(heads(page, "ENVIRONMENT")) != variables:
        faults.append(f"variables {heads(page, 'ENVIRONMENT')}, but --help has {variables}")
    said = help_text.split("Exit status:")[1].split("\n\n")[0]
    statuses = re.findall(r"\b\d+\b", said)
    if heads(page, "EXIT STATUS") != statuses:
        faults.append(f"statuses {heads(page, 'EXIT STATUS')}, but --help has {statuses}")
    return faults


def main(path, host):
    said = subprocess.run([host, "--help"], capture_output=True, text=True, check=True).stdout
    faults = faults_of(pathlib.Path(path).read_text("utf-8"), said)
    groff = subprocess.run(["groff", "-man", "-ww", "-b", "-z", "-Tutf8", "-K", "utf8", "-dAD=l", path],
                           capture_output=True, text=True, check=False)
    if groff.returncode != 0 or groff.stdout or groff.stderr:
        faults.append(f"groff: {groff.stdout}{groff.stderr}")
    for fault in faults:
        print(f"FAILED: {path}: {fault}")
    print(f"{len(HELP_ROW.findall(said))} options")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
