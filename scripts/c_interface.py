#!/usr/bin/env python3
"""Holds the C interface to what it was: c_interface.py check|add HEADER LIST

The list has a line for every function, structure and constant of the header, with all that a host's program relies on:
names, types, order and values. `check` fails where the header lacks or changes a line, and where it has something that
the list has not. `add` appends what is new: a line that is there stays as it is while the number of the interface is the
same. Only a structure that begins with its size may get further members, at its end.
"""
import re
import sys
from pathlib import Path


def one_line(text):
    spaced = re.sub(r"\s*([(){},;=\[\]])\s*", r"\1", re.sub(r"\s+", " ", text)).strip()
    return re.sub(r"([,;{])(?=\S)", r"\1 ", re.sub(r"\s*\*\s*", "* ", spaced)).replace("=", " = ")


def items_of(header):
    """The lines of a header, in its order."""
    text = re.sub(r"/\*.*?\*/", " ", header, flags=re.S)
    items = re.findall(r"^#define (VRX_(?:UNSET|ABI_VERSION) \S+)", text, re.M)
    text = re.sub(r"^#.*?$", "", text, flags=re.M)
    for found in re.finditer(r"\benum\s*\{(.*?)\};|\btypedef\s+(struct\s+\w+\s*\{.*?\})\s*\w+;|"
                             r"\btypedef\s+([^;{]+);|\bVRX_C_API\s+(.*?);", text, re.S):
        values, structure, type_, function = found.groups()
        if values is not None:
            items += [one_line(value) for value in values.split(",") if value.strip()]
        elif structure is not None:
            items.append(one_line(structure))
        elif type_ is not None:
            items.append("typedef " + one_line(type_))
        else:
            items.append(one_line(function.replace("VRX_CALL ", "")))
    return items


def name_of(item):
    """What an item is about: the name of a function, a structure, a type or a constant."""
    function = re.match(r"vrx_status (\w+)\(", item)
    if function:
        return function.group(1)
    return re.match(r"struct \w+|typedef .*?(\w+)$|\w+", item).group(0)


def serves(known, item):
    """Whether hosts that were built for a line can use the item of that name."""
    return item == known or ("{ int32_t size;" in known and item.startswith(known.removesuffix("}")))


def main():
    command, header_path, list_path = sys.argv[1], Path(sys.argv[2]), Path(sys.argv[3])
    items = items_of(header_path.read_text(encoding="utf-8"))
    known = [line for line in list_path.read_text(encoding="utf-8").splitlines() if line and not line.startswith("#")]
    gone = [line for line in known if not any(serves(line, item) for item in items)]
    for line in gone:
        now = next((item for item in items if name_of(item) == name_of(line)), None)
        print(f"{list_path.name}: {line}\n  is " + (f"now {now}" if now else "gone") +
              "; hosts rely on it as it is (docs/abi.md)", file=sys.stderr)
    new = [item for item in items if item not in known]
    if gone:
        return 1
    if command == "add":
        names = [name_of(item) for item in new]
        head = [line for line in list_path.read_text(encoding="utf-8").splitlines() if line.startswith("#")]
        kept = [line for line in known if name_of(line) not in names]
        list_path.write_text("\n".join(head + kept + new) + "\n", encoding="utf-8")
        return 0
    for item in new:
        print(f"{list_path.name} has no line for {item}; scripts/c_interface.py add gives it one", file=sys.stderr)
    return 1 if new else 0


sys.exit(main())
