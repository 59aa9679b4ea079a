"""Samples on the shop floor: repeated readings and their scatter."""

from __future__ import annotations

import dataclasses
from typing import TYPE_CHECKING, Any

import numpy as np

from . import _core
from ._curves import CurveArray
from ._reading import Measurements

if TYPE_CHECKING:
    from collections.abc import Hashable, Sequence
    from typing import Literal

    from ._core import Floats, Lamp, Numbers


@dataclasses.dataclass(frozen=True, eq=False)
class Averages:
    """Means of repeated readings, and how far these scatter.

    Attributes
    ----------
    ids : list
        What names each of the k samples, in the order of their first readings.
    means : numpy.ndarray, shape (k, 40) or (k, 3)
        Curves, or colours where the readings were.
    counts : numpy.ndarray of int64, shape (k,)
    deviations, ranges : numpy.ndarray, shape (k, 3)
        Standard deviation and range of L*, a*, b*.
    mean_differences, largest_differences : numpy.ndarray, shape (k,)
        dE*ab of the readings from the mean.
    outliers : list of list of int
        The rows that lie apart from the other readings of their sample. They stay in the mean.
    uncertainties : numpy.ndarray, shape (k,)
        How near the mean colour is to that of very many readings, in dE*ab; NaN for one reading.
    needed : numpy.ndarray of int64, shape (k,), or None
        How many readings bring it within `within`; 0 where one reading cannot tell.
    passes : numpy.ndarray of bool, shape (k,), or None
        Whether there are several readings, none farther from the mean than `limit`.
    """

    ids: list[Any]
    means: Floats
    counts: Any
    deviations: Floats
    ranges: Floats
    mean_differences: Floats
    largest_differences: Floats
    outliers: list[list[int]]
    uncertainties: Floats
    needed: Any = None
    passes: Any = None

    def __len__(self) -> int:
        return len(self.ids)

    def frame(self) -> Any:
        """A pandas DataFrame of the statistics with a row a sample."""
        import pandas

        columns: dict[str, Any] = {"readings": self.counts}
        for k, name in enumerate(("L*", "a*", "b*")):
            columns[f"sd {name}"] = self.deviations[:, k]
            columns[f"range {name}"] = self.ranges[:, k]
        columns.update({"mean dE": self.mean_differences, "largest dE": self.largest_differences, "outliers": self.outliers,
                        "uncertainty": self.uncertainties})
        columns.update({name: values for name, values in (("needed", self.needed), ("passes", self.passes)) if values is not None})
        return pandas.DataFrame(columns, index=pandas.Index(self.ids, name="id"))


def _places(labels: Sequence[Any]) -> dict[Any, list[int]]:
    """The rows of each label, in the order of the first ones."""
    places: dict[Any, list[int]] = {}
    for row, label in enumerate(labels):
        places.setdefault(label, []).append(row)
    return places


def _need_one_geometry(places: dict[Any, list[int]], geometries: Sequence[str] | None) -> None:
    """Refuses a mean over geometries, which would be that of none."""
    for label, rows in places.items():
        if geometries and len({_core.geometry_name(geometries[row]) for row in rows}) > 1:
            raise ValueError(f"readings: those of {label!r} have different geometries")


def average(readings: Numbers | Measurements, of: Sequence[Hashable] | None = None, *, count: int | None = None,
            space: Literal["lab", "xyz"] = "lab", illuminant: Lamp = "D65", observer: int = 10, limit: float | None = None,
            within: float | None = None, certainty: float = 0.95) -> Averages:
    """Averages repeated readings and says how far they scatter.

    A reading is an outlier if it is more than 0.1 dE*ab away from the median colour and three times as far as half of the readings
    are; of three readings, sixteen times as far as the nearer other one.

    Parameters
    ----------
    readings : array_like, shape (n, 40) or (n, 3), or Measurements
        Curves, or colours. Of what :func:`read` gave, and of a :class:`CurveArray` with ids, the rows of one id and geometry are
        readings of one sample.
    of : sequence of length n, optional
        What names the sample of each reading. Without it, without ids and without ``count``, all rows are readings of one sample.
    count : int, optional
        Each so many rows in turn are the readings of one sample.
    space : {"lab", "xyz"}
        What colours are.
    illuminant, observer
        Under which the scatter is computed.
    limit : float, optional
        The scatter passes if no reading is farther from the mean, in dE*ab.
    within : float, optional
        Says how many readings bring the mean colour this near to that of very many, in dE*ab.
    certainty : float
        How sure that has to be, above 0 and below 1.

    Returns
    -------
    Averages

    Examples
    --------
    >>> import vrxmath as vrx
    >>> found = vrx.average([[50, 0, 0], [50.2, 0, 0], [70, 0, 0], [50.1, 0, 0]], limit=0.3)
    >>> found.outliers, found.passes.tolist()
    ([[2]], [False])
    """
    values: Any = readings
    is_named = isinstance(readings, Measurements) or (isinstance(readings, CurveArray) and readings.ids is not None)
    is_named = is_named and of is None and count is None
    if is_named:
        of = list(zip(values.ids, values.geometries or [""] * len(values)))
    if isinstance(readings, Measurements):
        values = next((one for one in (readings.curves, readings.lab, readings.xyz) if one is not None), None)
        if values is None:
            raise ValueError("readings: some of the samples have neither curves nor colours")
        space = "xyz" if readings.curves is None and readings.lab is None else "lab"
    values = _core.curves(values, or_colors=True)
    if values.ndim != 2 or not len(values):
        raise ValueError("readings: expected shape (n, 40) or (n, 3)")
    for name, number in (("limit", limit), ("within", within)):
        if number is not None and not 0 < number < np.inf:
            raise ValueError(f"{name}: a difference above 0 is expected")
    if count is not None:
        if of is not None or count < 1 or len(values) % count:
            raise ValueError(f"count: a divisor of the {len(values)} readings is expected, without `of`")
        of = [row // count for row in range(len(values))]
    if of is not None and len(of) != len(values):
        raise ValueError("of: the sample of each reading is expected")
    places = _places(of if of is not None else [0] * len(values))
    _need_one_geometry(places, getattr(readings, "geometries", None))
    found = _core.average(values, list(places.values()), space, illuminant, observer, within or 0.0, certainty)
    if within is None:
        del found["needed"]
    if limit is not None:
        found["passes"] = (found["counts"] > 1) & (found["largest_differences"] - limit <= 0)
    return Averages([id[0] for id in places] if is_named else list(places), **found)
