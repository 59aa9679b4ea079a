#!/usr/bin/env python3
"""check_include_order.py SOURCE_DIR ORDER

Fails when a file includes from a folder that its own may not include from, or when files include each other in a circle.
ORDER has a line "folder: folders that it may include from" for each, the lower ones first (vrx_declare_folder writes it).

A header and the source of its name are one unit, and units do not depend on each other in a circle. A source may include
what rests on its own header: color_spaces.cpp uses kernels that are written in terms of color_spaces.h.
"""
import pathlib
import re
import sys

INCLUDE = re.compile(r"^[ \t]*#[ \t]*include[ \t]*[<\"]([a-z_]+/[^>\"]+)[>\"]", re.MULTILINE)


def read_order(path):
    """The folders that each folder may include from, itself among them."""
    allowed = {}
    for line in path.read_text().splitlines():
        folder, _, names = line.partition(":")
        below = {folder}
        for name in names.split():
            if name not in allowed:
                sys.exit(f"{folder} depends on {name}, which is not declared before it")
            below |= allowed[name]
        allowed[folder] = below
    return allowed


def read_includes(source_dir, tops):
    """The includes of each file, by their paths from the root, where those are files of the project."""
    files = [
        path.relative_to(source_dir).as_posix()
        for top in sorted(tops)
        for path in sorted((source_dir / top).rglob("*"))
        if path.suffix in (".h", ".cpp")
    ]
    known = set(files)
    return {
        file: [name for name in INCLUDE.findall((source_dir / file).read_text()) if name in known] for file in files
    }


def unit_of(file):
    return file.rpartition(".")[0]


def folder_of(file, folders):
    """The nearest folder above a file that is declared; empty if none is."""
    folder = file.rpartition("/")[0]
    while folder and folder not in folders:
        folder = folder.rpartition("/")[0]
    return folder


def wrong_folders(includes, allowed):
    for file, names in includes.items():
        folder = folder_of(file, allowed)
        if not folder:
            yield f"{file}: its folder is not declared"
            continue
        for name in names:
            if folder_of(name, allowed) not in allowed[folder]:
                yield f"{file}: includes {name}"


def headers_behind(file, includes):
    """All headers that a header brings with it."""
    seen, waiting = set(), [file]
    while waiting:
        for name in includes[waiting.pop()]:
            if name not in seen:
                seen.add(name)
                waiting.append(name)
    return seen


def unit_arrows(includes):
    arrows = {}
    for file, names in includes.items():
        own = unit_of(file) + ".h"
        for name in names:
            rests_on_own = file.endswith(".cpp") and own in headers_behind(name, includes)
            if unit_of(name) != unit_of(file) and not rests_on_own:
                arrows.setdefault(unit_of(file), {})[unit_of(name)] = file
    return arrows


def circles(arrows):
    """One shortest circle through each unit that is in one, each circle once."""
    found = set()
    for start in sorted(arrows):
        before, waiting = {}, [start]
        while waiting and start not in before:
            unit = waiting.pop(0)
            for name in arrows.get(unit, {}):
                if name not in before:
                    before[name] = unit
                    waiting.append(name)
        if start not in before:
            continue
        circle = [start]
        while before[circle[-1]] != start:
            circle.append(before[circle[-1]])
        if frozenset(circle) not in found:
            found.add(frozenset(circle))
            yield "a circle: " + " <- ".join(circle)


def main(source_dir, order):
    allowed = read_order(order)
    includes = read_includes(source_dir, {folder.split("/")[0] for folder in allowed})
    errors = [*wrong_folders(includes, allowed), *circles(unit_arrows(includes))]
    if errors or not includes:
        sys.exit(f"{len(includes)} files seen\n" + "\n".join(errors))
    print(f"{len(includes)} files include only from folders before their own, and none go in a circle")


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]))
