"""Records for a person at a notebook: a curve, a tolerance, a standard, each shown with its colour."""

from __future__ import annotations

import dataclasses
import html
from typing import TYPE_CHECKING, Any

import numpy as np

from . import _core
from ._judgement import Judgement
from ._judgement import judge as _judge

if TYPE_CHECKING:
    from ._core import Floats, Lamp, Numbers


def _swatch(curve: Floats, illuminant: Lamp, observer: int, size: int = 64) -> str:
    xyz = _core.tristimulus(curve, illuminant, observer)
    color = "#%02x%02x%02x" % tuple(_core.display_rgb(xyz, illuminant, observer))
    mark = "" if _core.in_gamut(xyz, illuminant, observer) else \
        f'<text x="{size / 2}" y="{size / 2 + 5}" text-anchor="middle">&#10005;</text>'
    return (f'<svg width="{size}" height="{size}" role="img" aria-label="swatch {color}">'
            f'<rect width="{size}" height="{size}" fill="{color}"/>{mark}</svg>')


def _sparkline(curve: Floats, width: int = 160, height: int = 64) -> str:
    top = max(100.0, float(np.max(curve)))
    points = " ".join(f"{i * width / 39:.1f},{height - value / top * height:.1f}" for i, value in enumerate(curve))
    return (f'<svg width="{width}" height="{height}" role="img" aria-label="reflectance curve, 360 to 750 nm">'
            f'<rect width="{width}" height="{height}" fill="none" stroke="currentColor" opacity="0.3"/>'
            f'<polyline points="{points}" fill="none" stroke="currentColor" stroke-width="1.5"/></svg>')


@dataclasses.dataclass(frozen=True, eq=False)
class Curve:
    """A reflectance curve.

    Parameters
    ----------
    values : array_like, shape (40,)
        Percent at 360, 370 ... 750 nm, or a pandas Series whose labels are wavelengths.
    name : str
        How tables and pictures call it.
    wavelengths : sequence of n, optional
        Those of n values, in nm: they are brought to the grid as :func:`vrxmath.resample` does it.

    Examples
    --------
    >>> import vrxmath as vrx
    >>> grey = vrx.Curve([42.0] * 40, "grey")
    >>> grey.xyz("D65", 2).round(3)
    array([39.921, 42.   , 45.73 ])
    """

    values: Any
    name: str = ""
    wavelengths: dataclasses.InitVar[Any] = None

    def __post_init__(self, wavelengths: Any) -> None:
        values = _core.curves(self.values, wavelengths, name="values").copy()
        if values.shape != (40,):
            raise ValueError(f"values: expected shape (40,), got {values.shape}")
        values.flags.writeable = False
        object.__setattr__(self, "values", values)

    def __array__(self, dtype: Any = None, copy: bool | None = None) -> Any:
        return self.values if dtype is None and not copy else np.array(self.values, dtype=dtype)

    def __hash__(self) -> int:
        return hash((self.name, self.values.tobytes()))

    # A sequence, so that a list of curves is an array of them.
    def __len__(self) -> int:
        return len(self.values)

    def __getitem__(self, index: Any) -> Any:
        return self.values[index]

    def __eq__(self, other: object) -> bool:
        return isinstance(other, Curve) and self.name == other.name and np.array_equal(self.values, other.values)

    def xyz(self, illuminant: Lamp = "D65", observer: int = 10) -> Floats:
        """Tristimulus values, shape (3,)."""
        return _core.tristimulus(self.values, illuminant, observer)

    def lab(self, illuminant: Lamp = "D65", observer: int = 10) -> Floats:
        """L*, a*, b*, shape (3,)."""
        return _core.lab(self.xyz(illuminant, observer), illuminant, observer)

    def _repr_html_(self) -> str:
        L, a, b = self.lab()
        return (f'<div style="display:flex;gap:12px;align-items:center">{_swatch(self.values, "D65", 10)}'
                f'{_sparkline(self.values)}<div><b>{html.escape(self.name) or "curve"}</b><br>'
                f'L* {L:.2f}, a* {a:.2f}, b* {b:.2f}<br><small>D65, 10&deg;</small></div></div>')


@dataclasses.dataclass(frozen=True)
class Tolerance:
    """What passes: a difference system with its parameters and its limit.

    Attributes
    ----------
    limit : float
        Of the total difference.
    system : str
    parameters : dict
        Such as ``{"l": 2, "c": 1}`` for ``"cmc"``.
    warning : float
        The factor of the limit at which the warning begins.
    """

    limit: float = 1.0
    system: str = "cmc"
    parameters: dict[str, float] = dataclasses.field(default_factory=dict)
    warning: float = 0.75

    def _repr_html_(self) -> str:
        parameters = ", ".join(f"{name} = {value:g}" for name, value in self.parameters.items())
        return (f"<span>&Delta;E {html.escape(self.system)}{' (' + html.escape(parameters) + ')' if parameters else ''} "
                f"&le; {self.limit:g}, warning above {self.warning * self.limit:g}</span>")


@dataclasses.dataclass(frozen=True)
class Standard:
    """A standard: its curve, its tolerance, and the conditions under which it is judged.

    Examples
    --------
    >>> import vrxmath as vrx
    >>> grey = vrx.Standard(vrx.Curve([42.0] * 40, "grey"), vrx.Tolerance(2, "cmc", {"l": 2, "c": 1}), ("D65",))
    >>> grey.judge([[40.0] * 40])
    <Judgement by cmc, tolerance 2, under D65: 1 pass, 0 warning, 0 fail>
    """

    curve: Curve
    tolerance: Tolerance = Tolerance()
    illuminants: tuple[Lamp, ...] = ("D65", "A", "CWF")
    observer: int = 10

    def judge(self, samples: Numbers, threads: int = 0, *, wavelengths: Numbers | None = None) -> Judgement:
        """The judgement of samples, curves of shape (n, 40) or at `wavelengths`, see :func:`vrxmath.judge`."""
        tolerance = self.tolerance
        parameters: dict[str, Any] = dict(tolerance.parameters)
        if wavelengths is not None:
            samples = _core.resample(samples, wavelengths)
        return _judge(self.curve.values, samples, self.illuminants, self.observer, system=tolerance.system,
                      tolerance=tolerance.limit, warning=tolerance.warning, threads=threads, **parameters)

    def _repr_html_(self) -> str:
        return self.curve._repr_html_() + self.tolerance._repr_html_()
