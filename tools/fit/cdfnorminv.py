#!/usr/bin/env python3
"""Coefficient tables of the inverse normal CDF kernels.

    python3 tools/fit/cdfnorminv.py > src/vector_math/cdfnorminv/cdfnorminv_tables.inc

Bulk: Phi^-1(x) = (2x - 1) * R(y) with y = 2x (x < 1/2) or y = 2 - 2x, and
R(y) = Phi^-1(y/2) / (y - 1), a smooth positive function of y in (0, 1]. Each
binade of y is cut into pieces by its leading significand bits; on a piece,
t = m - centre, m being the remaining significand bits under the exponent of
1.0, so y = 2^e * (1 + j/P + t + centre - 1). Each piece gets a polynomial in t,
interpolated at Chebyshev nodes in 160-bit arithmetic (near-minimax for these
very smooth functions), then rounded to double. Row 0 of the double EP and LA
tables starts with published reference values, kept as they are.

Far tail (0 < x < 2^-54): w = -ln x, s = 1/sqrt(w), Phi^-1(x) = -Q(s) * sqrt(w)
with Q smooth; rows of 16 doubles centred at s = j/128: 15 coefficients and
the low part of c0 (so that Q keeps about 2^-70 relative precision).
Logarithm table: 256 pairs (r, -ln r), r = 1/m for the midpoint m of each
interval of the 8 leading significand bits, rounded to 21 significant bits so
that products with it stay short.

Each row comment gives the achieved relative error of the row's polynomial
(with its coefficients as rounded) against R, measured on 17 points.
"""
import struct
import sys
from mpmath import mp, mpf, erfc, exp, sqrt, pi, log, cos, lu_solve, matrix, ldexp, floor

mp.prec = 160
# c3, c4, c5 of ln(1 + u) = u - u^2/2 + c3 u^3 + c4 u^4 + c5 u^5 + c6 u^6 on
# |u| <= 2^-8 (c6 is fitted below, with these fixed).
LOG_C345 = (0.33333333333145093, -0.2499999999965227, 0.20000103714740713)

def ninv(p):
    """Phi^-1(p) for 0 < p <= 1/2 by Halley iteration on erfc."""
    p = mpf(p)
    if p == mpf(1) / 2:
        return mpf(0)
    t = sqrt(-2 * log(p))
    z = -(t - (mpf('2.515517') + mpf('0.802853') * t + mpf('0.010328') * t * t) /
          (1 + mpf('1.432788') * t + mpf('0.189269') * t * t + mpf('0.001308') * t ** 3))
    for _ in range(60):
        f = erfc(-z / sqrt(2)) / 2 - p
        phi = exp(-z * z / 2) / sqrt(2 * pi)
        u = f / phi
        dz = u / (1 + z * u / 2)
        z -= dz
        if abs(dz) <= abs(z) * ldexp(1, 12 - mp.prec) or dz == 0:
            break
    return z

def R(y):
    y = mpf(y)
    if y == 1:
        return sqrt(2 * pi) / 2  # the limit at x = 1/2
    return ninv(y / 2) / (y - 1)

def fit(f, h, degree):
    """Monomial coefficients of the interpolant of f at Chebyshev nodes of [-h, h]."""
    n = degree + 1
    nodes = [h * cos(pi * (2 * k + 1) / (2 * n)) for k in range(n)]
    A = matrix(n, n)
    b = matrix(n, 1)
    for i, t in enumerate(nodes):
        for k in range(n):
            A[i, k] = t ** k
        b[i] = f(t)
    c = lu_solve(A, b)
    return [c[k] for k in range(n)]

def rel_error(f, h, coeffs):
    worst = mpf(0)
    for k in range(17):
        t = -h + 2 * h * k / 16
        p = mpf(0)
        for c in reversed(coeffs):
            p = p * t + c
        ref = f(t)
        worst = max(worst, abs((p - ref) / ref))
    return worst

def split_hi(c):
    """c rounded to 21 significant bits (the low 32 bits of the double are zero)."""
    c = mpf(c)
    if c == 0:
        return 0.0
    e = int(floor(log(abs(c), 2)))
    return float(ldexp(mp.nint(ldexp(c, 20 - e)), e - 20))

def piece(row, pieces_log2, centre):
    """y(t) of a row: row 0 is the top piece of the binade [1/2, 1)."""
    P = 1 << pieces_log2
    binade = row // P          # 0 for [1/2, 1)
    j = P - 1 - row % P        # leading significand bits
    scale = ldexp(1, -1 - binade)
    return lambda t: scale * (1 + mpf(j) / P + (mpf(centre) + t - 1))

def to_float32(x):
    return struct.unpack('f', struct.pack('f', float(x)))[0]

def bulk_table(rows, pieces_log2, centre, degree, pinned=(), rounding=float):
    h = ldexp(1, -pieces_log2 - 1)
    out = []
    for row in range(rows):
        y = piece(row, pieces_log2, centre)
        f = lambda t, y=y: R(y(t))
        c = [rounding(x) for x in fit(f, h, degree)]
        if row == 0:
            c[:len(pinned)] = pinned
        out.append((c, rel_error(f, h, [mpf(x) for x in c]), f, h))
    return out

def hexf(x):
    return float(x).hex()

def emit_rows(name, rows, per_row, comment, constants, ctype="double"):
    suffix = "f" if ctype == "float" else ""
    print(f"// {comment}")
    n = len(rows) * per_row + len(constants)
    print(f"alignas(64) constexpr {ctype} {name}[{n}] = {{")
    for i, (vals, err) in enumerate(rows):
        vals = list(vals) + [0.0] * (per_row - len(vals))
        print("    " + ", ".join(hexf(v) + suffix for v in vals) + f",  // row {i}, rel err {float(err):.2e}")
    if constants:
        print("    // constants: " + ", ".join(label for label, _ in constants))
        vals = [v.replace("kInf", "kInfF") if ctype == "float" else v for _, v in constants]
        print("    " + ", ".join(vals) + ",")
    print("};")
    print()

def main():
    print("// Generated by tools/fit/cdfnorminv.py; regenerate with")
    print("//   python3 tools/fit/cdfnorminv.py > src/vector_math/cdfnorminv/cdfnorminv_tables.inc")
    print("// Do not edit. Made with mpmath at 160-bit working precision.")
    print()
    print("// Row k of a bulk table belongs to the piece k = B - (high word of y >> s) of y,")
    print("// its polynomial is in t = m - centre (see cdfnorminv.hpp).")
    print()

    def consts(base, keep_bits, centre):
        return [("row base", hexf(base)), ("significand mask bits", hexf(keep_bits)),
                ("centre", hexf(centre)), ("0.5", hexf(0.5)), ("1.0", hexf(1.0)),
                ("2.0", hexf(2.0)), ("+inf", "kInf"), ("-inf", "-kInf"),
                ("1.0", hexf(1.0)), ("-1.0", hexf(-1.0)), ("0.0", hexf(0.0))]

    # Double EP: cubic, 16 pieces per binade, rows 0..847 used, 851 stored.
    ep_pinned = [1.2533942533804652, -0.005128202620709582, 0.08210634660093051,
                 -0.0014109816448152064]
    ep = bulk_table(851, 4, 1.03125, 3, ep_pinned)
    emit_rows("dCdfNormInv_EP_Table", [(c, e) for c, e, _, _ in ep], 4,
              "Double EP: degree 3, 16 pieces per binade, centre 1.03125, |t| <= 1/32.",
              consts(0x3FEF, 16, 1.03125))

    # Double LA: degree 11, 4 pieces per binade, rows 0..211 used, 213 stored.
    la_pinned = [1.2545986037297951, -0.020595738061063327, 0.08309324341611454]
    la = bulk_table(213, 2, 1.125, 11, la_pinned)
    emit_rows("dCdfNormInv_LA_Table", [(c, e) for c, e, _, _ in la], 12,
              "Double LA: degree 11, 4 pieces per binade, centre 1.125, |t| <= 1/8.",
              consts(0xFFB, 18, 1.125))

    # Double HA: degree 14, c0 and c1 split into a 21-bit head and a tail.
    # Row layout: c0_lo, c1_lo, c2 .. c14, c0_hi, c1_hi.
    ha_rows = []
    for row in range(212):
        y = piece(row, 2, 1.125)
        f = lambda t, y=y: R(y(t))
        h = mpf(1) / 8
        c = fit(f, h, 14)
        c0_hi, c1_hi = split_hi(c[0]), split_hi(c[1])
        c0_lo, c1_lo = float(c[0] - c0_hi), float(c[1] - c1_hi)
        rest = [float(x) for x in c[2:]]
        err = rel_error(f, h, [mpf(c0_hi) + mpf(c0_lo), mpf(c1_hi) + mpf(c1_lo)] + [mpf(x) for x in rest])
        ha_rows.append(([c0_lo, c1_lo] + rest + [c0_hi, c1_hi], err))
    emit_rows("dCdfNormInv_HA_Table", ha_rows, 17,
              "Double HA: degree 14, 4 pieces per binade, centre 1.125; c0, c1 as head + tail.",
              consts(0xFFB, 18, 1.125))

    # Single precision HA and LA, evaluated in double: 4 pieces per binade
    # down to y = 2^-148, the smallest y a positive float gives; 592 rows.
    for level, degree in (("HA", 5), ("LA", 4)):
        t = bulk_table(592, 2, 1.125, degree)
        emit_rows(f"sCdfNormInv_{level}_Table", [(c, e) for c, e, _, _ in t], degree + 1,
                  f"Single {level}: degree {degree}, 4 pieces per binade, centre 1.125, |t| <= 1/8.",
                  consts(0xFFB, 18, 1.125))
    # Single EP, evaluated in float: quadratics in float, rows padded to 4,
    # 4 pieces per binade down to y = 2^-126 (504 rows); the row base 0x1FB
    # and shift 21 index the float's bits.
    t = bulk_table(504, 2, 1.125, 2, rounding=to_float32)
    emit_rows("sCdfNormInv_EP_Table", [(c, e) for c, e, _, _ in t], 4,
              "Single EP: degree 2 in float, 4 pieces per binade, centre 1.125, |t| <= 1/8.",
              consts(0x1FB, 21, 1.125), ctype="float")

    # Far tail: Q(s) = -Phi^-1(exp(-1/s^2)) * s on rows j = 0..21 centred at
    # j/128 (rows 5..21 are reached), degree 14 in v = s - j/128, |v| <= 1/256.
    tail_rows = []
    for j in range(22):
        if j < 5:
            tail_rows.append(([0.0] * 16, mpf(0)))
            continue
        sc = mpf(j) / 128
        f = lambda v, sc=sc: -ninv(exp(-1 / (sc + v) ** 2)) * (sc + v)
        h = mpf(1) / 256
        c = fit(f, h, 14)
        head = [float(x) for x in c]
        c0_lo = float(c[0] - mpf(head[0]))
        err = rel_error(f, h, [mpf(head[0]) + mpf(c0_lo)] + [mpf(x) for x in head[1:]])
        tail_rows.append((head + [c0_lo], err))
    emit_rows("dCdfNormInv_Tail_Table", tail_rows, 16,
              "Far tail: Q(v), degree 14: c0 .. c14, then the low part of c0; rows j = round(128 s),"
              " v = s - j/128 (rows 0-4 unused).",
              [])

    # Logarithm: 256 pairs (r, -ln r) for m in [1 + k/256, 1 + (k+1)/256).
    print("// Logarithm pairs (r, -ln r): r ~ 1/m for the interval of the 8 leading")
    print("// significand bits, rounded to 21 significant bits.")
    print("alignas(64) constexpr double dCdfNormInv_Log_Table[512] = {")
    for k in range(256):
        m = 1 + (mpf(k) + mpf(1) / 2) / 256
        r = split_hi(1 / m)
        print(f"    {hexf(r)}, {hexf(-log(mpf(r)))},")
    print("};")
    print()
    # c6 of the logarithm polynomial: least-squares fit of the remainder of
    # ln(1+u) after the fixed lower terms, over |u| <= 2^-8.
    c3, c4, c5 = (mpf(c) for c in LOG_C345)
    num = den = mpf(0)
    for k in range(-64, 65):
        u = ldexp(mpf(k), -14)
        if u == 0:
            continue
        rem = log(1 + u) - (u + u * u * (mpf(-0.5) + c3 * u) + u ** 4 * (c4 + c5 * u))
        num += rem * u ** 6
        den += u ** 12
    print(f"constexpr double kLogC6 = {hexf(num / den)};")
    # The fixed lower terms, and ln 2 as a head of 32 significant bits (e * head
    # is exact for the exponents of a double) and the rounded rest, for the
    # far tail's logarithm (cdfnorminv_tail.cpp).
    for i, c in enumerate(LOG_C345):
        print(f"constexpr double kLogC{i + 3} = {hexf(c)};")
    ln2_hi = floor(log(2) * 2 ** 32) / 2 ** 32
    print(f"constexpr double kTailLn2Hi = {hexf(ln2_hi)};")
    print(f"constexpr double kTailLn2Lo = {hexf(log(2) - ln2_hi)};")
    sys.stdout.flush()
    for name, rows in (("EP", ep), ("LA", la)):
        worst = max(e for _, e, _, _ in rows)
        print(f"{name}: worst row error {float(worst):.3e}", file=sys.stderr)
    print(f"HA: worst row error {float(max(e for _, e in ha_rows)):.3e}", file=sys.stderr)

if __name__ == "__main__":
    main()
