"""Files of measurements that are written."""

from __future__ import annotations

import contextlib
import os
import re
import warnings
from typing import TYPE_CHECKING, Any

import numpy as np

from . import _core
from ._reading import Measurements, MeasurementWarning

if TYPE_CHECKING:
    from collections.abc import Iterator, Sequence
    from typing import Literal

    from ._core import Numbers

    Form = Literal["csv", "cgats", "cxf", "json"]

COLUMNS = ("ids", "names", "geometries", "curves", "lab", "xyz", "illuminant", "observer")


def columns_of(measurements: Any, name: str, ids: Sequence[str] | None = None, names: Sequence[str] | None = None) -> dict[str, Any]:
    """Measurements, or curves with or without ids, as columns."""
    if isinstance(measurements, Measurements):
        return {key: getattr(measurements, key) for key in COLUMNS}
    values = np.atleast_2d(_core.curves(measurements))
    if values.ndim != 2 or not len(values):
        raise ValueError(f"{name}: expected shape (n, 40) or (40,)")
    rows = [str(row + 1) for row in range(len(values))] if ids is None else [str(id) for id in ids]
    return {**dict.fromkeys(COLUMNS), "ids": rows, "names": [str(text) for text in names or []], "geometries": [], "curves": values,
            "illuminant": ""}


@contextlib.contextmanager
def python_words() -> Iterator[None]:
    """Errors that name options of the command line name arguments."""
    try:
        yield
    except ValueError as error:
        text = str(error).replace("--fraction or --percent", 'scale="fraction" or scale="percent"')
        text = text.replace("use --percent", 'use scale="percent"')
        text = text.replace("vrx convert FRACTIONS.csv PERCENT.csv --fraction",
                            'vrxmath.convert("fractions.csv", "percent.csv", scale="fraction")')
        raise ValueError(re.sub(r"--([a-z][a-z-]*)", lambda option: option[1].replace("-", "_"), text)) from None


def _path(path: str | os.PathLike[str]) -> str:
    return os.path.join(".", path) if os.fspath(path) == "-" else os.fspath(path)


def _warn(path: str, losses: list[str]) -> None:
    if losses:
        warnings.warn(f"{path}: not kept: {', '.join(losses)}", MeasurementWarning, stacklevel=3)


def convert(source: str | os.PathLike[str], target: str | os.PathLike[str], *, to: Form | None = None, grid: str = "",
            to_fraction: bool = False, csv_safe: bool = False, decimal_comma: bool = False, form: Form | None = None,
            scale: Literal["percent", "fraction"] | None = None) -> None:
    """Converts a file of measurements to another form, with all that both can hold.

    Numbers read back as the same unless ``grid`` interpolates them. The file appears as a whole or not at all, and takes its own place
    only if nothing is lost.

    Parameters
    ----------
    source, target : str or os.PathLike
    to : {"csv", "cgats", "cxf", "json"}, optional
        The form of the new file, if its name does not tell: .csv, .txt (CGATS), .cxf, .json.
    grid : str
        The wavelengths of the new file, ``"400-700/10"``; the measured ones if not given.
    to_fraction : bool
        Reflectances in CSV and JSON become fractions of 1.
    csv_safe : bool
        Puts an apostrophe before any text in CSV that a spreadsheet would run as a formula.
    decimal_comma : bool
        Decimal commas in CSV, and semicolons between columns.
    form, scale
        Of the old file, as for :func:`read`.

    Raises
    ------
    FileNotFoundError, OSError
    ValueError
        With file, line, column and reason.

    Warns
    -----
    MeasurementWarning
        Of what the new form cannot hold.
    """
    os.stat(source)  # FileNotFoundError for one that is not there
    options = {"to": to or "", "grid": grid, "to_fraction": to_fraction, "csv_safe": csv_safe, "decimal_comma": decimal_comma}
    with python_words():
        losses = _core.convert(_path(source), _path(target), form or "", scale or "", options)
    _warn(os.fspath(source), losses)


def write(path: str | os.PathLike[str], measurements: Measurements | Numbers, ids: Sequence[str] | None = None,
          names: Sequence[str] | None = None, *, to: Form | None = None, grid: str = "", to_fraction: bool = False,
          csv_safe: bool = False, decimal_comma: bool = False) -> None:
    """Writes measurements to a file, which appears as a whole or not at all.

    Parameters
    ----------
    path : str or os.PathLike
        Its ending tells the form: .csv, .txt (CGATS), .cxf, .json.
    measurements : Measurements, or array_like of shape (n, 40) or (40,)
        What :func:`read` gave, or curves.
    ids, names : sequence of str, optional
        Of curves; numbers from 1 without ids.
    to, grid, to_fraction, csv_safe, decimal_comma
        As for :func:`convert`.

    Examples
    --------
    >>> import os, tempfile, vrxmath as vrx
    >>> path = os.path.join(tempfile.mkdtemp(), "grey.json")
    >>> vrx.write(path, [[42.0] * 40], ["grey"])
    >>> vrx.read(path).ids
    ['grey']
    """
    options = {"to": to or "", "grid": grid, "to_fraction": to_fraction, "csv_safe": csv_safe, "decimal_comma": decimal_comma}
    if isinstance(measurements, Measurements) and (ids is not None or names is not None):
        raise ValueError("ids: measurements have their own")
    with python_words():
        losses = _core.write_table(_path(path), columns_of(measurements, "measurements", ids, names), options)
    _warn(os.fspath(path), losses)
