"""Curves together with their wavelengths and the ids of their samples."""

from __future__ import annotations

import dataclasses
from collections.abc import Iterable, Sequence
from typing import TYPE_CHECKING, Any

import numpy as np

from . import _core

if TYPE_CHECKING:
    from ._core import Floats


def ids_of(curves: Any) -> tuple[Any, ...] | None:
    """What names the rows of an argument of curves: the ids of a CurveArray, the index of a DataFrame."""
    if isinstance(curves, CurveArray):
        ids: tuple[Any, ...] | None = curves.ids
        return ids
    if hasattr(curves, "iloc") and hasattr(curves, "columns"):
        return tuple(curves.index)
    return None


def _of_each(given: Any, count: int, name: str) -> tuple[Any, ...] | None:
    if given is None:
        return None
    each = tuple(given)
    if isinstance(given, str) or len(each) != count:
        raise ValueError(f"{name}: one for each of {count} curves is expected")
    return each


@dataclasses.dataclass(frozen=True, eq=False)
class CurveArray:
    """Reflectance curves with their wavelengths and the ids of their samples, taken wherever curves are.

    Parameters
    ----------
    values : array_like, shape (w,) or (n, ..., w)
        Percent. A table by its labels, whose index becomes the ids.
    wavelengths : sequence of w, optional
        In nm, in any order, under the rules of :func:`vrxmath.resample`; by default 360, 370 ... 750 nm. They and the values are
        kept in ascending order.
    ids : sequence of n, optional
        What names the samples.
    geometries : sequence of n str, optional
        The measuring geometry of each sample, empty where it is not known. :func:`vrxmath.judge` takes those of standards.

    Attributes
    ----------
    values : numpy.ndarray
        As measured, read-only.
    wavelengths : numpy.ndarray, shape (w,)
    ids, geometries : tuple or None
    notes : tuple of str
        What is done to bring the curves to the library's grid.

    Examples
    --------
    >>> import vrxmath as vrx
    >>> greys = vrx.CurveArray([[20.0] * 31, [40.0] * 31], range(400, 710, 10), ["dark", "light"])
    >>> greys["light"]
    <CurveArray of 1 curve, 400 to 700 nm: light>
    >>> vrx.tristimulus(greys[:1])[:, 1].round(6)
    array([20.])
    """

    values: Any
    wavelengths: Any = None
    ids: Any = None
    geometries: Any = None
    notes: tuple[str, ...] = dataclasses.field(init=False)

    def __post_init__(self) -> None:
        given = ids_of(self.values) if self.ids is None else self.ids
        values, wavelengths, notes = _core.ascending(self.values, self.wavelengths)
        count = 1 if values.ndim == 1 else len(values)
        for array in (values, wavelengths):
            array.flags.writeable = False
        for name, value in (("values", values), ("wavelengths", wavelengths), ("notes", tuple(notes)),
                            ("ids", _of_each(given, count, "ids")),
                            ("geometries", _of_each(self.geometries, count, "geometries"))):
            object.__setattr__(self, name, value)

    def __vrx_curves__(self) -> tuple[Any, Any]:
        return self.values, self.wavelengths

    def __array__(self, dtype: Any = None, copy: bool | None = None) -> Any:
        return self.values if dtype is None and not copy else np.array(self.values, dtype=dtype)

    def __reduce__(self) -> tuple[Any, ...]:
        return CurveArray, (self.values, self.wavelengths, self.ids, self.geometries)

    def __len__(self) -> int:
        return 1 if self.values.ndim == 1 else len(self.values)

    def __iter__(self) -> Any:
        return (self[i] for i in range(len(self)))

    def __getitem__(self, index: Any) -> CurveArray:
        """Curves by place, slice or array of places or bools, or the curve of an id, with all that belongs to them."""
        rows = np.arange(len(self))
        chosen = self._place_of(index) if isinstance(index, str) else rows[index]
        if np.ndim(chosen) > 1:
            raise IndexError("an index of curves is a place, a slice, or one array of places or bools; `values` has other axes")
        named = [None if each is None else [each[i] for i in np.atleast_1d(chosen)] for each in (self.ids, self.geometries)]
        values = self.values if self.values.ndim == 1 and np.ndim(chosen) == 0 else np.atleast_2d(self.values)[chosen]
        return CurveArray(values, self.wavelengths, *named)

    def _place_of(self, sample: str) -> int:
        places = [i for i, name in enumerate(self.ids or ()) if name == sample]
        if len(places) != 1:
            raise KeyError(f"{sample} is the id of {len(places) or 'no'} curves")
        return places[0]

    def __eq__(self, other: object) -> bool:
        return (isinstance(other, CurveArray) and (self.ids, self.geometries) == (other.ids, other.geometries)
                and np.array_equal(self.wavelengths, other.wavelengths)
                and np.array_equal(self.values, other.values, equal_nan=True))

    __hash__ = None  # type: ignore[assignment]

    def __repr__(self) -> str:
        shown = "" if self.ids is None else ": " + ", ".join(map(str, self.ids[:3])) + (", ..." if len(self.ids) > 3 else "")
        return (f"<CurveArray of {len(self)} curve{'s' * (len(self) != 1)}, "
                f"{self.wavelengths[0]:g} to {self.wavelengths[-1]:g} nm{shown}>")

    def on_grid(self) -> CurveArray:
        """The same curves at 360, 370 ... 750 nm, see :func:`vrxmath.resample`."""
        return CurveArray(_core.resample(self), None, self.ids, self.geometries)

    @property
    def frame(self) -> Any:
        """A pandas DataFrame with a row a curve and a column a wavelength, which functions take by its labels."""
        import pandas

        return pandas.DataFrame(np.atleast_2d(self.values), columns=self.wavelengths,
                                index=None if self.ids is None else pandas.Index(self.ids, name="id"))

    @staticmethod
    def concatenate(arrays: Iterable[CurveArray]) -> CurveArray:
        """The curves of several arrays, one after the other. Their wavelengths have to be the same: `on_grid` makes them so."""
        parts: Sequence[CurveArray] = list(arrays)
        if not parts:
            raise ValueError("arrays: at least one is expected")
        if any(not np.array_equal(part.wavelengths, parts[0].wavelengths) for part in parts):
            raise ValueError("arrays: their wavelengths differ; on_grid() makes them the same")
        if len({part.ids is None for part in parts}) > 1:
            raise ValueError("arrays: some have ids and others have none")
        values: Floats = np.concatenate([np.atleast_2d(part.values) for part in parts])
        ids = None if parts[0].ids is None else [one for part in parts for one in part.ids]
        known = any(part.geometries is not None for part in parts)
        geometries = [one for part in parts for one in part.geometries or [""] * len(part)] if known else None
        return CurveArray(values, parts[0].wavelengths, ids, geometries)
