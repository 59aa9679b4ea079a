"""Uses of the module as mypy sees them; this file is checked, not run."""

import numpy as np

import vrxmath as vrx
from vrxmath import _core


def uses() -> None:
    xyz = _core.tristimulus(np.zeros((5, 40)), ["D65", _core.Illuminant("SHOP", range(400, 710, 10), np.ones(31))], 2)
    lab = _core.lab(xyz, "A", polar=True, out=np.empty((5, 2, 5)))
    index, distance = vrx.nearest(lab, lab, 3, system="cmc", l=2, c=1)
    first: np.int64 = index[0, 0]
    names: list[str] = list(_core.systems()["cmc"])
    paints = vrx.ColorSystem("paints.json")
    curves = vrx.predict(paints, paints.read_formulas("formulas.json")[1])
    before, additions = vrx.correct(paints, {"white": 94.0, 7: 6.0}, curves[0], curves[1], max_addition=10, kL=2)
    total: float = additions[0].total
    verdicts: np.ndarray[tuple[int, ...], np.dtype[np.int8]] = vrx.judge(curves[0], curves, "D65", tolerance=1.5).verdicts
    written: list[str] = vrx.Standard(vrx.Curve(curves[0]), vrx.Tolerance(1.5, "cmc", {"l": 2})).curve.name.split()
