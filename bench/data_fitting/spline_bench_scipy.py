#!/usr/bin/python3
"""scipy's CubicSpline on the sizes of spline_bench.cpp, for the ratios.

Construction (natural) on 10^5 breakpoints for 1 and 100 functions, and
__call__ at 10^6 random and sorted sites on 10^4 breakpoints. Prints the
best of several runs in milliseconds.

    /usr/bin/python3 bench/data_fitting/spline_bench_scipy.py
"""
import time

import numpy as np
from scipy.interpolate import CubicSpline


def best(f, runs):
    t = []
    for _ in range(runs):
        t0 = time.perf_counter()
        f()
        t.append(time.perf_counter() - t0)
    return 1e3 * min(t)


def main():
    g = np.random.default_rng(1)
    for ny in (1, 100):
        x = np.cumsum(g.uniform(0.1, 1.9, 100000))
        y = g.uniform(-1, 1, (100000, ny)) if ny > 1 else g.uniform(-1, 1, 100000)
        ms = best(lambda: CubicSpline(x, y, bc_type="natural"), 5 if ny == 1 else 2)
        print(f"CubicSpline construct nx=100000 ny={ny}: {ms:.2f} ms")
    x = np.cumsum(g.uniform(0.1, 1.9, 10000))
    s = CubicSpline(x, g.uniform(-1, 1, 10000), bc_type="natural")
    sites = g.uniform(x[0], x[-1], 1000000)
    print(f"CubicSpline __call__ 1e6 random sites nx=10000: {best(lambda: s(sites), 5):.2f} ms")
    sites.sort()
    print(f"CubicSpline __call__ 1e6 sorted sites nx=10000: {best(lambda: s(sites), 5):.2f} ms")


if __name__ == "__main__":
    main()
