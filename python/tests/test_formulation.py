"""Formulas, recipes and corrections: those of the command-line tool, to the last bit."""

import csv
import json
import os
import warnings

import numpy as np
import pytest

import vrxmath as vrx

EXAMPLES = os.path.join(os.environ["VRX_SOURCE_DIR"], "examples")
SYSTEM, FORMULAS, CHART = (os.path.join(EXAMPLES, name)
                           for name in ("acrylic_paints.json", "acrylic_formulas.json", "chart_average.csv"))


@pytest.fixture(scope="module")
def paints():
    return vrx.ColorSystem(SYSTEM)


def numbers(row, names):
    return [float(row[name]) if row[name] else np.nan for name in names]


@pytest.fixture(scope="module")
def twins(tmp_path_factory):
    """The paints with two of one name, and one whose name is another one's number."""
    with open(SYSTEM) as file:
        content = json.load(file)
    content["components"][8]["name"] = content["components"][2]["name"]
    content["components"][3]["name"] = str(content["components"][6]["id"])
    path = tmp_path_factory.mktemp("twins") / "twins.json"
    path.write_text(json.dumps(content))
    return vrx.ColorSystem(path)


def test_names_that_mean_several_components(twins):
    third, ninth = twins.ids[2], twins.ids[8]
    number, other = twins.names[3], twins.ids[6]
    for name, words in ((twins.names[2], f"components {third} and {ninth}; write {third} or {ninth}"),
                        (number, f"write id:{number} or name:{number}")):
        for call in (twins.place, lambda name: vrx.predict(twins, {name: 1}),
                     lambda name: vrx.match(twins, np.full(40, 50.0), exclude=[name])):
            with pytest.raises(ValueError, match=words):
                call(name)
    assert [twins.place(name) for name in (third, np.int32(ninth), f"id:{ninth}", f"name:{number}", other)] == [2, 8, 8, 3, 6]
    target = vrx.predict(twins, {third: 30, ninth: 30, other: 40})
    recipe = vrx.match(twins, target, require=[third, ninth, other], max_colorants=3, top=1)[0]
    assert list(recipe.formula) == [f"id:{third}", twins.names[6], f"id:{ninth}"]
    assert np.array_equal(vrx.predict(twins, recipe.formula), recipe.curve)


def test_predictions(paints, vrx_tool):
    names, amounts = paints.read_formulas(FORMULAS)
    rows = vrx_tool("predict", SYSTEM, FORMULAS, "--illuminants", "A", "--observer", "2")
    curves = vrx.predict(paints, amounts, threads=2)
    assert names == [row["id"] for row in rows]
    assert np.array_equal(curves, [numbers(row, map(str, range(360, 760, 10))) for row in rows])
    assert np.array_equal(vrx.tristimulus(curves, "A", 2), [numbers(row, ("A/2 X", "A/2 Y", "A/2 Z")) for row in rows])
    parts = [{paints.names[k].upper(): row[k] for k in np.flatnonzero(row)} for row in amounts]
    by_number = {paints.ids[k]: 7 * amounts[0, k] for k in np.flatnonzero(amounts[0])}
    assert np.array_equal(vrx.predict(paints, parts), curves)
    np.testing.assert_allclose(vrx.predict(paints, by_number), curves[0], rtol=1e-13)
    assert np.isnan(vrx.predict(paints, np.zeros(len(paints)))).all()


def test_recipes(paints, vrx_tool):
    targets = vrx.read(CHART)
    limits = {paints.names[0]: (1, 60)}
    options = ["--top", "3", "--max-colorants", "3", "--specular", "excluded", "--illuminants", "D65,A", "--system", "cmc",
               "--parameters", "2,1", "--sort", "color", "--require", paints.names[0], "--batch-size", "500", "--resolution", "0.5"]
    rows = vrx_tool("match", SYSTEM, CHART, *options)
    found = vrx.match(paints, targets.curves, ["D65", "A"], system="cmc", l=2, c=1, top=3, max_colorants=3, specular="excluded",
                      sort="color", require=[paints.ids[0]], batch_size=500, resolution=0.5, threads=2)
    recipes = [recipe for one in found for recipe in one]
    assert len(recipes) == len(rows) and len(found) == len(targets)
    for row, recipe in zip(rows, recipes):
        expected = numbers(row, ("dE_D65", "dE_A", "metamerism", "inconstancy", "rms", "cost", "opacity"))
        own = [*recipe.differences, recipe.metamerism, recipe.inconstancy, recipe.rms, recipe.cost, recipe.opacity]
        assert np.array_equal(own, expected, equal_nan=True)
        amounts = dict(part.split(":") for part in row["formula"].split(";"))
        assert {paints.names[paints.ids.index(int(number))]: float(amount) for number, amount in amounts.items()} == recipe.formula
        assert recipe.within_tolerance == (row["status"] == "ok") and abs(sum(recipe.amounts) - 500) <= 1
    costs = {paints.ids[0]: 2.5, **{name: 0 for name in paints.names[2:]}}
    with pytest.warns(UserWarning, match=f"no cost is known of {paints.names[1]}; they count as free") as told:
        limited = vrx.match(paints, targets.curves[2], limits=limits, costs=costs, specular="excluded", top=5)
    assert told[0].filename == __file__
    assert all(recipe.formula.get(paints.names[0], 0) <= 60 + 1e-9 for recipe in limited)
    assert any(recipe.cost == 2.5 * recipe.formula[paints.names[0]] > 0 for recipe in limited if paints.names[0] in recipe.formula)
    reachable = vrx.predict(paints, paints.read_formulas(FORMULAS)[1][0])
    alike = vrx.match(paints, reachable, trace=1000, max_colorants=2)
    assert alike[0].folded > 3 and alike[0].traces and alike[0].load_by == "target"
    by_color = vrx.match(paints, vrx.lab(vrx.tristimulus(reachable)), top=1)
    assert by_color[0].differences[0] < 1e-3 and np.isnan(by_color[0].differences[1:]).all()


def test_corrections_reach_the_target(paints):
    recipe = vrx.match(paints, vrx.read(CHART).curves[2], specular="excluded", top=1, max_colorants=3)[0]
    short = {name: amount * (0.8 if i == 0 else 1) for i, (name, amount) in enumerate(recipe.formula.items())}
    measured = vrx.predict(paints, short, specular="excluded")
    before, found = vrx.correct(paints, short, measured, recipe.curve, specular="excluded", tolerance=0.1, max_addition=40)
    assert before.differences[0] > 0.1 and found[0].within_tolerance and found[0].differences.max() <= 0.1
    together = {**short, **{name: short.get(name, 0) + amount * sum(short.values()) / 100
                            for name, amount in found[0].formula.items()}}
    np.testing.assert_allclose(vrx.predict(paints, together, specular="excluded"), found[0].curve, rtol=1e-9)


def write_curves(path, curves, columns):
    """A file of curves with further columns, by their heading."""
    with open(path, "w", newline="") as file:
        writer = csv.writer(file)
        writer.writerow(["id", *columns, *range(360, 760, 10)])
        for i, curve in enumerate(curves):
            writer.writerow([f"D{i}", *(column[i] for column in columns.values()), *map(repr, map(float, curve))])
    return path


def test_calibrations(paints, vrx_tool, tmp_path):
    white, *others = paints.names[:3]
    shares = [{white: 100}, *({white: 100 - part, other: part} for other in others for part in (5, 40, 100)),
              {white: 80, others[0]: 12, others[1]: 8}]
    shares = [{name: part for name, part in row.items() if part} for row in shares]
    curves = np.round(vrx.predict(paints, shares), 2)
    file = write_curves(tmp_path / "drawdowns.csv", curves,
                        {f"share:{name}": [row.get(name, "") for row in shares] for name in (white, *others)})
    rows = vrx_tool("calibrate", file, "--white", white, "--output", tmp_path / "tool.json")
    system, fit = vrx.calibrate(shares, curves, white)
    for own, column in ((fit.differences, "dE"), (fit.leave_one_out, "leave_one_out"),
                        (fit.leave_one_out_linear, "leave_one_out_linear")):
        assert np.array_equal(own, [float(row[column]) if row[column] else np.nan for row in rows], equal_nan=True), column
    (tmp_path / "own.json").write_text(system.to_json())
    expected = vrx.match(system, curves[-1], top=1)[0].expected
    for path in ("tool.json", "own.json"):
        same = vrx.ColorSystem(tmp_path / path)
        assert np.array_equal(vrx.predict(same, shares), vrx.predict(system, shares))
        assert vrx.match(same, curves[-1], top=1)[0].expected == expected > 0
    asked = [{white: 90, others[0]: 10}, {white: 99, others[0]: 1}, {white: 99.2, others[0]: 0.4, others[1]: 0.4}]
    (tmp_path / "asked.json").write_text(json.dumps({"formulas": [
        {"name": str(i), "lines": [{"component": system.ids[system.place(name)], "amount": amount} for name, amount in each.items()]}
        for i, each in enumerate(asked)]}))
    errors, outside = vrx.expected_error(system, asked)
    rows = vrx_tool("predict", tmp_path / "own.json", tmp_path / "asked.json")
    assert errors.tolist() == [float(row["expected"]) for row in rows] and errors[1] > errors[0]
    assert [[str(system.ids[system.place(name)]) for name in each] for each in outside] == \
        [row["outside"].split(";") if row["outside"] else [] for row in rows]
    assert outside == [[], [others[0]], others] and vrx.expected_error(system, asked[1]) == (errors[1], [others[0]])
    assert np.isnan(vrx.expected_error(paints, {paints.ids[0]: 1})[0])
    table = np.array([[row.get(name, 0) for name in (white, *others)] for row in shares])
    fewer, rest = vrx.calibrate(table, curves, white, components=[white, *others], without=others[1:], weights=[2] * len(shares))
    assert fewer.names == [white, others[0]] and len(rest.differences) == 4


def test_stock(paints, vrx_tool, tmp_path):
    names, amounts = paints.read_formulas(FORMULAS)
    measured = vrx.predict(paints, amounts * (1 + 0.1 * np.sin(np.arange(amounts.shape[1]))))
    target, sizes = vrx.predict(paints, amounts[:1]), [50.0, 20, 30, 40, 50, 60][:len(names)]
    stock = write_curves(tmp_path / "stock.csv", measured, {
        "formula": [";".join(f"{paints.ids[k]}:{row[k]!r}" for k in np.flatnonzero(row)) for row in amounts], "amount": sizes})
    wanted = write_curves(tmp_path / "target.csv", target, {})
    rows = vrx_tool("match", SYSTEM, wanted, "--from-stock", stock, "--max-colorants", "2", "--resolution", "0.01", "--top", "5")
    found = vrx.correct_stock(paints, amounts, measured, sizes, target[0], max_colorants=2, resolution=0.01, top=5)
    assert [f"D{each.batch}" for each in found] == [row["batch"] for row in rows]
    for each, row in zip(found, rows):
        expected = numbers(row, ("total", "dE_before", "dE_after_D65", "dE_after_A", "dE_after_CWF"))
        assert [each.total, each.before, *each.differences] == expected
        assert "; ".join(each.suspected) == "; ".join(part.split(":")[0] for part in row["suspected"].split("; "))
    parts = vrx_tool("match", SYSTEM, wanted, "--from-stock", stock, "--parts", "40", "--max-colorants", "3", "--top", "3")
    recipes = vrx.use_leftovers(paints, amounts, measured, sizes, target[0], 40, max_colorants=3, top=3)
    assert [each.total for each in recipes] == [float(row["used"]) for row in parts]
    assert all(each.suspected.keys() <= set(np.flatnonzero(each.used)) for each in recipes)


def test_stock_of_exchanged_curves(paints):
    names, amounts = paints.read_formulas(FORMULAS)
    olive, lilac = names.index("Olive"), names.index("Lilac")
    curves = vrx.predict(paints, amounts)
    curves[[olive, lilac]] = curves[[lilac, olive]]
    sizes = [10.0] * len(names)
    left_out = f"left out: .* {min(olive, lilac)}, {max(olive, lilac)};"
    with pytest.warns(UserWarning, match=left_out):
        found = vrx.correct_stock(paints, amounts, curves, sizes, curves[0], max_colorants=1, top=100)
    assert found[0].batch == 0 and not {olive, lilac} & {each.batch for each in found}
    with pytest.warns(UserWarning, match=left_out):
        recipes = vrx.use_leftovers(paints, amounts, curves, sizes, curves[0], 10, max_colorants=2)
    assert all(len(each.used) == len(names) and not each.used[[olive, lilac]].any() for each in recipes)
    two = [olive, lilac]
    with pytest.raises(ValueError, match="trust_formula"):
        vrx.correct_stock(paints, amounts[two], curves[two], [1, 1], curves[0], max_colorants=1)
    assert vrx.correct_stock(paints, amounts[two], curves[two], [1, 1], curves[0], max_colorants=1, trust_formula=True)
    before, _ = vrx.correct(paints, amounts[olive], curves[olive], curves[0], max_colorants=1)
    assert not before.explained and before.suspected


def test_forbidden_formulas_are_told(paints, vrx_tool, tmp_path):
    first, second, third = paints.ids[:3]
    ruled = json.loads(paints.to_json()) | {"rules": [[second, third]]}
    (tmp_path / "ruled.json").write_text(json.dumps(ruled))
    system = vrx.ColorSystem(tmp_path / "ruled.json")
    formulas = [{first: 9, second: 1}, {first: 9, second: 1, third: 1}, {second: 1, third: 1}]
    with pytest.warns(UserWarning, match="formulas: 2 have colorants that must not be used together: 1, 2$") as told:
        curves = vrx.predict(system, formulas)
    assert told[0].filename == __file__ and np.array_equal(curves, vrx.predict(paints, formulas))
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        vrx.predict(system, formulas[0])


def sce(curve):
    return vrx.CurveArray([curve, curve], geometries=["", "SCE"])


def test_geometries_that_say_the_surface(paints):
    curve = vrx.predict(paints, {paints.ids[0]: 90, paints.ids[3]: 10}, specular="excluded")
    told, plain = vrx.match(paints, sce(curve), specular="excluded", top=1)[1], vrx.match(paints, curve, specular="excluded", top=1)
    assert told[0].formula == plain[0].formula
    assert vrx.match(paints, sce(curve), specular="none", top=1)


def at_45(curve):
    return vrx.CurveArray([curve, curve], geometries=["45/0", "45/0"])


def test_geometries_beside_the_gloss(paints):
    curve = vrx.predict(paints, {paints.ids[0]: 90, paints.ids[3]: 10}, specular="excluded")
    plain = vrx.match(paints, curve, top=1)
    assert vrx.match(paints, at_45(curve), specular="included", top=1)[1][0].formula == plain[0].formula  # a matt surface
    assert vrx.match(paints, at_45(curve), specular="excluded", top=1)
    with pytest.raises(ValueError, match='45/0, which leaves out .* use specular="excluded", or specular="included" for a matt'):
        vrx.match(paints, at_45(curve))
    for call in (lambda one, **how: vrx.strength(curve, one, **how), lambda one, **how: vrx.strength(one, curve, **how), vrx.ks):
        for one, words in ((sce(curve), 'specular is included; use specular="excluded"$'), (at_45(curve), "for a matt surface$")):
            with pytest.raises(ValueError, match=words):
                call(one)
            assert np.array_equal(call(one, specular="excluded"), call(one.values, specular="excluded"))
        assert np.array_equal(call(at_45(curve), specular="included"), call(at_45(curve).values))
    shares, drawdowns = [{"w": 1}, {"w": 9, "b": 1}, {"b": 1}], np.array([[88.0] * 40, [20.0] * 40, [6.0] * 40])
    told = vrx.CurveArray(drawdowns, geometries=["45/0"] * 3)
    with pytest.raises(ValueError, match="curves: curve 0: its geometry says 45/0"):
        vrx.calibrate(shares, told, "w")
    system, _ = vrx.calibrate(shares, told, "w", specular="included")
    assert json.loads(system.to_json())["geometry"] == "45/0"
    assert vrx.match(system, told, top=1)
    with pytest.raises(ValueError, match="of curves with it excluded, at 45/0$"):
        vrx.match(system, vrx.CurveArray(drawdowns, geometries=["", "SCI", ""]))
    with pytest.raises(ValueError, match='included; specular="included" takes the curve all the same'):
        vrx.match(vrx.calibrate(shares, drawdowns, "w")[0], told)
    with pytest.raises(ValueError, match="calibrate the system on curves without it"):
        vrx.match(system, drawdowns * 0 + 2)


@pytest.mark.parametrize("call, words", [
    (lambda paints, curve: vrx.ColorSystem(CHART), ["chart_average.csv"]),
    (lambda paints, curve: vrx.predict(paints, {"no such paint": 1}), ["component", "no such paint"]),
    (lambda paints, curve: vrx.predict(paints, [1, 2]), ["formulas", f"(..., {len(vrx.ColorSystem(SYSTEM))})", "(2,)"]),
    (lambda paints, curve: vrx.match(paints, curve * 0 + 0.1), ["target", "specular"]),
    (lambda paints, curve: vrx.match(paints, curve, sort="best"), ["sort", "fewest"]),
    (lambda paints, curve: vrx.match(paints, curve, max_colorants=7), ["max_colorants", "6"]),
    (lambda paints, curve: vrx.match(paints, curve, max_subsets=10), ["max_subsets"]),
    (lambda paints, curve: vrx.match(paints, curve, require=[1], exclude=[1]), ["exclude"]),
    (lambda paints, curve: vrx.match(paints, curve, weights=[1]), ["weights"]),
    (lambda paints, curve: vrx.match(paints, curve, sort="cost"), ['sort="cost": no component has a cost; give costs in costs']),
    (lambda paints, curve: vrx.match(paints, curve, sort="cost", costs={3: 2}, exclude=[3]), ['sort="cost"']),
    (lambda paints, curve: vrx.correct(paints, {3: 1}, curve, curve, aim="cheapest", costs={3: 0}), ['aim="cheapest"']),
    (lambda paints, curve: vrx.correct_stock(paints, [{3: 1}], [curve], [1], curve, aim="cheapest"), ['aim="cheapest"']),
    (lambda paints, curve: vrx.match(paints, curve, costs={3: 2, paints.names[2]: 5}), ["costs: component 3 is given twice"]),
    (lambda paints, curve: vrx.match(paints, curve, limits={3: (0, 5), "id:3": (1, 9)}), ["limits: component 3 is given twice"]),
    (lambda paints, curve: vrx.match(paints, curve, costs={3: -1}), ["costs: numbers from 0"]),
    (lambda paints, curve: vrx.match(paints, curve, costs={3: np.nan}), ["costs: numbers from 0"]),
    (lambda paints, curve: vrx.match(paints, sce(curve)), ["targets: curve 1: its geometry", 'specular is included; use specular="excluded"']),
    (lambda paints, curve: vrx.correct(paints, {3: 1}, sce(curve)[1], curve, specular="included"), ["measured: curve 0", "excluded"]),
    (lambda paints, curve: vrx.correct_stock(paints, [{3: 1}], [curve], [1], sce(curve)[1]), ["target: curve 0"]),
    (lambda paints, curve: vrx.use_leftovers(paints, [{3: 1}], sce(curve)[[1]], [1], curve, 5), ["measured: curve 0"]),
    (lambda paints, curve: vrx.calibrate([{"w": 1}, {"w": 1, "b": 1}], sce(curve), "w"), ["curves: curve 1", "excluded"]),
    (lambda paints, curve: vrx.match(paints, curve, backings=[[90.0] * 40, [5.0] * 40]), ["backings: the black backing is not darker"]),
    (lambda paints, curve: vrx.match(paints, curve, load=3), ["load", "clear component"]),
    (lambda paints, curve: vrx.match(paints, curve, load=(5, 1)), ["load"]),
    (lambda paints, curve: vrx.match(paints, curve, within_range=True), ["within_range"]),
    (lambda paints, curve: vrx.match(paints, curve, trace=-1), ["trace"]),
    (lambda paints, curve: vrx.correct(paints, {}, curve, curve), ["formula"]),
    (lambda paints, curve: vrx.correct_stock(paints, [{1: 1}], [curve], [1, 2], curve), ["sizes"]),
    (lambda paints, curve: vrx.use_leftovers(paints, [{1: 1}], [curve], [0], curve, 10), ["sizes"]),
    (lambda paints, curve: vrx.calibrate([{"w": 1}, {"w": 1, "b": 1}], [curve, curve], "white"), ["white"]),
    (lambda paints, curve: vrx.calibrate([{"w": 1}, {"w": 1, "b": 1}], [curve, curve], "w"), ["\"b\"", "letdown", "without"]),
    (lambda paints, curve: vrx.calibrate([[1, 0]], [curve], "w"), ["components"]),
    (lambda paints, curve: vrx.calibrate([[1, 0, 0]], [curve], "w", components=["w", "b", "b"]), ["components: 'b' is there twice"]),
    (lambda paints, curve: vrx.calibrate([{"w": 1}], [curve], "w", ids=[1, 2]), ["ids"]),
])
def test_refusals_name_the_argument(call, words, paints):
    with pytest.raises(ValueError) as refused:
        call(paints, np.full(40, 50.0))
    assert all(word in str(refused.value) for word in words), str(refused.value)
