"""Measurement files as arrays."""

from __future__ import annotations

import dataclasses
import os
import warnings
from typing import TYPE_CHECKING, Any, Literal

import numpy as np

from . import _core
from ._curves import CurveArray

if TYPE_CHECKING:
    from collections.abc import Iterator

    from ._core import Floats


class MeasurementWarning(UserWarning):
    """Something of a file makes its numbers other than they look."""


@dataclasses.dataclass(frozen=True)
class Measurements:
    """What a file of measurements holds.

    Attributes
    ----------
    ids, names : list of str
        Of the n samples; a name is empty where the file has none.
    curves : numpy.ndarray, shape (n, 40), or None
        Reflectance in percent at 360, 370 ... 750 nm, brought to that grid as the command-line tool does it.
    lab, xyz : numpy.ndarray, shape (n, 3), or None
        Colours that the file gives for all samples, beside curves or instead of them.
    geometries : list of str
        The measuring geometry of each sample, empty where the file says nothing.
    form : str
        The format of the file: "CSV", "CGATS", "CxF3" or "JSON".
    notes : list of str
        What was skipped, and why; and what Python warns of: guessed ends of curves, samples without one, mixed conditions.
    illuminant : str
    observer : int or None
        Under which the colours of the first sample were seen, "D50" and 2; empty and None where the file says nothing.
        ``lab`` and ``xyz`` are those and no others.
    """

    ids: list[str]
    names: list[str]
    curves: Floats | None
    lab: Floats | None
    xyz: Floats | None
    geometries: list[str]
    form: str
    notes: list[str]
    illuminant: str = ""
    observer: int | None = None

    def __len__(self) -> int:
        return len(self.ids)

    @property
    def curve_array(self) -> CurveArray:
        """The curves with their ids and geometries."""
        if self.curves is None:
            raise ValueError("the file has colours and no curves")
        return CurveArray(self.curves, None, self.ids, self.geometries)

    @property
    def frame(self) -> Any:
        """A pandas DataFrame with a row a sample: name, geometry, colours, and a column for each wavelength."""
        import pandas

        columns: dict[Any, Any] = {"name": self.names, "geometry": self.geometries}
        for heads, values in ((("X", "Y", "Z"), self.xyz), (("L*", "a*", "b*"), self.lab)):
            if values is not None:
                columns.update(zip(heads, values.T))
        if self.curves is not None:
            columns.update(zip(range(360, 760, 10), self.curves.T))
        return pandas.DataFrame(columns, index=pandas.Index(self.ids, name="id"))


def read(path: str | os.PathLike[str], *, form: str | None = None,
         scale: Literal["percent", "fraction"] | None = None, fraction: bool = False) -> Measurements:
    """Reads a file of measurements: CSV, CGATS, CxF or JSON, recognised by its content.

    Parameters
    ----------
    path : str or os.PathLike
    form : str, optional
        The format, if it should not be recognised by the content.
    scale : {"percent", "fraction"}, optional
        What reflectances are, where the file does not say it. They are percent if one comes to 2, and a question otherwise.
    fraction : bool
        The same as ``scale="fraction"``.

    Returns
    -------
    Measurements

    Raises
    ------
    FileNotFoundError
    ValueError
        With file, line, column and reason, for a file that cannot be used, and for one that may be percent or fractions.
    """
    if fraction and scale == "percent":
        raise ValueError("fraction=True contradicts scale=\"percent\"")
    os.stat(path)  # FileNotFoundError for one that is not there
    columns = _core.read(os.fspath(path), form or "", "fraction" if fraction else scale or "")
    return Measurements(**_with_warnings(columns, path, columns["warnings"]))


def _with_warnings(columns: dict[str, Any], path: str | os.PathLike[str], said: list[str]) -> dict[str, Any]:
    """The columns with warnings among their notes; those in `said` are Python's, too."""
    for warning in said:
        warnings.warn(f"{os.fspath(path)}: {warning}", MeasurementWarning, stacklevel=3)
    columns["notes"] += columns.pop("warnings")
    return columns


def read_blocks(path: str | os.PathLike[str], rows: int = 65536, *, form: str | None = None,
                scale: Literal["percent", "fraction"] | None = None) -> Iterator[Measurements]:
    """Reads a file of any length some samples at a time, in memory for those alone.

    Parameters
    ----------
    path : str or os.PathLike
    rows : int
        The most samples of a block.
    form, scale
        As for :func:`read`.

    Yields
    ------
    Measurements
        Blocks of the file's samples, in its order. Colours are there where all samples of the block have them; notes are of what was
        read so far, and those of the last block of the whole file.

    Raises
    ------
    FileNotFoundError
    ValueError
        As for :func:`read`. What makes a file unusable may show at its end (whether it holds percent or fractions): results of
        earlier blocks count once the last one is there.
    """
    if rows < 1:
        raise ValueError("rows: at least 1 is expected")
    os.stat(path)
    blocks = _core.MeasurementBlocks(os.fspath(path), form or "", scale or "")
    columns = blocks.next(rows)
    while columns is not None:
        following = blocks.next(rows)
        # Counts grow from block to block: those that the last block knows are said once, at the end.
        yield Measurements(**_with_warnings(columns, path, columns["warnings"] if following is None else []))
        columns = following
