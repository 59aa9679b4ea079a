"""Reports of judgements: a page of HTML that needs nothing else."""

from __future__ import annotations

import dataclasses
import html
import os
from typing import TYPE_CHECKING, Any, Union

import numpy as np

from . import _core
from ._reading import Measurements
from ._writing import columns_of, python_words

if TYPE_CHECKING:
    from typing import Literal

    from ._core import Lamps, Numbers

    Samples = Union[str, os.PathLike[str], Measurements, Numbers]


@dataclasses.dataclass(frozen=True)
class Report:
    """A report; a notebook shows it.

    Attributes
    ----------
    html : str
        The whole page.
    """

    html: str

    def save(self, path: str | os.PathLike[str]) -> None:
        """Writes it to a file, as a whole or not at all; its name ends in ``.html``."""
        if not os.fspath(path).lower().endswith((".html", ".htm")):
            raise ValueError("path: the name of a report must end in .html")
        _core.write_file(os.fspath(path), self.html)

    def __repr__(self) -> str:
        return f"<Report of {len(self.html)} characters>"

    def _repr_html_(self) -> str:
        return f'<iframe srcdoc="{html.escape(self.html)}" width="100%" height="720" style="border:0" title="report"></iframe>'


def _samples(argument: Any, name: str) -> str | dict[str, Any]:
    """A file by its name, or measurements as columns."""
    if isinstance(argument, (str, os.PathLike)):
        os.stat(argument)  # FileNotFoundError for one that is not there
        return os.path.join(".", argument) if os.fspath(argument) == "-" else os.fspath(argument)
    return columns_of(argument, name)


def _numbers(values: Any) -> str:
    return ",".join(repr(float(value)) for value in np.ravel(values))


def report(standard: Samples, samples: Samples, illuminants: Lamps = ("D65", "A", "CWF"), observer: int | None = None, *,
           system: str = "cmc", tolerance: float | Numbers | None = None, ellipsoid: Literal["system"] | None = None,
           verdict: str | None = None, warning: float = 0.75, standard_id: str = "", pairs: bool = False, average: bool = False,
           scale: Literal["percent", "fraction"] | None = None, title: str = "", customer: str = "", lot: str = "",
           author: str = "", approval: str = "", logo: str | os.PathLike[str] = "", **parameters: float) -> Report:
    """Judges samples and makes the report of it: verdicts, conditions, a table, and pictures of each standard.

    Parameters
    ----------
    standard, samples : str or os.PathLike, Measurements, or array_like of shape (40,) or (n, 40)
        Files, whose names and SHA-256 the report has; or what is in memory.
    illuminants, observer, system, tolerance, verdict, warning, **parameters
        As for :func:`judge`; ``tolerance`` is one number, or the seven of a box, for all. The observer is that of the files where
        these have colours alone, else 10 degrees.
    ellipsoid : "system", optional
        Judges the components by the ellipsoids of the system, of the commercial factor ``tolerance``.
    standard_id : str
        Which of several standards is meant.
    pairs : bool
        Judges each sample against the standard of the same id; as many arrays of standards as of samples are pairs.
    average : bool
        The rows of one id are readings of one sample.
    scale : {"percent", "fraction"}, optional
        What reflectances of files are, where these do not say it.
    title, customer, lot, author, approval : str
        What the report says of them; ``approval`` is who is to sign.
    logo : str or os.PathLike
        A picture, PNG, JPEG or SVG.

    Returns
    -------
    Report

    Examples
    --------
    >>> import vrxmath as vrx
    >>> page = vrx.report([42.0] * 40, [[40.0] * 40], "D65", tolerance=2, title="Grey")
    >>> page.html[:15], "Grey" in page.html
    ('<!DOCTYPE html>', True)
    """
    names = [illuminants] if isinstance(illuminants, (str, int, _core.Illuminant)) else list(illuminants)
    standards, trials = _samples(standard, "standard"), _samples(samples, "samples")
    if isinstance(standards, dict) and not standard_id and not pairs:
        count = len(standards["ids"])
        pairs = not isinstance(standard, Measurements) and count > 1 and isinstance(trials, dict) and count == len(trials["ids"])
        if count > 1 and not pairs:
            raise ValueError("standard: standard_id has to say which one is meant, or pairs=True that each sample has its own")
        standard_id = "" if pairs else standards["ids"][0]
    usual = _core.systems().get(system, {})
    unknown = [name for name in parameters if name not in usual]
    if unknown:
        raise TypeError(f"{system} has no parameter {unknown[0]}")
    texts = {
        "observer": "" if observer is None else str(observer), "system": system,
        "parameters": _numbers([parameters.get(name, number) for name, number in usual.items()]) if parameters else "",
        "tolerance": "" if tolerance is None else _numbers(tolerance), "verdict": verdict or "", "standard_id": standard_id,
        "scale": scale or "", "title": title, "customer": customer, "lot": lot, "author": author, "approval": approval,
        "logo": os.fspath(logo)}
    flags = {"pairs": pairs, "average": average, "ellipse": ellipsoid == "system"}
    with python_words():
        return Report(_core.report(standards, trials, names, texts, flags, warning))
