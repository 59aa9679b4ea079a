"""Judgement of samples against a standard."""

from __future__ import annotations

import dataclasses
import functools
import warnings
from typing import TYPE_CHECKING, Any

import numpy as np

from . import _core
from ._curves import ArrowColumns, CurveArray, ids_of, with_ids

if TYPE_CHECKING:
    from collections.abc import Sequence

    from ._core import Floats, Lamp, Lamps, Numbers

FAIL, WARNING, PASS = 0, 1, 2
VERDICT_NAMES = ("fail", "warning", "pass")
_masked: Any = np.ma  # whose functions have no types


def _verdict_names(verdicts: Any) -> Any:
    """One of each, none where it is masked."""
    return np.array([*VERDICT_NAMES, ""], dtype=object)[_masked.filled(verdicts, len(VERDICT_NAMES)).ravel()]


@dataclasses.dataclass(frozen=True)
class Judgement:
    """How samples compare with their standard.

    Attributes
    ----------
    illuminants : tuple of str
        The m illuminants, the first being the primary one.
    differences : numpy.ndarray, shape (n, m, 7)
        Sample minus standard in the judging system; the last element is the total difference. NaN where unset. In the place of n
        stand the leading axes of standards and samples as they broadcast; this and the other arrays are masked where a curve is.
    verdicts : numpy.ndarray of int8, shape (n, m)
        0 fail, 1 warning, 2 pass.
    word_codes : numpy.ndarray of int8, shape (n, m, 3)
        Shade words on lightness, red-green and yellow-blue by number; `words` has them as text.
    broken : numpy.ndarray of int8, shape (n, m)
        The limit that made the verdict, of several the one that is used most: 0 none, 1 to 3 the first to third component,
        4 the total, 5 the ellipsoid, 6 no difference, 7 the grade, 8 the inconstancy.
    excess : numpy.ndarray, shape (n, m)
        By how much that limit was passed, or for a warning the edge of the warning band; NaN where none was.
    system : str
        The difference system.
    tolerance : float
        The limit of the total difference, of the first standard under the first illuminant.
    notes : tuple of str
        What was done to bring curves at other wavelengths to the library's grid.
    ids : tuple or None
        What names the samples: the ids of a :class:`CurveArray`, the index of a DataFrame.
    interval : int
        At which curves were summed, in nm.
    """

    illuminants: tuple[str, ...]
    differences: Floats
    verdicts: np.ndarray[Any, np.dtype[np.int8]]
    word_codes: np.ndarray[Any, np.dtype[np.int8]]
    broken: np.ndarray[Any, np.dtype[np.int8]]
    excess: Floats
    system: str
    tolerance: float
    notes: tuple[str, ...] = ()
    ids: tuple[Any, ...] | None = None
    interval: int = 10

    @property
    def overall(self) -> Any:
        """The worst verdict of each sample over the illuminants, int8, shape (n,)."""
        # Column by column: reducing short rows takes ten times as long.
        columns = [self.verdicts[..., i] for i in range(self.verdicts.shape[-1])]
        return functools.reduce(np.minimum, columns[1:], columns[0].copy())

    @property
    def totals(self) -> Any:
        """The total differences, shape (n, m)."""
        return self.differences[..., 6]

    @property
    def words(self) -> Any:
        """The shade words as text, such as "Darker, Less Yellow"; object array of shape (n, m)."""
        return _core.shade_phrases(_masked.getdata(self.word_codes))

    def frame(self) -> Any:
        """A pandas DataFrame with a row a sample: overall, and verdict, dE and words for each illuminant."""
        import pandas

        columns = dict(self._columns())
        return pandas.DataFrame(columns, index=None if self.ids is None else pandas.Index(self.ids, name="id"), copy=False)

    def _columns(self) -> list[tuple[str, Any]]:
        words, totals = self.words, self.totals
        columns = [("overall", _verdict_names(self.overall))]
        for i, name in enumerate(self.illuminants):
            columns += [(f"{name} verdict", _verdict_names(self.verdicts[..., i])),
                        (f"{name} dE", _masked.filled(totals[..., i], np.nan).ravel()),
                        (f"{name} words", words[..., i].ravel())]
        return columns

    def __arrow_c_array__(self, requested_schema: Any = None) -> Any:
        """A record batch for programs that speak Arrow: the ids and the columns of `frame`, with null where a curve is masked, and for
        each illuminant the broken limit and the excess."""
        masked = _masked.getmaskarray(self.overall).ravel()
        def kept(values: Any) -> Any:
            if values.dtype != object:
                return _masked.array(values, mask=masked)
            return [None if is_masked else text for text, is_masked in zip(values, masked)]

        columns = [(name, kept(values)) for name, values in self._columns()]
        for i, name in enumerate(self.illuminants):
            excess = _masked.filled(self.excess[..., i], np.nan).ravel()
            columns += [(f"{name} broken", _masked.array(self.broken[..., i].ravel(), mask=masked)),
                        (f"{name} excess", _masked.array(excess, mask=np.isnan(excess)))]
        if self.ids is not None:
            columns.insert(0, ("id", [str(one) for one in self.ids]))
        return ArrowColumns(columns, {}).__arrow_c_array__()

    def __len__(self) -> int:
        return len(self.verdicts)

    def __repr__(self) -> str:
        counts = np.bincount(_masked.compressed(self.overall), minlength=3)
        return (f"<Judgement by {self.system}, tolerance {self.tolerance:g}, under {', '.join(self.illuminants)}: "
                f"{counts[2]} pass, {counts[1]} warning, {counts[0]} fail>")


def geometries_of(curves: Any) -> Any:
    """The known geometries of a CurveArray in the shape of its rows, empty texts among them; None where nothing is known."""
    if not isinstance(curves, CurveArray) or not any(curves.geometries or ()):
        return None
    lead = curves.values.shape[:-1]
    shown = {text: _core.geometry_name(text) for text in set(curves.geometries or ())}
    names = np.array([shown[text] for text in curves.geometries or ()]).reshape((-1,) + (1,) * (len(lead) - 1) if lead else ())
    return np.broadcast_to(names, lead)


def _need_same_geometries(standard: Any, samples: Any, of: Any) -> None:
    """Refuses samples that were measured in another geometry than their standard."""
    pair = geometries_of(standard), geometries_of(samples)
    if pair[0] is None or pair[1] is None:
        return
    own = pair[0] if of is None else pair[0].reshape(-1)[np.asarray(of, dtype=int)]
    try:
        differ = (own != pair[1]) & (own != "") & (pair[1] != "")
    except ValueError:
        return  # shapes that do not belong together: the judgement says so
    if differ.any():
        at = np.unravel_index(np.argmax(differ), differ.shape)
        own, other = (np.broadcast_to(each, differ.shape)[at] for each in (own, pair[1]))
        raise ValueError(f"samples: a sample was measured with geometry {other}, its standard with {own}; choose the samples of one "
                         "geometry, or give the `values` of both, which say nothing of it")


def judge(standard: Numbers, samples: Numbers, illuminants: Lamps = ("D65", "A", "CWF"), observer: int = 10, *,
          system: str = "cmc", tolerance: float | Numbers | None = None, ellipsoid: Numbers | str | None = None,
          geometry: str | int | Sequence[str | int] | None = None, of: Sequence[int] | None = None, verdict: str = "worse",
          warning: float = 0.75, grade: str | None = None, least_grade: float | None = None, most_inconstancy: float | None = None,
          wavelengths: Numbers | None = None, interval: int = 10, threads: int = 0, **parameters: float) -> Judgement:
    """Judges samples against their standards: fail, warning or pass under each illuminant.

    Parameters
    ----------
    standard : array_like, shape (..., 40)
        The standard's reflectance curve in percent at 360, 370 ... 750 nm, or those of several standards.
    samples : array_like, shape (..., 40)
        The samples' curves, float64 or float32. Without ``of`` the leading axes of both broadcast as numpy's do: one standard is
        for all samples, as many as samples are pairs.
    illuminants : str or sequence of str or Illuminant
        The conditions, the primary one first, each once.
    observer : int
        2 or 10 degrees.
    system : str
        The difference system: ``"lab"``, ``"cmc"``, ``"cie94"``, ``"cie2000"`` ..., see :func:`systems`.
    tolerance : float or array_like, shape (7,), (m, 7) or (k, m, 7)
        What passes: one number limits the total difference; seven are a box: plus and minus limit of each component
        (elements 0 to 2 of a difference; ``inf`` for none), the minus limits as positive numbers, and the limit of the
        total; for each of the m illuminants, or for each standard under each illuminant. May be left out where the
        system's unit is a colour difference: 1.5 then holds.
    ellipsoid : "system" or array_like, shape (9,), (m, 9) or (k, m, 9)
        Judges the components by ellipsoids instead: those of the system about each standard (``"cmc"``, ``"cie94"``,
        ``"cie2000"``), or given ones: centre dL*, da*, db*; semi-axes along lightness, at the angle and across it; the
        angle in degrees from +a* to +b*; the limit of the total; the commercial factor.
    geometry : str or int, or a sequence of k
        The measuring geometry, such as ``"15deg"`` or its code (0, 15, 20, 25 and 45 may be degrees, too, and are refused): the
        weights of ``"audi"`` and ``"din6175"`` depend on its angle, which is 45 degrees otherwise, with a warning. Standards that are a :class:`CurveArray` have theirs, and samples that are one, too, are
        refused where their geometry is another one.
    of : sequence of int, length n
        The standard of each sample by its place.
    verdict : str
        How the verdict is formed: ``"total"``, ``"box"`` (the components, which the tolerance has to limit), or ``"worse"`` of the
        two, which is ``"both"``.
    warning : float
        From 0 to 1: a pass needs to lie within the tolerance times this factor; between the two there is a warning.
    grade : "change" or "staining"
        Judges by a grey scale (ISO 105-A05, ISO 105-A04), and by differences only where there is a tolerance.
    least_grade : float
        The lowest grade that passes, a half step: 1, 1.5, 2 ... 5; by default 4. Only with `grade`.
    most_inconstancy : float
        Fails a sample whose own colour changes by more, in the units of the system, from the first illuminant to another.
    wavelengths : sequence of w, optional
        Those of curves of w values, as for :func:`tristimulus`.
    interval : int
        5 or 1 sums standards and samples at that interval in nm, as for :func:`tristimulus`; both have to be measured so.
    threads : int
        Cores to use; 0 takes all. The results do not depend on it.
    **parameters
        The system's own, such as ``l=2, c=1`` for ``"cmc"``.

    Returns
    -------
    Judgement

    Examples
    --------
    >>> import vrxmath as vrx
    >>> judged = vrx.judge([42.0] * 40, [[40.0] * 40], "D65", system="cmc", l=2, c=1, tolerance=2)
    >>> judged.overall
    array([2], dtype=int8)
    """
    samples = with_ids(samples)
    names = [illuminants] if isinstance(illuminants, (str, int, np.integer, _core.Illuminant)) else list(illuminants)
    _need_same_geometries(standard, samples, of)
    if geometry is None and isinstance(standard, CurveArray) and any(standard.geometries or ()):
        geometry = standard.geometries
    if _core.reads_angle(system) and (geometry is None or not all(np.atleast_1d(geometry).astype(str))):
        warnings.warn(f"{system} depends on the measuring angle, which is not given: 45 degrees are assumed; set it with geometry=",
                      stacklevel=2)
    differences, verdicts, words, broken, excess, limit, notes = _core.judge(
        standard, samples, names, observer, system=system, tolerance=tolerance, ellipsoid=ellipsoid, geometry=geometry, of=of,
        verdict=verdict, warning=warning, grade=grade, least_grade=least_grade, most_inconstancy=most_inconstancy,
        wavelengths=wavelengths, interval=interval, threads=threads, **parameters)
    return Judgement(tuple(_core.illuminant_name(name) for name in names), differences, verdicts, words, broken, excess, system,
                     limit, tuple(notes), ids_of(samples), interval)
