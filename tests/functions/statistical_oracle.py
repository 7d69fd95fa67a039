#!/usr/bin/python3
"""Cases for the statistical functions with their values from scipy and numpy.

Prints one case per line: formula, expected result, relative tolerance, separated by tabs. An
expected array is written "{a;b;...}". The arguments are drawn with a fixed seed, so a failure
can be reproduced.
"""
import math
import sys

import numpy as np
from scipy import stats

rng = np.random.default_rng(20240611)
cases = []
DIST, INVERSE, DATA = 1e-9, 1e-7, 1e-9


def num(x):
    return repr(float(x))


def add(formula, expected, tol):
    # Zero, subnormal and non-finite values are out of the engine's number range on purpose.
    if isinstance(expected, list):
        if all(math.isfinite(v) for v in expected):
            cases.append((formula, "{" + ";".join(num(v) for v in expected) + "}", tol))
        return
    if math.isfinite(expected) and abs(expected) >= 1e-300:
        cases.append((formula, num(expected), tol))


def add_quantile(formula, dist, p, *params):
    """An inverse, where scipy's own inverse gives p back through its distribution function:
    far out in the tails its ppf can lose every digit while its cdf and sf stay exact, and such a
    value is no reference."""
    q = dist.ppf(p, *params)
    back = dist.sf(q, *params) if p > 0.5 else dist.cdf(q, *params)
    want = 1 - p if p > 0.5 else p
    if math.isfinite(q) and abs(back - want) <= 1e-9 * want:
        add(formula, q, INVERSE)


def call(name, *args):
    return "=" + name + "(" + ", ".join(a if isinstance(a, str) else num(a) for a in args) + ")"


def log_uniform(lo, hi):
    return 10 ** rng.uniform(math.log10(lo), math.log10(hi))


def probability():
    """A probability with both tails well represented."""
    r = rng.uniform()
    if r < 0.3:
        return log_uniform(1e-300, 1e-3)
    if r < 0.6:
        return 1 - log_uniform(1e-15, 1e-3)
    return rng.uniform(0.001, 0.999)


def degrees():
    return float(rng.integers(1, 30)) if rng.uniform() < 0.5 else math.floor(log_uniform(1, 1e6))


N = 1500

for _ in range(N):
    mean, sd = rng.normal(0, 100), log_uniform(1e-200, 1e200)
    x = mean + sd * rng.normal(0, 8)
    z = rng.uniform(-37, 9)
    add(call("normDist", x, mean, sd, "TRUE"), stats.norm.cdf(x, mean, sd), DIST)
    add(call("normDist", x, mean, sd, "FALSE"), stats.norm.pdf(x, mean, sd), DIST)
    add(call("normsDist", z), stats.norm.cdf(z), DIST)
    p = probability()
    add(call("normInv", p, mean, sd), stats.norm.ppf(p, mean, sd), INVERSE)
    add(call("normsInv", p), stats.norm.ppf(p), INVERSE)
    alpha, n = rng.uniform(0.001, 0.999), float(rng.integers(1, 10000))
    add(call("confidence", alpha, sd, n), stats.norm.isf(alpha / 2) * sd / math.sqrt(n), DIST)

for _ in range(N):
    k = degrees()
    x = stats.chi2.ppf(probability(), k)
    if x >= 1e-300:
        add(call("chiDist", x, k), stats.chi2.cdf(x, k), DIST)
    p = probability()
    add_quantile(call("chiInv", p, k), stats.chi2, p, k)
    t = stats.t.ppf(probability(), k)
    add(call("tDist", t, k), stats.t.cdf(t, k), DIST)
    add_quantile(call("tInv", p, k), stats.t, p, k)
    # fDist(x, d1, d2) gives the results of the F ratio with the two counts exchanged, so the
    # oracle is asked for F(d2, d1).
    # scipy's F distribution function loses digits when one count is large and the other small
    # (its incomplete beta with b = 1/2 near x = 1), so the counts stay below 10^4 here.
    # One count of 1 is that very case, so the smallest count is 2.
    d1, d2 = float(rng.integers(2, 30)), math.floor(log_uniform(2, 1e4))
    if rng.uniform() < 0.5:
        d1, d2 = d2, d1
    x = stats.f.ppf(probability(), d1, d2)
    add(call("fDist", x, d1, d2), stats.f.cdf(x, d1, d2), DIST)
    add_quantile(call("fInv", p, d1, d2), stats.f, p, d1, d2)

for _ in range(N):
    n = float(rng.integers(0, 50)) if rng.uniform() < 0.5 else math.floor(log_uniform(1, 1e7))
    p = rng.uniform() if rng.uniform() < 0.6 else log_uniform(1e-12, 1e-1)
    if rng.uniform() < 0.3:
        p = 1 - p
    s = math.floor(stats.binom.ppf(rng.uniform(0.0001, 0.9999), n, p) + rng.integers(-3, 4))
    s = min(max(s, 0), n)
    add(call("binomDist", s, n, p, "TRUE"), stats.binom.cdf(s, n, p), DIST)
    add(call("binomDist", s, n, p, "FALSE"), stats.binom.pmf(s, n, p), DIST)
    alpha = rng.uniform(0.01, 0.99)
    crit = stats.binom.ppf(alpha, n, p)
    # A count on the edge of alpha is decided by the last bits of both computations.
    if abs(stats.binom.cdf(crit, n, p) - alpha) > 1e-9 and abs(stats.binom.cdf(crit - 1, n, p) - alpha) > 1e-9:
        add(call("critBinom", n, p, alpha), crit, 0)
    # scipy's Poisson mass is exp(k ln m - ln k! - m), whose terms cancel to about 1e-16 · k ln m
    # relative, so the means stay below 10^5 here.
    m = log_uniform(1e-3, 1e5)
    x = math.floor(stats.poisson.ppf(rng.uniform(0.0001, 0.9999), m) + rng.integers(-3, 4))
    x = max(x, 0)
    add(call("poisson", x, m, "TRUE"), stats.poisson.cdf(x, m), DIST)
    add(call("poisson", x, m, "FALSE"), stats.poisson.pmf(x, m), DIST)
    total = float(rng.integers(1, 5000))
    good, draws = float(rng.integers(0, total + 1)), float(rng.integers(0, total + 1))
    lo, hi = max(0, draws - (total - good)), min(draws, good)
    x = float(rng.integers(lo, hi + 1))
    add(call("hypGeomDist", x, draws, good, total), stats.hypergeom.pmf(x, total, good, draws), DIST)
    lam, x = log_uniform(1e-3, 1e3), log_uniform(1e-6, 1e2)
    add(call("exponDist", x / lam, lam, 1), stats.expon.cdf(x / lam, scale=1 / lam), DIST)
    add(call("exponDist", x / lam, lam, 0), stats.expon.pdf(x / lam, scale=1 / lam), DIST)
    shape, scale = log_uniform(0.1, 50), log_uniform(1e-3, 1e3)
    x = scale * log_uniform(1e-3, 3)
    add(call("weibull", x, shape, scale, 1), stats.weibull_min.cdf(x, shape, scale=scale), DIST)
    add(call("weibull", x, shape, scale, 0), stats.weibull_min.pdf(x, shape, scale=scale), DIST)


# --- aggregates: arrays with texts, logicals and empty elements mixed in --------------------
def element():
    """One array element: (its text in the formula, value without the A suffix, value with it);
    None where the element is skipped."""
    r = rng.uniform()
    if r < 0.08:
        return '"abc"', None, 0.0
    if r < 0.14:
        v = round(rng.normal(10, 5), 3)
        return '"' + repr(v) + '"', v, 0.0  # a text that reads as a number
    if r < 0.2:
        b = bool(rng.integers(0, 2))
        return ("TRUE" if b else "FALSE"), float(b), float(b)
    if r < 0.26:
        return "", None, None
    v = float(np.round(rng.normal(rng.uniform(-50, 50), log_uniform(0.1, 1e4)), 4))
    return num(v), v, v


def array(length, positive=False):
    parts, plain, with_a = [], [], []
    for _ in range(length):
        text, p, a = element()
        if positive and p is not None and p <= 0:
            text, p, a = num(abs(p) + 1), abs(p) + 1, abs(p) + 1
        parts.append(text)
        if p is not None:
            plain.append(p)
        if a is not None:
            with_a.append(a)
    # The last element must be written out, or the literal would end in a separator.
    if parts[-1] == "":
        parts[-1], plain, with_a = "7", plain + [7.0], with_a + [7.0]
    return "{" + ", ".join(parts) + "}", np.array(plain), np.array(with_a)


def aggregates():
    text, x, xa = array(int(rng.integers(6, 40)))
    text2, x2, xa2 = array(int(rng.integers(1, 10)))
    both, bothA = np.concatenate([x, x2]), np.concatenate([xa, xa2])
    args = text + ", " + text2
    for name, f, values in [("average", np.mean, both), ("averageA", np.mean, bothA),
                            ("max", np.max, both), ("maxA", np.max, bothA),
                            ("min", np.min, both), ("minA", np.min, bothA)]:
        add("=" + name + "(" + args + ")", f(values), DATA)
    for suffix, values in [("", both), ("A", bothA)]:
        add("=stdev" + suffix + "(" + args + ")", np.std(values, ddof=1), DATA)
        add("=stdevP" + suffix + "(" + args + ")", np.std(values), DATA)
        add("=var" + suffix + "(" + args + ")", np.var(values, ddof=1), DATA)
        add("=varP" + suffix + "(" + args + ")", np.var(values), DATA)
    add("=count(" + args + ")", len(both), 0)
    add("=countA(" + args + ")", len(bothA), 0)
    add("=aveDev(" + args + ")", np.mean(np.abs(both - both.mean())), DATA)
    add("=devSq(" + args + ")", np.sum((both - both.mean()) ** 2), DATA)
    add("=kurt(" + args + ")", stats.kurtosis(both, bias=False), DATA)
    add("=skew(" + args + ")", stats.skew(both, bias=False), DATA)
    add("=median(" + args + ")", np.median(both), DATA)
    k = rng.uniform()
    add("=percentile(" + text + ", " + num(k) + ")", np.percentile(x, 100 * k), DATA)
    q = int(rng.integers(0, 5))
    add("=quartile(" + text + ", " + str(q) + ")", np.percentile(x, 25 * q), DATA)
    j = int(rng.integers(1, len(x) + 1))
    add("=large(" + text + ", " + str(j) + ")", np.sort(x)[-j], 0)
    add("=small(" + text + ", " + str(j) + ")", np.sort(x)[j - 1], 0)
    share = rng.uniform(0, 0.99)
    # trimMean leaves floor(n·share/2) values out at each end, as trim_mean does for share/2.
    add("=trimMean(" + text + ", " + num(share) + ")", stats.trim_mean(x, share / 2), DATA)
    ptext, p, _ = array(int(rng.integers(2, 30)), positive=True)
    add("=geoMean(" + ptext + ")", stats.gmean(p), DATA)
    add("=harMean(" + ptext + ")", stats.hmean(p), DATA)


def pairs():
    n = int(rng.integers(4, 40))
    xs, ys, x, y = [], [], [], []
    alone_x, alone_y = [], []  # each array's own values, as the two-sample tests take them
    slope, noise = rng.normal(0, 3), log_uniform(1e-3, 10)
    for _ in range(n):
        tx, px, _ = element()
        ty, py, _ = element()
        # Numeric texts count in no pair; logicals do, as numbers.
        if tx.startswith('"'):
            px = None
        if ty.startswith('"'):
            py = None
        if px is not None and ty not in ("", "TRUE", "FALSE") and py is not None:
            py = slope * px + rng.normal(0, noise)
            ty = num(py)
        xs.append(tx or "0")
        ys.append(ty or "0")
        if not tx:
            px = 0.0
        if not ty:
            py = 0.0
        for text, values in ((xs[-1], alone_x), (ys[-1], alone_y)):
            if text.startswith('"') and text != '"abc"':
                values.append(float(text.strip('"')))
            elif not text.startswith('"'):
                values.append(1.0 if text == "TRUE" else 0.0 if text == "FALSE" else float(text))
        if px is not None and py is not None:
            x.append(px)
            y.append(py)
    x, y = np.array(x), np.array(y)
    if len(x) < 3 or np.ptp(x) == 0 or np.ptp(y) == 0:
        return
    ax, ay = "{" + ", ".join(xs) + "}", "{" + ", ".join(ys) + "}"
    r = np.corrcoef(x, y)[0, 1]
    fit = stats.linregress(x, y)
    resid = y - (fit.intercept + fit.slope * x)
    add("=correl(" + ax + ", " + ay + ")", r, DATA)
    add("=pearson(" + ax + ", " + ay + ")", r, DATA)
    add("=rsq(" + ax + ", " + ay + ")", r * r, DATA)
    add("=covar(" + ax + ", " + ay + ")", np.cov(x, y, bias=True)[0, 1], DATA)
    add("=slope(" + ay + ", " + ax + ")", fit.slope, DATA)
    # An intercept far below the scale of the data is a difference of near-equal terms, with
    # its relative digits lost in any computation.
    if abs(fit.intercept) > 1e-3 * (abs(np.mean(y)) + abs(fit.slope * np.mean(x))):
        add("=intercept(" + ay + ", " + ax + ")", fit.intercept, DATA)
        add("=linEst(" + ay + ", " + ax + ")", [fit.intercept, fit.slope], DATA)
    add("=stEyx(" + ay + ", " + ax + ")", math.sqrt(np.sum(resid ** 2) / (len(x) - 2)), DATA)
    at = rng.normal(0, 20)
    add("=forecast(" + num(at) + ", " + ay + ", " + ax + ")", fit.intercept + fit.slope * at, DATA)
    add("=trend(" + ay + ", " + ax + ", {" + num(at) + "; " + num(-at) + "})",
        [fit.intercept + fit.slope * at, fit.intercept - fit.slope * at], DATA)
    # Two samples: tTest is the pooled-variance test, fTest the upper tail of var1/var2.
    x, y = np.array(alone_x), np.array(alone_y)
    res = stats.ttest_ind(x, y)
    add("=tTest(" + ax + ", " + ay + ", 2)", res.pvalue, DATA)
    add("=tTest(" + ax + ", " + ay + ", 1)", res.pvalue / 2, DATA)
    add("=tTest2(" + ax + ", " + ay + ")", res.statistic, DATA)
    add("=fTest(" + ax + ", " + ay + ")",
        stats.f.sf(np.var(x, ddof=1) / np.var(y, ddof=1), len(x) - 1, len(y) - 1), DATA)
    # zTest is one-tailed, 1 - normsDist(z), as its entry computes it.
    mu = float(np.mean(x) + rng.normal(0, 1))
    zs = (np.mean(x) - mu) / (np.std(x, ddof=1) / math.sqrt(len(x)))
    add("=zTest2(" + ax + ", " + num(mu) + ")", zs, DATA)
    add("=zTest(" + ax + ", " + num(mu) + ")", stats.norm.sf(zs), DATA)


def contingency():
    rows, cols = int(rng.integers(2, 6)), int(rng.integers(2, 6))
    observed = rng.integers(1, 200, size=(rows, cols)).astype(float)
    expected = observed + rng.normal(0, 8, size=(rows, cols))
    expected = np.maximum(expected, 0.5)
    chi2 = float(np.sum((observed - expected) ** 2 / expected))
    lit = lambda m: "{" + "; ".join(", ".join(num(v) for v in row) for row in m) + "}"
    # chiTest answers P(X < chi²), where the usual test gives its upper tail.
    add("=chiTest(" + lit(observed) + ", " + lit(expected) + ")",
        stats.chi2.cdf(chi2, (rows - 1) * (cols - 1)), DATA)
    add("=chiTest2(" + lit(observed) + ", " + lit(expected) + ")", chi2, DATA)


for _ in range(300):
    aggregates()
    pairs()
    contingency()

for formula, expected, tol in cases:
    sys.stdout.write(formula + "\t" + expected + "\t" + repr(tol) + "\n")
