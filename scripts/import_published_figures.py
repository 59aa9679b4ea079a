#!/usr/bin/env python3
"""Writes resources/published/ from a folder of published colorimetric tables in CSV form.

Needed only when a published figure changes: the build uses what stands in resources/published/. The folder holds
one CSV per table: cmf_cie1931_2deg_1nm.csv, cmf_cie1964_10deg_1nm.csv, spd_<name>_5nm.csv, white_points_e308.csv.

Usage: scripts/import_published_figures.py FOLDER
"""

import csv
import pathlib
import sys

SPECTRA = ["A", "C", "D50", "D55", "D65", "D75", "F2", "F4", "F6", "F7", "F8", "F10", "F11", "F12",
           "LED-B1", "LED-B2", "LED-B3", "LED-B4", "LED-B5", "LED-BH1", "LED-RGB1", "LED-V1", "LED-V2"]


def read(path):
    with open(path, newline="", encoding="utf-8") as file:
        return list(csv.reader(file))[1:]


def write_columns(path, notes, header, rows):
    widths = [max(len(row[i]) for row in [header] + rows) for i in range(len(header))]
    with open(path, "w", encoding="utf-8") as file:
        file.writelines(f"# {note}\n" for note in notes)
        for row in [header] + rows:
            file.write("  ".join(cell.rjust(width) for cell, width in zip(row, widths)) + "\n")


def main():
    source = pathlib.Path(sys.argv[1])
    target = pathlib.Path(__file__).resolve().parent.parent / "resources" / "published"
    target.mkdir(parents=True, exist_ok=True)

    two = read(source / "cmf_cie1931_2deg_1nm.csv")
    ten = read(source / "cmf_cie1964_10deg_1nm.csv")
    write_columns(
        target / "observers.txt",
        ["The CIE 1931 (2 degree) and CIE 1964 (10 degree) standard observers, ISO/CIE 11664-1, every nanometre."],
        ["nm", "x2", "y2", "z2", "x10", "y10", "z10"],
        [a + b[1:] for a, b in zip(two, ten, strict=True)])

    tables = {name: dict(read(source / f"spd_{name}_5nm.csv")) for name in SPECTRA}
    wavelengths = sorted({int(nm) for table in tables.values() for nm in table})
    write_columns(
        target / "illuminants.txt",
        ["Relative spectral power, every 5 nm; \"-\" where the source gives none.",
         "A, C, D: ISO/CIE 11664-2 and CIE 15. F: the fluorescent illuminants of CIE 15.",
         "LED: the LED illuminants of CIE 15:2018."],
        ["nm"] + SPECTRA,
        [[str(nm)] + [tables[name].get(str(nm), "-") for name in SPECTRA] for nm in wavelengths])

    write_columns(
        target / "white_points.txt",
        ["White points as ASTM E308 prints them."],
        ["illuminant", "observer", "Xn", "Yn", "Zn"],
        read(source / "white_points_e308.csv"))


if __name__ == "__main__":
    main()
