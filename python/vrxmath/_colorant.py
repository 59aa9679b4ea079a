"""Colorants: K/S and strength of curves."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

from . import _core
from ._formulation import need_surface

if TYPE_CHECKING:
    from ._core import Floats, Numbers
    from ._formulation import Specular


def strength(standard: Numbers, batch: Numbers, *, absorbance: bool = False, band: tuple[float, float] = (400.0, 700.0),
             specular: Specular | None = None, k1: float = 0.04, k2: float = 0.6, wavelengths: Numbers | None = None,
             out: Floats | None = None, threads: int = 1) -> Any:
    """Strength of batches of a colorant against a standard, in percent: the sum of K/S over a band.

    Parameters
    ----------
    standard, batch : array_like, shape (..., 40)
        Reflectance in percent of the same let-down. Leading axes broadcast.
    absorbance : bool
        Sum absorbance instead of K/S.
    band : tuple of 2 float
        The wavelengths in nm, both inclusive.
    specular : str
        Whether the readings hold the surface reflection: ``"included"``, the default, ``"excluded"``, or ``"none"`` for no
        correction. A :class:`CurveArray` whose geometries say otherwise is refused, as for :func:`match`.
    k1, k2 : float
        Saunderson's surface constants.
    wavelengths, out, threads
        As for :func:`tristimulus`.

    Returns
    -------
    numpy.ndarray, shape (...); float for one pair
        Above 100 for a stronger batch; within 0.01 to 999.99, and NaN where a sample of the band is.
    """
    need_surface(None, specular, standard=standard, batch=batch)
    return _core.strength(standard, batch, absorbance=absorbance, band=band, specular=specular or "included", k1=k1, k2=k2,
                          wavelengths=wavelengths, out=out, threads=threads)


def ks(curves: Numbers, *, specular: Specular | None = None, k1: float = 0.04, k2: float = 0.6, wavelengths: Numbers | None = None,
       out: Floats | None = None, threads: int = 1) -> Floats:
    """Ratio of absorption to scattering of opaque films (Kubelka and Munk), behind Saunderson's correction.

    Parameters
    ----------
    curves : array_like, shape (..., 40)
        Reflectance in percent.
    specular, k1, k2, wavelengths, out, threads
        As for :func:`strength`.

    Returns
    -------
    numpy.ndarray, shape (..., 40)
    """
    need_surface(None, specular, curves=curves)
    return _core.ks(curves, specular=specular or "included", k1=k1, k2=k2, wavelengths=wavelengths, out=out, threads=threads)
