#!/usr/bin/env python3
"""Holds the pages of docs/ to what they claim.

    scripts/docs_examples.py --check VRX     fails if an example prints something else, a table of options differs from what the
                                             commands declare, a link or a picture leads nowhere, or no link leads to a page, or
                                             a page names a source or a function that is not there
    scripts/docs_examples.py --update VRX    writes what the examples print now, the pictures that they make, and the tables

An example is a fenced block `console`: a line that begins with "$ " is a command of the shell (a backslash at its end goes on in the
next line), what follows up to the next one is what it prints on both of its streams. The examples of a page run one after the other
in a folder of their own, in which `examples` and `resources` are those of the project; files that they write into `pictures` are those of
docs/pictures.

A table of options is what lies between <!-- options: NAME --> and <!-- end of options -->: the section NAME of what
`vrx manual markdown` prints. Each of its sections has its place in one page.
"""

import argparse
import difflib
import filecmp
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unicodedata

ROOT = pathlib.Path(__file__).resolve().parent.parent
DOCS = ROOT / "docs"
BLOCK = re.compile(r"^```console\n(.*?)^```$", re.MULTILINE | re.DOTALL)
TABLE = re.compile(r"(<!-- options: (.+?) -->\n).*?(<!-- end of options -->)", re.DOTALL)
FOLDERS = sorted(entry.name for entry in ROOT.iterdir() if entry.is_dir() and entry.name != "build")
SOURCE = re.compile(r"`((?:" + "|".join(map(re.escape, FOLDERS)) + r")/[\w./]*(?:\.\w+|/))`")
SYMBOL = re.compile(r"`([\w.]+)`(?:, `\w+`)?(?: and others)? in `([\w/]+\.(?:h|cpp))`")
LINK = re.compile(r"(?<!`)!?\[[^\]]*\]\(([^)\s]+)\)")


def pages():
    """Every page of the project, README first."""
    return [ROOT / "README.md", *sorted(DOCS.rglob("*.md"))]


def commands(block):
    """The commands of a block, as they stand there."""
    found, lines = [], block.splitlines()
    i = 0
    while i < len(lines):
        if lines[i].startswith("$ "):
            command = [lines[i][2:]]
            while command[-1].endswith("\\"):
                i += 1
                command.append(lines[i])
            found.append("\n".join(command))
        i += 1
    return found


def run(command, folder, environment):
    """What a command prints, without blanks at the ends of lines."""
    done = subprocess.run(["sh", "-c", command], cwd=folder, env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          timeout=120, check=False)
    lines = [line.rstrip() for line in done.stdout.decode("utf-8").splitlines()]
    while lines and not lines[-1]:
        lines.pop()
    return lines


def rewritten(page, folder, environment, loads):
    """The text of a page with what its examples print now; without `loads` those that load the module of SQLite stay."""

    def replace(match):
        if not loads and ".load" in match.group(1):
            return match.group(0)
        lines = []
        for command in commands(match.group(1)):
            lines += ["$ " + command, *run(command, folder, environment)]
        return "```console\n" + "\n".join(lines) + "\n```"

    return BLOCK.sub(replace, page.read_text("utf-8"))


def check_examples(vrx, update, loads):
    """Faults of the examples and their pictures."""
    faults = []
    tool = pathlib.Path(vrx).resolve()
    environment = dict(os.environ, PATH=f"{tool.parent}:{os.environ['PATH']}", LC_ALL="C.UTF-8", NO_COLOR="1", COLUMNS="120",
                       LD_LIBRARY_PATH=str(tool.parents[2] / "sql"))  # where SQLite looks for the module
    for page in pages():
        if not BLOCK.search(page.read_text("utf-8")):
            continue
        with tempfile.TemporaryDirectory() as folder:
            for link in ("examples", "resources"):
                os.symlink(ROOT / link, f"{folder}/{link}")
            os.mkdir(f"{folder}/pictures")
            text = rewritten(page, folder, environment, loads)
            name = str(page.relative_to(ROOT))
            if update:
                page.write_text(text, "utf-8")
            elif text != page.read_text("utf-8"):
                faults.append("\n".join(difflib.unified_diff(page.read_text("utf-8").splitlines(), text.splitlines(), name,
                                                             name + ", as it runs", lineterm="")))
            for made in sorted(pathlib.Path(folder, "pictures").iterdir()):
                kept = DOCS / "pictures" / made.name
                if update:
                    kept.parent.mkdir(exist_ok=True)
                    shutil.copyfile(made, kept)
                elif not kept.exists() or not filecmp.cmp(made, kept, shallow=False):
                    faults.append(f"{name}: docs/pictures/{made.name} is not what its example makes")
    return faults


def option_tables(vrx):
    """The sections of the page of all options by their headings."""
    page = subprocess.run([vrx, "manual", "markdown"], stdout=subprocess.PIPE, check=True).stdout.decode("utf-8")
    sections = re.split(r"^### (.+)$", re.sub(r"^##? .*$", "", page, flags=re.MULTILINE), flags=re.MULTILINE)
    return {name: text.strip() for name, text in zip(sections[1::2], sections[2::2])}


def check_tables(vrx, update):
    """Faults of the tables of options."""
    faults, tables, placed = [], option_tables(vrx), []
    for page in pages():
        text, name = page.read_text("utf-8"), page.relative_to(ROOT)

        def table(match):
            placed.append(match.group(2))
            return match.group(1) + "\n" + tables.get(match.group(2), "") + "\n\n" + match.group(3)

        made = TABLE.sub(table, text)
        if update:
            page.write_text(made, "utf-8")
        elif made != text:
            faults.append(f"{name}: a table of options is not what the commands declare; --update makes it again")
    for name in sorted({*tables, *placed}):
        if placed.count(name) != 1 or name not in tables:
            faults.append(f"the options of {name} have {placed.count(name)} places in the pages, {int(name in tables)} in the tool")
    return faults


def prose(page):
    """The text of a page without its blocks of code."""
    return re.sub(r"^```.*?^```$", "", page.read_text("utf-8"), flags=re.MULTILINE | re.DOTALL)


def anchors(page):
    """The anchors of a page's headings, as the site makes them."""
    found = set()
    for heading in re.findall(r"^#+ (.+)$", prose(page), re.MULTILINE):
        plain = unicodedata.normalize("NFKD", re.sub(r"[`*\\]", "", heading)).encode("ascii", "ignore").decode("ascii")
        found.add(re.sub(r"[-\s]+", "-", re.sub(r"[^\w\s-]", "", plain).strip().lower()))
    return found


def check_links():
    """Links, anchors and pictures that lead nowhere, pages to which none leads, and those that the site does not list."""
    faults, reached = [], {ROOT / "README.md", DOCS / "index.md"}
    for page in pages():
        for target in LINK.findall(prose(page)):
            if "://" in target or target.startswith("mailto:"):
                continue
            file, _, anchor = target.partition("#")
            path = (page.parent / file).resolve() if file else page
            if not path.exists() or (anchor and path.suffix == ".md" and anchor not in anchors(path)):
                faults.append(f"{page.relative_to(ROOT)}: {target} leads nowhere")
            reached.add(path)
    faults += [f"{page.relative_to(ROOT)}: no page leads to it" for page in pages() if page.resolve() not in reached]
    listed = set(re.findall(r"- (\S+\.md)$", (ROOT / "mkdocs.yml").read_text("utf-8"), re.MULTILINE))
    here = {str(page.relative_to(DOCS)) for page in DOCS.rglob("*.md")}
    faults += [f"mkdocs.yml: {name} is not listed" for name in sorted(here - listed)]
    faults += [f"mkdocs.yml: {name} does not exist" for name in sorted(listed - here) if not name.startswith("reference/")]
    return faults


def check_sources():
    """Files of the project that a page names and that are not there, and names that are not in the file where a page has them."""
    faults = []
    for page in pages():
        text = prose(page)
        name = page.relative_to(ROOT)
        for path in SOURCE.findall(text):
            if not (ROOT / path).exists():
                faults.append(f"{name}: there is no {path}")
        for symbol, path in SYMBOL.findall(text):
            word = re.compile(r"\b" + symbol.removeprefix("vrx.") + r"\b")
            if (ROOT / path).exists() and not word.search((ROOT / path).read_text("utf-8")):
                faults.append(f"{name}: {path} has no {symbol}")
    return faults


def main():
    """Checks or updates; the exit status is 1 where something is wrong."""
    parser = argparse.ArgumentParser(description="Examples, tables of options, links and pictures of the documents")
    mode = parser.add_mutually_exclusive_group(required=True)
    mode.add_argument("--check", metavar="VRX", help="the built tool")
    mode.add_argument("--update", metavar="VRX", help="the built tool")
    parser.add_argument("--no-module", action="store_true",
                        help="leave out what loads vrx_sqlite: one with sanitizers is for programs with sanitizers")
    arguments = parser.parse_args()
    vrx, update = arguments.update or arguments.check, arguments.update is not None
    faults = check_examples(vrx, update, not arguments.no_module) + check_tables(vrx, update) + check_links() + check_sources()
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
