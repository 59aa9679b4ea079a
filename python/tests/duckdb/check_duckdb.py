"""Columns to DuckDB and back: results are those of arrays, to the bit, and what is null stays missing."""

import os

import numpy as np
import pytest

import vrxmath as vrx
from arrow_by_ctypes import Connection

N = 5000  # DuckDB hands them back in chunks of 2,048


@pytest.fixture
def duck(curves):
    rows = np.resize(curves, (N, 40))
    connection = Connection(os.environ["VRX_DUCKDB"])
    connection.register("chart", vrx.to_arrow(rows, "curve", ids=[f"c{i}" for i in range(N)]))
    return connection


def as_read(chunks):
    return [vrx.CurveArray(chunk) for chunk in chunks]


@pytest.mark.parametrize("curve", ["curve", "curve::FLOAT[40]", "curve::DOUBLE[]"])
def test_curves_come_back_in_every_type_of_list(duck, curves, curve):
    rows = np.resize(curves, (N, 40))
    given = rows.astype(np.float32) if "FLOAT" in curve else rows
    parts = as_read(duck.query(f"SELECT id, {curve} AS curve FROM chart WHERE id <> 'c3'"))
    assert len(parts) > 1
    kept = [i for i in range(N) if i != 3]
    assert [name for part in parts for name in part.ids] == [f"c{i}" for i in kept]
    assert np.array_equal(np.concatenate([vrx.tristimulus(part, "A") for part in parts]), vrx.tristimulus(given[kept], "A"))


@pytest.mark.parametrize("curve", ["curve", "curve::DOUBLE[]"])
def test_null_is_missing(duck, curves, curve):
    rows = np.ma.array(curves[:5], mask=np.zeros((5, 40)))
    rows[2] = np.ma.masked
    duck.register("five", vrx.to_arrow(rows, "curve"))
    chunk, = duck.query(f"SELECT {curve} AS curve FROM five")
    xyz = vrx.tristimulus(chunk, "D65")
    assert xyz.mask.all(axis=1).tolist() == [False, False, True, False, False]
    assert np.array_equal(xyz.compressed(), vrx.tristimulus(curves[[0, 1, 3, 4]], "D65").ravel())


def test_columns_are_taken_by_their_labels(duck, curves):
    wavelengths = range(700, 390, -10)
    columns = ", ".join(f'curve[{(nm - 350) // 10}] AS "{nm} nm"' for nm in wavelengths)
    chunk, = duck.query(f"SELECT id, {columns} FROM chart LIMIT 60")
    read = vrx.CurveArray(chunk)
    assert read.wavelengths[0] == 400 and read.ids[59] == "c59"
    assert np.array_equal(vrx.resample(read), vrx.resample(curves[:60, 4:35], range(400, 710, 10)))
    chunk, = duck.query(f"SELECT 7.5::DOUBLE AS lot, {columns} FROM chart LIMIT 60")
    with pytest.raises(ValueError, match="no wavelengths: 'lot'"):
        vrx.tristimulus(chunk, "D65")


def test_judgements_are_asked_by_sql(duck, curves):
    rows = np.ma.array(curves, mask=np.zeros(curves.shape))
    rows[7] = np.ma.masked
    samples = vrx.CurveArray(vrx.to_arrow(rows, "curve", ids=[f"c{i}" for i in range(len(rows))]))
    judged = vrx.judge(curves[0], samples, ["D65", "A"], tolerance=20)
    duck.register("judged", judged)
    ids_where = lambda condition: [
        name for part in as_read(duck.query(f"SELECT j.id, c.curve FROM judged j JOIN chart c ON c.id = j.id WHERE {condition}"))
        for name in part.ids]
    fails = [i for i in np.argsort(judged.totals[:, 1].filled(0)) if judged.overall[i] == vrx.FAIL and judged.excess[i, 1] > 0]
    assert len(fails) > 5
    assert ids_where("overall = 'fail' AND \"A excess\" > 0 ORDER BY \"A dE\"") == [f"c{i}" for i in fails]
    assert ids_where("overall IS NULL AND \"D65 words\" IS NULL AND \"A dE\" IS NULL") == ["c7"]
