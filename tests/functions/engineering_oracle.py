#!/usr/bin/python3
"""Cases for the engineering functions with their values from scipy.special, cmath and Python's
own integers.

Prints one case per line, fields separated by tabs: the formula, the kind of result ("n" a
number, "c" a complex number as "re;im", "t" a text, "e" an error literal), the expected value,
the relative tolerance and the absolute one (used near zeros). The arguments are drawn with a
fixed seed, so a failure can be reproduced.
"""
import cmath
import math
import random

from scipy import special

rng = random.Random(20240612)
REL, ABS = 1e-9, 1e-13
cases = []


def num(x):
    return repr(float(x))


def text(s):
    return '"' + s + '"'


def usable(x):
    # Zero, subnormal and non-finite values are out of the engine's number range on purpose.
    return math.isfinite(x) and (x == 0 or abs(x) >= 1e-300)


def add_number(formula, value, rel=REL, absolute=ABS):
    # A real function's 0 here is an underflow (far tails of erfc, high orders of besselJ), where
    # the engine's subnormal is "#NUM!" and scipy's may be 0 or a subnormal: no reference.
    if usable(value) and abs(value) >= 1e-300:
        cases.append((formula, "n", num(value), rel, absolute))


def add_complex(formula, z, rel=REL, absolute=ABS):
    if usable(z.real) and usable(z.imag) and abs(z.real) < 1e300 and abs(z.imag) < 1e300:
        cases.append((formula, "c", num(z.real) + ";" + num(z.imag), rel, absolute))


def complex_text(z, unit="i"):
    """z written as a user would: both parts, or one of them, in several spellings."""
    re, im = repr(z.real), repr(abs(z.imag))
    sign = "-" if z.imag < 0 else "+"
    style = rng.randrange(4)
    if style == 0:
        return f"{re} {sign} {im}{unit}"
    if style == 1:
        return f"{re}{sign}{im}{unit}"
    if style == 2 and z.real == 0:
        return f"{'-' if z.imag < 0 else ''}{im}{unit}"
    return f" {re} {sign}{im}{unit} "


def draw_complex():
    r = rng.random()
    if r < 0.1:
        return complex(round(rng.uniform(-20, 20)), 0)
    if r < 0.2:
        return complex(0, round(rng.uniform(-20, 20), 3))
    scale = 10 ** rng.uniform(-3, 2)
    return complex(round(rng.uniform(-1, 1) * scale, 6), round(rng.uniform(-1, 1) * scale, 6))


def bessel_and_error_functions():
    for _ in range(1500):
        n = rng.randrange(0, 30) if rng.random() < 0.8 else rng.randrange(30, 120)
        x = rng.uniform(-50, 50) if rng.random() < 0.7 else 10 ** rng.uniform(-6, 2.5)
        # Near its zeros a Bessel function has only absolute accuracy; the same holds for scipy.
        add_number(f"=besselJ({num(x)}, {n})", special.jv(n, x), REL, 1e-12)
        if x > 0:
            add_number(f"=besselY({num(x)}, {n})", special.yn(n, x), REL, 1e-12)
    for _ in range(1500):
        x = rng.uniform(-6, 6) if rng.random() < 0.7 else rng.uniform(-27, 27)
        add_number(f"=erf({num(x)})", special.erf(x))
        add_number(f"=erfc({num(x)})", special.erfc(x))
        y = x + rng.uniform(-2, 2)
        # erf between two limits, from the complements when both lie in one tail.
        exact = special.erfc(x) - special.erfc(y) if x > 0 and y > 0 else (
            special.erfc(-y) - special.erfc(-x) if x < 0 and y < 0 else special.erf(y) - special.erf(x))
        add_number(f"=erf({num(x)}, {num(y)})", exact, 1e-8, 1e-15)


def complex_functions():
    unary = {
        "imExp": cmath.exp, "imSin": cmath.sin, "imCos": cmath.cos, "imSqrt": cmath.sqrt,
        "imLn": cmath.log, "imLog10": cmath.log10, "imLog2": lambda z: cmath.log(z) / math.log(2),
        "imConjugate": lambda z: z.conjugate(),
    }
    real = {"imAbs": abs, "imReal": lambda z: z.real, "imaginary": lambda z: z.imag,
            "imArgument": cmath.phase}
    for _ in range(600):
        z = draw_complex()
        unit = "j" if rng.random() < 0.2 else "i"
        zt = text(complex_text(z, unit))
        for name, f in unary.items():
            if z == 0 and name.startswith("imL"):
                cases.append((f"={name}({zt})", "e", "#NUM!", 0, 0))
                continue
            add_complex(f"={name}({zt})", f(z))
        for name, f in real.items():
            if not (z == 0 and name == "imArgument"):
                add_number(f"={name}({zt})", f(z))
        w = draw_complex()
        wt = text(complex_text(w))
        add_complex(f"=imSub({zt}, {wt})", z - w)
        if w != 0:
            add_complex(f"=imDiv({zt}, {wt})", z / w)
        k = rng.randrange(-6, 7)
        if z != 0:
            add_complex(f"=imPower({zt}, {k})", z ** k, 1e-9, 1e-12)
            p = round(rng.uniform(-3, 3), 3)
            add_complex(f"=imPower({zt}, {p})", z ** p, 1e-9, 1e-12)
        terms = [draw_complex() for _ in range(rng.randrange(1, 6))]
        listed = ", ".join(text(complex_text(t)) for t in terms)
        add_complex(f"=imSum({listed})", sum(terms, 0j))
        product = 1 + 0j
        for t in terms:
            product *= t
        add_complex(f"=imProduct({{{listed}}})", product, 1e-9, 1e-12)
        add_complex(f"=complex({num(z.real)}, {num(z.imag)})", z, 0, 0)
    for bad in ["1ii", "3 + 4", "i1", "1 + 2i + 3i", "two", "3 +- 4i", "1..5"]:
        cases.append((f"=imReal({text(bad)})", "e", "#NUM!", 0, 0))


def digits(value, base, width=None):
    """value in base as the engine writes it: ten digits of two's complement when negative."""
    if value < 0:
        value += base ** 10
    s = ""
    while True:
        s = "0123456789ABCDEF"[value % base] + s
        value //= base
        if value == 0:
            break
    if width is not None:
        if len(s) > width:
            return None
        s = s.rjust(width, "0")
    return s


def base_conversions():
    names = {2: "bin", 8: "oct", 10: "dec", 16: "hex"}
    half = {2: 2 ** 9, 8: 2 ** 29, 16: 2 ** 39}
    for _ in range(3000):
        source = rng.choice([2, 8, 10, 16])
        target = rng.choice([b for b in (2, 8, 10, 16) if b != source])
        limit = half[source] if source != 10 else 2 ** 40
        value = rng.randrange(-limit, limit) if rng.random() < 0.7 else rng.randrange(-600, 600)
        if source == 10:
            argument = str(value)
        else:
            if not -half[source] <= value < half[source]:
                continue
            written = digits(value, source)
            # The parser's view is Python's: int() of the digits, less base^10 past the top bit.
            parsed = int(written, source)
            if len(written) == 10 and parsed >= source ** 10 // 2:
                parsed -= source ** 10
            assert parsed == value
            argument = text(written.lower() if rng.random() < 0.2 else written)
        width = rng.choice([None, None, rng.randrange(0, 11)])
        formula = f"={names[source]}2{names[target]}({argument}" + (
            f", {width})" if width is not None and target != 10 else ")")
        if target == 10:
            cases.append((formula, "n", str(value), 0, 0))
            continue
        if not -half[target] <= value < half[target]:
            cases.append((formula, "e", "#NUM!", 0, 0))
            continue
        want = digits(value, target, width if width else None)
        if value < 0 and width and width < 10:
            want = None
        cases.append((formula, "t" if want else "e", want or "#NUM!", 0, 0))
        # The same value from Python's own formatting, for the positive ones.
        if value >= 0 and not width:
            code = {2: "b", 8: "o", 16: "X"}[target]
            cases.append((formula, "t", format(value, code), 0, 0))
    for bad in ['bin2dec("12")', 'hex2dec("G")', 'oct2dec("8")', 'bin2dec("10000000000")',
                'hex2oct("1234567890A")', 'dec2bin(1, 11)']:
        cases.append(("=" + bad, "e", "#NUM!", 0, 0))


bessel_and_error_functions()
complex_functions()
base_conversions()
for case in cases:
    print("\t".join(str(part) for part in case))
