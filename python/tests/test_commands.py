"""What has a command of the tool has its function, with the tool's numbers."""

import os
import re
import subprocess
import warnings

import numpy as np
import pytest

import vrxmath as vrx

NM = range(360, 760, 10)


def numbers(rows, *names):
    """Columns of csv rows as an array; NaN for an empty field."""
    return np.array([[float(row[name]) if row[name] else np.nan for name in names] for row in rows])


@pytest.fixture(scope="module")
def readings(curves, tmp_path_factory):
    """Five samples, read one to nine times, in turns; a reading of C1 lies apart."""
    rng = np.random.default_rng(7)
    of = [f"C{i % 5}" for i in range(25) if i % 5 or i < 5] + ["C1"] * 4
    rows = np.array([curves[int(id[1])] + rng.normal(0, 0.02, 40) for id in of])
    rows[-1] += 2
    path = tmp_path_factory.mktemp("readings") / "readings.csv"
    write_csv(path, of, rows)
    return path, of, rows


def write_csv(path, ids, rows, heads=NM):
    path.write_text("\n".join([",".join(["id", *map(str, heads)]), *(f"{id}," + ",".join(map(repr, row)) for id, row in
                                                                    zip(ids, np.asarray(rows).tolist()))]) + "\n")


@pytest.mark.parametrize("options, given", [
    ([], {}), (["--illuminants", "A", "--observer", "2"], {"illuminant": "A", "observer": 2}),
    (["--limit", "0.3", "--within", "0.01", "--certainty", "99"], {"limit": 0.3, "within": 0.01, "certainty": 0.99})])
def test_averages(readings, vrx_tool, options, given):
    path, of, rows = readings
    found, of_file = vrx.average(rows, of, **given), vrx.average(vrx.read(path), **given)
    of_curves = vrx.average(vrx.read(path).curve_array, **given)
    assert of_curves.ids == found.ids and np.array_equal(of_curves.means, found.means)
    means, statistics = vrx_tool("average", path, *options), vrx_tool("average", path, "--statistics", *options)
    assert found.ids == of_file.ids == [row["id"] for row in means] and len(found.frame()) == 5
    assert np.array_equal(numbers(means, *map(str, NM)), found.means) and np.array_equal(found.means, of_file.means)
    table = np.column_stack([found.counts, found.deviations, found.ranges, found.mean_differences, found.largest_differences])
    names = "readings sdL sda sdb rangeL rangea rangeb mean_difference largest_difference".split()
    assert np.array_equal(numbers(statistics, *names), table)
    for row, id, outliers in zip(statistics, found.ids, found.outliers):
        own = [i for i, name in enumerate(of) if name == id]
        assert row["outliers"] == ", ".join(str(own.index(i) + 1) for i in outliers)
    assert [len(outliers) for outliers in found.outliers] == [0, 1, 0, 0, 0]
    if given.get("limit"):
        assert np.array_equal(numbers(statistics, "uncertainty")[:, 0], found.uncertainties, equal_nan=True)
        assert [int(row["needed"] or 0) for row in statistics] == found.needed.tolist()
        assert [row["verdict"] == "pass" for row in statistics] == found.passes.tolist() == [False, False, True, True, True]


@pytest.mark.parametrize("system, given", [("lab", {}), ("cmc", {"l": 2, "c": 1}), ("din99o", {}), ("xyz", {})])
def test_sorting(system, given, curves, curve_file, vrx_tool, tmp_path):
    options = [curve_file, "--illuminants", "A", "--system", system, *(["--parameters", "2,1"] if given else [])]
    conditions = {"illuminant": "A", "system": system, **given}
    blocks = {row["trial"]: row["block"] for row in vrx_tool("sort", *options, "--standard-id", "C3", "--blocks", "9,8,7")}
    found = vrx.sort(curves[3], curves, [9, 8, 7], **conditions)
    assert [blocks.get(f"C{i}", "555") for i in range(60)] == found and len(set(found)) > 15
    rows = {row["trial"]: row for row in vrx_tool("sort", *options, "--groups", "12")}
    groups, farthest = vrx.sort_groups(curves, 12, **conditions)
    assert [[int(rows[f"C{i}"]["group"]), float(rows[f"C{i}"]["farthest"])] for i in range(60)] == np.array([groups, farthest]).T.tolist()
    geometries = ["SCI", "15deg", ""] * 20
    path = tmp_path / "geometries.csv"
    path.write_text("\n".join(["id,geometry," + ",".join(map(str, range(360, 760, 10))), *(
        f"C{i},{geometry}," + ",".join(map(repr, curve)) for i, (geometry, curve) in enumerate(zip(geometries, curves.tolist())))]) + "\n")
    rows = {row["trial"]: row for row in vrx_tool("sort", path, *options[1:], "--groups", "12")}
    groups, farthest = vrx.sort_groups(vrx.CurveArray(curves, geometries=geometries), 12, **conditions)
    assert [[int(rows[f"C{i}"]["group"]), float(rows[f"C{i}"]["farthest"])] for i in range(60)] == np.array([groups, farthest]).T.tolist()
    assert all(len({geometries[i] for i in np.flatnonzero(groups == one)}) == 1 for one in set(groups.tolist()))
    xyz = vrx.tristimulus(curves, "A")
    assert vrx.sort(xyz[3], xyz, [9, 8, 7], space="xyz", **conditions) == found
    assert vrx.sort(xyz[3], [[np.nan] * 3], space="xyz", **conditions) == [""]


@pytest.mark.parametrize("options, given", [
    ([], {"standard_id": "C3"}),
    (["--system", "cie2000", "--parameters", "1,2,1", "--tolerance", "1,1,0.6,0.6,0.6,0.6,1.2", "--verdict", "both", "--illuminants",
      "TL84,A", "--observer", "2", "--report-title", "<Lot>", "--report-approval", "QA"],
     {"standard_id": "C4", "system": "cie2000", "kC": 2, "tolerance": [1, 1, .6, .6, .6, .6, 1.2], "verdict": "both",
      "illuminants": ["TL84", "A"], "observer": 2, "title": "<Lot>", "approval": "QA"}),
    (["--ellipse", "--tolerance", "9", "--average"], {"standard_id": "C1", "ellipsoid": "system", "tolerance": 9, "average": True})])
def test_reports(options, given, readings, curve_file, vrx_tool, tmp_path, monkeypatch):
    monkeypatch.setenv("SOURCE_DATE_EPOCH", "0")
    page, written = tmp_path / "tool.html", tmp_path / "python.html"
    vrx_tool("judge", curve_file, readings[0], "--standard-id", given["standard_id"], "--report", page, *options)
    found = vrx.report(curve_file, str(readings[0]), **given)
    found.save(written)
    assert written.read_bytes() == page.read_bytes() and "srcdoc" in found._repr_html_()
    # From memory there are no files to name; nothing else changes.
    files = ("<dt>Standards</dt>", "<dt>Trials</dt>")
    lines = [line for line in found.html.splitlines() if not any(file in line for file in files)]
    assert vrx.report(vrx.read(curve_file), vrx.read(readings[0]), **given).html.splitlines() == lines


def test_reports_of_what_is_in_memory(curves, tmp_path):
    lamp = vrx.Illuminant("SHOP", np.arange(380, 785, 5), np.ones(81))
    assert "SHOP/10" in vrx.report(curves[3], curves, [lamp, "A"]).html
    for standard, given, message in ((curves[:2], {}, "standard_id"), (curves[0], {"tolerance": -1}, "^tolerance"),
                                     (curves[0] * np.nan, {}, "row 0 is no measurement")):
        with pytest.raises(ValueError, match=message):
            vrx.report(standard, curves, **given)
    (tmp_path / "dark.csv").write_text("id,400,410,420\na,0.5,1.03,0.011\n")
    with pytest.raises(ValueError, match='scale="fraction" or scale="percent"'):
        vrx.report(tmp_path / "dark.csv", curves)
    (tmp_path / "percent.csv").write_text("id,400,410,420\na,50,60,70\n")
    with pytest.raises(ValueError, match=r'scale="percent" if.*different scales: .*vrxmath\.convert\(.*scale="fraction"\)'):
        vrx.report(tmp_path / "percent.csv", tmp_path / "dark.csv", scale="fraction")
    with pytest.raises(OSError, match="No such file"):
        vrx.Report("").save(tmp_path / "none" / "page.html")


@pytest.mark.parametrize("options, given", [
    (["--illuminants", "D65,A"], {"illuminants": ["D65", "A"]}),
    (["--method", "surface", "--centre", "standard", "--margin", "1.1", "--system", "cie2000", "--observer", "2"],
     {"method": "surface", "centre": "standard", "margin": 1.1, "system": "cie2000", "observer": 2})])
def test_fitted_tolerances(options, given, curves, tmp_path, vrx_tool):
    rows = curves[5] * (1 + np.random.default_rng(3).normal(0, 0.05, (41, 3)) @ [[1] * 40, np.linspace(-1, 1, 40), np.linspace(-1, 1, 40) ** 2])
    write_csv(tmp_path / "accepted.csv", range(41), rows)
    fitted = vrx_tool("fit-tolerance", tmp_path / "accepted.csv", *options)
    found = vrx.fit_tolerance(rows[0], rows[1:], **given)
    assert np.array_equal(numbers(fitted, *list(fitted[0])[5:]), found)


def test_ellipsoids_of_differences(tmp_path, vrx_tool):
    plain = np.random.default_rng(5).normal(0, 1, (9, 3))
    write_csv(tmp_path / "plain.csv", range(9), plain, ["dL", "da", "db"])
    fitted = vrx_tool("fit-tolerance", tmp_path / "plain.csv")
    assert np.array_equal(numbers(fitted, *list(fitted[0])[5:])[0], vrx.fit_ellipsoid(plain))
    for wrong, given, message in ((plain[:3], {}, "4 are needed"), (plain * [0, 1, 1], {}, "flat"), (plain, {"margin": 0}, "margin"),
                                  (plain, {"method": "x"}, "method"), (plain * np.nan, {}, "row 0"), (plain, {"totals": [1]}, "totals")):
        with pytest.raises(ValueError, match=message):
            vrx.fit_ellipsoid(wrong, **given)


@pytest.mark.parametrize("options, given", [([], {}), (["--system", "cie2000", "--parameters", "2,1,1"], {"system": "cie2000", "kL": 2})])
def test_limits_from_verdicts(options, given, curves, tmp_path, vrx_tool):
    rows = curves[5] + np.random.default_rng(3).normal(0, 2, (30, 1)) + np.random.default_rng(4).normal(0, 0.3, (30, 40))
    decided = np.abs(rows - rows[0]).mean(axis=1) < 2
    path = tmp_path / "verdicts.csv"
    path.write_text(f"id,{','.join(map(str, NM))},verdict\n" + "".join(
        f"{i},{','.join(map(repr, row))},{'accept' if yes else 'reject'}\n" for i, (row, yes) in enumerate(zip(rows.tolist(), decided))))
    fitted = vrx_tool("fit-tolerance", "--verdicts", path, "--illuminants", "D65,A", *options)
    found = vrx.fit_limits(rows[0], rows[1:], decided[1:], ["D65", "A"], **given)
    assert [(row["system"], row["illuminant"], int(row["wrong"])) for row in fitted] == [(one.system, one.illuminant, one.wrong) for one in found]
    assert np.array_equal(numbers(fitted, "limit", "stress"), [(one.limit, one.stress) for one in found])
    with pytest.raises(ValueError, match="both are expected"):
        vrx.fit_limits(rows[0], rows[1:], [True] * 29)


@pytest.mark.parametrize("ending, options, given", [
    ("csv", ["--decimal-comma", "--csv-safe"], {"decimal_comma": True, "csv_safe": True}), ("txt", [], {}), ("cxf", [], {}),
    ("json", ["--grid", "400-700/20", "--to-fraction"], {"grid": "400-700/20", "to_fraction": True})])
def test_files(ending, options, given, readings, tmp_path):
    source = os.path.join(os.environ["VRX_SOURCE_DIR"], "examples", "chart_ohta.csv")
    converted, written = tmp_path / f"tool.{ending}", tmp_path / f"python.{ending}"
    subprocess.run([os.environ["VRX_TOOL"], "convert", source, converted, *options], check=True, capture_output=True)
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        if ending == "cxf":
            warnings.filterwarnings("ignore", message=".*not kept: that samples have no date \\(readers other than vrx")
        vrx.convert(source, written, **given)
    without_dates = [re.sub(rb"20..-..-..T..:..:..Z", b"", path.read_bytes()) for path in (converted, written)]
    assert without_dates[0] == without_dates[1]
    # What was written from memory reads back, and is what the tool makes of it.
    path, of, rows = readings
    vrx.write(written, rows, of, ["n"] * len(of))
    read = vrx.read(written)
    assert np.array_equal(read.curves, rows) and read.ids == of and read.names == ["n"] * len(of)
    vrx.write(written, read)
    assert np.array_equal(vrx.read(written).curves, rows)


def test_files_that_are_not_written(readings, tmp_path):
    path, rows = tmp_path / "kept.txt", readings[2]
    vrx.write(path, rows)
    kept = path.read_text().replace("\n", '\nORIGINATOR "me"\n', 1)
    path.write_text(kept)
    with pytest.warns(vrx.MeasurementWarning, match="not kept: ORIGINATOR"):
        vrx.convert(path, tmp_path / "other.cxf")
    for call, error, message in (
            (lambda: vrx.convert(path, path, to="cxf", scale="percent", grid="400-420/10"), ValueError, "would lose"),
            (lambda: vrx.convert(path, tmp_path / "x.doc"), ValueError, "choose one with to csv"),
            (lambda: vrx.convert(tmp_path / "none.csv", path), FileNotFoundError, "none.csv"),
            (lambda: vrx.write(path, rows, ["a"]), ValueError, "a row for each id"),
            (lambda: vrx.write(path, rows * np.nan), ValueError, "row 0 is no measurement"),
            (lambda: vrx.write(path, rows, to_fraction=True, to="cgats"), ValueError, "^to_fraction"),
            (lambda: vrx.write(tmp_path / "none" / "x.csv", rows), OSError, "No such file")):
        with pytest.raises(error, match=message):
            call()
    assert path.read_text() == kept and sorted(os.listdir(tmp_path)) == ["kept.txt", "other.cxf"]


def test_averages_of_colours_and_blocks(readings, curves):
    xyz = vrx.tristimulus(curves[:6])
    found = vrx.average(xyz, count=3, space="xyz")
    assert np.array_equal(found.means, [xyz[:3].sum(axis=0) / 3, xyz[3:].sum(axis=0) / 3]) and found.ids == [0, 1]
    for wrong in ({"count": 4}, {"of": [1]}, {"limit": -1}, {"certainty": 1}, {"space": "luv"}):
        with pytest.raises(ValueError, match=next(iter(wrong))):
            vrx.average(xyz, **wrong)
    with pytest.raises(ValueError, match="row 1 is no measurement"):
        vrx.average([[1.0] * 40, [np.nan] * 40])


def test_readings_of_one_mean_have_one_geometry(curves):
    apart = vrx.CurveArray(curves[:4], geometries=["15deg", "110deg"] * 2)
    for how in ({"count": 2}, {"of": ["a", "a", "b", "b"]}, {}):
        with pytest.raises(ValueError, match="different geometries"):
            vrx.average(apart, **how)
    assert vrx.average(apart, of=[0, 1, 0, 1]).counts.tolist() == [2, 2]
    assert vrx.average(vrx.CurveArray(curves[:2], geometries=["15deg", "15\u00b0"])).counts.tolist() == [2]
