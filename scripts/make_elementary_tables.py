#!/usr/bin/env python3
"""Writes the constants of the elementary functions, vrxmath/numeric/elementary_tables.h, from their definitions.

Needed only when a table changes shape: the build uses the header as it stands. Needs mpmath (Debian: python3-mpmath),
without which it ends with status 77.

Usage: scripts/make_elementary_tables.py [--check]    --check compares instead of writing and exits with 1 on a difference
"""

import pathlib
import struct
import sys

try:
    from mpmath import mp, mpf, atan, cos, floor, frexp, ldexp, ln, nint, pi, power, sin
except ImportError:
    print("mpmath is missing", file=sys.stderr)
    sys.exit(77)

HEADER = pathlib.Path(__file__).resolve().parent.parent / "vrxmath/numeric/elementary_tables.h"
mp.prec = 400


def rounded(x, bits=53):
    """x rounded once, half to even, to `bits` significant binary digits."""
    if x == 0:
        return mpf(0)
    exponent = frexp(x)[1]
    return ldexp(nint(ldexp(x, bits - exponent)), exponent - bits)


def split(x):
    hi = rounded(x)
    return hi, rounded(x - hi)


def literal(x):
    """The shortest hexadecimal literal of a double."""
    mantissa, exponent = float(x).hex().split("p")
    mantissa = mantissa.rstrip("0").rstrip(".") if "." in mantissa else mantissa
    return f"{mantissa}p{exponent}"


def group(values):
    return "{" + ", ".join(literal(value) for value in values) + "}"


def power_of_two(j):
    exact = power(2, mpf(j) / 128)
    value = rounded(exact)
    return value, rounded((exact - value) / value)


def reciprocal(j):
    first = struct.unpack("<Q", struct.pack("<d", 357 / 512))[0]
    begin, end = (mpf(struct.unpack("<d", struct.pack("<Q", first + (i << 45)))[0]) for i in (j, j + 1))
    r = 1 if begin < 1 < end else nint(512 * 2 / (begin + end)) / 512
    minus_ln = -ln(r)
    hi = ldexp(nint(ldexp(minus_ln, 42)), -42)
    return r, hi, rounded(minus_ln - hi)


def sine_node(j):
    if j == 64:
        return mpf(1), mpf(0), mpf(1)
    angle = pi * j / 128
    return *split(sin(angle)), rounded(1 - cos(angle))


def atan_node(k):
    """The Taylor coefficients of atan about k/64; degrees 8 and 9 are economised by Chebyshev polynomials."""
    centre = mpf(k) / 64
    # With z = 1/(1 + i c): atan(c + d) = atan(c) + sum over n of Im(-(-i z d)^n / n).
    z = -1j / (1 + 1j * centre)
    taylor = [-((z ** n) / n).imag for n in range(10)[1:]]
    c = dict(zip(range(1, 10), (mpf(value) for value in taylor)))
    width = mpf(1) / 128
    # d^8 = w^8 (T8(t) + 256 t^6 - 160 t^4 + 32 t^2 - 1)/128, and d^9 is that times d; the constant is left out.
    for degree in (8, 9):
        for fall, factor in ((2, 256), (4, -160), (6, 32)):
            c[degree - fall] += c[degree] * power(width, fall) * factor / 128
    slope_minus_1 = rounded(c[1] - 1)
    return (*split(atan(centre)), slope_minus_1), [rounded(c[n], bits) for n, bits in
                                                   zip(range(2, 8), (53, 46, 39, 32, 25, 18))]


def two_over_pi():
    mp.prec = 2000
    words = [0] + [int(floor(ldexp(2 / pi, 64 * (i + 1)))) & (2 ** 64 - 1) for i in range(20)]
    mp.prec = 400
    return [f"0x{word:016x}" for word in words]


def lines_of(items, per_line):
    return ["    " + ", ".join(items[i:i + per_line]) + "," for i in range(0, len(items), per_line)]


def rows_of(name):
    if name == "kPowerOfTwo":
        return lines_of([group(power_of_two(j)) for j in range(128)], 2)
    if name == "kReciprocal":
        return lines_of([group(reciprocal(j)) for j in range(128)], 2)
    if name == "kSineNode":
        return lines_of([group(sine_node(j)) for j in range(65)], 1)
    if name == "kAtanNode":
        rows = []
        for head, coefficients in map(atan_node, range(65)):
            rows += ["    {" + ", ".join(map(literal, head)) + ",", "     " + group(coefficients) + "},"]
        return rows
    return lines_of(two_over_pi(), 4)


def regenerated(text):
    """The header with the rows of every table written anew; what stands around them is kept."""
    out, lines = [], iter(text.splitlines())
    for line in lines:
        out.append(line)
        if line.startswith("inline constexpr ") and line.endswith("{"):
            out += rows_of(line.split()[3].split("[")[0])
            out.append(next(skipped for skipped in lines if skipped == "};"))
    return "\n".join(out) + "\n"


def main():
    present = HEADER.read_text(encoding="ascii")
    made = regenerated(present)
    if "--check" not in sys.argv[1:]:
        HEADER.write_text(made, encoding="ascii")
    elif made != present:
        differing = sum(a != b for a, b in zip(made.splitlines(), present.splitlines()))
        sys.exit(f"{HEADER.name}: {differing} lines differ from their definitions")


if __name__ == "__main__":
    main()
