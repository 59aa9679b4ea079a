"""The module in a process: its end, Ctrl+C, subinterpreters, other processes, files that are not there."""

import os
import pathlib
import pickle
import signal
import subprocess
import sys
import time
import warnings

import numpy as np
import pytest

import vrxmath as vrx

LONG = """
import numpy as np, vrxmath as vrx
curves = np.random.default_rng(1).uniform(1, 99, (20000, 40))
def search():
    vrx.nearest(curves, curves, 5, illuminant=["D65", "A"])
"""


def run(script, **options):
    return subprocess.Popen([sys.executable, "-c", LONG + script], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                            **options)


def test_the_interpreter_ends_while_threads_are_in_calls():
    ends = run("""
import threading, time
started = [threading.Event() for _ in range(2)]
def work(event):
    while True:
        event.set()
        search()
for event in started:
    threading.Thread(target=work, args=(event,), daemon=True).start()
for event in started:
    event.wait()
time.sleep(0.3)
print("the end")
""")
    out, err = ends.communicate(timeout=60)
    assert (ends.returncode, out, err) == (0, "the end\n", "")


def test_ctrl_c_ends_a_search():
    stopped = run("""
import time
print("begins", flush=True)
begun = time.monotonic()
try:
    search()
except KeyboardInterrupt:
    print(time.monotonic() - begun)
""")
    assert stopped.stdout.readline() == "begins\n"
    time.sleep(0.5)
    sent = time.monotonic()
    stopped.send_signal(signal.SIGINT)
    out, err = stopped.communicate(timeout=60)
    assert stopped.returncode == 0 and err == "" and float(out) > 0
    assert time.monotonic() - sent < 10


def test_a_subinterpreter_is_refused():
    pytest.importorskip("_xxsubinterpreters")
    done = subprocess.run([sys.executable, "-c", """
import sys
import _xxsubinterpreters as interpreters
made = interpreters.create()
try:
    interpreters.run_string(made, f"import sys; sys.path[:] = {sys.path!r}; from vrxmath import _core")
except interpreters.RunFailedError as error:
    print(error)
"""], capture_output=True, text=True, timeout=60)
    assert "main interpreter" in done.stdout, done.stderr


def test_lamps_are_what_they_hold(curves):
    nm = np.arange(400, 701, 10)
    lamps = [vrx.Illuminant("SHOP", nm, np.linspace(1, 1 + i, 31)) for i in range(2)]
    again = vrx.Illuminant("SHOP", nm.tolist(), [1.0] * 31)
    assert lamps[0] == again and hash(lamps[0]) == hash(again) and lamps[0] != lamps[1]
    assert not np.array_equal(vrx.tristimulus(curves, lamps[0]), vrx.tristimulus(curves, lamps[1]))
    assert vrx.judge(curves[0], curves[:3], [lamps[1]], tolerance=5).illuminants == ("SHOP",)
    # As many as come, one after the other; and 256 at a time.
    expected = vrx.tristimulus(curves[0], lamps[1])
    for i in range(600):
        last = vrx.Illuminant("SHOP", nm, np.full(31, 2.0) + np.arange(31) * i)
        assert vrx.tristimulus(curves[0], last).shape == (3,)
    assert np.array_equal(vrx.tristimulus(curves[0], lamps[1]), expected)
    kept = []
    with pytest.raises(ValueError, match="256 other illuminants are in use"):
        for i in range(300):
            kept.append(vrx.Illuminant("SHOP", nm, np.full(31, 3.0) + np.arange(31) * i))
    for name in ("", "d65", "A|of my own"):
        with pytest.raises(ValueError, match="name"):
            vrx.Illuminant(name, nm, np.ones(31))


def test_what_travels_to_another_process(curves):
    lamp = vrx.Illuminant("SHOP|Shop lighting", range(400, 701, 5), np.linspace(3, 9, 61), interpolation="linear")
    standard = vrx.Standard(vrx.Curve(curves[0], "red"), vrx.Tolerance(2, "cmc"), (lamp, "A"))
    assert pickle.loads(pickle.dumps(standard)) == standard
    script = "import pickle, sys; r = pickle.load(sys.stdin.buffer); sys.stdout.buffer.write(pickle.dumps(r.curve.xyz(r.illuminants[0])))"
    done = subprocess.run([sys.executable, "-c", script], input=pickle.dumps(standard), capture_output=True, check=True)
    assert np.array_equal(pickle.loads(done.stdout), vrx.tristimulus(curves[0], lamp))
    listed = [vrx.Curve(row) for row in curves[:3]]
    assert np.array_equal(vrx.tristimulus(listed), vrx.tristimulus(curves[:3]))


def test_paths_and_version(tmp_path):
    paints = pathlib.Path(os.environ["VRX_SOURCE_DIR"], "examples", "acrylic_paints.json")
    assert vrx.ColorSystem(paints).names == vrx.ColorSystem(str(paints)).names
    for missing in (vrx.read, vrx.ColorSystem, vrx.ColorSystem(paints).read_formulas):
        with pytest.raises(FileNotFoundError) as refused:
            missing(tmp_path / "none.csv")
        assert refused.value.filename == str(tmp_path / "none.csv")
    tool = subprocess.run([os.environ["VRX_TOOL"], "--version"], capture_output=True, text=True, check=True).stdout
    assert vrx.__version__ in tool


def test_what_the_tool_warns_of(tmp_path):
    narrow, whole = tmp_path / "narrow.csv", tmp_path / "whole.txt"
    narrow.write_text("id,450,460,470,480,490,500\na,40,40,40,40,40,40\n")
    with pytest.warns(vrx.MeasurementWarning, match="narrow.csv: the wavelengths do not cover all"):
        read = vrx.read(narrow)
    assert read.notes == ["the wavelengths do not cover all of 400 to 700 nm; the rest is extrapolated"]
    fields = " ".join(["SAMPLE_ID", *(f"nm{nm}" for nm in range(400, 710, 10))])
    row = " ".join(["50"] * 31)
    whole.write_text(f"CGATS.17\nBEGIN_DATA_FORMAT\n{fields}\nEND_DATA_FORMAT\nBEGIN_DATA\na {row}\nEND_DATA\n")
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        assert vrx.read(whole).notes == []
