#!/usr/bin/env python3
"""Writes the curves in examples/ from a folder of published reflectances in CSV form.

Needed only when a figure changes. The folder holds reflectance_24_patch_chart_5nm.csv,
reflectance_24_patch_chart_average_10nm.csv and reflectance_cie_test_samples_5nm.csv. Ids become P01 ... P24 and T01 ... T14,
and every value has one decimal, as in print.

Usage: scripts/import_example_curves.py FOLDER
"""

import csv
import pathlib
import sys

EXAMPLES = {"reflectance_24_patch_chart_5nm.csv": ("chart_ohta.csv", "P"),
            "reflectance_24_patch_chart_average_10nm.csv": ("chart_average.csv", "P"),
            "reflectance_cie_test_samples_5nm.csv": ("cie_test_samples.csv", "T")}


def rewrite(source, target, letter):
    with open(source, newline="", encoding="utf-8") as file:
        header, *rows = list(csv.reader(file))
    with open(target, "w", newline="", encoding="utf-8") as file:
        writer = csv.writer(file, lineterminator="\n")
        writer.writerow(["id", "name"] + [f"{nm} nm" for nm in header[2:]])
        for number, name, *values in rows:
            writer.writerow([f"{letter}{int(number):02}", name] + [f"{float(value):.1f}" for value in values])


def main():
    source = pathlib.Path(sys.argv[1])
    target = pathlib.Path(__file__).resolve().parent.parent / "examples"
    for published, (example, letter) in EXAMPLES.items():
        rewrite(source / published, target / example, letter)


if __name__ == "__main__":
    main()
