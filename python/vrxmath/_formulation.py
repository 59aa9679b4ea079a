"""Colour systems: what formulas give, recipes for colours, and additions to a batch."""

from __future__ import annotations

import dataclasses
import warnings
from collections.abc import Mapping
from typing import TYPE_CHECKING, Any

import numpy as np

from . import _core
from ._core import ColorSystem
from ._curves import CurveArray

if TYPE_CHECKING:
    from collections.abc import Sequence
    from typing import Literal, Union

    from ._core import Floats, Lamps, Numbers

    Component = Union[str, int]
    Formulas = Union[Mapping[Component, float], Sequence[Mapping[Component, float]], Numbers]
    Objective = Literal["tristimulus", "spectral", "combined"]
    Specular = Literal["included", "excluded", "none"]

_DEFAULTS: dict[str, Any] = _core.recipe_defaults

__all__ = ["CalibrationFit", "ColorSystem", "Correction", "LeftoverRecipe", "Recipe", "StockCorrection", "calibrate", "correct",
           "correct_stock", "expected_error", "match", "predict", "use_leftovers"]


def _amounts(color_system: ColorSystem, formulas: Any) -> Any:
    """Formulas in any form as amounts in the order of the system's components."""
    if isinstance(formulas, Mapping):
        row = np.zeros(len(color_system))
        for component, amount in formulas.items():
            row[color_system.place(component)] += amount
        return row
    if isinstance(formulas, (list, tuple)) and formulas and all(isinstance(one, Mapping) for one in formulas):
        return np.array([_amounts(color_system, one) for one in formulas])
    return formulas


def need_surface(color_system: ColorSystem | None, specular: str | None, **arguments: Any) -> None:
    """Refuses curves, by the name of their argument, whose geometries say SCI or SCE where the other is taken."""
    for name, curves in arguments.items():
        if isinstance(curves, CurveArray) and curves.geometries is not None:
            _core.refuse_other_specular(color_system, specular, name, [str(one) for one in curves.geometries])


def _batches(color_system: ColorSystem, specular: str | None, measured: Any, target: Any,
             wavelengths: Any) -> tuple[Floats, Floats]:
    """The curves of batches, and the target that they should have come to, on the library's grid."""
    need_surface(color_system, specular, measured=measured, target=target)
    return (_core.curves(measured, wavelengths, name="measured"),
            _core.curves(target, wavelengths, or_colors=True, name="target"))


@dataclasses.dataclass(frozen=True, eq=False)
class Recipe:
    """A recipe of a colour.

    Attributes
    ----------
    amounts : numpy.ndarray, shape (components,)
        By the order of the colour system; they make up the batch size. `formula` has those that are not 0 by name, or as
        ``"id:7"`` where several components have that name.
    differences : numpy.ndarray, shape (m,)
        From the target under each illuminant; NaN under the others for a target without a curve.
    metamerism, rms : float
        The largest special metamerism index (CIE 15), and the root mean square of the curves' difference from 400 to 700 nm
        in percent; NaN for a target without a curve.
    inconstancy : float
        How far the recipe's own colour drifts from the first illuminant to another, at most, in units of the difference system;
        NaN under one illuminant.
    cost, opacity : float
        Opacity as contrast ratio in percent, NaN without backings.
    load, load_by : float, str
        The percentage that the colorants make up beside a clear resin, and what that rests on: ``"given"``, ``"opacity"``,
        ``"calibrated range"``, ``"undetermined"``, or ``"target"`` where there is no such resin.
    expected : float
        The CIEDE2000 error that nine of ten such predictions do not exceed; NaN where the colour system does not tell.
    outside : list of str
        Components whose shares lie outside of their calibrated range.
    folded, traces : int, list of str
        How many recipes further down differ only by traces, and which components are traces.
    within_tolerance : bool
    curve : numpy.ndarray, shape (40,)
        What the recipe is predicted to give.
    formula : dict of str to float
    """

    amounts: Floats
    differences: Floats
    metamerism: float
    inconstancy: float
    rms: float
    cost: float
    opacity: float
    load: float
    load_by: str
    expected: float
    outside: list[str]
    folded: int
    traces: list[str]
    within_tolerance: bool
    curve: Floats
    formula: dict[str, float]

    def __repr__(self) -> str:
        parts = sorted(self.formula.items(), key=lambda part: -part[1])
        return (f"<Recipe {' + '.join(f'{amount:.4g} {name}' for name, amount in parts)}; "
                f"dE {', '.join(f'{value:.3g}' for value in self.differences)}>")


@dataclasses.dataclass(frozen=True, eq=False)
class Correction:
    """Additions to a batch.

    Attributes
    ----------
    amounts : numpy.ndarray, shape (components,)
        What is added, in the unit of the batch size; `formula` has those that are not 0 by name.
    differences : numpy.ndarray, shape (m,)
        From the target under each illuminant, after the additions.
    total, cost : float
    within_tolerance : bool
    curve : numpy.ndarray, shape (40,)
        What the corrected batch is predicted to give.
    suspected : dict of str to (float, float)
        What is not in the batch as its formula says, by name: percent of the formula that were written, and that were found.
    explained : bool
        False where no single mistake explains the curve of the batch, which may be that of another one: then nothing here is to
        be relied on.
    formula : dict of str to float
    """

    amounts: Floats
    differences: Floats
    total: float
    cost: float
    within_tolerance: bool
    curve: Floats
    suspected: dict[str, tuple[float, float]]
    explained: bool
    formula: dict[str, float]


@dataclasses.dataclass(frozen=True, eq=False)
class StockCorrection(Correction):
    """Additions to a batch of a stock.

    Attributes
    ----------
    batch : int
        Its place in the stock.
    before : float
        Its largest difference as it is.
    helps : bool
        False where nothing that may be added brings it nearer.
    amounts, differences, ...
        As of :class:`Correction`.
    """

    batch: int = 0
    before: float = float("nan")
    helps: bool = True


@dataclasses.dataclass(frozen=True, eq=False)
class LeftoverRecipe:
    """A recipe of which leftovers are a part.

    Attributes
    ----------
    used : numpy.ndarray
        How much of each leftover, in the unit of its size.
    total : float
        Of these.
    suspected : dict of int to dict
        Of the leftovers in it, by their places, that are not as their formulas say: as `Correction.suspected`.
    recipe : Recipe
        What is fresh, its cost, and the curve of the whole.
    """

    used: Floats
    total: float
    suspected: dict[int, dict[str, tuple[float, float]]]
    recipe: Recipe


@dataclasses.dataclass(frozen=True, eq=False)
class CalibrationFit:
    """How well drawdowns are described by a calibration, in their order.

    Attributes
    ----------
    differences : numpy.ndarray
        CIEDE2000 between what was measured and what is predicted; of a film the mean over its two backings.
    leave_one_out, leave_one_out_linear : numpy.ndarray
        The same by a calibration without the drawdown, and by the linear one that it starts from; NaN where none is possible.
    contrast, contrast_predicted, thickness : numpy.ndarray
        Of films, otherwise NaN.
    refined : bool
        False where the linear least squares foresee the drawdowns better and stay.
    saturates : dict of str to float
        Of dyes: the percentage from which more of it adds less than a quarter of what the first of it added.
    """

    differences: Floats
    leave_one_out: Floats
    leave_one_out_linear: Floats
    contrast: Floats
    contrast_predicted: Floats
    thickness: Floats
    refined: bool
    saturates: dict[str, float]


def _shares(shares: Any, components: Sequence[str] | None) -> tuple[list[str], Any]:
    """Component names and a row of shares for each drawdown, from dicts or from an array with names."""
    if components is None:
        if not all(isinstance(row, Mapping) for row in shares):
            raise ValueError("components: the names of the columns of shares are expected")
        components = list(dict.fromkeys(name for row in shares for name in row))
        return list(components), np.array([[float(row.get(name, 0)) for name in components] for row in shares])
    rows = np.asarray(shares, dtype=float)
    return list(components), rows


def calibrate(shares: Sequence[Mapping[str, float]] | Numbers, curves: Numbers, white: str, *,
              components: Sequence[str] | None = None, ids: Sequence[object] | None = None, resins: Sequence[str] = (),
              without: Sequence[str] = (), weights: Sequence[float] | None = None, model: str = "coatings",
              specular: Specular | None = None, k1: float = _DEFAULTS["k1"], k2: float = _DEFAULTS["k2"],
              illuminant: Any = "D65", observer: int = 10, leave_one_out: bool = True,
              name: str = "Calibrated colorants", wavelengths: Numbers | None = None) -> tuple[ColorSystem, CalibrationFit]:
    """K and S of colorants from weighed drawdowns.

    Parameters
    ----------
    shares : sequence of dict, or array_like of shape (n, components)
        Of each drawdown, in any one unit (percent, grams, parts).
    curves : array_like, shape (n, 40) or (n, 4, 40)
        Percent. Films have four readings: over black, over white, the bare black card and the bare white one.
    white : str
        The component whose scattering is 1, a unit; of dyes the substrate.
    components : sequence of str, optional
        The names of the columns of an array of shares.
    ids : sequence, optional
        What messages call the drawdowns; by default their places.
    resins : sequence of str
        Components that are resins or bases.
    without : sequence of str
        Components that are left out, with the drawdowns that have them; the fit has the others.
    weights : sequence of float, optional
        How much each drawdown counts.
    model : str
        ``"coatings"``, ``"plastics"``, ``"trade-sales"``, or for ladders of single dyes ``"transparents"``, ``"textiles"``,
        ``"continuous-dye"``.
    specular, k1, k2
        Whether the curves hold the surface reflection, by default ``"included"``, and its constants. A :class:`CurveArray` whose
        geometries say otherwise is refused, as for :func:`match`; its geometry, where all have the same, goes with the system.
    illuminant, observer
        Under which differences are stated.
    leave_one_out : bool
        Predict each drawdown from the others too, which the choice of the fit and `Recipe.expected` rest on.
    name : str
        Of the colour system.
    wavelengths
        Those of the curves, as for :func:`tristimulus`.

    Returns
    -------
    color_system : ColorSystem
        ``color_system.to_json()`` is the text of its file.
    fit : CalibrationFit
    """
    names, rows = _shares(shares, components)
    twice = next((name for i, name in enumerate(names) if name in names[:i]), None)
    if twice is not None:
        raise ValueError(f"components: {twice!r} is there twice")
    need_surface(None, specular, curves=curves)
    geometries = [str(one) for one in curves.geometries or ()] if isinstance(curves, CurveArray) else []
    spectra = _core.curves(curves, wavelengths)
    if rows.ndim != 2 or rows.shape[1] != len(names) or len(rows) != len(spectra):
        raise ValueError(f"shares: ({len(spectra)}, {len(names)}) is expected, not {rows.shape}")
    for sequence, what in ((ids, "ids"), (weights, "weights")):
        if sequence is not None and len(sequence) != len(rows):
            raise ValueError(f"{what}: {len(rows)} are expected")
    for component in without:
        if component not in names:
            raise ValueError(f"without: there is no component {component!r}")
    left_out = [names.index(component) for component in without]
    kept = ~(rows[:, left_out] != 0).any(axis=1)
    settings = {"white": white, "resins": [resin for resin in resins if resin not in without], "model": model,
                "specular": specular or "included", "geometries": geometries, "k1": k1, "k2": k2, "illuminant": illuminant,
                "observer": observer, "leave_one_out": leave_one_out, "name": name,
                "ids": None if ids is None else [str(one) for one, is_kept in zip(ids, kept) if is_kept],
                "weights": None if weights is None else [float(one) for one, is_kept in zip(weights, kept) if is_kept]}
    system, fit = _core.calibrate([one for one in names if one not in without], np.delete(rows[kept], left_out, axis=1),
                                  spectra[kept], settings)
    return system, CalibrationFit(**fit)


def predict(color_system: ColorSystem, formulas: Formulas, *, specular: Specular | None = None, out: Floats | None = None,
            threads: int = 1) -> Floats:
    """The reflectance curves that formulas give as opaque films; how far off they may be says :func:`expected_error`.

    Parameters
    ----------
    color_system : ColorSystem
    formulas : dict, sequence of dict, or array_like of shape (..., components)
        Amounts by the name or number of a component, or in the order of ``color_system.names``. Only their proportions
        count, and a component of amount 0 is not in the formula.
    specular : str
        Whether the curves hold the surface reflection: ``"included"``, ``"excluded"`` or ``"none"``. By default as the file of
        the colour system says, included where it does not; what contradicts it is refused.
    out : numpy.ndarray of float64, shape (..., 40), optional
        Takes the result.
    threads : int
        Cores to use; 0 takes all.

    Returns
    -------
    numpy.ndarray, shape (..., 40)
        Percent; NaN for a formula that cannot be predicted. A warning says which formulas have colorants that the rules of the
        colour system forbid together.
    """
    return _core.predict(color_system, _amounts(color_system, formulas), specular=specular, out=out, threads=threads)


def expected_error(color_system: ColorSystem, formulas: Formulas) -> tuple[Any, list[Any]]:
    """How far off predictions may be, as ``vrx predict`` says it.

    Parameters
    ----------
    color_system : ColorSystem
    formulas : dict, sequence of dict, or array_like of shape (..., components)
        As for :func:`predict`.

    Returns
    -------
    expected : float, or numpy.ndarray of shape (...)
        The CIEDE2000 error that nine of ten such predictions do not exceed; NaN where the colour system does not tell.
    outside : list of str, or a list of such a list for each formula, one behind the other
        Components whose shares lie outside of their calibrated range.
    """
    amounts = _amounts(color_system, formulas)
    expected, outside = _core.expected_error(color_system, amounts)
    if expected.ndim == 0:
        return float(expected), outside[0]
    return expected, outside


def match(color_system: ColorSystem, targets: Numbers, illuminants: Lamps = ("D65", "A", "CWF"), observer: int = 10, *,
          system: str = "cie2000", tolerance: float = _DEFAULTS["tolerance"], top: int = _DEFAULTS["top"],
          max_colorants: int = _DEFAULTS["max_colorants"],
          require: Sequence[Component] = (), exclude: Sequence[Component] = (),
          limits: Mapping[Component, tuple[float, float]] | None = None, costs: Mapping[Component, float] | None = None,
          min_amount: float = 0.0, objective: Objective = "tristimulus", weights: Sequence[float] | None = None,
          specular: Specular | None = None,
          sort: Literal["fewest", "color", "metamerism", "cost", "expected", "inconstancy"] = "fewest",
          batch_size: float = _DEFAULTS["batch_size"], resolution: float = 0.0, backings: Numbers | None = None,
          thickness: float = _DEFAULTS["thickness"], min_opacity: float = 0.0, load: float | tuple[float, float] | None = None,
          within_range: bool = False, trace: float | None = None, angle: float = 45.0, prerank: int = 0,
          max_subsets: float = _DEFAULTS["max_subsets"], wavelengths: Numbers | None = None,
          threads: int = _DEFAULTS["threads"], **parameters: float) -> Any:
    """Recipes of colours: every subset of the colorants is solved, not a sample of them.

    Parameters
    ----------
    color_system : ColorSystem
    targets : array_like, shape (40,), (n, 40), (3,) or (n, 3)
        Curves in percent, or L*, a*, b* under the first illuminant.
    illuminants, observer
        The conditions, the primary one first.
    system : str
        The difference system, with its parameters as further arguments, see :func:`systems`.
    tolerance : float
        The largest difference under any illuminant. When nothing comes that near the nearest recipes stand there.
    top : int
        How many recipes of a target.
    max_colorants : int
        1 to 6.
    require, exclude : sequence of str or int
        Components by name, in any case, or by number. ``"id:7"`` and ``"name:7"`` say which a text means; a name that several
        components have is refused with their numbers.
    limits, costs : dict
        By component: least and most share in percent, and the cost of one unit, 0 or more. What has no cost beside others that
        have one counts as free, with a warning that names it; ``sort="cost"`` is refused where nothing that may be used costs
        anything.
    min_amount : float
        The least share of every colorant, percent.
    objective : str
        What is made small: ``"tristimulus"``, ``"spectral"`` or ``"combined"``.
    weights : sequence of float, optional
        How much the squared difference under each illuminant counts.
    specular : str
        Of the targets, as for :func:`predict`. A :class:`CurveArray` whose geometries say SCI or SCE where the other is taken is
        refused; so are batches, and drawdowns of :func:`calibrate`. 45/0 and aspecular angles leave out the surface reflection;
        where it is taken for included they are refused, too, unless ``specular="included"`` says that a matt surface is in them,
        or that the system is of such curves.
    sort : str
        ``"fewest"``, ``"color"``, ``"metamerism"``, ``"cost"``, ``"expected"`` or ``"inconstancy"``.
    batch_size, resolution : float
        Total of the amounts, and the step of the dispenser: amounts are the nearest steps, and the largest takes the rest.
    backings : array_like, shape (2, 40), optional
        A black and a white one, for the opacity of a film of `thickness`; `min_opacity` in percent leaves recipes out.
    load : float or pair of float, optional
        The percentage that the colorants make up beside a clear resin, or its least and most.
    within_range : bool
        No share outside of the range in which its component was calibrated.
    trace : float, optional
        A colorant is a trace if leaving it out changes the colour by less than this; by default a tenth of `tolerance`; 0: never.
    angle : float
        Aspecular, degrees, for the systems that depend on it.
    prerank : int
        Lossy: solve only so many subsets of each size, at most a million; 0 solves all.
    max_subsets : float
        Refuse searches of more.
    wavelengths
        Those of the curves, backings among them, as for :func:`tristimulus`.
    threads : int
        0 takes all cores. The results do not depend on it.

    Returns
    -------
    list of Recipe, best first; a list of such lists for several targets. One is empty where `min_opacity`, `limits` or
    `resolution` leave nothing.
    """
    settings = {name: value for name, value in locals().items() if name not in ("color_system", "targets", "wavelengths")}
    settings.update(limits=limits or {}, costs=costs or {})
    need_surface(color_system, specular, targets=targets)
    rows = _core.curves(targets, wavelengths, or_colors=True, name="targets")
    if backings is not None:
        settings["backings"] = _core.curves(backings, wavelengths, name="backings")
    found = [[Recipe(**fields) for fields in recipes] for recipes in _core.match(color_system, rows, settings)]
    return found[0] if rows.ndim == 1 else found


def correct(color_system: ColorSystem, formula: Formulas, measured: Numbers, target: Numbers,
            illuminants: Lamps = ("D65", "A", "CWF"), observer: int = 10, *, system: str = "cie2000",
            tolerance: float = _DEFAULTS["tolerance"], top: int = _DEFAULTS["top"],
            max_colorants: int = _DEFAULTS["max_colorants"], max_addition: float = _DEFAULTS["max_addition"],
            aim: Literal["smallest", "cheapest", "nearest"] = "smallest", batch_size: float = _DEFAULTS["batch_size"],
            require: Sequence[Component] = (), exclude: Sequence[Component] = (), costs: Mapping[Component, float] | None = None,
            objective: Objective = "tristimulus", weights: Sequence[float] | None = None,
            specular: Specular | None = None, max_subsets: float = _DEFAULTS["max_subsets"], threads: int = _DEFAULTS["threads"],
            margin: float = _DEFAULTS["margin"], allow_new: bool = False, trust_formula: bool = False,
            resolution: float = 0.0, angle: float = 45.0, wavelengths: Numbers | None = None,
            **parameters: float) -> tuple[Correction, list[Correction]]:
    """What to add to a batch that came out wrong.

    Parameters
    ----------
    color_system : ColorSystem
    formula : dict or array_like, shape (components,)
        What went into the batch, as for :func:`predict`.
    measured : array_like, shape (40,)
        How it came out, percent.
    target : array_like, shape (40,) or (3,)
    max_colorants : int
        The most different additions, 1 to 5.
    max_addition : float
        The largest total of additions, percent of the batch.
    aim : str
        ``"smallest"`` and ``"cheapest"`` additions that reach the tolerance, or the ``"nearest"`` colour. ``"cheapest"`` needs
        a cost of something that may be added.
    batch_size : float
        How much of the batch there is.
    margin : float
        Percent of the tolerance that a correction keeps in hand, where it can.
    allow_new : bool
        Add colorants that the batch does not have, even where its own reach the tolerance.
    trust_formula : bool
        Take the formula as written. By default the curve first says what is in the batch; see `Correction.suspected`.
    resolution : float
        Step of the dispenser, in the unit of the additions.
    angle : float
        Aspecular, degrees, for the systems that depend on it.
    wavelengths, illuminants, observer, system, tolerance, ...
        As for :func:`match`.

    Returns
    -------
    before : Correction
        The batch as it is, with its differences.
    corrections : list of Correction
        Best first; a batch within the tolerance needs none, and the first one is empty then.
    """
    settings = {name: value for name, value in locals().items()
                if name not in ("color_system", "formula", "measured", "target", "wavelengths")}
    settings.update(limits={}, costs=costs or {}, min_amount=0.0, prerank=0, trace=None)
    before, found = _core.correct(color_system, _amounts(color_system, formula), *_batches(color_system, specular, measured, target, wavelengths), settings)
    return Correction(**before), [Correction(**fields) for fields in found]


def _warn_of_left_out(left: Sequence[int]) -> None:
    if left:
        places = ", ".join(map(str, left))
        warnings.warn(f"left out: no single mistake explains the curves of the batches at {places}; make sure that each is that "
                      "of its formula (trust_formula=True takes the formulas as written)", stacklevel=3)


def correct_stock(color_system: ColorSystem, formulas: Formulas, measured: Numbers, sizes: Sequence[float], target: Numbers,
                  illuminants: Lamps = ("D65", "A", "CWF"), observer: int = 10, *, system: str = "cie2000",
                  tolerance: float = _DEFAULTS["tolerance"], top: int = _DEFAULTS["top"],
                  max_colorants: int = _DEFAULTS["max_colorants"], max_addition: float = _DEFAULTS["stock_addition"],
                  aim: Literal["smallest", "cheapest", "nearest"] = "smallest", require: Sequence[Component] = (),
                  exclude: Sequence[Component] = (), costs: Mapping[Component, float] | None = None,
                  objective: Objective = "tristimulus", weights: Sequence[float] | None = None,
                  specular: Specular | None = None, resolution: float = 0.0, angle: float = 45.0,
                  max_subsets: float = _DEFAULTS["max_subsets"], wavelengths: Numbers | None = None,
                  threads: int = _DEFAULTS["threads"], margin: float = _DEFAULTS["margin"], trust_formula: bool = False,
                  **parameters: float) -> list[StockCorrection]:
    """Which batch of a stock becomes a target, and by what additions.

    Parameters
    ----------
    color_system : ColorSystem
    formulas, measured, sizes
        Of each batch: what went into it, as for :func:`predict`, its curve, and how much of it there is.
    target : array_like, shape (40,) or (3,)
    max_addition : float
        The largest total of additions, percent of the batch.
    aim : str
        By what answers within the tolerance are ordered, for the size of the batch: ``"smallest"`` and ``"cheapest"``
        additions, or the ``"nearest"`` colour.
    trust_formula : bool
        Take the formulas as written. By default the curves first say what is in the batches, and a batch whose curve no single
        mistake explains is left out, with a warning.
    margin, resolution, angle, wavelengths, illuminants, observer, system, tolerance, ...
        As for :func:`correct` and :func:`match`.

    Returns
    -------
    list of StockCorrection, best first.
    """
    settings = {name: value for name, value in locals().items()
                if name not in ("color_system", "formulas", "measured", "sizes", "target", "wavelengths")}
    curves, aim_at = _batches(color_system, specular, measured, target, wavelengths)
    settings.update(limits={}, costs=costs or {}, min_amount=0.0, prerank=0, trace=None)
    found, left = _core.correct_stock(color_system, _amounts(color_system, formulas), curves, list(sizes), aim_at, settings)
    _warn_of_left_out(left)
    return [StockCorrection(**fields) for fields in found]


def use_leftovers(color_system: ColorSystem, formulas: Formulas, measured: Numbers, sizes: Sequence[float], target: Numbers,
                  batch_size: float, illuminants: Lamps = ("D65", "A", "CWF"), observer: int = 10, *,
                  system: str = "cie2000", tolerance: float = _DEFAULTS["tolerance"], top: int = _DEFAULTS["top"],
                  max_colorants: int = _DEFAULTS["max_colorants"], require: Sequence[Component] = (),
                  exclude: Sequence[Component] = (), limits: Mapping[Component, tuple[float, float]] | None = None,
                  costs: Mapping[Component, float] | None = None, specular: Specular | None = None, resolution: float = 0.0,
                  angle: float = 45.0, max_subsets: float = _DEFAULTS["max_subsets"], wavelengths: Numbers | None = None,
                  threads: int = _DEFAULTS["threads"], trust_formula: bool = False,
                  **parameters: float) -> list[LeftoverRecipe]:
    """Recipes of parts of several leftovers and fresh colorants, those within the tolerance by how much of the stock they use.

    Parameters
    ----------
    color_system : ColorSystem
        Of a two-constant model.
    formulas, measured, sizes
        Of each leftover, as for :func:`correct_stock`.
    target : array_like, shape (40,) or (3,)
    batch_size : float
        The amount that is made.
    trust_formula : bool
        As for :func:`correct_stock`.
    wavelengths, illuminants, observer, system, tolerance, ...
        As for :func:`match`.

    Returns
    -------
    list of LeftoverRecipe, best first.
    """
    settings = {name: value for name, value in locals().items()
                if name not in ("color_system", "formulas", "measured", "sizes", "target", "wavelengths")}
    curves, aim_at = _batches(color_system, specular, measured, target, wavelengths)
    settings.update(limits=limits or {}, costs=costs or {}, min_amount=0.0, prerank=0, trace=None, objective="tristimulus",
                    weights=None)
    found, left = _core.use_leftovers(color_system, _amounts(color_system, formulas), curves, list(sizes), aim_at, settings)
    _warn_of_left_out(left)
    return [LeftoverRecipe(each["used"], each["total"], each["suspected"], Recipe(**each["recipe"]))
            for each in found]
