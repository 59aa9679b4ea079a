"""Uses of the module as mypy sees them; this file is checked, not run."""

import numpy as np

from vrxmath import _core

xyz = _core.tristimulus(np.zeros((5, 40)), ["D65", _core.Illuminant("SHOP", range(400, 710, 10), np.ones(31))], 2)
lab = _core.lab(xyz, "A", polar=True, out=np.empty((5, 2, 5)))
index, distance = _core.nearest(lab, lab, 3, system="cmc", l=2, c=1)
first: np.int64 = index[0, 0]
names: list[str] = list(_core.systems()["cmc"])
