"""The nearest standards of samples, and samples that match each other."""

from __future__ import annotations

import warnings
from typing import TYPE_CHECKING, Any

import numpy as np

from . import _core
from ._judgement import geometries_of

if TYPE_CHECKING:
    from typing import Literal

    import numpy.typing as npt

    from ._core import Floats, Lamp, Lamps, Numbers

_FIRST_UNKNOWN = 1000  # above all codes of the library


def _codes_of(*arguments: Any) -> list[Any]:
    """The geometries of each argument as codes, one for each row, or None; a text that is no geometry is one of its own."""
    named = [geometries_of(each) for each in arguments]
    codes: dict[str, int] = {}
    for each in named:
        for text in () if each is None else np.unique(each).tolist():
            code = _core.geometry_code(text)
            codes.setdefault(text, code if code >= -1 else _FIRST_UNKNOWN + len(codes))
    return [None if each is None else [codes[text] for text in each.ravel().tolist()] for each in named]


def _warn_of_unserved(of_samples: Any, of_standards: Any) -> None:
    """Says which samples no standard is of the geometry of."""
    if of_samples is None or of_standards is None or -1 in of_standards:
        return
    known = set(of_standards)
    unserved = [place for place, code in enumerate(of_samples) if code != -1 and code not in known]
    if unserved:
        shown = ", ".join(map(str, unserved[:12])) + (", ..." if len(unserved) > 12 else "")
        warnings.warn(f"samples: no standard is of the geometry of {len(unserved)} of them, and none of an unknown one: {shown}",
                      stacklevel=3)


def nearest(samples: Numbers, standards: Numbers, count: int = 10, *, system: str = "cie2000", illuminant: Lamps | None = None,
            observer: int = 10, space: Literal["lab", "xyz"] | None = None, wavelengths: Numbers | None = None,
            angle: float = 45.0, threads: int = 1, **parameters: float) -> tuple[npt.NDArray[np.int64], Floats]:
    """The nearest standards of each sample, exactly.

    Parameters
    ----------
    samples, standards : array_like, shape (..., 40), (..., 3) or (..., 5)
        Both curves, or both colours as :func:`delta` takes them. Where both are a :class:`CurveArray` with geometries, a sample
        looks among the standards of its own geometry and those without one; a sample without one looks among all. A warning
        says which samples are left without a standard.
    count : int
        How many to find for each sample.
    illuminant : str, int, Illuminant, or a sequence of them, optional
        With several, which need curves, a standard is as far away as under the worst of them, so that a metamer is not taken
        for a match. By default D65, A and CWF for curves, and D65 for colours.
    wavelengths
        Those of curves, as for :func:`tristimulus`.
    angle : float
        Aspecular measuring angle in degrees, for ``"audi"`` and ``"din6175"``, of samples whose geometry has none.
    system, observer, space, **parameters
        As for :func:`delta`.
    threads : int
        Cores to use; 0 takes all.

    Returns
    -------
    index : numpy.ndarray of int64, shape (..., count)
        Positions among the standards, nearest first; -1 where there are fewer.
    distance : numpy.ndarray, shape (..., count)
        NaN where there are fewer.
    """
    of_samples, of_standards = _codes_of(samples, standards)
    _warn_of_unserved(of_samples, of_standards)
    return _core.nearest(samples, standards, count, system=system, illuminant=illuminant, observer=observer, space=space,
                         wavelengths=wavelengths, angle=angle, sample_geometries=of_samples, standard_geometries=of_standards,
                         threads=threads, **parameters)


def sort_groups(samples: Numbers, limit: float, illuminant: Lamp = "D65", observer: int = 10, system: str = "lab", *,
                space: Literal["lab", "xyz"] = "lab", angle: float = 45.0, **parameters: float) -> tuple[npt.NDArray[np.int64], Floats]:
    """Shade groups: samples of which any two in a group differ by no more than a limit.

    By complete linkage, whatever the order of rows; 5000 samples at most.

    Parameters
    ----------
    samples : array_like, shape (n, 40) or (n, 3)
        Curves, or colours. A :class:`CurveArray` with geometries is put into groups of one geometry each.
    limit : float
        Of the total difference.
    illuminant, observer, system, space
        As for :func:`sort`.
    angle : float
        The aspecular measuring angle in degrees, for the systems whose weights depend on it, of samples whose geometry has none.

    Returns
    -------
    tuple of numpy.ndarray, shape (n,)
        The group of each sample, from 1 for the largest, and how far the farthest of the group is from it.

    Examples
    --------
    >>> import vrxmath as vrx
    >>> groups, farthest = vrx.sort_groups([[50, 0, 0], [60, 0, 0], [50.5, 0, 0]], 1)
    >>> groups.tolist(), farthest.tolist()
    ([1, 2, 1], [0.5, 0.0, 0.5])
    """
    geometries, = _codes_of(samples)
    return _core.sort_groups(samples, limit, illuminant, observer, system, space=space, angle=angle, geometries=geometries,
                             **parameters)
