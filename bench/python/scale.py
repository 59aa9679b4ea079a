#!/usr/bin/env python3
"""What a curve costs from files to files on a local cluster of one worker process and of two.

Usage: PYTHONPATH=BUILD/python python3 bench/python/scale.py

Partitions of 100,000 curves, numpy (float64 and float32) and CSV, are judged by CMC under three illuminants and searched for
the nearest of 1000 standards. The bytes that both write are compared.
"""

import pathlib
import tempfile
import time

import distributed
import numpy as np

import vrxmath.dask

PARTS, ROWS = 8, 100_000
SETTINGS = {"illuminants": ("D65", "A", "CWF"), "system": "cmc", "tolerance": 1.5}


def write_partitions(folder, curves):
    for i in range(PARTS):
        part = curves[i * ROWS: (i + 1) * ROWS]
        np.save(folder / f"double-{i}.npy", part)
        np.save(folder / f"single-{i}.npy", part.astype("f4"))
        header = ",".join(str(nm) for nm in range(360, 760, 10))
        np.savetxt(folder / f"text-{i}.csv", part, fmt="%.2f", delimiter=",", header=header, comments="")


def cluster(workers):
    return distributed.Client(n_workers=workers, threads_per_worker=1, processes=True, dashboard_address=None)


def main():
    rng = np.random.default_rng(16)
    curves = np.round(np.clip(rng.uniform(5, 90, (PARTS * ROWS, 1)) + rng.normal(0, 3, (PARTS * ROWS, 40)), 0.5, 99), 2)
    standard, standards = curves[0].copy(), curves[:1000].copy()
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        write_partitions(folder, curves)
        del curves
        judge, color, nearest = vrxmath.dask.judge, vrxmath.dask.color, vrxmath.dask.nearest
        works = {
            "judge, numpy float64": lambda **to: judge(f"{name}/double-*.npy", standard, **to, **SETTINGS),
            "judge, numpy float32": lambda **to: judge(f"{name}/single-*.npy", standard, **to, **SETTINGS),
            "judge, CSV": lambda **to: judge(f"{name}/text-*.csv", standard, **to, **SETTINGS),
            "color, numpy float64": lambda **to: color(f"{name}/double-*.npy", **to),
            "nearest of 1000, float64": lambda **to: nearest(f"{name}/double-*.npy", standards, 1, illuminant="D65", **to),
        }
        seconds, written = {}, {}
        for count in (1, 2):
            with cluster(count) as client:
                for label, work in works.items():
                    best = float("inf")
                    for _ in range(2):
                        start = time.perf_counter()
                        files = work(output=folder / f"out{count}", client=client)
                        best = min(best, time.perf_counter() - start)
                    seconds[count, label] = best
                    content = b"".join(pathlib.Path(file).read_bytes() for file in files)
                    assert written.setdefault(label, content) == content, label
        for label in works:
            one, two = (seconds[count, label] * 1e6 / (PARTS * ROWS) for count in (1, 2))
            print(f"{label:<26} one worker {one:6.3f}, two {two:6.3f} microseconds a curve")


if __name__ == "__main__":
    main()
