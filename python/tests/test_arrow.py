"""Columns by the Arrow C data interface: read where they lie, refused where they contradict themselves."""

import ctypes
import gc
import threading
import weakref

import numpy as np
import pytest

import vrxmath as vrx
from arrow_by_ctypes import ArrowArray, ArrowSchema, Batch

NO_RELEASE = ctypes.CFUNCTYPE(None, ctypes.c_void_p)(lambda part: None)


def part(schema_format, length, values=None, children=(), name=b"c", offset=0, buffers=None):
    """A column as another program may make it, without its release doing anything."""
    def pointers(items):
        return ctypes.cast((ctypes.c_void_p * len(items))(*items), ctypes.c_void_p)

    given = [None] if schema_format.startswith(b"+w") or schema_format == b"+s" else [None, values]
    given = given if buffers is None else buffers
    schema = ArrowSchema(schema_format, name, None, 2, len(children), pointers([ctypes.addressof(c.schema) for c in children]), None,
                         ctypes.cast(NO_RELEASE, ctypes.c_void_p), None)
    array = ArrowArray(length, -1, offset, len(given), len(children), pointers(given),
                       pointers([ctypes.addressof(c.array) for c in children]), None, ctypes.cast(NO_RELEASE, ctypes.c_void_p), None)
    batch = Batch(schema, array)
    batch.kept = children
    return batch


def test_numbers_are_not_copied_on_either_way(curves):
    there = vrx.CurveArray(vrx.to_arrow(curves, "curve", wavelengths=range(360, 760, 10)))
    assert there.values.__array_interface__["data"][0] == curves.__array_interface__["data"][0]
    floats = np.arange(120, dtype=np.float32)
    child = part(b"f", 120, floats.ctypes.data)
    read = vrx.CurveArray(part(b"+w:40", 2, offset=1, children=[child])).values  # a slice
    assert read.dtype == np.float32 and read[0, 0] == 40 and np.shares_memory(read, floats)


def test_memory_lives_as_long_as_the_receiver(curves):
    rows = curves.copy()
    alive = weakref.ref(rows)
    read = vrx.CurveArray(vrx.to_arrow(rows, "curve"))
    del rows
    gc.collect()
    assert alive() is not None and np.array_equal(read.values, curves)
    thread = threading.Thread(target=lambda given=[read]: given.clear())  # the last receiver lets go on another thread
    del read
    thread.start()
    thread.join()
    gc.collect()
    assert alive() is None


def test_ids_wavelengths_and_masks_travel(curves):
    given = vrx.CurveArray(np.ma.masked_less(curves[:3, ::-1], curves[:3].min() + 1e-9), range(750, 350, -10), ["a", "b", "c"])
    back = vrx.CurveArray(given)
    read = vrx.CurveArray(type("Elsewhere", (), {"__arrow_c_array__": given.__arrow_c_array__})())
    assert back.ids == read.ids == ("a", "b", "c") and read.wavelengths[0] == 360
    assert np.ma.getmaskarray(read.values).any(axis=1).tolist() == np.ma.getmaskarray(given.values).any(axis=1).tolist()
    assert read.values.mask.any() and np.ma.allequal(vrx.tristimulus(read, "A"), vrx.tristimulus(given, "A"))


NUMBERS = np.full(400, 50.0)
DOUBLES = part(b"g", 400, NUMBERS.ctypes.data)
OFFSETS = {name: np.array(offsets, dtype=np.int32) for name, offsets in
           {"even": [0, 40, 80], "uneven": [0, 40, 70], "outside": [0, 40, 4000], "backwards": [40, 0, 40]}.items()}


def lists(offsets):
    return part(b"+l", 2, buffers=[None, OFFSETS[offsets].ctypes.data], children=[DOUBLES])


@pytest.mark.parametrize("column, words", [
    (lists("uneven"), "lists of 40 and of 30"),
    (lists("outside"), "outside of its numbers"),
    (lists("backwards"), "outside of its numbers"),
    (part(b"+w:40", 11, children=[DOUBLES]), "fewer numbers"),
    (part(b"+w:40", 2**62, children=[DOUBLES]), "contradicts itself"),
    (part(b"+w:40", -1, children=[DOUBLES]), "contradicts itself"),
    (part(b"+w:40", 1, offset=2**63 - 1, children=[DOUBLES]), "contradicts itself"),
    (part(b"+w:40", 2), "a column of float"),
    (part(b"+w:9999999999999999999999", 2, children=[DOUBLES]), "a column of float"),
    (part(b"l", 400, NUMBERS.ctypes.data), "a column of float"),
    (part(b"+w:39", 2, children=[DOUBLES]), r"expected shape \(..., 40\)"),
    (part(b"+s", 2, children=[lists("even"), lists("even")]), "both hold lists"),
    (part(b"+s", 3, children=[lists("even")]), "shorter than it"),
    (part(b"+s", 2, children=[part(b"g", 2, NUMBERS.ctypes.data, name=b"R")]), "no label is a wavelength"),
])
def test_columns_of_no_use(column, words):
    assert vrx.tristimulus(lists("even"), "D65").shape == (2, 3)
    with pytest.raises(ValueError, match=words):
        vrx.tristimulus(column, "D65")


def test_columns_that_are_none():
    with pytest.raises(ValueError, match="2 names"):
        vrx.to_arrow(np.ones((4, 3)), ["X", "Y"])
    with pytest.raises(ValueError, match="one for each of 4"):
        vrx.to_arrow(np.ones((4, 3)), "xyz", ids=["a"])
    with pytest.raises(ValueError, match="shape"):
        vrx.to_arrow(np.ones((4, 3, 2)), "xyz")
