#!/usr/bin/python3
"""L2-star discrepancy (Warnock's formula) of the first 2^k points in
dimensions 2..10: this library's SOBOL and NIEDERR streams (through ctypes on
the built shared library), scipy's unscrambled Sobol points, and
pseudo-random points (numpy's default generator, seed 12345).

Usage: /usr/bin/python3 bench/streams/quasi_discrepancy.py [build/default/liboxa_vml_avx.so]

The streams skip the origin, so their first 2^k points are points 1 .. 2^k;
scipy's random_base2(k) gives points 0 .. 2^k - 1.
"""
import ctypes
import sys

import numpy as np
from scipy.stats import qmc

LIB = sys.argv[1] if len(sys.argv) > 1 else "build/default/liboxa_vml_avx.so"
SOBOL, NIEDERR = 0x600000, 0x700000


def stream_points(lib, brng, d, n):
    handle = ctypes.c_void_p()
    seed = (ctypes.c_uint32 * 1)(d)
    assert lib._vslNewStreamEx(ctypes.byref(handle), brng, 1, seed) == 0
    out = np.empty(n * d, dtype=np.float64)
    gen = lib._vsldBRngSOBOL if brng == SOBOL else lib._vsldBRngNIEDERR
    gen.argtypes = [ctypes.c_void_p, ctypes.c_int32, ctypes.c_void_p, ctypes.c_double,
                    ctypes.c_double]
    assert gen(handle, n * d, out.ctypes.data, 0.0, 1.0) == 0
    lib._vslDeleteStream(ctypes.byref(handle))
    return out.reshape(n, d)


def l2_star(x):
    """Warnock: T^2 = 3^-d - 2^(1-d)/N sum_i prod_j (1 - x_ij^2)
    + 1/N^2 sum_i sum_k prod_j (1 - max(x_ij, x_kj))."""
    n, d = x.shape
    t = 3.0**-d - 2.0**(1 - d) / n * np.prod(1.0 - x * x, axis=1).sum()
    pair = 0.0
    for s in range(0, n, 256):
        m = np.maximum(x[s:s + 256, None, :], x[None, :, :])
        pair += np.prod(1.0 - m, axis=2).sum()
    return np.sqrt(t + pair / (n * n))


def main():
    lib = ctypes.CDLL(LIB)
    rng = np.random.default_rng(12345)
    print("| d | N | SOBOL | NIEDERR | scipy Sobol | pseudo-random | (log N)^d / N |")
    print("|---|---|---|---|---|---|---|")
    for d in range(2, 11):
        for k in (8, 10, 12):
            n = 1 << k
            row = [l2_star(stream_points(lib, SOBOL, d, n)),
                   l2_star(stream_points(lib, NIEDERR, d, n)),
                   l2_star(qmc.Sobol(d, scramble=False).random_base2(k)),
                   l2_star(rng.random((n, d)))]
            ref = np.log(n)**d / n
            print("| %d | 2^%d | %s | %.3g |" % (d, k, " | ".join("%.3e" % v for v in row), ref))


if __name__ == "__main__":
    main()
