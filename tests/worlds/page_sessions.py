"""Runs the sessions of the pages and compares their output.

  page_sessions.py PROJECT HOST

A session is a block of indented lines that starts with "$ " and a command; the lines up to the next "$ " are what
it prints. Commands run in the project's folder, and mirolta-host is HOST. README.md has at least one.
"""
import os
import pathlib
import re
import subprocess
import sys

SESSION = re.compile(r"(?:^    .*\n)+", re.M)


def sessions_of(text):
    """Pairs of a command and its output."""
    for block in SESSION.findall(text):
        lines = [line[4:] for line in block.splitlines()]
        if lines[0].startswith("$ "):
            for part in re.split(r"^\$ ", "\n".join(lines) + "\n", flags=re.M)[1:]:
                command, output = part.split("\n", 1)
                yield command, output


def main(project, host):
    project = pathlib.Path(project)
    environment = dict(os.environ, PATH=f"{pathlib.Path(host).parent}:{os.environ['PATH']}")
    failures, counts = [], {}
    for page in [*project.glob("*.md"), *project.glob("docs/*.md")]:
        for command, expected in sessions_of(page.read_text("utf-8")):
            counts[page.name] = counts.get(page.name, 0) + 1
            done = subprocess.run(["sh", "-c", command], cwd=project, env=environment, capture_output=True,
                                  text=True, check=False, timeout=60)
            if done.returncode != 0 or done.stderr or done.stdout != expected:
                failures.append(f"{page.name}: {command}\n{done.stdout}{done.stderr}")
    if not counts.get("README.md"):
        failures.append("README.md has no session")
    print("\n".join(f"FAILED: {failure}" for failure in failures) or f"{sum(counts.values())} commands agree")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
