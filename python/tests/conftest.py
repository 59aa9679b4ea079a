"""Shared by the tests: random curves, and the command-line tool as the reference that they are compared with."""

import csv
import io
import os
import subprocess

import numpy as np
import pytest


@pytest.fixture(scope="session")
def curves():
    """60 smooth curves in percent, and two that are none: unset, and NaN in the middle."""
    rng = np.random.default_rng(20)
    t = np.linspace(0, 1, 40)
    rows = [np.clip(rng.uniform(2, 80) + rng.uniform(-40, 40) * np.sin(rng.uniform(1, 9) * t + rng.uniform(0, 6)), 0.5, 99)
            for _ in range(60)]
    return np.array(rows)


@pytest.fixture(scope="session")
def curve_file(curves, tmp_path_factory):
    path = tmp_path_factory.mktemp("curves") / "curves.csv"
    header = ["id"] + [str(nm) for nm in range(360, 760, 10)]
    with open(path, "w", newline="") as file:
        writer = csv.writer(file)
        writer.writerow(header)
        writer.writerows([f"C{i}", *map(repr, map(float, row))] for i, row in enumerate(curves))
    return str(path)


@pytest.fixture(scope="session")
def vrx_tool():
    """Runs the tool and returns its csv rows as dictionaries."""

    def run(*arguments):
        done = subprocess.run([os.environ["VRX_TOOL"], *map(str, arguments), "--format", "csv"], capture_output=True,
                              text=True, check=True)
        return list(csv.DictReader(io.StringIO(done.stdout)))

    return run
