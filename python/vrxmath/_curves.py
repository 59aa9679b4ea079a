"""Curves together with their wavelengths and the ids of their samples."""

from __future__ import annotations

import dataclasses
from collections.abc import Iterable, Sequence
from typing import TYPE_CHECKING, Any

import numpy as np

from . import _core

if TYPE_CHECKING:
    from ._core import Floats


def with_ids(curves: Any) -> Any:
    """An argument of curves whose ids `ids_of` can tell: columns of Arrow are read, which a stream allows once."""
    is_arrow = hasattr(curves, "__arrow_c_array__") or hasattr(curves, "__arrow_c_stream__")
    return CurveArray(curves) if is_arrow and not isinstance(curves, CurveArray) and not hasattr(curves, "iloc") else curves


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


class ArrowColumns:
    """Columns that programs that speak Arrow take over without a copy, see :func:`vrxmath.to_arrow`."""

    def __init__(self, columns: Sequence[tuple[str, Any]], metadata: dict[str, str]) -> None:
        self._columns, self._metadata = tuple(columns), metadata

    def __arrow_c_array__(self, requested_schema: Any = None) -> Any:
        """The capsules of a schema and of an array, a record batch. What type is requested makes no difference."""
        return _core.arrow_export(self._columns, self._metadata)

    def __arrow_c_schema__(self) -> Any:
        """The capsule of the schema."""
        return self.__arrow_c_array__()[0]

    def __repr__(self) -> str:
        return f"<ArrowColumns: {', '.join(name for name, _ in self._columns)}>"


def to_arrow(values: Any, names: str | Sequence[str], *, ids: Any = None, wavelengths: Any = None) -> ArrowColumns:
    """Results or curves as columns for programs that speak Arrow: Polars, DuckDB, pyarrow and others.

    Parameters
    ----------
    values : array_like, shape (n,) or (n, k)
        Masked rows become null.
    names : str or sequence of k str
        One name for a column of lists of k numbers, which is not copied; or a name for each of k columns of numbers.
    ids : sequence of n, optional
        Become texts in a column ``id``.
    wavelengths : sequence of k, optional
        Those of curves, which go with the schema, under ``wavelengths``.

    Returns
    -------
    ArrowColumns
        What has ``__arrow_c_array__``, such as ``polars.DataFrame`` and ``pyarrow.record_batch`` take.

    Examples
    --------
    >>> import vrxmath as vrx
    >>> lab = vrx.lab(vrx.tristimulus([[42.0] * 40], "D65"))
    >>> vrx.to_arrow(lab, ["L*", "a*", "b*"], ids=["grey"])
    <ArrowColumns: id, L*, a*, b*>
    """
    rows = np.ma.asanyarray(values)  # type: ignore[no-untyped-call]
    if not isinstance(values, np.ma.MaskedArray):
        rows = np.asarray(values, dtype=np.float64)
    if rows.ndim not in (1, 2):
        raise ValueError(f"values: expected shape (n,) or (n, k), got {rows.shape}")
    if isinstance(names, str):
        columns = [(names, rows)]
    elif rows.ndim != 2 or len(names) != rows.shape[1]:
        raise ValueError(f"names: {len(names)} names for an array of shape {rows.shape}")
    else:
        columns = [(name, rows[:, i]) for i, name in enumerate(names)]
    named = _of_each(ids, len(rows), "ids")
    metadata = {} if wavelengths is None else {"wavelengths": ",".join(f"{nm:.17g}" for nm in wavelengths)}
    return ArrowColumns(([] if named is None else [("id", [str(one) for one in named])]) + columns, metadata)


@dataclasses.dataclass(frozen=True, eq=False)
class CurveArray:
    """Reflectance curves with their wavelengths and the ids of their samples, taken wherever curves are.

    Parameters
    ----------
    values : array_like, shape (w,) or (n, ..., w)
        Percent. A table by its labels, whose index becomes the ids. Columns of Arrow (what has ``__arrow_c_array__`` or
        ``__arrow_c_stream__``: Polars, DuckDB, pyarrow) without a copy where they are one chunk: one column of lists of w numbers, or
        those whose labels are wavelengths; a column of texts becomes the ids. Rows that are null are masked.
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
        values, wavelengths, notes, arrow_ids = _core.ascending(self.values, self.wavelengths)
        given = (arrow_ids or ids_of(self.values)) if self.ids is None else self.ids
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

    def __arrow_c_array__(self, requested_schema: Any = None) -> Any:
        """A record batch for programs that speak Arrow: the ids, and the curves as lists of w numbers."""
        return to_arrow(np.atleast_2d(self.values), "curve", ids=self.ids, wavelengths=self.wavelengths).__arrow_c_array__()

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
