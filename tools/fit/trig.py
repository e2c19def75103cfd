#!/usr/bin/env python3
"""Constants and coefficient tables of the sine, cosine and tangent kernels.

    python3 tools/fit/trig.py > src/vector_math/trig/trig_tables.inc

Reduction constants:
  * 2/pi in double, and pi/2 cut into three doubles P1 + P2 + P3 (each the
    double nearest to what the previous ones leave), for x - k*pi/2 with
    k < 2^30;
  * pi/2 as a double-double, to scale the exact reduction's fraction;
  * the bits of 2/pi as 64-bit words behind one word of zeros, for the exact
    (Payne-Hanek) reduction of any finite double.

Polynomials, with z = r^2 on |r| <= R (R = 0.786, a little over pi/4 so that
a k rounded from x * 2/pi one step off still lands inside):
  sin r = r + r z S(z),        S(z) ~ (sin(sqrt z)/sqrt z - 1) / z,
  cos r = 1 - z/2 + z^2 C(z),  C(z) ~ (cos(sqrt z) - 1 + z/2) / z^2.
S and C interpolate their targets at Chebyshev nodes of [0, R^2] in 200-bit
arithmetic (near-minimax for these smooth functions), then are rounded to
double; S's constant term also gets its rounding error as a second double.
Each set's comment gives the relative error of sin and cos with the rounded
coefficients (S's constant term with its low part), measured on 2000 points
of (0, R].
"""
from mpmath import mp, mpf, sin, cos, tan, sqrt, pi, lu_solve, matrix, floor, ldexp

mp.prec = 200
R = mpf('0.786')
Z = R * R
# Sine on |r| <= pi/2 (plus the same kind of margin), for kernels that reduce by pi.
R_PI = mpf('1.5709')


def d(x):
    """x rounded to the nearest double (as an mpf)."""
    return mpf(float(x)) if abs(x) > mpf(2) ** -1000 else mpf(0)


def hexd(x):
    return float(x).hex()


def g_sin(z):
    s = sqrt(z)
    return (sin(s) / s - 1) / z


def g_cos(z):
    return (cos(sqrt(z)) - 1 + z / 2) / (z * z)


def fit(g, n, zmax=None):
    zmax = Z if zmax is None else zmax
    nodes = [zmax / 2 * (1 - cos(pi * (2 * k + 1) / (2 * n))) for k in range(n)]
    A = matrix(n, n)
    b = matrix(n, 1)
    for i, z in enumerate(nodes):
        for j in range(n):
            A[i, j] = z ** j
        b[i] = g(z)
    c = lu_solve(A, b)
    return [c[j] for j in range(n)]


def horner(c, z):
    acc = mpf(0)
    for v in reversed(c):
        acc = acc * z + v
    return acc


def errors(cs, cs_lo, cc):
    cs = [cs[0] + cs_lo] + cs[1:]
    es = ec = mpf(0)
    for i in range(1, 2001):
        r = R * i / 2000
        z = r * r
        es = max(es, abs((r + r * z * horner(cs, z)) / sin(r) - 1))
        ec = max(ec, abs((1 - z / 2 + z * z * horner(cc, z)) / cos(r) - 1))
    return es, ec


def log2(x):
    from mpmath import log
    return float(log(x, 2)) if x > 0 else float('-inf')


def poly_set(name, n_sin, n_cos, purpose):
    cs = [d(v) for v in fit(g_sin, n_sin)]
    cs_exact = fit(g_sin, n_sin)
    cs_lo = d(cs_exact[0] - cs[0])
    cc = [d(v) for v in fit(g_cos, n_cos)]
    es, ec = errors(cs, cs_lo, cc)
    out = [f"// {name}: {purpose}; sin error 2^{log2(es):.1f}, cos error 2^{log2(ec):.1f} relative."]
    out.append(f"constexpr TrigPoly {name}{{")
    out.append(f"    {n_sin}, {{{', '.join(hexd(v) for v in cs)}}}, {hexd(cs_lo)},")
    out.append(f"    {n_cos}, {{{', '.join(hexd(v) for v in cc)}}}}};")
    return "\n".join(out)


def f32(x):
    """x rounded to the nearest float (as an mpf)."""
    import struct
    return mpf(struct.unpack('f', struct.pack('f', float(x)))[0])


def hexf(x):
    mant, exp = float(x).hex().split("p")
    return mant.rstrip("0").rstrip(".") + "p" + exp + "f"


def odd_set(name, n, single, purpose, split=False):
    """sin r = r + r z S(z) on |r| <= R_PI, coefficients in double or float;
    with split, S(0) also gets its rounding error as a second double."""
    rnd, fmt, ctype = (f32, hexf, "float") if single else (d, hexd, "double")
    exact = fit(g_sin, n, R_PI * R_PI)
    cs = [rnd(v) for v in exact]
    lo = d(exact[0] - cs[0]) if split else mpf(0)
    ce = [cs[0] + lo] + cs[1:]
    err = mpf(0)
    for i in range(1, 2001):
        r = R_PI * i / 2000
        err = max(err, abs((r + r * r * r * horner(ce, r * r)) / sin(r) - 1))
    out = [f"// {name}: {purpose}; error 2^{log2(err):.1f} relative."]
    out.append(f"constexpr {ctype} {name}[{n}] = {{{', '.join(fmt(v) for v in cs)}}};")
    if split:
        out.append(f"constexpr double {name}S0Lo = {hexd(lo)};")
    return "\n".join(out)


def g_tan(z):
    s = sqrt(z)
    return tan(s) / s


def rational_set(name, m, n, single, purpose):
    """tan r = r P(z) / Q(z) on |r| <= R, Q(0) = 1: P of degree m, Q of degree n,
    interpolating at m + n + 1 Chebyshev nodes of [0, R^2]."""
    rnd, fmt, ctype = (f32, hexf, "float") if single else (d, hexd, "double")
    k = m + n + 1
    nodes = [Z / 2 * (1 - cos(pi * (2 * i + 1) / (2 * k))) for i in range(k)]
    A = matrix(k, k)
    b = matrix(k, 1)
    for i, z in enumerate(nodes):
        g = g_tan(z)
        for j in range(m + 1):
            A[i, j] = z ** j
        for j in range(1, n + 1):
            A[i, m + j] = -g * z ** j
        b[i] = g
    c = lu_solve(A, b)
    pc = [rnd(c[j]) for j in range(m + 1)]
    qc = [mpf(1)] + [rnd(c[m + j]) for j in range(1, n + 1)]
    err = mpf(0)
    for i in range(1, 2001):
        r = R * i / 2000
        err = max(err, abs(r * horner(pc, r * r) / horner(qc, r * r) / tan(r) - 1))
    out = [f"// {name}: {purpose}; error 2^{log2(err):.1f} relative."]
    out.append(f"constexpr {ctype} {name}P[{m + 1}] = {{{', '.join(fmt(v) for v in pc)}}};")
    out.append(f"constexpr {ctype} {name}Q[{n + 1}] = {{{', '.join(fmt(v) for v in qc)}}};")
    return "\n".join(out)


def float_pair(name, n_sin, n_cos, purpose):
    """S and C on |r| <= R in floats, for the single-precision kernels that stay in float."""
    cs = [f32(v) for v in fit(g_sin, n_sin)]
    cc = [f32(v) for v in fit(g_cos, n_cos)]
    es, ec = errors(cs, mpf(0), cc)
    out = [f"// {name}: {purpose}; sin error 2^{log2(es):.1f}, cos error 2^{log2(ec):.1f} relative."]
    out.append(f"constexpr float {name}Sin[{n_sin}] = {{{', '.join(hexf(v) for v in cs)}}};")
    out.append(f"constexpr float {name}Cos[{n_cos}] = {{{', '.join(hexf(v) for v in cc)}}};")
    return "\n".join(out)


def two_over_pi_words(count):
    v = 2 / pi
    words = [0]  # one word of zeros in front: windows may start before the point
    for _ in range(count - 1):
        v *= 2 ** 64
        w = int(floor(v))
        words.append(w)
        v -= w
    return words


def main():
    mp.prec = 1400  # enough for the 2/pi words
    words = two_over_pi_words(22)
    mp.prec = 200
    two_over_pi = d(2 / pi)
    p1 = d(pi / 2)
    p2 = d(pi / 2 - p1)
    p3 = d(pi / 2 - p1 - p2)
    hi = d(pi / 2)
    lo = d(pi / 2 - hi)

    print("// Generated by tools/fit/trig.py; regenerate with")
    print("//   python3 tools/fit/trig.py > src/vector_math/trig/trig_tables.inc")
    print("// Do not edit. Made with mpmath at 200-bit working precision.")
    print()
    print(f"constexpr double kTwoOverPi = {hexd(two_over_pi)};")
    print("// pi/2 = P1 + P2 + P3 + O(2^-160): x - k P1 is exact for k < 2^30.")
    print(f"constexpr double kPio2_1 = {hexd(p1)};")
    print(f"constexpr double kPio2_2 = {hexd(p2)};")
    print(f"constexpr double kPio2_3 = {hexd(p3)};")
    print("// pi/2 as a double-double.")
    print(f"constexpr double kPio2Hi = {hexd(hi)};")
    print(f"constexpr double kPio2Lo = {hexd(lo)};")
    print()
    print("// 2/pi = sum of kTwoOverPiBits[i] * 2^(-64 i), i >= 1; word 0 is zero padding.")
    print(f"constexpr uint64_t kTwoOverPiBits[{len(words)}] = {{")
    for i in range(0, len(words), 3):
        print("    " + " ".join(f"0x{w:016x}ull," for w in words[i:i + 3]))
    print("};")
    print()
    print(poly_set("kPolyDoubleHA", 7, 7, "double HA, sin and cos carried with their low parts"))
    print(poly_set("kPolyDoubleLA", 6, 6, "double LA"))
    print(poly_set("kPolyDoubleEP", 4, 4, "double EP"))
    print(poly_set("kPolySingleHA", 4, 4, "single HA and LA, evaluated in double"))
    print(poly_set("kPolySingleEP", 2, 2, "single EP, evaluated in double"))
    print()
    print("// Odd polynomials for sin r on |r| <= 1.5709, for the kernels that reduce by pi.")
    print(f"constexpr double kInvPi = {hexd(d(1 / pi))};")
    fp1 = f32(pi)
    fp2 = f32(pi - fp1)
    fp3 = f32(pi - fp1 - fp2)
    print("// pi = PF1 + PF2 + PF3 + O(2^-72) in floats.")
    print(f"constexpr float kPiF_1 = {hexf(fp1)};")
    print(f"constexpr float kPiF_2 = {hexf(fp2)};")
    print(f"constexpr float kPiF_3 = {hexf(fp3)};")
    print(f"constexpr float kInvPiF = {hexf(f32(1 / pi))};")
    print(odd_set("kSinPiDoubleHA", 10, False, "double HA, S(0) in two parts", split=True))
    print(odd_set("kSinPiDoubleLA", 9, False, "double LA"))
    print(odd_set("kSinPiDoubleEP", 5, False, "double EP"))
    print(odd_set("kSinPiSingleHA", 5, False, "single HA, evaluated in double"))
    print(odd_set("kSinPiSingleLA", 4, True, "single LA, in float"))
    print(odd_set("kSinPiSingleEP", 3, True, "single EP, in float"))
    print()
    print("// Rational tangents tan r = r P(z) / Q(z) on |r| <= 0.786, for the kernels below HA.")
    print(rational_set("kTanDoubleLA", 3, 3, False, "double LA"))
    print(rational_set("kTanDoubleEP", 2, 2, False, "double EP"))
    print(rational_set("kTanSingleHA", 2, 2, False, "single HA, evaluated in double"))
    print(rational_set("kTanSingleLA", 2, 2, True, "single LA, in float"))
    print(rational_set("kTanSingleEP", 1, 1, True, "single EP, in float"))
    print()
    print("// Sine and cosine in float on |r| <= 0.786, for single SinCos below HA.")
    print(float_pair("kSinCosSingleLA", 3, 3, "single LA"))
    print(float_pair("kSinCosSingleEP", 2, 2, "single EP"))


if __name__ == "__main__":
    main()
