#!/usr/bin/env python3
"""Makes the colour system of the examples from measured paints.

    scripts/make_acrylic_system.py COLORANTS.csv examples/acrylic_paints.json

COLORANTS.csv has the columns id, name, curve and then one per wavelength, 360 to 750 nm in steps of 10. Each
paint has two rows, curve K (absorption) and curve S (scattering), both relative to the scattering of the
white. Paint 1 becomes the calibration white and paint 2 the calibration black.
"""

import csv
import json
import sys

WAVELENGTHS = [str(nm) for nm in range(360, 760, 10)]
KINDS = {1: "calibration white", 2: "calibration black"}


def read_paints(path):
    paints = {}
    with open(path, newline="", encoding="utf-8") as file:
        for row in csv.DictReader(file):
            paint = paints.setdefault(int(row["id"]), {"name": row["name"]})
            paint[row["curve"]] = [float(row[nm]) for nm in WAVELENGTHS]
    return paints


def curve_text(curve):
    return "[" + ", ".join(repr(value) for value in curve) + "]"


def component_text(number, paint):
    fields = [f'"id": {number}', f'"name": {json.dumps(paint["name"])}']
    if number in KINDS:
        fields.append(f'"kind": "{KINDS[number]}"')
    level = (f'{{"concentration": 1,\n        "K": {curve_text(paint["K"])},\n'
             f'        "S": {curve_text(paint["S"])}}}')
    return "    {" + ", ".join(fields) + f',\n      "levels": [{level}]}}'


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    paints = read_paints(sys.argv[1])
    components = ",\n".join(component_text(number, paints[number]) for number in sorted(paints))
    with open(sys.argv[2], "w", encoding="utf-8") as file:
        file.write('{\n  "name": "Artists\' acrylic paints",\n  "model": "coatings",\n  "k1": 0.04,\n  "k2": 0.6,\n'
                   f'  "components": [\n{components}\n  ]\n}}\n')


if __name__ == "__main__":
    main()
