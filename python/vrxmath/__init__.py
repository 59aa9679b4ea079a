"""Colour science for industrial colour matching and quality control.

Reflectance curves are percent at 360, 370 ... 750 nm, in the last axis of an array; colours are X, Y, Z or L*, a*, b* in
the last axis. Leading axes are yours. What is unset or cannot be computed is NaN.

>>> import vrxmath as vrx
>>> curves = [[42.0] * 40, [40.0] * 40]
>>> xyz = vrx.tristimulus(curves, "D65", 10)
>>> lab = vrx.lab(xyz, "D65", 10)
>>> round(vrx.delta(lab[0], lab[1], system="cmc", l=2, c=1), 4)
0.5431
"""

from . import plot
from ._core import (
    Illuminant,
    __version__,
    adapt,
    appearance,
    delta,
    densities,
    display_rgb,
    fit_limit,
    grade,
    hunter,
    illuminants,
    in_gamut,
    indices,
    ks,
    lab,
    luv,
    munsell,
    munsell_text,
    nearest,
    readings_needed,
    resample,
    strength,
    stress,
    systems,
    tone_value,
    tristimulus,
    weights,
    white_point,
    xyz_from_appearance,
    xyz_from_hunter,
    xyz_from_lab,
    xyz_from_luv,
    xyz_from_munsell,
)
from ._formulation import (CalibrationFit, ColorSystem, Correction, LeftoverRecipe, Recipe, StockCorrection, calibrate, correct,
                           correct_stock, match, predict, use_leftovers)
from ._judgement import FAIL, PASS, WARNING, Judgement, judge
from ._reading import Measurements, MeasurementWarning, read
from ._records import Curve, Standard, Tolerance

__all__ = [
    "FAIL",
    "PASS",
    "WARNING",
    "CalibrationFit",
    "ColorSystem",
    "Correction",
    "Curve",
    "Illuminant",
    "Judgement",
    "LeftoverRecipe",
    "MeasurementWarning",
    "Measurements",
    "Recipe",
    "Standard",
    "StockCorrection",
    "Tolerance",
    "__version__",
    "adapt",
    "appearance",
    "calibrate",
    "correct",
    "correct_stock",
    "delta",
    "display_rgb",
    "grade",
    "hunter",
    "illuminants",
    "in_gamut",
    "indices",
    "judge",
    "ks",
    "lab",
    "luv",
    "match",
    "nearest",
    "plot",
    "predict",
    "read",
    "resample",
    "strength",
    "systems",
    "tristimulus",
    "use_leftovers",
    "weights",
    "white_point",
    "xyz_from_appearance",
    "xyz_from_hunter",
    "xyz_from_lab",
    "xyz_from_luv",
    "densities",
    "tone_value",
    "munsell",
    "xyz_from_munsell",
    "munsell_text",
    "fit_limit",
    "stress",
    "readings_needed",
]
