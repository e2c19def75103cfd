#!/usr/bin/python3
"""Times scipy's unscrambled Sobol points (the peer of bench_streams'
BM_Quasi/SOBOL): qmc.Sobol(d, scramble=False).random_base2(20) for d = 1, 10,
100, best of five runs each, in CPU milliseconds (process time, as the
benchmark's CPU column) and nanoseconds per point.

Usage: /usr/bin/python3 bench/streams/scipy_sobol_time.py
"""
import time

from scipy.stats import qmc

M = 20
for d in (1, 10, 100):
    best = float("inf")
    for _ in range(5):
        engine = qmc.Sobol(d, scramble=False)
        t0 = time.process_time()
        engine.random_base2(M)
        best = min(best, time.process_time() - t0)
    print("scipy Sobol d=%-3d 2^%d points: %8.2f ms  %7.2f ns/point" % (d, M, best * 1e3, best * 1e9 / 2**M))
