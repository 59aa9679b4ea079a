#!/usr/bin/env python3
"""The Python module beside the C++ batch functions that it stands on, in one run.

Usage: PYTHONPATH=BUILD/python python3 bench/python/ratios.py BUILD/bench/libvrx_batch_peer.so

Answers are compared first. Ours and the peer's calls take turns, over the same arrays and on one thread, and the fastest call
of either counts: what else the machine does only adds time.
"""

import ctypes
import sys
import time

import numpy as np

import vrxmath as vrx

ROWS = 1_000_000
peer = ctypes.CDLL(sys.argv[1])


def call(name, *arrays):
    pointers = [array.ctypes.data_as(ctypes.c_void_p) for array in arrays]
    return lambda: getattr(peer, name)(*pointers, ctypes.c_size_t(len(arrays[0])))


def fastest(works, rounds=15, repeats=1):
    """Seconds of one call of each work."""
    best = [float("inf")] * len(works)
    for work in works:
        work()  # the first call touches the pages
    for _ in range(rounds):
        for k, work in enumerate(works):
            start = time.perf_counter()
            for _ in range(repeats):
                work()
            best[k] = min(best[k], (time.perf_counter() - start) / repeats)
    return best


def compare(label, ours, ours_out, theirs, out, peer_out):
    """`ours` makes its result, `ours_out` writes it to `out`; the peer writes to `peer_out`."""
    theirs()
    assert np.array_equal(ours(), peer_out) and np.array_equal(ours_out(), peer_out), label
    new, given, plain = fastest([ours, ours_out, theirs])
    print(f"{label:<34} C++ {plain * 1e9 / ROWS:6.1f} ns a row   out= {given / plain:5.2f}   new array {new / plain:5.2f}")


rng = np.random.default_rng(16)
curves = rng.uniform(5, 95, (ROWS, 40))
xyz, peer_xyz = np.empty((2, ROWS, 3))
compare("tristimulus, 1,000,000 x 40", lambda: vrx.tristimulus(curves), lambda: vrx.tristimulus(curves, out=xyz),
        call("PeerTristimulus", curves, peer_xyz), xyz, peer_xyz)

standards = vrx.lab(xyz)
samples = standards + rng.normal(0, 1, standards.shape)
totals, peer_totals = np.empty((2, ROWS))
compare("delta cie2000, L*, a*, b*", lambda: vrx.delta(standards, samples, "cie2000"),
        lambda: vrx.delta(standards, samples, "cie2000", out=totals),
        call("PeerDelta3", standards, samples, peer_totals), totals, peer_totals)
full = [np.concatenate([lab, np.hypot(lab[:, 1], lab[:, 2])[:, None], np.degrees(np.arctan2(lab[:, 2], lab[:, 1]))[:, None] % 360],
                       axis=1) for lab in (standards, samples)]
compare("delta cie2000, with C* and h", lambda: vrx.delta(*full, "cie2000"), lambda: vrx.delta(*full, "cie2000", out=totals),
        call("PeerDelta5", *full, peer_totals), totals, peer_totals)

curve, lab = curves[0].copy(), (standards[0].copy(), samples[0].copy())
singles = {"tristimulus": lambda: vrx.tristimulus(curve), "tristimulus of a list": lambda values=curve.tolist(): vrx.tristimulus(values),
           "lab": lambda value=xyz[0].copy(): vrx.lab(value), "delta": lambda: vrx.delta(*lab)}
for name, seconds in zip(singles, fastest(list(singles.values()), repeats=5000)):
    print(f"a single row, {name:<20} {seconds * 1e6:6.2f} microseconds")

few = curves[:100_000] * 0.05 + 38
peer_differences, peer_verdicts = np.empty((len(few), 3, 7)), np.empty((len(few), 3), dtype=np.int32)
judge = lambda: vrx.judge(np.full(40, 40.0), few, threads=1)  # noqa: E731
theirs = call("PeerJudge", few, peer_differences, peer_verdicts)
peer.PeerJudge(*[array.ctypes.data_as(ctypes.c_void_p) for array in (few, peer_differences, peer_verdicts)],
               ctypes.c_size_t(len(few)))
judged = judge()
assert np.array_equal(judged.differences, peer_differences) and np.array_equal(judged.verdicts, peer_verdicts)
ours, plain = fastest([judge, theirs])
print(f"{'judge cmc, 100,000 x 40, 3 lamps':<34} C++ {plain * 1e9 / len(few):6.1f} ns a row   judge {ours / plain:5.2f}")
words, frame, judging = fastest([lambda: judged.words, judged.frame, judge])
print(f"of a judgement on one thread, its words {words / judging:.2f}, its frame {frame / judging:.2f}")
