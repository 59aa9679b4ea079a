#!/usr/bin/env python3
"""How far the module and the open package `colour` (colour-science) lie apart on measured curves, figure by figure.

Usage: PYTHONPATH=BUILD/python:FOLDER_OF_COLOUR python3 bench/python/peer_differences.py FILE [--scale fraction]

FILE: reflectance curves that vrx.read takes; curves of 10 nm that end before 360 or 750 nm go to both sides as they are brought to
the grid here. Prints the largest and the 99th percentile of the differences.
"""

import argparse
import warnings

import numpy as np

import vrxmath as vrx

warnings.simplefilter("ignore")
import colour  # noqa: E402  (says much while it is imported)

LAMPS = {"D65": "D65", "A": "A", "C": "C", "D50": "D50", "CWF": "FL2", "TL84": "FL11"}
CMFS = "CIE 1964 10 Degree Standard Observer"
GRID = np.arange(360, 760, 10)


def spectra(curves):
    return colour.MultiSpectralDistributions(curves.T / 100, GRID, labels=[f"c{i}" for i in range(len(curves))])


def shown(label, differences):
    values = np.abs(np.asarray(differences)).ravel()
    print(f"{label:<58} {values.max():10.3g} {np.quantile(values, 0.99):10.3g}")


def tristimulus_figures(curves):
    cmfs = colour.MSDS_CMFS[CMFS]
    there = spectra(curves)
    for ours, theirs in LAMPS.items():
        lamp = colour.SDS_ILLUMINANTS[theirs]
        xyz = vrx.tristimulus(curves, ours, 10)
        lab = vrx.lab(xyz, ours, 10)
        by_weights = [colour.sd_to_XYZ(one, cmfs, lamp, method="ASTM E308") for one in there.to_sds()]
        shape = colour.SpectralShape(360, 750, 10)
        by_samples = colour.msds_to_XYZ(curves / 100, cmfs, lamp, method="Integration", shape=shape)
        shown(f"{ours}: dE*ab to sd_to_XYZ by ASTM E308", vrx.delta(lab, vrx.lab(by_weights, ours, 10), "lab"))
        shown(f"{ours}: dE*ab to msds_to_XYZ over an array", vrx.delta(lab, vrx.lab(by_samples, ours, 10), "lab"))


def formula_figures(curves):
    xyz = vrx.tristimulus(curves, "D65", 10)
    white = vrx.white_point("D65", 10)
    lab = vrx.lab(xyz, "D65", 10)
    shown("L*a*b*, same white point", lab - colour.XYZ_to_Lab(xyz / 100, colour.XYZ_to_xy(white / 100)))
    shown("Hunter L, a, b", vrx.hunter(xyz, "D65", 10) - colour.XYZ_to_Hunter_Lab(xyz, white))
    standards, samples = lab, np.roll(lab, 1, axis=0)
    for label, ours, theirs in (
            ("dE*ab", vrx.delta(standards, samples, "lab"), colour.delta_E(standards, samples, "CIE 1976")),
            ("CMC 2:1", vrx.delta(standards, samples, "cmc", l=2, c=1), colour.delta_E(standards, samples, "CMC", l=2, c=1)),
            ("CIE94, graphic arts", vrx.delta(standards, samples, "cie94"), colour.delta_E(standards, samples, "CIE 1994")),
            ("CIE94, textiles: kL = 2 here", vrx.delta(standards, samples, "cie94", kL=2),
             colour.delta_E(standards, samples, "CIE 1994", textiles=True)),
            ("CIEDE2000", vrx.delta(standards, samples, "cie2000"), colour.delta_E(standards, samples, "CIE 2000")),
            ("DIN99", vrx.delta(standards, samples, "din99"), colour.delta_E(standards, samples, "DIN99")),
            ("DIN99, textiles: kE = 0.5, kCH = 2 here", vrx.delta(standards, samples, "din99", kE=0.5, kCH=2),
             colour.delta_E(standards, samples, "DIN99", textiles=True))):
        shown(label, ours - theirs)


def whiteness_figures(curves):
    observers = {2: "CIE 1931 2 Degree Standard Observer", 10: CMFS}
    coefficients = {2: (1.2769, 1.0592), 10: (1.3013, 1.1498)}  # ASTM E313, C/2 and D65/10
    for lamp, observer in (("D65", 10), ("C", 2)):
        xyz, white = vrx.tristimulus(curves, lamp, observer), vrx.white_point(lamp, observer)
        ours = vrx.indices(xyz, lamp, observer)
        cie = colour.colorimetry.whiteness_CIE2004(colour.XYZ_to_xy(xyz), xyz[:, 1], colour.XYZ_to_xy(white), observers[observer])
        theirs = {
            "Whiteness: CIE": cie[:, 0], "Tint: CIE": cie[:, 1],
            "Whiteness: Berger": colour.colorimetry.whiteness_Berger1959(xyz, white),
            "Whiteness: Taube": colour.colorimetry.whiteness_Taube1960(xyz, white),
            "Whiteness: Stensby": colour.colorimetry.whiteness_Stensby1968(vrx.hunter(xyz, lamp, observer)),
            "Yellowness: ASTM E313-20": colour.colorimetry.yellowness_ASTME313(xyz, coefficients[observer]),
            "Yellowness: ASTM D1925": colour.colorimetry.yellowness_ASTMD1925(xyz)}
        for name, values in theirs.items():
            if not np.isnan(ours[name]).all():
                shown(f"{lamp}/{observer}: {name}", ours[name] - values)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("file")
    parser.add_argument("--scale", choices=("percent", "fraction"))
    given = parser.parse_args()
    curves = vrx.read(given.file, scale=given.scale).curves
    print(f"{len(curves)} curves; colour {colour.__version__}; {'largest':>32} {'99 %':>10}")
    tristimulus_figures(curves)
    formula_figures(curves)
    whiteness_figures(curves)


if __name__ == "__main__":
    main()
