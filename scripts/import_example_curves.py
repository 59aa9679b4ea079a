#!/usr/bin/env python3
"""Writes examples/chart_ohta.csv and chart_average.csv from a folder of published reflectances in CSV form.

Needed only when a figure changes. The folder holds reflectance_24_patch_chart_5nm.csv and
reflectance_24_patch_chart_average_10nm.csv. Ids become P01 ... P24, and every value has one decimal, as in print.

Usage: scripts/import_example_curves.py FOLDER
"""

import csv
import pathlib
import sys

CHARTS = {"reflectance_24_patch_chart_5nm.csv": "chart_ohta.csv",
          "reflectance_24_patch_chart_average_10nm.csv": "chart_average.csv"}


def rewrite(source, target):
    with open(source, newline="", encoding="utf-8") as file:
        header, *rows = list(csv.reader(file))
    with open(target, "w", newline="", encoding="utf-8") as file:
        writer = csv.writer(file, lineterminator="\n")
        writer.writerow(["id", "name"] + [f"{nm} nm" for nm in header[2:]])
        for number, name, *values in rows:
            writer.writerow([f"P{int(number):02}", name] + [f"{float(value):.1f}" for value in values])


def main():
    source = pathlib.Path(sys.argv[1])
    target = pathlib.Path(__file__).resolve().parent.parent / "examples"
    for published, example in CHARTS.items():
        rewrite(source / published, target / example)


if __name__ == "__main__":
    main()
