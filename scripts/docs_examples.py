#!/usr/bin/env python3
"""Holds the pages of docs/ to what they claim.

    scripts/docs_examples.py --check VRX     fails where an example prints something else, a link or a picture leads nowhere, or
                                             no page leads to another
    scripts/docs_examples.py --update VRX    writes what the examples print now, and the pictures that they make

An example is a fenced block `console`: a line that begins with "$ " is a command of the shell (a backslash at its end goes on in the
next line), what follows up to the next one is what it prints on both of its streams. The examples of a page run one after the other
in a folder of their own, in which `examples` is that of the project; files that they write into `pictures` are those of
docs/pictures.
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

ROOT = pathlib.Path(__file__).resolve().parent.parent
DOCS = ROOT / "docs"
BLOCK = re.compile(r"^```console\n(.*?)^```$", re.MULTILINE | re.DOTALL)
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


def rewritten(page, folder, environment):
    """The text of a page with what its examples print now."""

    def replace(match):
        lines = []
        for command in commands(match.group(1)):
            lines += ["$ " + command, *run(command, folder, environment)]
        return "```console\n" + "\n".join(lines) + "\n```"

    return BLOCK.sub(replace, page.read_text("utf-8"))


def check_examples(vrx, update):
    """Faults of the examples and their pictures."""
    faults = []
    environment = dict(os.environ, PATH=f"{pathlib.Path(vrx).resolve().parent}:{os.environ['PATH']}", LC_ALL="C.UTF-8",
                       NO_COLOR="1", COLUMNS="120")
    for page in pages():
        if not BLOCK.search(page.read_text("utf-8")):
            continue
        with tempfile.TemporaryDirectory() as folder:
            os.symlink(ROOT / "examples", f"{folder}/examples")
            os.mkdir(f"{folder}/pictures")
            text = rewritten(page, folder, environment)
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


def check_links():
    """Links and pictures that lead nowhere, and pages to which none leads."""
    faults, reached = [], {ROOT / "README.md", DOCS / "index.md"}
    for page in pages():
        text = re.sub(r"^```.*?^```$", "", page.read_text("utf-8"), flags=re.MULTILINE | re.DOTALL)
        for target in LINK.findall(text):
            if "://" in target or target.startswith(("#", "mailto:")):
                continue
            path = (page.parent / target.split("#")[0]).resolve()
            if not path.exists():
                faults.append(f"{page.relative_to(ROOT)}: {target} leads nowhere")
            reached.add(path)
    faults += [f"{page.relative_to(ROOT)}: no page leads to it" for page in pages() if page.resolve() not in reached]
    return faults


def main():
    """Checks or updates; the exit status is 1 where something is wrong."""
    parser = argparse.ArgumentParser(description="Examples, links and pictures of the documents")
    mode = parser.add_mutually_exclusive_group(required=True)
    mode.add_argument("--check", metavar="VRX", help="the built tool")
    mode.add_argument("--update", metavar="VRX", help="the built tool")
    arguments = parser.parse_args()
    faults = check_examples(arguments.update or arguments.check, arguments.update is not None) + check_links()
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
