"""Tolerances from experience: from what was accepted, and from what people decided."""

from __future__ import annotations

import dataclasses
from typing import TYPE_CHECKING, Any

import numpy as np

from . import _core
from ._judgement import judge

if TYPE_CHECKING:
    from collections.abc import Sequence
    from typing import Literal

    from ._core import Floats, Lamps, Numbers


def fit_tolerance(standard: Numbers, accepted: Numbers, illuminants: Lamps = ("D65", "A", "CWF"), observer: int = 10, *,
                  system: str = "cmc", method: Literal["smallest", "surface"] = "smallest",
                  centre: Literal["free", "standard"] = "free", margin: float = 1.0, of: Sequence[int] | None = None,
                  geometry: str | int | Sequence[str | int] | None = None, **parameters: float) -> Floats:
    """The tolerance ellipsoids that belong to what has been accepted so far.

    Parameters
    ----------
    standard : array_like, shape (40,) or (k, 40)
    accepted : array_like, shape (n, 40)
        The curves that people accepted.
    illuminants, observer, of, geometry
        As for :func:`judge`.
    system : str
        In which the largest total becomes the limit of the total; its parameters may follow.
    method, centre, margin
        As for :func:`fit_ellipsoid`.

    Returns
    -------
    numpy.ndarray, shape (m, 9)
        An ellipsoid for each illuminant, as ``ellipsoid`` of :func:`judge` takes them.

    Examples
    --------
    >>> import numpy as np, vrxmath as vrx
    >>> accepted = 42 + np.random.default_rng(1).normal(0, 0.5, (20, 40))
    >>> limits = vrx.fit_tolerance([42.0] * 40, accepted, "D65", margin=1.01)
    >>> vrx.judge([42.0] * 40, accepted, "D65", ellipsoid=limits, warning=1).overall.min()
    2
    """
    own: dict[str, Any] = dict(parameters)
    judged = judge(standard, accepted, illuminants, observer, system=system, tolerance=1.0, of=of, geometry=geometry, **own)
    lab = judge(standard, accepted, illuminants, observer, system="lab", tolerance=1.0, of=of, geometry=geometry)
    return np.array([_core.fit_ellipsoid(lab.differences[:, i, :3], judged.totals[:, i], method=method, centre=centre,
                                         margin=margin) for i in range(len(judged.illuminants))])


@dataclasses.dataclass(frozen=True)
class LimitFit:
    """A difference system under an illuminant, and the limit of its total that agrees best with what people decided.

    Attributes
    ----------
    system : str
    parameters : dict of str to float
    illuminant : str
    limit : float
        NaN where the system has no total for some sample.
    wrongly_accepted, wrongly_rejected : int
        What people rejected and accepted.
    stress : float
        STRESS of totals and verdicts in percent: 0 where they are proportional.
    """

    system: str
    parameters: dict[str, float]
    illuminant: str
    limit: float
    wrongly_accepted: int
    wrongly_rejected: int
    stress: float

    @property
    def wrong(self) -> int:
        """How many decisions it gets wrong."""
        return self.wrongly_accepted + self.wrongly_rejected


def fit_limits(standard: Numbers, samples: Numbers, accepted: Sequence[bool], illuminants: Lamps = ("D65", "A", "CWF"),
               observer: int = 10, *, system: str | None = None, of: Sequence[int] | None = None,
               geometry: str | int | Sequence[str | int] | None = None, **parameters: float) -> list[LimitFit]:
    """The limit of each difference system that agrees best with what people decided, the best system first.

    Parameters
    ----------
    standard : array_like, shape (40,) or (k, 40)
    samples : array_like, shape (n, 40)
    accepted : sequence of bool, length n
        What people decided of each.
    illuminants, observer, of, geometry
        As for :func:`judge`.
    system : str, optional
        The only one to fit, whose parameters may follow. Without it, all of them, those with a factor of lightness with 1, 1.5 and 2.

    Returns
    -------
    list of LimitFit

    Examples
    --------
    >>> import vrxmath as vrx
    >>> grades = [[42.0 + step] * 40 for step in (0.1, 0.3, 1.5, 2.0)]
    >>> best = vrx.fit_limits([42.0] * 40, grades, [True, True, False, False], "D65", system="lab")[0]
    >>> best.wrong, round(best.limit, 2)
    (0, 0.61)
    """
    decided = np.asarray(accepted, dtype=bool)
    if decided.all() or not decided.any():
        raise ValueError("accepted: a limit lies between what was accepted and what was rejected: both are expected")
    if system is None and parameters:
        raise TypeError("parameters are those of a system, which has to be named")
    if system is None:
        choices: Any = _core.limit_choices()
    else:
        choices = [(system, {**_core.systems().get(system, {}), **parameters})]
    totals: list[list[float]] = []
    names: tuple[str, ...] = ()
    for name, values in choices:
        judged = judge(standard, samples, illuminants, observer, system=name, tolerance=1.0, of=of, geometry=geometry, **values)
        if len(judged) != len(decided):
            raise ValueError("accepted: as many as samples are expected")
        missing = np.isnan(judged.differences[..., 0]).any(axis=1)
        if missing.any():
            raise ValueError(f"samples: row {np.argmax(missing)} has no difference from its standard")
        names = judged.illuminants
        totals += judged.totals.T.tolist()
    return [LimitFit(name, values, names[place], *rest)
            for name, values, place, *rest in _core.rank_limits(choices, totals, decided.tolist())]
