"""What people look at: records in a notebook, plots, and the partitions of a cluster."""

import html.parser
import json
import pathlib

import numpy as np
import pytest

import vrxmath as vrx


def test_records_show_themselves(curves):
    standard = vrx.Standard(vrx.Curve(curves[0], "<b>red</b> & co"), vrx.Tolerance(1.5, "cmc", {"l": 2, "c": 1}))
    shown = standard._repr_html_()
    html.parser.HTMLParser().feed(shown)
    assert "<b>red" not in shown and "&lt;b&gt;red&lt;/b&gt; &amp; co" in shown
    assert shown.count("<svg") == 2 and "cmc (l = 2, c = 1)" in shown
    assert np.array_equal(standard.judge(curves).verdicts,
                          vrx.judge(curves[0], curves, system="cmc", l=2, c=1, tolerance=1.5).verdicts)


def test_plots_draw_what_they_are_given(curves):
    pytest.importorskip("matplotlib")
    from matplotlib import pyplot

    judged = vrx.judge(curves[0], curves[:8], "D65", system="cmc", l=2, c=1, tolerance=30)
    axes = [vrx.plot.curves(curves[:3], ["a", "b", "c"]), vrx.plot.spectral_difference(curves[0], curves[:3]),
            vrx.plot.ab_plane(judged.differences[:, 0], judged.verdicts[:, 0], ellipse=(8, 4, 30)),
            vrx.plot.swatches(curves[0], curves[:8]), vrx.plot.trend(judged.totals[:, 0], 30)]
    assert [len(ax.lines) for ax in axes[:2]] == [6, 4]
    drawn = np.concatenate([line.get_xdata() for line in axes[2].lines if line.get_linestyle() == "None"])
    assert set(judged.differences[:, 0, 1]) <= set(drawn)
    assert len(axes[3].patches) == 16 and axes[4].lines[0].get_ydata().tolist() == judged.totals[:, 0].tolist()
    for ax in axes:
        ax.figure.canvas.draw()
        pyplot.close(ax.figure)


def _die_once(path):
    """Ends its worker process the first time, as a machine that fails does."""
    import os

    if not os.path.exists(path):
        open(path, "w").close()
        os._exit(3)
    return path


def test_a_cluster_gives_the_bytes_of_one_process(curves, tmp_path):
    distributed = pytest.importorskip("distributed")
    import vrxmath.dask

    files = []
    for i in range(6):
        part, ending = curves[10 * i: 10 * i + 10], ("npy", "csv", "txt")[i % 3]
        files.append(str(tmp_path / f"part-{i}.{ending}"))
        if ending == "npy":
            np.save(files[-1], part)
            continue
        fields = [f"nm{nm}" for nm in range(360, 760, 10)]
        lines = [",".join(fields)] + [",".join(map(repr, row)) for row in part.tolist()]
        if ending == "txt":
            lines = ["CGATS.17", "BEGIN_DATA_FORMAT", *fields, "END_DATA_FORMAT", "BEGIN_DATA",
                     *(line.replace(",", " ") for line in lines[1:]), "END_DATA"]
        pathlib.Path(files[-1]).write_text("\n".join(lines) + "\n")
    settings = {"illuminants": ("D65", "A"), "system": "cmc", "tolerance": 8.0}
    seen = []
    cluster = distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None)
    with cluster, distributed.Client(cluster) as client:
        killer = client.submit(_die_once, str(tmp_path / "died"), retries=3)
        written = vrxmath.dask.judge(str(tmp_path / "part-*.*"), curves[0], output=tmp_path / "judged", client=client,
                                     progress=lambda done, total: seen.append((done, total)), **settings)
        colors = vrxmath.dask.color(files, "D65", output=tmp_path / "colors", client=client)
        near = vrxmath.dask.nearest(files, curves[:20], 2, output=tmp_path / "near", client=client)
        assert killer.result() == str(tmp_path / "died")
    assert seen[-1] == (6, 6)
    judged = vrx.judge(curves[0], curves, **settings)
    rows = np.concatenate([np.load(path) for path in written])
    assert rows["dE_A"].tobytes() == np.ascontiguousarray(judged.totals[:, 1]).tobytes()
    assert rows["overall"].tobytes() == judged.overall.tobytes()
    assert np.concatenate([np.load(path) for path in colors])["h"].tobytes() == \
        np.ascontiguousarray(vrx.lab(vrx.tristimulus(curves), polar=True)[:, 4]).tobytes()
    assert np.concatenate([np.load(path) for path in near])["index_2"].tolist() == \
        vrx.nearest(curves, curves[:20], 2)[0][:, 1].tolist()
    manifest = json.loads((tmp_path / "judged" / "manifest.json").read_text())
    assert [(part["file"], part["rows"]) for part in manifest["partitions"]] == [(pathlib.Path(path).name, 10) for path in written]
    assert sorted(path.name for path in (tmp_path / "judged").iterdir()) == \
        sorted(["manifest.json"] + [pathlib.Path(path).name for path in written])
    assert rows["id"].tolist() == [str(i + 1) for i in range(10)] * 6


def test_a_partition_in_blocks_has_the_bytes_of_one_array(curves, tmp_path, monkeypatch):
    from vrxmath import dask

    monkeypatch.setattr(dask, "_BLOCK", 7)
    labels = [f"{'x' * (i % 11)}{i}" for i in range(60)]  # as long as they come in different blocks
    vrx.write(tmp_path / "part.csv", curves, labels)
    np.save(tmp_path / "part.npy", curves)
    np.save(tmp_path / "none.npy", curves[:0])
    judged = vrx.judge(curves[0], curves, "A", tolerance=8)
    for name, ids in (("part.csv", labels), ("part.npy", [str(i + 1) for i in range(60)]), ("none.npy", [])):
        rows = len(ids)
        assert dask._judge_part(str(tmp_path / name), str(tmp_path / "made.npy"), curves[0],
                                {"illuminants": "A", "tolerance": 8}) == rows
        whole = np.rec.fromarrays([np.array(ids, dtype=str), judged.overall[:rows], judged.verdicts[:rows, 0],
                                   judged.totals[:rows, 0]], names=["id", "overall", "verdict_A", "dE_A"])
        np.save(tmp_path / "whole.npy", whole.view(np.ndarray))
        assert (tmp_path / "made.npy").read_bytes() == (tmp_path / "whole.npy").read_bytes(), name


def test_partitions_keep_their_geometry(tmp_path):
    from vrxmath import dask

    (tmp_path / "part.csv").write_text("id,geometry," + ",".join(map(str, range(360, 760, 10))) + "\nt,SCI" + ",40" * 40 + "\n")
    standard = vrx.CurveArray([[41.0] * 40], None, ["s"], ["SCE"])
    with pytest.raises(ValueError, match="geometry"):
        dask._judge_part(str(tmp_path / "part.csv"), str(tmp_path / "made.npy"), standard, {"illuminants": "A"})
    standard = vrx.CurveArray([[41.0] * 40], None, ["s"], ["SCI"])
    assert dask._judge_part(str(tmp_path / "part.csv"), str(tmp_path / "made.npy"), standard, {"illuminants": "A"}) == 1
    with pytest.raises(ValueError, match="half step"):
        dask.judge([], [41.0] * 40, output=tmp_path / "out", grade="change", least_grade=2.2)


def test_a_folder_of_results_is_replaced_as_a_whole(tmp_path):
    from vrxmath import _folder

    def fill(names, output=tmp_path / "out"):
        with _folder.replaced(output) as folder:
            for name in names:
                (folder / name).write_text(name)
            _folder.write_manifest(folder, {"parts": names})

    fill(["a", "b", "c"])
    fill(["a"])
    assert sorted(path.name for path in (tmp_path / "out").iterdir()) == ["a", "manifest.json"]
    with pytest.raises(KeyError), _folder.replaced(tmp_path / "out") as folder:
        (folder / "d").write_text("")
        raise KeyError
    assert sorted(path.name for path in (tmp_path / "out").iterdir()) == ["a", "manifest.json"]
    (tmp_path / "mine").mkdir()
    (tmp_path / "mine" / "thesis.tex").write_text("")
    with pytest.raises(FileExistsError, match="no folder of results"):
        fill(["a"], tmp_path / "mine")
    assert sorted(path.name for path in tmp_path.iterdir()) == ["mine", "out"]
