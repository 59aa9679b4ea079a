"""Arrays at the border: shapes, strides, precision, targets, refusals."""

import numpy as np
import pytest

import vrxmath as vrx


def test_any_leading_axes_and_strides(curves):
    expected = vrx.tristimulus(curves)
    wide = np.full((60, 3, 45), 7.0)
    wide[:, 1, 2:42] = curves
    cases = {
        "n-d": (curves.reshape(3, 4, 5, 40), expected.reshape(3, 4, 5, 3)),
        "one": (curves[7], expected[7]),
        "strided": (wide[:, 1, 2:42], expected),
        "every other": (curves[::2], expected[::2]),
        "backwards": (curves[::-1], expected[::-1]),
        "columns": (np.asfortranarray(curves), expected),
        "list": (curves.tolist(), expected),
        "none": (curves[:0], expected[:0]),
        "record": (vrx.Curve(curves[7]), expected[7]),
    }
    for name, (given, wanted) in cases.items():
        for threads in (1, 3, 0):
            got = vrx.tristimulus(given, threads=threads)
            assert got.shape == wanted.shape and np.array_equal(got, wanted), name


def test_single_precision_is_widened(curves):
    assert np.array_equal(vrx.tristimulus(curves.astype("f4")), vrx.tristimulus(curves.astype("f4").astype("f8")))


def test_targets(curves):
    out = np.empty((60, 3))
    assert vrx.tristimulus(curves, out=out) is not None and np.array_equal(out, vrx.tristimulus(curves))
    lab = vrx.lab(out)
    vrx.lab(out, out=out)
    assert np.array_equal(out, lab)
    for bad in (np.empty((60, 4)), np.empty((60, 3), "f4"), np.empty((3, 60)).T):
        with pytest.raises(ValueError, match="out"):
            vrx.tristimulus(curves, out=bad)
    backing = np.zeros(60 * 40)
    with pytest.raises(ValueError, match="lies over"):
        vrx.tristimulus(backing.reshape(60, 40), out=backing[: 60 * 3].reshape(60, 3))


def test_small_results_are_numbers():
    lamps = ["D65", "A", "F2", "F11"]
    unit = vrx.tristimulus(np.eye(40), lamps)
    weights = np.stack([vrx.weights(lamp) for lamp in lamps], axis=1)
    assert np.array_equal(unit, weights * 0.01) and np.any(unit == 1e-5)
    lab = vrx.lab([50.0, 50.0, 50.0], polar=True)
    near = lab.copy()
    near[0] += 1e-5
    components = vrx.delta(lab, near, "lab", components=True)
    assert np.isclose(components[[0, 6]], 1e-5).all() and not np.isnan(components).any()
    green, step = 100.0, 6.0
    for _ in range(2):  # towards a light beside the Planckian locus by 1e-5
        lights = np.linspace([95.05, green - step, 108.9], [95.05, green, 108.9], 15)
        green, step = np.interp(1e-5, vrx.color_temperature(lights)[:, 1], lights[:, 1]) + step / 1e3, step / 500
    assert abs(vrx.color_temperature([95.05, green - step / 2, 108.9])[1] - 1e-5) < 1e-8
    paper = vrx.densities(np.linspace(99.995, 100, 2001)[:, None] * np.ones(40), "e")
    assert np.any((paper > 9.99e-6) & (paper < 1.001e-5)) and not np.isnan(paper).any()
    assert np.isnan(vrx.munsell([1e-5] * 3)).all() and not np.isnan(vrx.judge([50.0] * 40, [50.00001] * 40, tolerance=1).totals).any()
    assert np.isnan(vrx.delta([50.0] * 3, [51.0] * 3, system="fmc2", components=True)).tolist() == [
        False, False, False, True, False, True, False]


def test_nan_stays_nan(curves):
    torn = curves[3].copy()
    torn[12] = np.nan
    assert np.isnan(vrx.strength(torn, curves)).all() and np.isnan(vrx.strength(curves[3], torn))
    assert np.isnan(vrx.ks(torn)).tolist() == (np.arange(40) == 12).tolist()
    assert not np.isnan(vrx.strength(torn, curves, band=(600, 700))).any()


def test_grades_appearance_and_adaptation(curves):
    xyz = vrx.tristimulus(curves, "A", 2)
    look = vrx.appearance(xyz, "A", 2)
    assert np.allclose(vrx.xyz_from_appearance(look[:, :3], "A", 2), xyz, atol=1e-9)
    assert np.allclose(vrx.adapt(vrx.white_point("A", 2), "A", "D65", 2), vrx.white_point("D65", 2))
    assert np.isnan(vrx.appearance([1e-5] * 3)).all()
    grey = [60.0, 0.0, 0.0]
    assert abs(vrx.grade(grey, [46.4, 0.0, 0.0]) - 1.0) < 1e-9
    assert vrx.grade(grey, [51.5, 0.0, 0.0], "staining", steps=True) == 3.0
    lab = vrx.lab(xyz, "A", 2)
    assert vrx.grade(lab[0], lab).shape == (60,) and vrx.grade(lab, lab[0])[0] == 5.0
    with pytest.raises(ValueError, match="space"):
        vrx.delta(grey, grey, system="cam16ucs")
    assert vrx.delta(xyz[0], xyz[0], system="cam16ucs", space="xyz", illuminant="A", observer=2) == 0.0


# CIE 15's formulas written once more, and every space back to where it came from; what a display can show.
@pytest.mark.parametrize("lamp, observer", [("D65", 10), ("A", 2), ("F11", 10)])
def test_spaces_and_back(lamp, observer, curves):
    xyz, white = vrx.tristimulus(np.vstack([curves, np.full(40, 0.4)]), lamp, observer), vrx.white_point(lamp, observer)
    cube = np.where(xyz / white > (6 / 29) ** 3, np.cbrt(xyz / white), xyz / white * (29 / 6) ** 2 / 3 + 4 / 29)
    lightness = 116 * cube[:, 1] - 16
    lab = np.stack([lightness, 500 * (cube[:, 0] - cube[:, 1]), 200 * (cube[:, 1] - cube[:, 2])], axis=1)

    def chromaticity(values):
        return values[..., :2] * [4, 9] / (values @ [1, 15, 3])[..., None]

    uv = 13 * lightness[:, None] * (chromaticity(xyz) - chromaticity(white))
    root = np.sqrt(xyz[:, 1] / white[1])
    for there, back, expected in ((vrx.lab, vrx.xyz_from_lab, lab), (vrx.luv, vrx.xyz_from_luv, np.column_stack([lightness, uv])),
                                  (vrx.hunter, vrx.xyz_from_hunter, 100 * root[:, None])):
        found = there(xyz, lamp, observer)
        width = expected.shape[1]
        assert np.allclose(found[:, :width], expected, rtol=0, atol=2e-4), there
        assert np.allclose(back(found, lamp, observer), xyz, rtol=1e-11, atol=1e-6), back  # 7.787 where it is dark
        assert np.allclose(there(white, lamp, observer), [100, 0, 0], atol=1e-9), there
    assert vrx.in_gamut(white, lamp, observer) is True and (vrx.display_rgb(white, lamp, observer) >= 254).all()
    shown = vrx.in_gamut([white * 0.2, white * [0.1, 0.6, 0.05], white * 1.1], lamp, observer)
    assert shown.tolist() == [True, False, False]


# Half the light is 0.301, a tint of half paper and half black 50 / 0.99; the red chip of the renotation; verdicts by hand.
def test_figures():
    assert np.allclose(vrx.densities(np.full((2, 3, 40), 50.0), "e"), 0.30102999566)
    assert vrx.densities(np.full(40, 0.0)).shape == (4,) and np.isnan(vrx.densities(np.zeros(40))).all()
    assert abs(vrx.tone_value(0.0, 0.30102999566, 2.0) - 50 / 0.99) < 1e-8 and np.isnan(vrx.tone_value(1, 1, 1))
    chip = vrx.xyz_from_munsell("5R 5/10")
    assert np.allclose(chip[:2] / chip.sum(), [0.4747, 0.3227])
    assert np.allclose(vrx.munsell([chip, [0, 120, 0]])[0], [5, 5, 10, 0]) and np.isnan(vrx.munsell([0, 120, 0])).all()
    assert np.array_equal(vrx.xyz_from_munsell([5, 5, 10]), chip) and vrx.munsell_text(5, 5, 10) == "5R 5/10"
    assert vrx.fit_limit([1.4, 0.2, 1.0, 0.6], [False, True, False, True])[1:] == (0, 0)
    assert abs(vrx.stress([2, 1.5, 0.5], [0, 1, 0]) - 80.86) < 0.01 and vrx.readings_needed(0.3, 5, 0.2) == 18
    for call in (lambda: vrx.densities([50.0] * 40, "x"), lambda: vrx.xyz_from_munsell("5X 5/10"),
                 lambda: vrx.fit_limit([1.0], []), lambda: vrx.fit_limit([-1.0], [True]), lambda: vrx.fit_limit([0.4, 1.0], [True, True]),
                 lambda: vrx.inconstancy([50.0] * 40, "D65", "D65"), lambda: vrx.metamerism([50.0] * 40, [50.0] * 40, "A", "A"),
                 lambda: vrx.readings_needed(0.3, 1, 0.2)):
        with pytest.raises(ValueError):
            call()


# Illuminant A and its radiator; Ra of CIE 15 for the perfect reference; nominal parameters fitted again; a reading of 98 %.
def test_single_figures(curves):
    nm = np.arange(380, 785, 5)
    planck = nm ** -5.0 / np.expm1(1.4388e7 / (2856 * nm))
    lamp = vrx.color_rendering(nm, planck)
    assert abs(lamp["cct"] - 2856) < 1 and np.allclose(lamp["R"], 100, atol=0.05) and lamp["reference_distance"] < 1e-5
    assert np.isnan(vrx.color_rendering(nm, np.where(nm == 530, 1.0, 0.0))["R"]).all()
    assert np.allclose(vrx.color_temperature([vrx.white_point("A", 2), [1e-5] * 3])[0], [2855.5, 0], atol=1)
    assert np.isnan(vrx.dominant_wavelength(vrx.white_point())).all() and vrx.dominant_wavelength([[40, 30, 10]] * 3).shape == (3, 2)
    drift = vrx.inconstancy(curves[:5], "D65", "A", system="cmc", l=2, c=1)
    assert drift.shape == (5,) and (drift >= 0).all() and np.isnan(vrx.inconstancy(np.full(40, 1e-5)))
    assert vrx.is_cie_white([vrx.white_point(), [19, 20, 21]]).tolist() == [True, False]
    whites = [[84, 88, 92], [84, 87, 96], [83, 86, 101]]
    nominal = vrx.ganz_griesser(whites)
    assert np.allclose(vrx.ganz_griesser(whites, vrx.fit_ganz_griesser(whites, nominal[:, 0], nominal[:, 1])), nominal)
    factors = vrx.fit_correction(curves, 0.98 * curves, ["scale"])
    assert np.allclose(factors[:, 1], 1 / 0.98 - 1) and np.allclose(vrx.corrected(0.98 * curves, factors), curves)
    with pytest.raises(ValueError, match="tile 0 looks like tile 1"):  # exchanged tiles
        vrx.fit_correction(curves[:6], curves[[1, 0, 2, 3, 4, 5]], ["scale"])
    for call in (lambda: vrx.fit_correction(curves, curves, ["zeal"]), lambda: vrx.fit_correction(curves[:2], curves[:2], ["scale"]), lambda: vrx.corrected(curves, factors[1:]),
                 lambda: vrx.fit_ganz_griesser(whites[:2], [60, 90]),
                 lambda: vrx.fit_ganz_griesser(whites, [130, 90, 60]), lambda: vrx.color_rendering(nm[:9], planck[:9]),
                 lambda: vrx.ganz_griesser(whites, [1, 2])):
        with pytest.raises(ValueError):
            call()


def test_unset_is_nan():
    unset = np.full(40, 1e-5)
    assert np.isnan(vrx.tristimulus(unset)).all()
    judged = vrx.judge(np.full(40, 50.0), [unset, np.full(40, np.nan)], "D65", tolerance=1)
    assert np.isnan(judged.totals).all() and (judged.overall == vrx.FAIL).all()
    assert np.isnan(vrx.delta((np.nan,) * 3, (50, 0, 0)))


@pytest.mark.parametrize("call, error, words", [
    (lambda: vrx.tristimulus(np.zeros((2, 39))), ValueError, ["curves", "(..., 40)", "(2, 39)"]),
    (lambda: vrx.tristimulus("text"), TypeError, ["curves"]),
    (lambda: vrx.tristimulus(np.zeros(40), "D66"), ValueError, ["illuminant", "D66"]),
    (lambda: vrx.tristimulus(np.zeros(40), "D65", 5), ValueError, ["observer", "5"]),
    (lambda: vrx.tristimulus(np.zeros(40), threads=-1), ValueError, ["threads"]),
    (lambda: vrx.delta(np.zeros((3, 3)), np.zeros((2, 3))), ValueError, ["standard", "sample", "(3,)", "(2,)"]),
    (lambda: vrx.delta((0, 0, 0), (0, 0, 0), "cie1994"), ValueError, ["system", "cie1994"]),
    (lambda: vrx.delta((0, 0, 0), (0, 0, 0), "cmc", kL=2), TypeError, ["kL", "l, c"]),
    (lambda: vrx.delta((0, 0, 0), (0, 0, 0), "fmc2", space="lab"), ValueError, ["space"]),
    (lambda: vrx.judge(np.zeros(40), np.zeros((2, 40)), system="fmc2"), ValueError, ["tolerance"]),
    (lambda: vrx.nearest(np.zeros((2, 3)), np.zeros((2, 3)), illuminant=["D65", "A"]), ValueError, ["illuminant"]),
    (lambda: vrx.strength(np.zeros(40), np.zeros(40), band=(700, 400)), ValueError, ["band"]),
    (lambda: vrx.Curve(np.zeros(39)), ValueError, ["(..., 40)"]),
    (lambda: vrx.Curve(np.zeros((2, 40))), ValueError, ["(40,)"]),
])
def test_refusals_name_the_argument(call, error, words):
    with pytest.raises(error) as refused:
        call()
    assert all(word in str(refused.value) for word in words), str(refused.value)


def test_leading_axes_broadcast(curves):
    lab = vrx.lab(vrx.tristimulus(curves))
    rows, columns = lab[:3].reshape(3, 1, 3), lab[10:14].reshape(1, 4, 3)
    both = [np.ascontiguousarray(side) for side in np.broadcast_arrays(rows, columns)]
    for call in (vrx.delta, lambda a, b: vrx.delta(a, b, "cmc", components=True), lambda a, b: vrx.delta(a, b, "lab", space="xyz"),
                 vrx.grade):
        assert np.array_equal(call(rows, columns), call(*both), equal_nan=True)
        assert np.array_equal(call(lab, lab[:1]), call(lab, lab[0]), equal_nan=True)
    standards, samples = curves[:3].reshape(3, 1, 40), curves[10:14].reshape(1, 4, 40)
    assert np.array_equal(vrx.strength(standards, samples)[2, 1], vrx.strength(curves[2], curves[11]))
    for precision in ("f8", "f4"):
        judged = vrx.judge(standards.astype(precision), samples.astype(precision), ["D65", "A"], tolerance=20)
        for k in range(3):
            one = vrx.judge(curves[k].astype(precision), curves[10:14].astype(precision), ["D65", "A"], tolerance=20)
            assert np.array_equal(judged.differences[k], one.differences) and np.array_equal(judged.verdicts[k], one.verdicts)
            assert np.array_equal(judged.overall[k], one.overall) and list(judged.words[k, :, 1]) == list(one.words[:, 1])
    assert len(judged.frame()) == 12 and vrx.judge(curves[:4], curves[5], "D65").verdicts.shape == (4, 1)
    large = vrx.delta(lab[:50, None], np.tile(lab, (100, 1))[None])  # more than a block
    assert np.array_equal(large[49, 5990:], vrx.delta(lab[49], lab[50:]))


def test_masks_go_through(curves):
    given = np.ma.masked_array(curves, mask=np.zeros(curves.shape, bool))
    given[3, 7] = given[5] = np.ma.masked
    rows, lab = np.isin(np.arange(60), [3, 5]), vrx.lab(vrx.tristimulus(curves))
    masked_lab = vrx.lab(vrx.tristimulus(given, ["D65", "A"]))[:, 0]
    judged = vrx.judge(given[:10], given[0], "D65")
    results = {"lab": (masked_lab, lab), "ks": (vrx.ks(given), vrx.ks(curves)), "delta": (vrx.delta(lab, masked_lab), vrx.delta(lab, lab)),
               "strength": (vrx.strength(curves[0], given), vrx.strength(curves[0], curves)),
               "rgb": (vrx.display_rgb(masked_lab), vrx.display_rgb(lab)),
               "resampled": (vrx.resample(given[:, :31], range(400, 710, 10)), vrx.resample(curves[:, :31], range(400, 710, 10))),
               "nearest": (vrx.nearest(given, curves, 1)[0], np.arange(60)[:, None])}
    for name, (result, plain) in results.items():
        assert isinstance(result, np.ma.MaskedArray) and np.array_equal(result[~rows], plain[~rows]), name
        assert np.array_equal(np.ma.getmaskarray(result), np.broadcast_to(rows.reshape(60, *[1] * (plain.ndim - 1)), plain.shape)), name
    assert judged.overall.mask.tolist() == rows[:10].tolist() and judged.frame()["overall"][3] == ""
    assert "0 pass" not in repr(judged) and vrx.delta(masked_lab[3], lab[0]) is np.ma.masked
    many = vrx.judge(given[:6], curves[:9], "D65", of=[0, 3, 5, 1, 2, 4, 0, 0, 0])
    assert np.flatnonzero(many.overall.mask).tolist() == [1, 2]


def test_numbers_of_numpy(curves):
    judged = vrx.judge(curves[0], curves[:3], np.int64(0), np.int8(10), tolerance=np.float32(1.5), warning=np.float16(0.75),
                       system=np.str_("cmc"), l=np.float32(2), c=np.int64(1), threads=np.int32(1), geometry=np.int64(12))
    assert np.array_equal(judged.verdicts, vrx.judge(curves[0], curves[:3], "D65", l=2, c=1, tolerance=np.array(1.5)).verdicts)
    assert np.array_equal(vrx.tristimulus(curves, np.array(["D65", "A"]), np.uint8(2)), vrx.tristimulus(curves, ["D65", "A"], 2))
    for given in (curves.astype(complex), curves > 50, curves.astype("U8"), curves.astype("M8[s]"), [curves[0], "text"]):
        with pytest.raises(TypeError, match="^curves: numbers are expected, not (an array of )?[a-z<]"):
            vrx.ks(given)


def test_results_go_where_they_are_told(curves):
    xyz, lab = vrx.tristimulus(curves), vrx.lab(vrx.tristimulus(curves))
    calls = {"ks": (40, lambda **o: vrx.ks(curves, **o)), "densities": (4, lambda **o: vrx.densities(curves, **o)),
             "strength": (None, lambda **o: vrx.strength(curves[0], curves, **o)), "adapt": (3, lambda **o: vrx.adapt(xyz, "A", **o)),
             "inconstancy": (None, lambda **o: vrx.inconstancy(curves, **o)), "grade": (None, lambda **o: vrx.grade(lab[0], lab, **o)),
             "appearance": (6, lambda **o: vrx.appearance(xyz, **o)), "xyz": (3, lambda **o: vrx.xyz_from_appearance(lab, **o)),
             "corrected": (40, lambda **o: vrx.corrected(curves, np.full((40, 5), 0.01), **o)),
             "resample": (40, lambda **o: vrx.resample(curves[:, ::-1], range(750, 350, -10), **o))}
    for name, (width, call) in calls.items():
        out = np.empty((60,) if width is None else (60, width))
        assert call(out=out) is out and np.array_equal(out, call(), equal_nan=True), name
        for bad in (out[1:], np.ma.masked_array(out)):
            with pytest.raises(ValueError, match="out"):
                call(out=bad)
    with pytest.raises(ValueError, match="lies over"):
        vrx.ks(curves, out=curves)
