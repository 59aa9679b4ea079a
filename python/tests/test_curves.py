"""Curves at any wavelengths: arrays with wavelengths beside them, and tables with labels."""

import pickle

import numpy as np
import pytest

import vrxmath as vrx

WAVELENGTHS = {
    "31": np.arange(400, 710, 10), "36": np.arange(380, 740, 10), "81 at 5 nm": np.arange(380, 785, 5),
    "1 nm": np.arange(360, 781), "descending": np.arange(730, 370, -10),
    "irregular": np.array([703.1, 690, 672.5, 655, 640.25, 622, 610, 600, 588, 570, 555.5, 540, 522, 505, 490, 471, 455, 440, 426, 413, 399.2])}


def measured(curves, nm):
    """Smooth curves at other wavelengths."""
    return np.array([np.interp(nm, np.arange(360, 760, 10), row) + 0.01 * (nm % 7) for row in curves])


@pytest.mark.parametrize("nm", WAVELENGTHS.values(), ids=WAVELENGTHS)
def test_arrays_are_what_the_tool_makes_of_a_file(nm, curves, vrx_tool, tmp_path):
    values, path = measured(curves[:7], nm), tmp_path / "file.csv"
    rows = [["id", *map(str, nm.tolist())], *([f"C{i}", *map(repr, row)] for i, row in enumerate(values.tolist()))]
    path.write_text("\n".join(map(",".join, rows)) + "\n")
    told = vrx_tool("color", path, "--illuminants", "D65,A")
    xyz = np.array([[float(row[name]) for name in "XYZ"] for row in told]).reshape(7, 2, 3)
    assert np.array_equal(vrx.tristimulus(values, ["D65", "A"], wavelengths=nm), xyz)
    grid = vrx.read(path).curves
    assert np.array_equal(vrx.resample(values.reshape(7, 1, -1), nm)[:, 0], grid)
    used_as = [row["value"] for row in vrx_tool("info", path) if row["what"] == "used as"]
    assert list(vrx.judge(grid[0], grid, tolerance=1).notes) == []
    assert list(vrx.judge(values[0], values, tolerance=1, wavelengths=nm).notes) == \
        [f"{name}: {used_as[0]}" for name in ("standard", "samples")]


def test_every_function_takes_wavelengths(curves):
    nm = WAVELENGTHS["81 at 5 nm"]
    values, out = measured(curves, nm), np.empty((60, 40))
    grid = vrx.resample(values, nm, out=out)
    assert grid is out
    calls = {
        "densities": lambda c, **at: vrx.densities(c, **at), "ks": lambda c, **at: vrx.ks(c, **at),
        "strength": lambda c, **at: vrx.strength(c[0], c, **at), "inconstancy": lambda c, **at: vrx.inconstancy(c, **at),
        "nearest": lambda c, **at: vrx.nearest(c[:4], c, 2, **at)[1],
        "judge": lambda c, **at: vrx.judge(c[0], c, tolerance=1, **at).differences,
        "fit_correction": lambda c, **at: vrx.fit_correction(c, c + 1, **at),
        "corrected": lambda c, **at: vrx.corrected(c, np.full((40, 5), 0.01), **at),
        "Curve": lambda c, **at: vrx.Curve(c[3], "x", **at).values,
        "Standard": lambda c, **at: vrx.Standard(vrx.Curve(grid[0])).judge(c, **at).differences}
    for name, call in calls.items():
        assert np.array_equal(call(values, wavelengths=nm), call(grid)), name
    assert np.array_equal(vrx.tristimulus(values.astype("f4"), wavelengths=nm), vrx.tristimulus(vrx.resample(values.astype("f4"), nm)))
    unset = vrx.resample(np.full((2, 31), 1e-5), WAVELENGTHS["31"])
    assert np.isnan(unset).all()


@pytest.mark.parametrize("nm, words", [
    ([400, 410], "fewer than 3"), (np.arange(0.4, 0.71, 0.01), "100 to 10000 nm"), ([[400, 410]], "a sequence"), (400, "a sequence"),
    (np.arange(400, 720, 40), "40 nm apart"), ([400, 410, 420, 430, 470, 480], "gap from 430 nm to 470 nm"),
    ([400, 410, 410, 420], "410 stands twice"), (np.arange(400, 700, 10), r"expected shape \(..., 30\), got \(2, 31\)")])
def test_wavelengths_of_no_use(nm, words):
    values = np.ones((2, 31 if np.size(nm) == 30 else np.size(nm)))
    with pytest.raises(ValueError, match=words):
        vrx.ks(values, wavelengths=nm)


def test_tables_are_taken_by_their_labels(curves):
    pandas = pytest.importorskip("pandas")
    grid = list(range(360, 760, 10))
    expected = vrx.tristimulus(curves, "D65")
    frame = pandas.DataFrame(curves, columns=grid)
    named = frame.iloc[:, ::-1].rename(columns="R{}".format).assign(name="x")
    unlabelled = pandas.DataFrame(np.asarray(curves))
    for table in (frame, frame.iloc[:, ::-1], named, unlabelled):
        assert np.array_equal(vrx.tristimulus(table, "D65"), expected)
        assert np.array_equal(vrx.densities(table), vrx.densities(curves))
    assert np.array_equal(vrx.judge(frame.iloc[0, ::-1], named).differences[0], np.zeros((3, 7)))
    assert np.array_equal(vrx.Curve(frame.iloc[1, ::-1]).values, curves[1])
    short = vrx.tristimulus(frame.loc[:, 400:700], "D65")
    assert np.array_equal(short, vrx.tristimulus(vrx.resample(curves[:, 4:35], grid[4:35]), "D65"))
    with pytest.warns(vrx.MeasurementWarning, match="do not cover all of 400 to 700 nm"):
        vrx.ks(frame.loc[:, 420:680])
    with pytest.raises(TypeError, match="no number"):
        vrx.ks(frame.astype(object).replace(curves[0, 0], "12,5"))
    gap = frame.iloc[:3].astype("Float64")
    gap.iloc[1, 0] = pandas.NA
    assert np.isnan(vrx.tristimulus(gap)).any(axis=1).tolist() == [False, True, False]
    for columns, words in ((["a"] * 40, "no label is a wavelength.*'a', 'a'"), ([400, "400 nm", *grid[2:]], "stands twice"),
                           ([*grid[:39], "75O"], "no wavelengths: '75O'")):
        with pytest.raises(ValueError, match=words):
            vrx.tristimulus(pandas.DataFrame(curves, columns=columns))


def test_resample_against_known_curves():
    nm = np.concatenate([np.arange(700, 600, -9.7), np.arange(600, 445, -13), [444, 430, 421.5, 411, 400]])
    cubic = lambda x: 1e-6 * (x - 500.0) ** 3 - 1e-4 * (x - 400.0) ** 2 + 30  # a cubic comes back exactly between the ends
    curve = vrx.resample(np.stack([cubic(nm), nm]), nm)
    inside = np.arange(430, 650, 10)
    assert np.allclose(curve[0, 7:29], cubic(inside), atol=1e-12)
    assert np.allclose(curve[1, 7:29], inside, atol=1e-12)
    assert (curve[1, :4] == 400).all() and (curve[1, 34:] == 700).all()


def test_labels_and_wavelengths_together(curves):
    pandas = pytest.importorskip("pandas")
    nm, grid = WAVELENGTHS["descending"], np.arange(360, 760, 10)
    values = measured(curves[:4], nm)
    expected = vrx.tristimulus(values, wavelengths=nm)
    bands = pandas.DataFrame(values, columns=[f"band {i}" for i in range(len(nm))])
    more = pandas.DataFrame(values, columns=nm, index=list("abcd")).assign(Gloss=3.0, name="x")
    for table in (bands, more, pandas.DataFrame(values)):
        assert np.array_equal(vrx.tristimulus(table, wavelengths=nm), expected)
    with pytest.raises(ValueError, match="curves: it says its own wavelengths"):
        vrx.tristimulus(more, wavelengths=nm[::-1])
    judged = vrx.judge(curves[0], pandas.DataFrame(curves[:4], columns=grid, index=list("abcd")), "D65", tolerance=1)
    assert judged.ids == tuple("abcd") and list(judged.frame().index) == list("abcd")
    colors = pandas.DataFrame({"b*": [3.0], "name": "x", "a*": [2.0], "L*": [50.0]})
    assert vrx._core.curves(colors, or_colors=True).tolist() == [[50, 2, 3]]


def test_curve_arrays(curves, curve_file):
    nm = WAVELENGTHS["descending"]
    values, names = measured(curves[:5], nm), list("vwxyz")
    array = vrx.CurveArray(values, nm, names, ["15deg"] * 5)
    assert (np.diff(array.wavelengths) > 0).all() and np.array_equal(array.values, values[:, ::-1])
    assert not array.values.flags.writeable and array.notes[0].startswith("380 to 730 nm at 10 nm: completed down")
    expected = vrx.tristimulus(values, wavelengths=nm)
    for index, ids in ((slice(1, 4), "wxy"), (2, "x"), ([4, 0], "zv"), (np.arange(5) > 2, "yz"), ("w", "w")):
        part = array[index]
        rows = [names.index(one) for one in ids]
        assert part.ids == tuple(ids) and part.geometries == ("15deg",) * len(ids)
        assert np.array_equal(np.atleast_2d(vrx.tristimulus(part)), expected[rows])
    assert vrx.CurveArray.concatenate([array[:2], array["x"], array[3:]]) == array == pickle.loads(pickle.dumps(array)) != array[::-1]
    assert np.array_equal(vrx.tristimulus(array.on_grid().values), expected) and array.on_grid().notes == ()
    judged = vrx.judge(array, array[::-1], "D65", system="din6175")
    at_15 = vrx.judge(array.on_grid().values, array[::-1].on_grid().values, "D65", system="din6175", geometry="15deg")
    assert np.array_equal(judged.differences, at_15.differences) and judged.ids == tuple("zyxwv")
    assert vrx.nearest(array, array.on_grid(), 1)[0][:, 0].tolist() == [0, 1, 2, 3, 4]
    read = vrx.read(curve_file).curve_array
    assert read.ids[59] == "C59" and np.array_equal(read.values, curves)
    assert np.array_equal(vrx.Curve(array["y"]).values, vrx.resample(array)[3])
    for call, error, words in ((lambda: array[0, 1], IndexError, ""), (lambda: array["u"], KeyError, "no curves"),
                               (lambda: vrx.CurveArray(values, nm, ["a"]), ValueError, "ids: one for each of 5"),
                               (lambda: vrx.CurveArray.concatenate([array, read]), ValueError, "wavelengths differ"),
                               (lambda: vrx.ks(array, wavelengths=nm, specular="none"), ValueError, "says its own wavelengths")):
        with pytest.raises(error, match=words):
            call()
