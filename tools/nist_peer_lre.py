#!/usr/bin/python3
"""Checks the NIST univariate test sets and writes each file's peer line.

Usage: /usr/bin/python3 tools/nist_peer_lre.py tests/summary_stats/nist_univariate/*.dat

For every file: recomputes the mean and the sample standard deviation of the
data in 50-digit decimal arithmetic and stops unless both round to the
certified values of the header; then measures the standard-deviation LRE
(log relative error, capped at 15 digits) of numpy (mean and std with ddof=1)
and of GSL (gsl_stats_mean, gsl_stats_sd through ctypes) on the same doubles,
and rewrites the line "# peer sd LRE x" with the better of the two, to two
decimals. Needs python3-numpy and libgsl from Debian; reproducible byte for
byte.
"""
import ctypes
import math
import sys
from decimal import Decimal, getcontext

import numpy as np

getcontext().prec = 50
gsl = ctypes.CDLL('libgsl.so.27')
for name in ('gsl_stats_mean', 'gsl_stats_sd'):
    getattr(gsl, name).restype = ctypes.c_double
    getattr(gsl, name).argtypes = (ctypes.POINTER(ctypes.c_double), ctypes.c_size_t,
                                   ctypes.c_size_t)


def lre(got, cert):
    err = abs(Decimal(got) - cert)
    return 15.0 if err == 0 else min(15.0, -math.log10(err / abs(cert)))


def header_value(lines, key):
    return next(Decimal(l.split()[-1]) for l in lines if l.startswith('# ' + key))


for path in sys.argv[1:]:
    lines = open(path).read().splitlines()
    text = [l for l in lines if not l.startswith('#')]
    exact = [Decimal(t) for t in text]
    n = len(exact)
    mean = sum(exact) / n
    sd = (sum((x - mean) ** 2 for x in exact) / (n - 1)).sqrt()
    cm, cs = header_value(lines, 'certified mean'), header_value(lines, 'certified sd')
    if abs(mean - cm) > abs(cm) * Decimal('1e-15') or abs(sd - cs) > cs * Decimal('1e-15'):
        sys.exit('%s: data do not give the certified values (%s, %s)' % (path, mean, sd))
    x = np.array([float(t) for t in text])
    np_sd = float(np.std(x, ddof=1))
    buf = (ctypes.c_double * n)(*x)
    gsl_sd = gsl.gsl_stats_sd(buf, 1, n)
    best = max(lre(np_sd, cs), lre(gsl_sd, cs))
    print('%-10s numpy %.1f  GSL %.1f' % (path.split('/')[-1], lre(np_sd, cs), lre(gsl_sd, cs)))
    out = ['# peer sd LRE %.2f' % best if l.startswith('# peer sd LRE')
           else l for l in lines]
    open(path, 'w').write('\n'.join(out) + '\n')
