#!/usr/bin/env python3
"""Builds the pages as HTML with a search, and manual pages.

usage: docs.py FOLDER

FOLDER/html is for a browser, from a server or from files; FOLDER/man has the manual pages. The plots are of
the tables in docs/benchmarks. A warning of the generator, a link to nothing and a page that docs/README.md does not list are errors.
"""
import html.parser
import os
import pathlib
import re
import shutil
import subprocess
import sys
import urllib.parse

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "bench"))
import plots  # noqa: E402
import table  # noqa: E402

LEFT_OUT = {"build", ".git", "tests"}
LINK = re.compile(r"!?\[[^\]]*\]\(([^)\s]+)\)")
DRAWING = re.compile(r"^```\n.*?^```\n", re.M | re.S)


def pages():
    """The pages of the project, relative to its root."""
    found = []
    for folder, folders, names in os.walk(ROOT):
        folders[:] = [name for name in folders if name not in LEFT_OUT]
        found += [pathlib.Path(folder, name).relative_to(ROOT) for name in names if name.endswith(".md")]
    return sorted(found)


def local_targets(text):
    for link in LINK.findall(text):
        if not urllib.parse.urlsplit(link).scheme:
            yield urllib.parse.unquote(link.split("#")[0])


def stage(source):
    """Copies the pages, what they link to and the generator's files; draws the pictures."""
    for page in pages():
        text = (ROOT / page).read_text("utf-8")
        if page.as_posix() == "docs/architecture.md":
            text = DRAWING.sub("![The layers and their dependencies](architecture.svg)\n", text, count=1)
        if page.parent.as_posix() == "docs/benchmarks":
            text = with_plots(text, ROOT / page, source / page.with_suffix(""))
        write(source / page, text)
        for target in local_targets(text):
            file = (ROOT / page.parent / target).resolve()
            if file.is_file() and file.suffix != ".md":
                copy(file, source / file.relative_to(ROOT))
    for name in ("VERSION", "docs/site.css", "docs/conf.py"):
        copy(ROOT / name, source / name)
    subprocess.run(["dot", "-Tsvg", "-o", source / "docs" / "architecture.svg",
                    ROOT / "docs" / "architecture.dot"], check=True)


def with_plots(text, page, folder):
    """A page of benchmarks, with the plots of each level before its table."""
    for level, names in plots.draw(page, folder).items():
        pictures = "".join(f"![{task}, ours and others]({folder.name}/{name})\n\n"
                           for task, name in names.items())
        text = re.sub(rf"(^## {table.LEVELS[level]}\n.*?\n)(?=\|)", lambda match: match[1] + pictures, text,
                      count=1, flags=re.M | re.S)
    return text


def write(path, text):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text, "utf-8")


def copy(file, target):
    target.parent.mkdir(parents=True, exist_ok=True)
    shutil.copyfile(file, target)


def generate(source, builder, out, doctrees):
    program = shutil.which("sphinx-build")
    if program is None:
        sys.exit("docs.py: sphinx-build is not installed (scripts/packages-docs.txt)")
    done = subprocess.run([program, "-q", "-W", "--keep-going", "-c", source / "docs", "-d", doctrees,
                           "-b", builder, source, out], check=False,
                          env={**os.environ, "LC_ALL": "C.UTF-8"})
    if done.returncode != 0:
        sys.exit(f"docs.py: sphinx-build ended with status {done.returncode}")


class Document(html.parser.HTMLParser):
    """The places, links and resources of an HTML file."""

    def __init__(self, text):
        super().__init__()
        self.places, self.links, self.resources = set(), [], []
        self.feed(text)

    def handle_starttag(self, tag, attrs):
        for name, value in attrs:
            if name in ("id", "name") and value:
                self.places.add(value)
            elif name in ("href", "src") and value is not None:
                self.links.append(value)
                # What a browser loads by itself.
                if tag != "a":
                    self.resources.append(value)


def dead_links(folder):
    """The local links of HTML files that lead nowhere."""
    folder = pathlib.Path(folder).resolve()
    documents = {path: Document(path.read_text("utf-8")) for path in sorted(folder.rglob("*.html"))}
    dead = []
    for path, document in documents.items():
        for link in document.links:
            parts = urllib.parse.urlsplit(link)
            if parts.scheme or parts.netloc:
                continue
            target = (path.parent / urllib.parse.unquote(parts.path)).resolve() if parts.path else path
            place = urllib.parse.unquote(parts.fragment)
            if not target.is_file() or folder not in target.parents:
                dead.append(f"{path.relative_to(folder)}: {link}: no such file")
            elif place and target in documents and place not in documents[target].places:
                dead.append(f"{path.relative_to(folder)}: {link}: no such place")
    return dead


def build(folder):
    folder = pathlib.Path(folder).resolve()
    source, html_folder, man_folder = folder / "source", folder / "html", folder / "man"
    for old in (source, html_folder, man_folder, folder / "doctrees"):
        shutil.rmtree(old, ignore_errors=True)
    stage(source)
    generate(source, "html", html_folder, folder / "doctrees")
    generate(source, "man", man_folder, folder / "doctrees")
    shutil.rmtree(html_folder / ".doctrees", ignore_errors=True)
    copy(ROOT / "host" / "mirolta-host.1", man_folder / "mirolta-host.1")
    # What a browser opens first.
    write(html_folder / "index.html", '<!DOCTYPE html>\n<html lang="en"><head><meta charset="utf-8">'
          '<title>Mirolta</title><meta http-equiv="refresh" content="0; url=docs/README.html"></head>'
          '<body><a href="docs/README.html">Mirolta</a></body></html>\n')
    dead = dead_links(html_folder)
    if dead:
        sys.exit("\n".join(["docs.py: dead links", *dead]))
    print(f"{len(pages())} pages: {html_folder}/index.html, {man_folder}")


def main(arguments):
    if len(arguments) != 1:
        sys.exit(__doc__)
    build(arguments[0])
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
