#!/usr/bin/env python3
"""How often the expected error of a prediction holds, on drawdowns that took no part in the calibration.

    scripts/held_out_error.py build/release/tools/vrx/vrx examples/oil_drawdowns.csv "zinc white" \
        "zinc white linseed,chrome yellow poppyseed"

Drawdowns are held out, a sixth at a time in twelve ways, and predicted from the others. Their true differences and the bounds
are those of vrx calibrate (columns dE and expected). Folds that leave a component undetermined are made smaller.
"""

import csv
import io
import random
import subprocess
import sys

FOLDS, ROUNDS = 6, 12


def drawdown_ids(path, without):
    """The drawdowns of a file that have none of the components that are left out, films once."""
    with open(path, newline="", encoding="utf-8") as file:
        return sorted({row["id"] for row in csv.DictReader(file)
                       if any(text for name, text in row.items() if name.startswith(("share:", "amount:", "base:")))
                       and not any(row.get(part + name) for part in ("share:", "amount:") for name in without)})


def calibrate(tool, path, white, without, held):
    """Rows of vrx calibrate, or nothing where the drawdowns left do not determine every component."""
    command = [tool, "calibrate", path, "--white", white, "--format", "csv", "--hold-out", ",".join(held)]
    command += ["--without", ",".join(without)] if without else []
    run = subprocess.run(command, capture_output=True, text=True, check=False)
    return list(csv.DictReader(io.StringIO(run.stdout))) if run.returncode == 0 else None


def predictions(rows):
    """(true difference, bound) of every held-out drawdown whose bound is known."""
    return [(float(row["dE"]), float(row["expected"])) for row in rows
            if row["part"] == "held out" and row["expected"]]


def main():
    tool, path, white = sys.argv[1:4]
    without = sys.argv[4].split(",") if len(sys.argv) > 4 else []
    ids = drawdown_ids(path, without)
    choice = random.Random(4)
    found = []
    for _ in range(ROUNDS):
        choice.shuffle(ids)
        for fold in range(FOLDS):
            held = ids[fold::FOLDS]
            while held and (rows := calibrate(tool, path, white, without, held)) is None:
                held.pop()
            if held:
                found += predictions(rows)
    within = sum(difference <= bound for difference, bound in found)
    middle = len(found) // 2
    difference, bound = (sorted(column)[middle] for column in zip(*found))
    print(f"{within} of {len(found)} held-out predictions are within their bound; "
          f"median difference {difference:.2f}, median bound {bound:.2f}")


if __name__ == "__main__":
    main()
