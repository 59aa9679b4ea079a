#!/usr/bin/env python3
"""Makes the pages of the site's reference that come from the programs themselves.

    scripts/reference_pages.py VRX PYTHON_PATH FOLDER

commands.md is the help of every command of the tool, python_api.md has the docstrings of the module, which PYTHON_PATH leads to, and
cpp_api.md leads to the pages that doxygen makes of the headers, in the folder cpp.
"""

import importlib
import inspect
import pathlib
import re
import subprocess
import sys

from numpydoc.docscrape import NumpyDocString


def output(*command):
    """What a program prints."""
    return subprocess.run(command, stdout=subprocess.PIPE, check=True, text=True).stdout


def command_names(vrx):
    """The commands, in the order of the help."""
    return re.findall(r"^  ([a-z][a-z-]*)  +\S", output(vrx, "--help"), re.MULTILINE)


def commands_page(vrx):
    """A heading and the help for each command."""
    parts = ["# Every command\n\nWhat `vrx COMMAND --help` prints. [The tool](../vrx.md) explains what the commands share.\n"]
    for name in command_names(vrx):
        parts.append(f"## vrx {name}\n\n```text\n{output(vrx, name, '--help').rstrip()}\n```\n")
    return "\n".join(parts)


def fields(title, entries):
    """The parameters or results of a function as a list."""
    if not entries:
        return []
    lines = [f"**{title}**", ""]
    for entry in entries:
        name = f"`{entry.name}`" if entry.name else ""
        kind = f" ({entry.type})" if entry.name and entry.type else entry.type
        lines.append(f"- {name}{kind}: " + " ".join(line.strip() for line in entry.desc))
    return [*lines, ""]


def documented(name, thing):
    """One function or class of the module."""
    try:
        signature = str(inspect.signature(thing))
    except (TypeError, ValueError):
        signature = "(...)"
    doc = NumpyDocString(inspect.getdoc(thing) or "")
    lines = [f"## {name}", "", "```python", f"{name}{signature}", "```", "", *doc["Summary"], "", *doc["Extended Summary"], ""]
    for title in ("Parameters", "Attributes", "Returns", "Raises"):
        lines += fields(title, doc[title])
    if doc["Notes"]:
        lines += [*doc["Notes"], ""]
    if doc["Examples"]:
        lines += ["```pycon", *doc["Examples"], "```", ""]
    return "\n".join(lines)


def python_page(path):
    """Everything that the module exports, in the order of its names."""
    sys.path.insert(0, path)
    module = importlib.import_module("vrxmath")
    parts = ["# Every function of the Python module\n\n[The Python module](../python.md) shows how they go together.\n"]
    for name in sorted(module.__all__, key=str.lower):
        thing = getattr(module, name)
        if callable(thing):
            parts.append(documented(name, thing))
    return "\n".join(parts)


CPP_PAGE = """# Every C++ header

- [Headers by folder](cpp/files.html)
- [Functions, constants and enumerations](cpp/namespacevrx.html)
- [Classes](cpp/annotated.html) and [their members](cpp/functions.html)
"""


def main():
    """Writes the pages."""
    vrx, python_path, folder = sys.argv[1:]
    place = pathlib.Path(folder)
    place.mkdir(parents=True, exist_ok=True)
    (place / "commands.md").write_text(commands_page(vrx), "utf-8")
    (place / "cpp_api.md").write_text(CPP_PAGE, "utf-8")
    (place / "python_api.md").write_text(python_page(python_path), "utf-8")


if __name__ == "__main__":
    main()
