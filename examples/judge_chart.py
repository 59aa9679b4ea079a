#!/usr/bin/env python3
"""Judges one measured set of the 24-patch chart against another and writes pictures of it.

Usage: python3 examples/judge_chart.py [FOLDER]      (needs the package vrxmath, and matplotlib)
"""

import pathlib
import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt

import vrxmath as vrx

here = pathlib.Path(__file__).resolve().parent
folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "chart_pictures")
folder.mkdir(parents=True, exist_ok=True)

standards = vrx.read(here / "chart_ohta.csv")
trials = vrx.read(here / "chart_average.csv")
lamps = ["D65", "A", "CWF"]
xyz = [vrx.tristimulus(file.curves, "D65", 10) for file in (standards, trials)]
differences = vrx.delta(*(vrx.lab(values) for values in xyz), "cmc", l=2, c=1, components=True)
judged = [vrx.judge(s, t, lamps, system="cmc", l=2, c=1, tolerance=1.5)
          for s, t in zip(standards.curves, trials.curves)]
overall = [int(one.overall[0]) for one in judged]

fig, axes = plt.subplots(2, 2, figsize=(12, 9), layout="constrained")
vrx.plot.curves(standards.curves[12:15], standards.names[12:15], ax=axes[0, 0])
vrx.plot.spectral_difference(standards.curves[12], trials.curves[12], [trials.names[12]], ax=axes[0, 1])
vrx.plot.ab_plane(differences, overall, ellipse=(1.5, 1.5, 0), ax=axes[1, 0])
axes[1, 0].set_title("verdicts by the worst lamp; the circle is \u0394E*ab 1.5", fontsize=9)
vrx.plot.trend(differences[:, 6], 1.5, labels=standards.ids, ax=axes[1, 1])
fig.savefig(folder / "judgement.png", dpi=100)

fig, ax = plt.subplots(figsize=(5, 10), layout="constrained")
vrx.plot.swatches(standards.curves, trials.curves, standards.names, ax=ax)
fig.savefig(folder / "swatches.png", dpi=100)

for name, one in zip(standards.names, judged):
    print(f"{name:<14} {('fail', 'warning', 'pass')[one.overall[0]]:<8} dE cmc {one.totals[0, 0]:6.2f}  {one.words[0, 0]}")
print(f"{overall.count(2)} pass, {overall.count(1)} warning, {overall.count(0)} fail; pictures in {folder}")
