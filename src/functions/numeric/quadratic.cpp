#include "functions/numeric/quadratic.h"

#include <algorithm>
#include <cmath>

#include "functions/numeric/cholesky.h"
#include "functions/numeric/lu.h"

namespace kelpdex::numeric {

namespace {

// Every constraint as a row g^T*x <= h, or = h for an equation; x >= 0 becomes -x[j] <= 0.
struct Rows {
  uint32_t n = 0;
  std::vector<std::vector<double>> g;
  std::vector<double> h;
  std::vector<uint8_t> equation;

  void Add(std::vector<double> row, double bound, bool isEquation) {
    g.push_back(std::move(row));
    h.push_back(bound);
    equation.push_back(isEquation);
  }
};

double Dot(const std::vector<double>& a, const std::vector<double>& b) {
  double s = 0;
  for (size_t i = 0; i < a.size(); ++i) s += a[i] * b[i];
  return s;
}

// An orthonormal basis of the working set's rows, to keep that set linearly independent: a
// dependent row would make the system of the step singular.
struct Span {
  std::vector<std::vector<double>> basis;

  // The part of `row` outside the span, orthogonalised twice for rounding; true and kept when it
  // is not negligible against the row itself.
  bool AddIfIndependent(const std::vector<double>& row) {
    std::vector<double> r = row;
    for (int pass = 0; pass < 2; ++pass) {
      for (const auto& q : basis) {
        double p = Dot(r, q);
        for (size_t i = 0; i < r.size(); ++i) r[i] -= p * q[i];
      }
    }
    double norm = std::sqrt(Dot(r, r)), before = std::sqrt(Dot(row, row));
    if (!(norm > 1e-10 * before)) return false;
    for (double& v : r) v /= norm;
    basis.push_back(std::move(r));
    return true;
  }
};

void Rebuild(const Rows& rows, const std::vector<uint32_t>& working, Span& span) {
  span.basis.clear();
  for (uint32_t i : working) span.AddIfIndependent(rows.g[i]);
}

}  // namespace

LpStatus SolveQuadraticProgram(const LinearProgram& lp, const Matrix& c, std::vector<double>& x) {
  uint32_t m = lp.a.rows(), n = lp.a.columns();
  if (c.rows() != n || c.columns() != n) return LpStatus::kNotDefinite;
  // x^T*C*x only sees the symmetric part; twice it is the Hessian of the minimised negative.
  Matrix hessian, factor;
  if (!hessian.Allocate(n, n)) return LpStatus::kNoConvergence;
  for (uint32_t i = 0; i < n; ++i) {
    for (uint32_t j = 0; j < n; ++j) hessian(i, j) = c(i, j) + c(j, i);
  }
  bool notDefinite = false;
  if (!CholeskyFactor(hessian, factor, notDefinite)) {
    return notDefinite ? LpStatus::kNotDefinite : LpStatus::kNoConvergence;
  }

  // A feasible start: a vertex of the constraints, found by the simplex with no objective.
  LinearProgram start;
  if (!start.a.CopyFrom(lp.a)) return LpStatus::kNoConvergence;
  start.sense = lp.sense;
  start.b = lp.b;
  start.c.assign(n, 0.0);
  start.epsilon = lp.epsilon;
  start.bigM = lp.bigM;
  std::vector<std::vector<double>> vertices;
  LpStatus status = SolveLinearProgram(start, 1, vertices);
  if (status != LpStatus::kOptimal) return status;
  x = vertices[0];

  Rows rows;
  rows.n = n;
  for (uint32_t i = 0; i < m; ++i) {
    std::vector<double> row(n);
    double sign = lp.sense[i] == -1 ? -1 : 1;
    for (uint32_t j = 0; j < n; ++j) row[j] = sign * lp.a(i, j);
    rows.Add(std::move(row), sign * lp.b[i], lp.sense[i] == 0);
  }
  for (uint32_t j = 0; j < n; ++j) {
    std::vector<double> row(n, 0.0);
    row[j] = -1;
    rows.Add(std::move(row), 0, false);
  }
  const double eps = lp.epsilon;
  auto slack = [&](uint32_t i) { return rows.h[i] - Dot(rows.g[i], x); };

  // Equations first, so that an inequality is what a dependent row pushes out; then every
  // inequality that holds with equality at the start.
  std::vector<uint32_t> working;
  Span span;
  uint32_t total = static_cast<uint32_t>(rows.g.size());
  for (int pass = 0; pass < 2; ++pass) {
    for (uint32_t i = 0; i < total; ++i) {
      if (rows.equation[i] != (pass == 0)) continue;
      if (pass == 1 && std::fabs(slack(i)) > eps * (1 + std::fabs(rows.h[i]))) continue;
      if (span.AddIfIndependent(rows.g[i])) working.push_back(i);
    }
  }

  // Each step adds a blocking constraint or drops one whose multiplier has the wrong sign; the
  // bound only matters for degenerate problems that would otherwise cycle.
  uint32_t limit = 50 * (n + total) + 200;
  for (uint32_t step = 0; step < limit; ++step) {
    uint32_t w = static_cast<uint32_t>(working.size()), k = n + w;
    std::vector<double> gradient(n);
    for (uint32_t i = 0; i < n; ++i) {
      double s = -lp.c[i];
      for (uint32_t j = 0; j < n; ++j) s += hessian(i, j) * x[j];
      gradient[i] = s;
    }
    // [H A^T; A 0] [d; mu] = [-gradient; 0]: the best step within the working set, and the
    // multipliers of its constraints.
    Matrix kkt, rhs, solution;
    if (!kkt.Allocate(k, k) || !rhs.Allocate(k, 1)) return LpStatus::kNoConvergence;
    for (uint32_t i = 0; i < n; ++i) {
      for (uint32_t j = 0; j < n; ++j) kkt(i, j) = hessian(i, j);
      rhs(i, 0) = -gradient[i];
    }
    for (uint32_t r = 0; r < w; ++r) {
      for (uint32_t j = 0; j < n; ++j) {
        kkt(n + r, j) = rows.g[working[r]][j];
        kkt(j, n + r) = rows.g[working[r]][j];
      }
    }
    LuFactors lu;
    bool singular = false;
    if (!LuFactor(kkt, true, lu, singular) || !LuSolve(kkt, lu, rhs, 1, solution)) {
      return LpStatus::kNoConvergence;
    }
    double stepSize = 0, xSize = 1;
    for (uint32_t j = 0; j < n; ++j) {
      stepSize = std::max(stepSize, std::fabs(solution(j, 0)));
      xSize = std::max(xSize, std::fabs(x[j]));
    }
    if (stepSize <= eps * xSize) {
      uint32_t drop = w;
      double lowest = 0, largest = 1;
      for (uint32_t r = 0; r < w; ++r) largest = std::max(largest, std::fabs(solution(n + r, 0)));
      for (uint32_t r = 0; r < w; ++r) {
        double mu = solution(n + r, 0);
        if (!rows.equation[working[r]] && mu < -eps * largest && mu < lowest) {
          lowest = mu;
          drop = r;
        }
      }
      if (drop == w) {
        for (double& v : x) v = std::fabs(v) < eps * xSize ? 0 : v;
        return LpStatus::kOptimal;
      }
      working.erase(working.begin() + drop);
      Rebuild(rows, working, span);
      continue;
    }
    // As far along d as the constraints outside the working set allow, at most the full step.
    double alpha = 1;
    uint32_t blocking = total;
    for (uint32_t i = 0; i < total; ++i) {
      if (std::find(working.begin(), working.end(), i) != working.end()) continue;
      double along = 0, norm = 0;
      for (uint32_t j = 0; j < n; ++j) {
        along += rows.g[i][j] * solution(j, 0);
        norm += rows.g[i][j] * rows.g[i][j];
      }
      if (along <= 1e-12 * std::sqrt(norm) * stepSize) continue;
      double ratio = std::max(0.0, slack(i)) / along;
      if (ratio < alpha) {
        alpha = ratio;
        blocking = i;
      }
    }
    for (uint32_t j = 0; j < n; ++j) x[j] += alpha * solution(j, 0);
    if (blocking != total && span.AddIfIndependent(rows.g[blocking])) working.push_back(blocking);
  }
  return LpStatus::kNoConvergence;
}

}  // namespace kelpdex::numeric
