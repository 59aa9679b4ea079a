#!/usr/bin/env python3
"""Judges a trial against a standard through the C interface, with nothing but ctypes.

    python3 judge_ctypes.py [the shared library vrxmath_c]
"""
import ctypes
import sys

WINDOWS = sys.platform == "win32"
LIBRARY = sys.argv[1] if len(sys.argv) > 1 else "vrxmath_c.dll" if WINDOWS else "libvrxmath_c.so.1"
vrx = (ctypes.WinDLL if WINDOWS else ctypes.CDLL)(LIBRARY)


class System(ctypes.Structure):
    _fields_ = [("number", ctypes.c_int32), ("own_formula", ctypes.c_int32),
                ("parameters", ctypes.c_double * 4), ("angle", ctypes.c_double)]


def call(name, *arguments):
    """Calls a function of the interface; raises ValueError with its reason when it refuses."""
    if getattr(vrx, name)(*arguments) != 0:
        reason = ctypes.create_string_buffer(200)
        vrx.vrx_last_error(reason, len(reason), None)
        raise ValueError(reason.value.decode())


def main():
    standard = (ctypes.c_double * 40)(*[12.0] * 16 + [62.0] * 24)
    trial = (ctypes.c_double * 40)(*[12.2] * 16 + [61.0] * 24)
    box = (ctypes.c_double * 7)(1.0, 1.0, 0.8, 0.8, 1.5, 1.5, 0.6)
    lamps, verdicts, differences = (ctypes.c_int32 * 2)(2, 0), (ctypes.c_int32 * 2)(), (ctypes.c_double * 14)()
    cmc, judgement = System(), ctypes.c_int32()
    call("vrx_default_system", 1, ctypes.byref(cmc))
    call("vrx_judgement_open", ctypes.byref(cmc), lamps, 2, 1, ctypes.byref(judgement))
    call("vrx_judgement_standard", judgement, standard)
    for i in range(2):
        call("vrx_judgement_box", judgement, i, box)
    call("vrx_judgement_trials", judgement, trial, 1, verdicts, differences, None)
    call("vrx_close", judgement)
    for i, lamp in enumerate(("D65", "A")):
        print(f"{lamp:4} dE {differences[7 * i + 6]:.2f}  {('fail', 'warning', 'pass')[verdicts[i]]}")


main()
