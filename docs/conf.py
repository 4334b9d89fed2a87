# Configuration of the generator of the pages, which scripts/docs.py calls on its copy of them.
import re

project = "Mirolta"
author = "The Mirolta authors"
project_copyright = author
with open("../VERSION", encoding="utf-8") as file:
    version = release = file.read().strip()

root_doc = "docs/README"
extensions = ["myst_parser", "sphinx_inline_tabs"]
source_suffix = {".md": "markdown"}
myst_heading_anchors = 4
nitpicky = True
# Symbols of the wide tables of benchmarks and terms in quotes stay as they are written.
smartquotes = False
language = "en"

html_theme = "furo"
html_title = f"Mirolta {version}"
html_show_sphinx = False
html_copy_source = False
html_show_sourcelink = False
html_static_path = ["site.css"]
html_css_files = ["site.css"]
# The date of manual pages: none, so that the same pages give the same bytes.
today = f"Mirolta {version}"

# name of the page, name and section of the manual page, its one line
man_pages = [
    ("docs/manual", "mirolta", "cryptography components for scripts and programs", [author], 7),
    ("docs/registry", "mirolta-registry", "the class registry on Linux", [author], 5),
]

# The languages of examples that are shown side by side.
TABS = {"js": "JScript", "vbscript": "VBScript", "cpp": "C++", "c": "C", "python": "Python"}
FENCED = r"```(?:%s)\n.*?^```\n" % "|".join(TABS)
SIDE_BY_SIDE = re.compile(rf"(?:^{FENCED}\n*){{2,}}", re.M | re.S)
LIST_ITEM = re.compile(r"^- \[([^\]]*)\]\(([^)]*)\.md\)$", re.M)


def with_tabs(text):
    """Neighbouring examples in several languages become tabs."""
    def tabs(match):
        out = ""
        for block in re.findall(f"^{FENCED}", match[0], re.M | re.S):
            out += f"````{{tab}} {TABS[block[3:block.index(chr(10))]]}\n{block}````\n\n"
        return out
    return SIDE_BY_SIDE.sub(tabs, text)


def with_contents(text):
    """The lists of pages become the contents beside every page."""
    first, *sections = re.split(r"^## ", text, flags=re.M)
    out = first
    for section in sections:
        caption = section.split("\n", 1)[0]
        entries = "".join(f"{title} <{page}>\n" for title, page in LIST_ITEM.findall(section))
        out += f"## {section}\n```{{toctree}}\n:hidden:\n:caption: {caption}\n\n{entries}```\n\n"
    return out


def prepare(_, page, source):
    source[0] = with_tabs(source[0])
    if page == root_doc:
        source[0] = with_contents(source[0])


def setup(app):
    app.connect("source-read", prepare)
