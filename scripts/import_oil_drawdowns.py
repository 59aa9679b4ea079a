#!/usr/bin/env python3
"""Writes examples/oil_drawdowns.csv from a table of the published drawdowns.

    scripts/import_oil_drawdowns.py DRAWDOWNS.csv

The table has the columns id, surface, share:NAME for every paint and the wavelengths. The example names the
wavelengths with their unit, keeps two decimals and leaves a share of 0 empty.
"""

import csv
import pathlib
import sys


def value_text(heading, value):
    if heading.startswith("share:"):
        return "" if not value or float(value) == 0 else f"{float(value):g}"
    return value if heading in ("id", "surface") else f"{float(value):.2f}"


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    target = pathlib.Path(__file__).resolve().parent.parent / "examples" / "oil_drawdowns.csv"
    with open(sys.argv[1], newline="", encoding="utf-8") as file:
        header, *rows = list(csv.reader(file))
    with open(target, "w", newline="", encoding="utf-8") as file:
        writer = csv.writer(file, lineterminator="\n")
        writer.writerow([f"{name} nm" if name.isdigit() else name for name in header])
        for row in rows:
            writer.writerow([value_text(heading, value) for heading, value in zip(header, row)])


if __name__ == "__main__":
    main()
