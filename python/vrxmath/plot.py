"""Pictures of colours on matplotlib: curves, the a*-b* plane, swatches, a trend, a spectral difference.

Every function draws on the axes that it is given (``ax=``), or on new ones, and returns them.
"""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy as np

from . import _core

if TYPE_CHECKING:
    from collections.abc import Sequence

    from matplotlib.axes import Axes

    from ._core import Lamp, Numbers

WAVELENGTHS = np.arange(360, 760, 10)
_VERDICT_STYLE = {0: ("#b3261e", "X", "fail"), 1: ("#b06000", "^", "warning"), 2: ("#1e6b34", "o", "pass")}


def _axes(ax: Axes | None) -> Any:
    if ax is not None:
        return ax
    import matplotlib.pyplot as plt

    return plt.subplots(layout="constrained")[1]


def _curves(curves: Numbers, wavelengths: Numbers | None = None) -> Any:
    return np.atleast_2d(_core.curves(curves, wavelengths))


def _rows(values: Numbers) -> Any:
    return np.atleast_2d(np.asarray(values, dtype=float))


def _hex_colors(curves: Numbers, illuminant: Lamp, observer: int) -> list[str]:
    rgb = _core.display_rgb(_core.tristimulus(_curves(curves), illuminant, observer), illuminant, observer)
    return ["#%02x%02x%02x" % tuple(color) for color in rgb]


def curves(curves: Numbers, labels: Sequence[str] | None = None, *, illuminant: Lamp = "D65", observer: int = 10,
           wavelengths: Numbers | None = None, ax: Axes | None = None) -> Axes:
    """Reflectance curves, each drawn in its own colour.

    Parameters
    ----------
    curves : array_like, shape (40,) or (n, 40)
        Reflectance in percent at 360, 370 ... 750 nm.
    labels : sequence of str, optional
        A name for each curve, shown in a legend.
    illuminant, observer
        Conditions under which the line colours are computed.
    wavelengths
        Those of the curves, as for :func:`vrxmath.tristimulus`.
    ax : matplotlib.axes.Axes, optional

    Returns
    -------
    matplotlib.axes.Axes
    """
    ax = _axes(ax)
    rows = _curves(curves, wavelengths)
    for i, (row, color) in enumerate(zip(rows, _hex_colors(rows, illuminant, observer))):
        ax.plot(WAVELENGTHS, row, color="0.2", linewidth=2.6)  # an edge, so that a white curve shows on white paper
        ax.plot(WAVELENGTHS, row, color=color, linewidth=1.8, label=labels[i] if labels is not None else None)
    ax.set(xlabel="Wavelength (nm)", ylabel="Reflectance (%)", xlim=(360, 750))
    ax.set_ylim(bottom=0)
    if labels is not None:
        ax.legend(frameon=False)
    return ax


def spectral_difference(standard: Numbers, samples: Numbers, labels: Sequence[str] | None = None, *,
                        wavelengths: Numbers | None = None, ax: Axes | None = None) -> Axes:
    """Samples minus standard at every wavelength, in percent of reflectance.

    Parameters
    ----------
    standard : array_like, shape (40,)
    samples : array_like, shape (40,) or (n, 40)
    labels : sequence of str, optional
    wavelengths
        Those of the curves, as for :func:`vrxmath.tristimulus`.
    ax : matplotlib.axes.Axes, optional

    Returns
    -------
    matplotlib.axes.Axes
    """
    ax = _axes(ax)
    ax.axhline(0, color="0.6", linewidth=1)
    for i, row in enumerate(_curves(samples, wavelengths) - _core.curves(standard, wavelengths)):
        ax.plot(WAVELENGTHS, row, label=labels[i] if labels is not None else None)
    ax.set(xlabel="Wavelength (nm)", ylabel="Difference of reflectance (%)", xlim=(360, 750))
    if labels is not None:
        ax.legend(frameon=False)
    return ax


def ab_plane(differences: Numbers, verdicts: Any = None, *, ellipse: tuple[float, float, float] | None = None,
             warning: float = 0.75, ax: Axes | None = None) -> Axes:
    """Differences in the a*-b* plane about their standard, with the ellipse of a tolerance.

    Parameters
    ----------
    differences : array_like, shape (n, k), k >= 3
        dL*, da*, db* in the first three columns, as ``delta(..., components=True)`` gives them.
    verdicts : array_like of int, shape (n,), optional
        0 fail, 1 warning, 2 pass: decides the mark of each point.
    ellipse : tuple of 3 float, optional
        Semi-axis along the angle, semi-axis across it, angle in degrees from +a* towards +b*.
    warning : float
        Factor of the ellipse at which the warning band begins.
    ax : matplotlib.axes.Axes, optional

    Returns
    -------
    matplotlib.axes.Axes
    """
    ax = _axes(ax)
    rows = _rows(differences)
    marks = np.full(len(rows), 2) if verdicts is None else np.asarray(verdicts)
    for verdict, (color, marker, name) in _VERDICT_STYLE.items():
        chosen = rows[marks == verdict]
        if len(chosen):
            ax.plot(chosen[:, 1], chosen[:, 2], marker, color=color, linestyle="none",
                    label=name if verdicts is not None else None)
    if ellipse is not None:
        along, across, angle = ellipse
        t = np.linspace(0, 2 * np.pi, 361)
        turn = np.deg2rad(angle)
        for factor, style in ((1.0, "-"), (warning, "--")):
            x, y = factor * along * np.cos(t), factor * across * np.sin(t)
            ax.plot(x * np.cos(turn) - y * np.sin(turn), x * np.sin(turn) + y * np.cos(turn), style, color="0.3",
                    linewidth=1)
    ax.axhline(0, color="0.8", linewidth=0.8, zorder=0)
    ax.axvline(0, color="0.8", linewidth=0.8, zorder=0)
    ax.plot(0, 0, "+", color="0.1", markersize=10)
    ax.set(xlabel="Δa*", ylabel="Δb*", aspect="equal")
    if verdicts is not None:
        ax.legend(frameon=False)
    return ax


def swatches(standard: Numbers, samples: Numbers, labels: Sequence[str] | None = None, *, illuminant: Lamp = "D65",
             observer: int = 10, wavelengths: Numbers | None = None, ax: Axes | None = None) -> Axes:
    """Each sample beside its standard, touching, on a light neutral ground. A cross marks what a display cannot show.

    Parameters
    ----------
    standard : array_like, shape (40,) or (n, 40)
        One standard for all samples, or one for each.
    samples : array_like, shape (40,) or (n, 40)
    labels : sequence of str, optional
    illuminant, observer
        Conditions of the colours.
    wavelengths
        Those of the curves, as for :func:`vrxmath.tristimulus`.
    ax : matplotlib.axes.Axes, optional

    Returns
    -------
    matplotlib.axes.Axes
    """
    from matplotlib.patches import Rectangle

    ax = _axes(ax)
    trials = _curves(samples, wavelengths)
    standards = np.broadcast_to(_curves(standard, wavelengths), trials.shape)
    for column, curve_set in enumerate((standards, trials)):
        xyz = _core.tristimulus(np.ascontiguousarray(curve_set), illuminant, observer)
        shown = _core.in_gamut(xyz, illuminant, observer)
        for row, color in enumerate(_hex_colors(curve_set, illuminant, observer)):
            ax.add_patch(Rectangle((column, row), 1, 0.8, facecolor=color, edgecolor="none"))
            if not shown[row]:
                ax.plot(column + 0.5, row + 0.4, "x", color="white", markeredgecolor="black")
    ax.set(xlim=(-0.1, 2.1), ylim=(len(trials), -0.2), xticks=[0.5, 1.5], xticklabels=["standard", "sample"],
           yticks=np.arange(len(trials)) + 0.4, yticklabels=labels if labels is not None else range(1, len(trials) + 1),
           facecolor="0.93")
    ax.tick_params(length=0)
    for spine in ax.spines.values():
        spine.set_visible(False)
    return ax


def trend(totals: Numbers, tolerance: float | None = None, *, warning: float = 0.75, labels: Sequence[str] | None = None,
          ax: Axes | None = None) -> Axes:
    """Total differences in the order of the samples, with the limit and where the warning begins.

    Parameters
    ----------
    totals : array_like, shape (n,)
    tolerance : float, optional
        The largest total difference that passes.
    warning : float
        Factor of the tolerance at which the warning begins.
    labels : sequence of str, optional
    ax : matplotlib.axes.Axes, optional

    Returns
    -------
    matplotlib.axes.Axes
    """
    ax = _axes(ax)
    values = np.asarray(totals, dtype=float)
    ax.plot(np.arange(1, len(values) + 1), values, "o-", color="0.25", markersize=4, linewidth=1)
    if tolerance is not None:
        ax.axhline(tolerance, color=_VERDICT_STYLE[0][0], linewidth=1.2, label="limit")
        ax.axhline(warning * tolerance, color=_VERDICT_STYLE[1][0], linewidth=1.2, linestyle="--", label="warning")
        ax.legend(frameon=False)
    ax.set(xlabel="Sample", ylabel="ΔE")
    ax.set_ylim(bottom=0)
    if labels is not None:
        ax.set_xticks(np.arange(1, len(values) + 1), labels, rotation=90)
    return ax
