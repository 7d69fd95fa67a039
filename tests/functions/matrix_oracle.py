#!/usr/bin/python3
"""Cases for the matrix and optimisation functions with their values from numpy and scipy.

Prints one case per line, fields separated by tabs: the formula, the expected result ("{a, b; c,
d}" for an array, a number, or an error literal), a tolerance and a scale: every element must
agree to within tolerance times scale. The tolerance of a linear-algebra case grows with the
condition number of its matrix. The problems are drawn with a fixed seed.
"""
import math

import numpy as np
from scipy import optimize, stats

rng = np.random.default_rng(20240612)
EPS = np.finfo(float).eps
cases = []


def num(x):
    return repr(float(x))


def literal(m):
    m = np.atleast_2d(np.asarray(m, dtype=float))
    return "{" + "; ".join(", ".join(num(v) for v in row) for row in m) + "}"


def column(v):
    return literal(np.asarray(v, dtype=float).reshape(-1, 1))


def add(formula, expected, tol, scale):
    cases.append((formula, expected if isinstance(expected, str) else literal(expected), tol,
                  scale))


def with_condition(n, cond):
    """A random n x n matrix whose singular values run from 1 down to 1/cond."""
    u, _ = np.linalg.qr(rng.standard_normal((n, n)))
    v, _ = np.linalg.qr(rng.standard_normal((n, n)))
    return u @ np.diag(np.logspace(0, -math.log10(cond), n)) @ v.T


def square_matrices():
    for _ in range(40):
        n = int(rng.integers(2, 9))
        cond = 10 ** rng.uniform(0, 10) if rng.uniform() < 0.6 else None
        a = with_condition(n, cond) if cond else rng.standard_normal((n, n))
        cond = np.linalg.cond(a)
        tol = 50 * n * EPS * cond
        inverse = np.linalg.inv(a)
        add("=mInverse(" + literal(a) + ")", inverse, tol, np.abs(inverse).max())
        add("=mtxGauss(" + literal(a) + ", 0,,, 5)", inverse, tol, np.abs(inverse).max())
        det = np.linalg.det(a)
        add("=mDeterm(" + literal(a) + ")", det, tol, abs(det))
        add("=mtxGauss(" + literal(a) + ", 0,,, 6)", det, tol, abs(det))
        b = rng.standard_normal((n, 2))
        x = np.linalg.solve(a, b)
        add("=mtxGauss(" + literal(a) + ", " + literal(b) + ", 1, 1, 1)", x, tol, np.abs(x).max())
        # A symmetric positive definite matrix of the same condition for the Cholesky solver.
        spd = a.T @ a + np.eye(n) * np.abs(a).max() ** 2 / cond
        cs = np.linalg.cond(spd)
        xs = np.linalg.solve(spd, b)
        add("=mtxChl(" + literal(spd) + ", " + literal(b) + ",, 1)", xs, 50 * n * EPS * cs,
            np.abs(xs).max())
        for name, part in (("mtxFwSubst", np.tril(a)), ("mtxBkSubst", np.triu(a))):
            part = part + np.diag(np.sign(np.diag(part)) + np.diag(part))
            xt = np.linalg.solve(part, b)
            add("=" + name + "(" + literal(part) + ", " + literal(b) + ")", xt,
                50 * n * EPS * np.linalg.cond(part), np.abs(xt).max())
        s = np.linalg.svd(a, compute_uv=False)
        add("=mtxSVD(" + literal(a) + ", 0,, 6)", np.diag(s), 50 * n * EPS, s[0])


def products():
    for _ in range(20):
        m, k, n = (int(v) for v in rng.integers(1, 7, 3))
        a, b, c = rng.standard_normal((m, k)), rng.standard_normal((k, n)), rng.standard_normal(
            (n, 2))
        ab = a @ b
        scale = np.abs(a).max() * np.abs(b).max() * k
        add("=mMult(" + literal(a) + ", " + literal(b) + ")", ab, 10 * EPS, scale)
        add("=mtxMlt(" + literal(a) + ", " + literal(b) + ", " + literal(c) + ")", ab @ c,
            10 * EPS * n, scale * np.abs(c).max())


def least_squares():
    for _ in range(30):
        n = int(rng.integers(1, 6))
        m = n + int(rng.integers(0, 6))
        cond = 10 ** rng.uniform(0, 6)
        u, _ = np.linalg.qr(rng.standard_normal((m, n)))
        v, _ = np.linalg.qr(rng.standard_normal((n, n)))
        a = u @ np.diag(np.logspace(0, -math.log10(cond), n)) @ v.T
        b = rng.standard_normal((m, 1))
        x, *_ = np.linalg.lstsq(a, b, rcond=None)
        r = np.linalg.norm(a @ x - b)
        cond = np.linalg.cond(a)
        # The perturbation bound of least squares: cond for x, cond^2 for the rest r.
        tol = 100 * n * EPS * (cond + cond * cond * r / (np.linalg.norm(a, 2) * np.linalg.norm(x)))
        add("=mtxSVD(" + literal(a) + ", " + literal(b) + ",, 1)", x, tol, np.abs(x).max())
        pinv = np.linalg.pinv(a)
        add("=mtxSVD(" + literal(a) + ", 0,, 4)", pinv, tol, np.abs(pinv).max())
        if n > 1:
            # Constraints E*x = d on top: the solution from the equations of Lagrange.
            rows = int(rng.integers(1, n))
            e, d = rng.standard_normal((rows, n)), rng.standard_normal((rows, 1))
            kkt = np.block([[a.T @ a, e.T], [e, np.zeros((rows, rows))]])
            xc = np.linalg.solve(kkt, np.vstack([a.T @ b, d]))[:n]
            add("=mtxLSC(" + ", ".join(literal(v) for v in (a, b, e, d)) + ",, 1)", xc,
                100 * n * EPS * np.linalg.cond(kkt), np.abs(xc).max())
        w = rng.uniform(0.5, 2, m)
        xw, *_ = np.linalg.lstsq(a * np.sqrt(w)[:, None], b * np.sqrt(w)[:, None], rcond=None)
        add("=mtxLSW(" + literal(a) + ", " + literal(b) + ", " + literal(np.diag(w)) + ",, 1)", xw,
            4 * tol, np.abs(xw).max())


def linear_programs():
    for case in range(60):
        m, n = int(rng.integers(1, 5)), int(rng.integers(1, 5))
        kind = case % 3
        a = rng.uniform(-1, 2, (m, n)).round(2)
        x0 = rng.uniform(0, 3, n)
        sense = rng.choice([1, 0, -1], m, p=[0.5, 0.2, 0.3])
        b = a @ x0 + np.where(sense == 1, 1, np.where(sense == -1, -1, 0)) * rng.uniform(0, 2, m)
        c = rng.uniform(-1, 2, n).round(2)
        if kind == 0:
            # A box over all variables keeps the objective bounded.
            a = np.vstack([a, np.ones(n)])
            sense = np.append(sense, 1)
            b = np.append(b, x0.sum() + 3)
        elif kind == 1:
            # Two rows that contradict each other.
            row = rng.uniform(0.5, 2, n).round(2)
            a = np.vstack([a, row, row])
            sense = np.append(sense, [1, -1])
            b = np.append(b, [1, 2])
        else:
            # A variable that only improves the objective and that no row limits.
            a = np.hstack([a, np.zeros((m, 1))])
            c = np.append(c, 1)
            n += 1
        b = b.round(3)
        res = optimize.linprog(-c, A_ub=np.vstack([a[sense == 1], -a[sense == -1]]),
                               b_ub=np.concatenate([b[sense == 1], -b[sense == -1]]),
                               A_eq=a[sense == 0] if (sense == 0).any() else None,
                               b_eq=b[sense == 0] if (sense == 0).any() else None,
                               bounds=[(0, None)] * n, method="highs")
        args = ", ".join([literal(a), column(sense), column(b), column(c)])
        if res.status == 2:
            add("=LProg(" + args + ", 1)", "#NULL!", 0, 0)
        elif res.status == 3:
            add("=LProg(" + args + ", 1)", "#N/A!", 0, 0)
        elif res.status == 0:
            # The optimum value rather than the vector: several vertices may reach it.
            add("=mMult(" + literal(c) + ", LProg(" + args + ", 1))", -res.fun, 1e-7,
                1 + abs(res.fun))


def quadratic_programs():
    for _ in range(30):
        m, n = int(rng.integers(1, 4)), int(rng.integers(1, 5))
        a = rng.uniform(-1, 2, (m, n)).round(2)
        x0 = rng.uniform(0, 3, n)
        sense = rng.choice([1, 0, -1], m, p=[0.6, 0.2, 0.2])
        b = (a @ x0 + np.where(sense == 1, 1, np.where(sense == -1, -1, 0)) *
             rng.uniform(0, 2, m)).round(3)
        root = rng.standard_normal((n, n))
        cm = (root @ root.T + 0.5 * np.eye(n)).round(3)
        p = rng.uniform(-5, 10, n).round(2)
        constraints = []
        for i in range(m):
            row, bound = a[i], b[i]
            if sense[i] == 0:
                constraints.append({"type": "eq", "fun": lambda x, r=row, v=bound: r @ x - v,
                                    "jac": lambda x, r=row: r})
            else:
                sign = -float(sense[i])
                constraints.append({"type": "ineq",
                                    "fun": lambda x, r=row, v=bound, s=sign: s * (r @ x - v),
                                    "jac": lambda x, r=row, s=sign: s * r})
        res = optimize.minimize(lambda x: x @ cm @ x - p @ x, x0, jac=lambda x: 2 * cm @ x - p,
                                bounds=[(0, None)] * n, constraints=constraints, method="SLSQP",
                                options={"ftol": 1e-14, "maxiter": 1000})
        if not res.success:
            continue
        args = ", ".join([literal(a), column(sense), column(b), column(p), literal(cm)])
        add("=QProg(" + args + ", 1)", column(res.x), 1e-5, 1 + np.abs(res.x).max())


def fits():
    for _ in range(30):
        n = int(rng.integers(4, 12))
        r = int(rng.integers(1, min(n, 5)))
        t = np.sort(rng.uniform(-3, 5, n)).round(3)
        sy = rng.uniform(0.1, 1, n).round(3)
        y = np.polyval(rng.standard_normal(r + 1), t) + rng.standard_normal(n) * sy
        at = rng.uniform(-3, 5, 3).round(3)
        data = ", ".join([column(t), column(y), column(sy)])
        fit = ", ".join("polyReg(%s, %d, %d)" % (data, r, kind) for kind in (1, 2, 3))
        # numpy weighs residuals, not squares: w = 1/sy.
        coef = np.polyfit(t, y, r - 1, w=1 / sy)
        want = np.polyval(coef, at)
        # r stays below n, so chi2 keeps a degree of freedom: the covariance of the monomial
        # coefficients is scaled by chi2/(n - r). curve_fit's own covariance comes from a
        # Jacobian by differences and carries only about seven digits, so it is formed here.
        v = np.vander(t, r) / sy[:, None]
        chi2 = np.sum(((y - np.polyval(coef, t)) / sy) ** 2)
        cov = np.linalg.inv(v.T @ v) * chi2 / (n - r)
        jac = np.vander(at, r)
        limits = stats.t.ppf(0.95, n - r) * np.sqrt(np.einsum("ij,jk,ik->i", jac, cov, jac))
        add("=polyPoints(%s, %d, %d, %s, 0.9)" % (fit, n, r, column(at)),
            np.column_stack([want, limits]), 1e-8, 1 + max(np.abs(want).max(), limits.max()))


def time_series():
    for _ in range(20):
        k = int(rng.integers(1, 5))
        l = int(rng.integers(0, 2 * k))
        n = 2 * k + 1 + int(rng.integers(0, 10))
        y = np.cumsum(rng.standard_normal(n)).round(3)
        u = np.arange(-k, k + 1)
        rows = []
        for tau in range(-k, n + k):
            c = min(max(tau, k), n - k - 1)
            window = y[c - k:c + k + 1]
            coef = np.polyfit(u, window, l)
            resid = window - np.polyval(coef, u)
            s2 = resid @ resid / (2 * k - l)
            v = np.vander(u, l + 1)
            at = np.vander([tau - c], l + 1)[0]
            eta = stats.t.ppf(0.975, 2 * k - l) * math.sqrt(s2 * at @ np.linalg.inv(v.T @ v) @ at)
            rows.append((np.polyval(coef, tau - c), eta))
        rows = np.array(rows)
        add("=timeSeries(%s, %d, %d, 0.95)" % (column(y), l, k), rows, 1e-8,
            1 + np.abs(rows).max())


square_matrices()
products()
least_squares()
linear_programs()
quadratic_programs()
fits()
time_series()
for formula, expected, tol, scale in cases:
    print("%s\t%s\t%r\t%r" % (formula, expected, float(tol), float(scale)))
