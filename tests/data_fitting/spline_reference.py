#!/usr/bin/python3
"""Reference data for the spline tests, computed with scipy.interpolate.

The partitions and values come from a 64-bit linear congruential generator
that tests/data_fitting/spline_reference_test.cpp repeats exactly, so only
the cases' parameters and scipy's results are stored. Per case: the
coefficients of the first, a middle and the last cell (ascending powers of
t - x[m]); value and first three derivatives at a site left of the
partition, one inside and one right of it (inside only for the periodic
spline, which scipy extends periodically); two integrals. The quadratic
splines are scipy's interpolating B-splines of degree 2 with knots at the
breakpoints and one end derivative (standard), or at the midpoints with both
end derivatives (Subbotin); their cell coefficients are the value and the
right-hand derivatives at each cell's left end.

    /usr/bin/python3 tests/data_fitting/spline_reference.py > tests/data_fitting/spline_reference.txt
"""
import numpy as np
from scipy.interpolate import (Akima1DInterpolator, CubicHermiteSpline, CubicSpline,
                               make_interp_spline)

MASK = (1 << 64) - 1


class Lcg:
    def __init__(self, seed):
        self.s = seed & MASK

    def next(self):
        self.s = (self.s * 6364136223846793005 + 1442695040888963407) & MASK
        return (self.s >> 11) * 2.0**-53


def partition(kind, n, g):
    if kind == "uniform":  # the two ends -2 and 3, breakpoints as the library forms them
        return [-2.0 + i * 5.0 / (n - 1) if i < n - 1 else 3.0 for i in range(n)]
    if kind == "graded":
        out = []
        for i in range(n):
            a = i / (n - 1)
            out.append(10.0 * (a * a))
        return out
    x, out = 0.0, []
    for _ in range(n):
        out.append(x)
        x = x + (0.05 + g.next())
    return out


KINDS = ["natural", "notaknot", "clamped", "second", "mixed", "periodic", "akima", "hermite",
         "quad-left", "quad-right", "quad-second", "subbotin", "subbotin-second"]
QUADRATIC = {
    "quad-left": ([(1, 0.5)], None),
    "quad-right": (None, [(1, -0.75)]),
    "quad-second": ([(2, 0.6)], None),
    "subbotin": ([(1, 0.5)], [(1, -0.75)]),
    "subbotin-second": ([(2, 0.6)], [(2, -0.4)]),
}
SIZES = [2, 3, 4, 1000, 100000]
PARTS = ["random", "graded", "uniform"]


def build(kind, x, y, d):
    if kind == "natural":
        return CubicSpline(x, y, bc_type="natural")
    if kind == "notaknot":
        return CubicSpline(x, y, bc_type="not-a-knot")
    if kind == "clamped":
        return CubicSpline(x, y, bc_type=((1, 0.5), (1, -1.25)))
    if kind == "second":
        return CubicSpline(x, y, bc_type=((2, 0.75), (2, -0.5)))
    if kind == "mixed":
        return CubicSpline(x, y, bc_type=((1, 0.5), (2, -0.5)))
    if kind == "periodic":
        return CubicSpline(x, y, bc_type="periodic")
    if kind == "akima":
        return Akima1DInterpolator(x, y)
    if kind in QUADRATIC:
        t = None
        if kind.startswith("subbotin"):
            t = np.r_[(x[0],) * 3, (x[1:] + x[:-1]) / 2, (x[-1],) * 3]
        return make_interp_spline(x, y, k=2, t=t, bc_type=QUADRATIC[kind])
    return CubicHermiteSpline(x, y, d)


def main():
    seed = 1
    for ki, kind in enumerate(KINDS):
        for si, n in enumerate(SIZES):
            part = PARTS[(ki + si) % 3]
            if "second" in kind and kind != "second" and part == "graded":
                # A given second derivative on a cell 10^-9 wide: scipy's banded
                # solve keeps only about six digits of it there.
                part = "random"
            seed += 1
            g = Lcg(seed)
            x = partition(part, n, g)
            y = [2.0 * g.next() - 1.0 for _ in range(n)]
            d = [2.0 * g.next() - 1.0 for _ in range(n)]
            if kind == "periodic":
                y[-1] = y[0]
            if (kind == "akima" and n < 3) or (kind == "periodic" and n < 3):
                continue  # scipy does not take these; the test checks them in closed form
            if kind == "quad-second" and n > 1000:
                continue  # scipy's solution keeps only 8 digits of the given second derivative
            xa, ya, da = np.array(x), np.array(y), np.array(d)
            s = build(kind, xa, ya, da)
            print(f"case {kind} {part} {n} {seed}")
            if kind in QUADRATIC:
                sub = kind.startswith("subbotin")
                cells = n if sub else n - 1
                ends = np.r_[x[0], (xa[1:] + xa[:-1]) / 2] if sub else xa
                for m in sorted({0, (cells - 1) // 2, cells - 1}):
                    vals = [float(s(ends[m], nu)) / (2.0 if nu == 2 else 1.0) for nu in range(3)]
                    print("coef", m, *map(repr, vals))
            else:
                for m in sorted({0, (n - 1) // 2, n - 2}):
                    c = s.c[:, m]
                    print("coef", m, *(repr(float(c[3 - k])) for k in range(4)))
            mid = (n - 1) // 2
            inside = x[mid] + 0.37 * (x[mid + 1] - x[mid])
            sites = [inside] if kind == "periodic" else [x[0] - 0.3, inside, x[-1] + 0.4]
            for t in sites:
                vals = [float(s(t, nu, extrapolate=True)) for nu in range(4)]
                vals = [v if np.isfinite(v) else 0.0 for v in vals]
                print("site", repr(t), *map(repr, vals))
            if kind in QUADRATIC:
                pairs = [(x[0] - 0.2, x[-1] + 0.1), (inside, x[1])]
            elif kind == "periodic":
                pairs = [(x[0], x[-1]), (inside, x[1])]
            else:
                pairs = [(x[0] - 0.2, x[-1] + 0.1), (inside, x[1])]
            for a, b in pairs:
                print("int", repr(a), repr(b), repr(float(s.integrate(a, b, extrapolate=True))))


if __name__ == "__main__":
    main()
