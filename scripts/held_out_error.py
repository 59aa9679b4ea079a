#!/usr/bin/env python3
"""How often the expected error of a prediction holds, on drawdowns that took no part in the calibration.

    scripts/held_out_error.py build/release/tools/vrx/vrx examples/oil_drawdowns.csv "zinc white" \
        "zinc white linseed,chrome yellow poppyseed"

Drawdowns are held out, a sixth at a time, and predicted from the others. The bound of each is that of ErrorBound: the
largest of its components' leave-one-out errors (nine of ten; of fewer than ten drawdowns at least the median over the
components), a half more for every factor of two by which a share lies outside of the range that the others cover. Folds that leave a component undetermined are made smaller.
"""

import csv
import io
import math
import random
import statistics
import subprocess
import sys

FOLDS, ROUNDS, PER_DOUBLING = 6, 12, 0.5


def shares(path):
    """Shares of 1 of each drawdown by component."""
    found = {}
    with open(path, newline="", encoding="utf-8") as file:
        for row in csv.DictReader(file):
            own = {name[6:]: float(text) for name, text in row.items() if name.startswith("share:") and text}
            if own:
                found[row["id"]] = {name: share / sum(own.values()) for name, share in own.items()}
    return found


def calibrate(tool, path, white, without, held):
    """Rows of vrx calibrate, or nothing where the drawdowns left do not determine every component."""
    command = [tool, "calibrate", path, "--white", white, "--format", "csv"]
    command += ["--without", without] if without else []
    command += ["--hold-out", ",".join(held)]
    run = subprocess.run(command, capture_output=True, text=True, check=False)
    return list(csv.DictReader(io.StringIO(run.stdout))) if run.returncode == 0 else None


def nine_of_ten(errors):
    return sorted(errors)[math.ceil(0.9 * len(errors)) - 1]


def predictions(rows, drawdowns):
    """(true difference, bound) of every held-out drawdown whose components' errors are all known."""
    errors, ranges = {}, {}
    for row in rows:
        if row["part"] != "used":
            continue
        for name, share in drawdowns[row["drawdown"]].items():
            ranges.setdefault(name, []).append(share)
            if row["leave_one_out"]:
                errors.setdefault(name, []).append(float(row["leave_one_out"]))
    for row in rows:
        own = drawdowns[row["drawdown"]]
        if row["part"] == "used" or not all(name in errors for name in own):
            continue
        outside = {name: max(0.0, math.log2(share / max(ranges[name])), math.log2(min(ranges[name]) / share))
                   for name, share in own.items()}
        usual = statistics.median_high(nine_of_ten(each) for each in errors.values())
        known = {name: nine_of_ten(errors[name]) if len(errors[name]) >= 10 else max(usual, nine_of_ten(errors[name]))
                 for name in own}
        yield float(row["dE"]), max(known[name] * (1 + PER_DOUBLING * outside[name]) for name in own)


def main():
    tool, path, white, without = sys.argv[1:5]
    drawdowns = shares(path)
    ids = sorted(name for name, own in drawdowns.items() if not set(own) & set(without.split(",")))
    choice = random.Random(4)
    found = []
    for _ in range(ROUNDS):
        choice.shuffle(ids)
        for fold in range(FOLDS):
            held = ids[fold::FOLDS]
            while held and (rows := calibrate(tool, path, white, without, held)) is None:
                held.pop()
            if held:
                found += predictions(rows, drawdowns)
    within = sum(difference <= bound for difference, bound in found)
    middle = len(found) // 2
    difference, bound = (sorted(column)[middle] for column in zip(*found))
    print(f"{within} of {len(found)} held-out predictions are within their bound; "
          f"median difference {difference:.2f}, median bound {bound:.2f}")


if __name__ == "__main__":
    main()
