"""The results are those of the command-line tool, to the last bit: its csv output has every digit."""

import os
import re
import subprocess

import numpy as np
import pytest

import vrxmath as vrx


def columns(rows, names):
    return np.array([[float(row[name]) if row[name] else np.nan for name in names] for row in rows])


def test_colors(curves, curve_file, vrx_tool):
    rows = vrx_tool("color", curve_file, "--illuminants", "D65,A,CWF", "--observer", "2")
    lamps = ["D65", "A", "CWF"]
    xyz = vrx.tristimulus(curves, lamps, 2)
    assert np.array_equal(columns(rows, "XYZ").reshape(60, 3, 3), xyz)
    for i, lamp in enumerate(lamps):
        own = rows[i::3]
        assert np.array_equal(columns(own, "xy"), vrx.chromaticity(xyz[:, i]))
        assert np.array_equal(columns(own, ["L", "a", "b", "C", "h"]), vrx.lab(xyz[:, i], lamp, 2, polar=True))
        assert np.array_equal(columns(own, ["Lu", "u", "v", "Cuv", "huv"]), vrx.luv(xyz[:, i], lamp, 2, polar=True))
        assert np.array_equal(columns(own, ["LH", "aH", "bH"]), vrx.hunter(xyz[:, i], lamp, 2))


@pytest.mark.parametrize("interval", [5, 1])
def test_fine_sums(interval, curves, vrx_tool, tmp_path):
    nm = np.arange(380, 791)
    fine = np.array([np.interp(nm, np.arange(360, 760, 10), row) + np.sin(nm / 3) for row in curves[:20]])
    path = tmp_path / "fine.csv"
    path.write_text("\n".join(",".join(map(repr, row)) for row in [["id", *nm.tolist()], *([i, *r] for i, r in enumerate(fine.tolist()))]))
    options = ["--illuminants", "D65,T84", "--interval", interval]
    rows = vrx_tool("color", path, *options)
    xyz = vrx.tristimulus(fine, ["D65", "T84"], wavelengths=nm, interval=interval)
    assert {row["interval"] for row in rows} == {str(interval)} and np.array_equal(columns(rows, "XYZ").reshape(20, 2, 3), xyz)
    rows = vrx_tool("judge", path, path, "--standard-id", "3", "--system", "cie2000", *options)
    array = vrx.CurveArray(fine, nm)
    judged = vrx.judge(array[3], array, ["D65", "T84"], system="cie2000", interval=interval)
    assert np.array_equal(columns(rows, ["dE00"]).reshape(20, 2), judged.totals) and judged.interval == interval
    pairs = vrx.judge(array[[3, 4]].values[:, None], fine[None], "T84", system="cie2000", interval=interval, wavelengths=nm)
    assert np.array_equal(pairs.totals[0, :, 0], judged.totals[:, 1])
    weights = vrx.weights("D65", interval=interval)
    whole = np.full(len(weights), 50.0, dtype=np.float32)
    assert np.allclose(vrx.tristimulus(whole, interval=interval), weights.sum(axis=0) / 2, rtol=1e-14)
    for wrong in ({"wavelengths": range(400, 710, 10)}, {"interval": 2}, {}):
        with pytest.raises(ValueError, match="too coarse|10, 5 or 1|shape"):
            vrx.tristimulus(np.ones(31), **{"interval": interval, **wrong})


@pytest.mark.parametrize("system, parameters", [
    ("lab", {}), ("cmc", {"l": 1.5, "c": 1.2}), ("hunter", {}), ("fmc2", {}), ("cie94", {"kL": 2}), ("lch", {}),
    ("luv", {}), ("xyz", {}), ("gepqs2", {}), ("audi", {}), ("din99", {"kE": 1.1}), ("cie2000", {"kC": 1.3}),
    ("din6175", {"gL": 1.2})])
def test_judgements(system, parameters, curves, curve_file, vrx_tool):
    defaults = vrx.systems()[system]
    given = {**defaults, **parameters}
    options = ["--parameters", ",".join(str(value) for value in given.values())] if given else []
    rows = vrx_tool("judge", curve_file, curve_file, "--standard-id", "C3", "--illuminants", "D65,A", "--system", system,
                    "--tolerance", "12", *options)
    judged = vrx.judge(curves[3], curves, ["D65", "A"], system=system, tolerance=12, threads=2, **parameters)
    names = list(rows[0])[5:list(rows[0]).index("word0")]  # the elements that the system shows, the total last
    shown = columns(rows, names).reshape(60, 2, len(names))
    assert np.array_equal(shown[..., -1], judged.totals, equal_nan=True)
    assert np.array_equal(shown[..., :2], judged.differences[..., :2], equal_nan=True)
    assert np.array_equal(columns(rows, ["excess"]).reshape(60, 2), judged.excess, equal_nan=True)
    verdicts = np.array([["fail", "warning", "pass"].index(row["verdict"]) for row in rows])
    assert np.array_equal(verdicts.reshape(60, 2), judged.verdicts)
    words = [", ".join(row[f"word{k}"] for k in range(3) if row[f"word{k}"].strip()) for row in rows]
    assert words == list(judged.words.ravel())
    assert set(np.unique(judged.overall)) <= {0, 1, 2} and len(judged) == 60


def test_defaults_are_the_library_s():
    import inspect

    from vrxmath import _core

    system, lamps, warning = _core.judge_defaults
    defaults = {name: p.default for name, p in inspect.signature(vrx.judge).parameters.items()}
    assert (defaults["system"], defaults["warning"], defaults["threads"]) == (system, warning, 0)
    lamps = [_core.illuminant_name(lamp) for lamp in lamps]
    for function in (vrx.judge, vrx.match, vrx.correct, vrx.correct_stock, vrx.use_leftovers, vrx.report, vrx.fit_tolerance, vrx.fit_limits):
        assert list(inspect.signature(function).parameters["illuminants"].default) == lamps, function
    assert list(vrx.Standard(vrx.Curve([42.0] * 40)).illuminants) == lamps


def test_standards_geometries_and_limits(curves, curve_file, vrx_tool, tmp_path):
    """Several standards, each with its limits and its angle, judge as one after the other."""
    of = np.arange(60) % 3
    boxes = [[[0.5 + k + j] * 7 for j in range(2)] for k in range(3)]
    many = vrx.judge(curves[:3], curves, ["D65", "A"], system="din6175", tolerance=boxes, geometry=["15deg", "45deg", "110deg"], of=of)
    for k, geometry in enumerate(("15deg", "45deg", "110deg")):
        one = vrx.judge(curves[k], curves[of == k], ["D65", "A"], system="din6175", tolerance=boxes[k], geometry=geometry)
        assert np.array_equal(one.differences, many.differences[of == k], equal_nan=True)
        assert np.array_equal(one.verdicts, many.verdicts[of == k]) and np.array_equal(one.broken, many.broken[of == k])
    pairs = vrx.judge(curves, curves[::-1], "D65", tolerance=1)
    assert np.array_equal(pairs.differences[5], vrx.judge(curves[5], curves[54], "D65", tolerance=1).differences[0])
    rows = vrx_tool("judge", curve_file, curve_file, "--standard-id", "C3", "--illuminants", "D65", "--ellipse", "--tolerance",
                    "9", "--verdict-numbers")
    ellipsoids = vrx.judge(curves[3], curves, "D65", ellipsoid="system", cf=9)
    assert np.array_equal(columns(rows, ["verdict"])[:, 0], ellipsoids.verdicts[:, 0])
    failed = ellipsoids.verdicts[:, 0] == vrx.FAIL
    assert failed.any() and set(ellipsoids.broken[failed, 0]) <= {4, 5} and (ellipsoids.excess[failed, 0] > 0).all()


@pytest.mark.parametrize("options, settings", [
    (["--grade", "change", "--least-grade", "2-3"], {"grade": "change", "least_grade": 2.5}),
    (["--most-inconstancy", "3", "--tolerance", "30"], {"most_inconstancy": 3, "tolerance": 30, "verdict": "total"})])
def test_limits_beside_the_difference(options, settings, curves, curve_file, vrx_tool):
    rows = vrx_tool("judge", curve_file, curve_file, "--standard-id", "C3", "--illuminants", "D65,A", "--verdict-numbers", *options)
    judged = vrx.judge(curves[3], curves, ["D65", "A"], **settings)
    assert np.array_equal(columns(rows, ["verdict"]).reshape(60, 2), judged.verdicts)
    assert np.array_equal(columns(rows, ["excess"]).reshape(60, 2), judged.excess, equal_nan=True)
    assert {7, 8} & set(judged.broken.ravel()) and judged.verdicts.max() == vrx.PASS


@pytest.mark.parametrize("settings, options, words", [
    ({"verdict": "box"}, ["--verdict", "box"], "limit"),
    ({"verdict": "box", "tolerance": [[1] * 7, [np.inf] * 6 + [1]]}, None, "limits of components"),
    ({"warning": 1.01}, ["--warning", "1.01"], "factor from 0 to 1"),
    ({"warning": -0.5}, ["--warning", "-0.5"], "factor from 0 to 1"),
    ({"grade": "change", "least_grade": 3.3}, ["--grade", "change", "--least-grade", "3.3"], "least.grade"),
    ({"least_grade": 3}, ["--least-grade", "3"], "grade"),
    ({"illuminants": ["D65", "A", "D65"]}, ["--illuminants", "D65,A,D65"], "D65 is named twice")])
def test_what_the_tool_refuses(settings, options, words, curves, curve_file):
    with pytest.raises(ValueError, match=words):
        vrx.judge(curves[3], curves, **{"illuminants": ["D65", "A"], **settings})
    if options is not None:
        told = subprocess.run([os.environ["VRX_TOOL"], "judge", curve_file, curve_file, "--standard-id", "C3", *options],
                              capture_output=True, text=True)
        assert told.returncode == 2 and re.search(words, told.stderr), told.stderr


def test_geometries_of_standard_and_samples(curves):
    """A sample without its surface against a standard with it is another colour, which no verdict tells."""
    standards = vrx.CurveArray(curves[:2], geometries=["SCI", "15deg"])
    for samples, of in ((["15as", "SCI"], None), (["SCI", "SCE"], [0, 0]), (["15deg"], [0])):
        with pytest.raises(ValueError, match="was measured with geometry"):
            vrx.judge(standards, vrx.CurveArray(curves[:len(samples)], geometries=samples), of=of)
    samples = vrx.CurveArray(curves[:3], geometries=["15\u00b0", "", "SCI"])
    judged = vrx.judge(standards, samples, of=[1, 1, 0])
    assert np.array_equal(judged.differences, vrx.judge(curves[:2], samples, of=[1, 1, 0]).differences, equal_nan=True)
    with pytest.warns(UserWarning, match="din6175 depends on the measuring angle") as told:
        partly = vrx.judge(vrx.CurveArray(curves[:2], geometries=["15deg", ""]), curves[2:4], system="din6175")
        assert told[0].filename == __file__
    known = vrx.judge(curves[:2], curves[2:4], system="din6175", geometry=["15deg", "45deg"])
    assert np.array_equal(partly.differences, known.differences, equal_nan=True)


def test_pairs_and_totals(curves):
    lab = vrx.lab(vrx.tristimulus(curves, "D65"), "D65")
    full = vrx.delta(lab, lab[::-1], "cmc", components=True, l=2, c=1)
    one_sample = vrx.delta(lab, lab[0], "cmc", components=True, l=2, c=1)
    assert np.array_equal(one_sample[:, 6], [vrx.delta(standard, lab[0], "cmc", l=2, c=1) for standard in lab])
    assert np.array_equal(full[:, 6], vrx.delta(lab, lab[::-1], "cmc", l=2, c=1, threads=2))
    xyz = vrx.tristimulus(curves, "A", 2)
    by_xyz = vrx.delta(xyz[0], xyz, "luv", space="xyz", illuminant="A", observer=2)
    assert np.array_equal(by_xyz, vrx.delta(vrx.luv(xyz[0], "A", 2), vrx.luv(xyz, "A", 2), "luv"))
    # Sharma, Wu and Dalal (2005), pairs 1, 7 and 25.
    for first, second, expected in (((50, 2.6772, -79.7751), (50, 0, -82.7485), 2.0425),
                                    ((50, 0, 0), (50, -1, 2), 2.3669),
                                    ((60.2574, -34.0099, 36.2677), (60.4626, -34.1751, 39.4387), 1.2644)):
        assert round(vrx.delta(first, second, "cie2000"), 4) == expected


def test_indices_and_strength(curves, curve_file, vrx_tool):
    rows = vrx_tool("index", curve_file, "--illuminants", "D65")
    xyz = vrx.tristimulus(curves, "D65")
    for form, recalculated in (("direct", False), ("recalculated", True)):
        for name, values in vrx.indices(xyz, "D65", recalculated=recalculated).items():
            own = [row for row in rows if row["form"] == form and row["index"].removesuffix(" (Recalc)") == name]
            assert np.array_equal(columns(own, ["value"])[:, 0], values, equal_nan=True), (form, name)
    rows = vrx_tool("index", curve_file, "--illuminants", "D65,A,CWF", "--standard", curve_file, "--standard-id", "C3")
    for lamp in ("A", "CWF"):
        own = [row for row in rows if row["illuminant"] == lamp and row["index"].startswith("Metamerism")]
        assert np.array_equal(columns(own, ["value"])[:, 0], vrx.metamerism(curves[3], curves, "D65", lamp))
    rows = vrx_tool("strength", curve_file, curve_file, "--standard-id", "C3", "--specular", "none")
    assert np.array_equal(columns(rows, ["ks"])[:, 0], vrx.strength(curves[3], curves, specular="none"))


@pytest.mark.parametrize("ending, form", [("csv", "CSV"), ("txt", "CGATS"), ("cxf", "CxF3"), ("json", "JSON")])
def test_files_of_every_form(ending, form, curves, tmp_path):
    source, path = tmp_path / "source.csv", tmp_path / f"file.{ending}"
    labs = vrx.lab(vrx.tristimulus(curves))
    with open(source, "w") as file:
        file.write(",".join(["id", "name", "geometry", "L", "a", "b", *map(str, range(360, 760, 10))]) + "\n")
        for i, row in enumerate(np.hstack([labs, curves])):
            file.write(f"{i},\"n, {i}\",45\u00b0," + ",".join(map(repr, map(float, row))) + "\n")
    subprocess.run([os.environ["VRX_TOOL"], "convert", source, path], check=True)
    read = vrx.read(path)
    assert (read.form, len(read), read.names[1], read.geometries[59]) == (form, 60, "n, 1", "45\u00b0")
    assert np.array_equal(read.curves, curves) and np.array_equal(read.lab, labs) and read.xyz is None
    frame = read.frame
    assert list(frame.columns[:6]) == ["name", "geometry", "L*", "a*", "b*", 360] and frame.loc["7", 750] == curves[7, 39]
    path.write_bytes(path.read_bytes()[:-30])
    with pytest.raises(ValueError, match="file.csv, line 61" if form == "CSV" else rf"\({form}\)"):
        vrx.read(path)


def test_blocks_are_the_file(curves, tmp_path):
    path = tmp_path / "many.csv"
    path.write_text("id,name," + ",".join(map(str, range(360, 760, 10))) + "\n" + "".join(
        f"{'x' * (i % 9)}{i},n{i}," + ",".join(map(str, row)) + "\n" for i, row in enumerate(curves.tolist())))
    whole, blocks = vrx.read(path), list(vrx.read_blocks(path, 7))
    assert [len(block) for block in blocks] == [7] * 8 + [4]
    assert [name for block in blocks for name in block.ids] == whole.ids and blocks[3].names == whole.names[21:28]
    assert np.array_equal(np.concatenate([block.curves for block in blocks]), whole.curves)
    path.write_text("id,400,410,420\n" + "".join(f"{i},0.5,0.6,0.7\n" for i in range(20)))
    blocks = vrx.read_blocks(path, 8)
    with pytest.raises(ValueError, match="scale"):  # at its end, whatever came before
        list(blocks)
    with pytest.raises(ValueError, match="rows"):
        next(vrx.read_blocks(path, 0))


def test_scale_is_asked_for(tmp_path):
    path = tmp_path / "dark.csv"
    path.write_text("id,400,410,420\na,0.5,1.03,0.011\n")
    with pytest.raises(ValueError, match='the largest is 1.03.*scale="fraction" or scale="percent"'):
        vrx.read(path)
    assert vrx.read(path, scale="percent").curves[0, 6] == 0.011
    assert vrx.read(path, scale="fraction").curves[0, 6] == vrx.read(path, fraction=True).curves[0, 6] == 1.1


def test_contrast_ratio(curves, tmp_path, vrx_tool):
    path = tmp_path / "drawdown.csv"
    path.write_text("id,geometry," + ",".join(map(str, range(360, 760, 10))) + "\n" + "".join(
        f"x,{backing}," + ",".join(map(str, curve)) + "\n" for backing, curve in zip(("Over Black", "Over White"), curves.tolist())))
    rows = vrx_tool("index", path, "--illuminants", "D65")
    assert float(rows[-1]["value"]) == vrx.contrast_ratio(*vrx.tristimulus(curves[:2]))


def test_nearest(curves, rng=np.random.default_rng(4)):
    library = curves[rng.permutation(60)]
    index, distance = vrx.nearest(curves[:5], library, 3, illuminant=["D65", "A"], system="cmc")
    for i in range(5):
        worst = np.max([vrx.delta(vrx.lab(vrx.tristimulus(library, lamp), lamp), vrx.lab(vrx.tristimulus(curves[i], lamp), lamp),
                                  "cmc") for lamp in ("D65", "A")], axis=0)
        assert list(index[i]) == list(np.argsort(worst, kind="stable")[:3])
        assert np.array_equal(distance[i], np.sort(worst)[:3])
    for colors in (curves[:5], vrx.lab(vrx.tristimulus(curves[:5]))):
        near = vrx.nearest(colors, colors, 2, illuminant=["D65", "A", "CWF"] if colors is curves[:5] else None)
        assert near[0].tolist() == vrx.nearest(colors, colors, 2)[0].tolist()
    with pytest.raises(ValueError, match="D65 is named twice"):
        vrx.nearest(curves, curves, illuminant=["D65", "D65"])


def test_nearest_of_a_geometry(curves, vrx_tool, tmp_path):
    def write(name, geometries):
        at = vrx.CurveArray(curves[:len(geometries)], None, [f"c{i}" for i in range(len(geometries))], geometries)
        lines = ["id,geometry," + ",".join(map(str, range(360, 760, 10)))]
        lines += [f"{one},{geometry}," + ",".join(map(repr, curve)) for one, geometry, curve in zip(at.ids, geometries, curves.tolist())]
        (tmp_path / name).write_text("\n".join(lines) + "\n")
        return at

    samples = write("samples.csv", ["SCI", "15deg", "", "SCE", "45/0"])
    standards = write("standards.csv", ["sci", "SCE", "45deg", "15deg", "SCI", "", "15deg"])
    for system, options in (("cie2000", {}), ("audi", {"angle": 25})):
        index, distance = vrx.nearest(samples, standards, 4, system=system, **options)
        rows = vrx_tool("search", tmp_path / "samples.csv", tmp_path / "standards.csv", "--count", "4", "--system", system,
                        *(["--angle", "25"] if options else []))
        told = [(row["sample"], row["standard"], float(row["difference"])) for row in rows]
        assert told == [(samples.ids[i], standards.ids[index[i, k]], distance[i, k])
                        for i in range(5) for k in range(4) if index[i, k] >= 0], system
    assert set(index[0]) == {0, 4, 5, -1} and set(index[4]) == {5, -1}
    with pytest.warns(UserWarning, match="no standard is of the geometry of 2 of them, and none of an unknown one: 1, 4$"):
        index, distance = vrx.nearest(samples, standards[:2], 1)
    assert index[[0, 1, 3, 4], 0].tolist() == [0, -1, 1, -1]
    assert np.isnan(distance[[1, 4]]).all() and vrx.nearest(samples.values, standards, 1)[0].min() >= 0


def test_measured_lamp(curves):
    lamp = vrx.Illuminant("FLAT", np.arange(380, 785, 5), np.ones(81), interpolation="linear")
    assert vrx.Illuminant("FLAT", np.arange(380, 785, 5), np.ones(81), interpolation="linear").name == "FLAT"
    assert abs(vrx.white_point(lamp, 2)[1] - 100) < 1e-9
    twice = vrx.Illuminant("FLAT", np.arange(380, 785, 5), np.full(81, 2.0), interpolation="linear")
    assert np.allclose(vrx.tristimulus(curves, lamp), vrx.tristimulus(curves, twice), rtol=1e-12)
    with pytest.raises(ValueError, match="FLAT"):
        vrx.tristimulus(curves, "FLAT")  # a name finds the built-in ones alone
