#include "functions/numeric/simplex.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kelpdex::numeric {

namespace {

// A dense tableau: m constraint rows and the cost row m, columns 0..width-1 the variables
// (originals, slacks, artificials) and column `width` the right-hand side.
struct Tableau {
  uint32_t m = 0, n = 0, width = 0;
  std::vector<double> t;
  std::vector<uint32_t> basis;
  std::vector<uint8_t> artificial;
  double eps = 1e-8;

  double& at(uint32_t i, uint32_t j) { return t[size_t(i) * (width + 1) + j]; }

  void Pivot(uint32_t row, uint32_t column) {
    double p = at(row, column);
    for (uint32_t j = 0; j <= width; ++j) at(row, j) /= p;
    for (uint32_t i = 0; i <= m; ++i) {
      if (i == row) continue;
      double f = at(i, column);
      if (f == 0) continue;
      for (uint32_t j = 0; j <= width; ++j) {
        double v = at(i, j) - f * at(row, j);
        at(i, j) = std::fabs(v) < eps * 1e-3 ? 0 : v;
      }
    }
    basis[row] = column;
  }

  // The row of the ratio test for an entering column; m when no coefficient is positive.
  uint32_t Leaving(uint32_t column) {
    uint32_t best = m;
    double ratio = 0;
    for (uint32_t i = 0; i < m; ++i) {
      double a = at(i, column);
      if (a <= eps) continue;
      double r = at(i, width) / a;
      if (best == m || r < ratio - eps || (std::fabs(r - ratio) <= eps && basis[i] < basis[best])) {
        best = i;
        ratio = r;
      }
    }
    return best;
  }

  std::vector<double> Solution() {
    std::vector<double> x(n, 0.0);
    for (uint32_t i = 0; i < m; ++i) {
      if (basis[i] < n) x[basis[i]] = std::fabs(at(i, width)) < eps ? 0 : at(i, width);
    }
    return x;
  }
};

bool Build(const LinearProgram& lp, Tableau& tab) {
  uint32_t m = lp.a.rows(), n = lp.a.columns();
  uint32_t slacks = 0, artificials = 0;
  std::vector<int> sense(lp.sense);
  std::vector<double> sign(m, 1.0);
  for (uint32_t i = 0; i < m; ++i) {
    // A negative right-hand side flips the row and its sense, so every start is feasible.
    if (lp.b[i] < 0) {
      sign[i] = -1;
      sense[i] = -sense[i];
    }
    slacks += sense[i] != 0;
    artificials += sense[i] != 1;
  }
  tab.m = m;
  tab.n = n;
  tab.width = n + slacks + artificials;
  tab.eps = lp.epsilon;
  tab.t.assign(size_t(m + 1) * (tab.width + 1), 0.0);
  tab.basis.assign(m, 0);
  tab.artificial.assign(tab.width, 0);
  double largest = 1;
  for (uint32_t i = 0; i < m; ++i) {
    largest = std::max(largest, std::fabs(lp.b[i]));
    for (uint32_t j = 0; j < n; ++j) largest = std::max(largest, std::fabs(lp.a(i, j)));
  }
  for (double cj : lp.c) largest = std::max(largest, std::fabs(cj));
  // Far above any cost the originals can reach per unit, yet small enough to leave digits.
  double bigM = lp.bigM > 0 ? lp.bigM : 1e4 * largest * largest;
  uint32_t nextSlack = n, nextArtificial = n + slacks;
  for (uint32_t i = 0; i < m; ++i) {
    for (uint32_t j = 0; j < n; ++j) tab.at(i, j) = sign[i] * lp.a(i, j);
    tab.at(i, tab.width) = sign[i] * lp.b[i];
    if (sense[i] == 1) {
      tab.at(i, nextSlack) = 1;
      tab.basis[i] = nextSlack++;
      continue;
    }
    if (sense[i] == -1) tab.at(i, nextSlack++) = -1;
    tab.at(i, nextArtificial) = 1;
    tab.artificial[nextArtificial] = 1;
    tab.basis[i] = nextArtificial++;
  }
  // The cost row holds z_j - c_j of the maximisation, priced out over the starting basis.
  for (uint32_t j = 0; j < n; ++j) tab.at(m, j) = -lp.c[j];
  for (uint32_t j = n + slacks; j < tab.width; ++j) tab.at(m, j) = bigM;
  for (uint32_t i = 0; i < m; ++i) {
    if (!tab.artificial[tab.basis[i]]) continue;
    for (uint32_t j = 0; j <= tab.width; ++j) tab.at(m, j) -= bigM * tab.at(i, j);
  }
  return true;
}

LpStatus Optimise(Tableau& tab) {
  // Far more than the vertices visited in practice; Bland's rule after a stall prevents cycling.
  uint32_t limit = 100 * (tab.m + tab.width) + 1000;
  uint32_t stalled = 0;
  for (uint32_t step = 0; step < limit; ++step) {
    uint32_t entering = tab.width;
    double most = -tab.eps;
    for (uint32_t j = 0; j < tab.width; ++j) {
      double r = tab.at(tab.m, j);
      if (r < most) {
        entering = j;
        most = r;
        if (stalled > tab.m) break;  // Bland: the first improving column
      }
    }
    if (entering == tab.width) return LpStatus::kOptimal;
    uint32_t row = tab.Leaving(entering);
    if (row == tab.m) return LpStatus::kUnbounded;
    stalled = tab.at(row, tab.width) <= tab.eps ? stalled + 1 : 0;
    tab.Pivot(row, entering);
  }
  return LpStatus::kNoConvergence;
}

bool Feasible(Tableau& tab) {
  for (uint32_t i = 0; i < tab.m; ++i) {
    if (tab.artificial[tab.basis[i]] && tab.at(i, tab.width) > tab.eps) return false;
  }
  return true;
}

bool Known(const std::vector<std::vector<double>>& list, const std::vector<double>& x, double eps) {
  for (const auto& y : list) {
    bool same = true;
    for (size_t j = 0; same && j < x.size(); ++j)
      same = std::fabs(x[j] - y[j]) <= eps * (1 + std::fabs(x[j]));
    if (same) return true;
  }
  return false;
}

// The other optimum vertices: pivots on non-basic columns whose reduced cost is 0, breadth
// first from the tableaus found so far.
void Enumerate(Tableau& first, size_t most, std::vector<std::vector<double>>& optima) {
  std::vector<Tableau> queue{first};
  for (size_t next = 0; next < queue.size() && optima.size() < most && queue.size() < 200; ++next) {
    for (uint32_t j = 0; j < queue[next].width && optima.size() < most; ++j) {
      Tableau& tab = queue[next];
      if (tab.artificial[j] || std::fabs(tab.at(tab.m, j)) > tab.eps) continue;
      if (std::find(tab.basis.begin(), tab.basis.end(), j) != tab.basis.end()) continue;
      uint32_t row = tab.Leaving(j);
      if (row == tab.m) continue;
      Tableau moved = tab;
      moved.Pivot(row, j);
      std::vector<double> x = moved.Solution();
      if (Known(optima, x, tab.eps)) continue;
      optima.push_back(std::move(x));
      queue.push_back(std::move(moved));
    }
  }
}

}  // namespace

LpStatus SolveLinearProgram(const LinearProgram& lp, size_t most,
                            std::vector<std::vector<double>>& optima) {
  optima.clear();
  Tableau tab;
  Build(lp, tab);
  LpStatus status = Optimise(tab);
  // An unbounded direction through artificials only means the constraints cannot hold.
  if (status == LpStatus::kUnbounded && !Feasible(tab)) return LpStatus::kInfeasible;
  if (status != LpStatus::kOptimal) return status;
  if (!Feasible(tab)) return LpStatus::kInfeasible;
  optima.push_back(tab.Solution());
  if (most > 1) Enumerate(tab, most, optima);
  return LpStatus::kOptimal;
}

namespace {

struct Search {
  const LinearProgram* base;
  size_t most;
  uint32_t nodes = 0;
  bool found = false;
  double best = 0;
  std::vector<std::vector<double>> optima;
  bool unbounded = false;
  bool exhausted = false;
};

constexpr uint32_t kMaxNodes = 5000;

double Value(const LinearProgram& lp, const std::vector<double>& x) {
  double v = 0;
  for (size_t j = 0; j < x.size(); ++j) v += lp.c[j] * x[j];
  return v;
}

// Adds the row x[j] <= bound (sense 1) or x[j] >= bound (sense -1).
bool WithBound(const LinearProgram& lp, uint32_t j, int sense, double bound, LinearProgram& out) {
  uint32_t m = lp.a.rows(), n = lp.a.columns();
  if (!out.a.Allocate(m + 1, n)) return false;
  for (uint32_t i = 0; i < m; ++i) {
    for (uint32_t k = 0; k < n; ++k) out.a(i, k) = lp.a(i, k);
  }
  out.a(m, j) = 1;
  out.sense = lp.sense;
  out.sense.push_back(sense);
  out.b = lp.b;
  out.b.push_back(bound);
  out.c = lp.c;
  out.epsilon = lp.epsilon;
  out.bigM = lp.bigM;
  return true;
}

void Branch(Search& s, const LinearProgram& lp) {
  if (++s.nodes > kMaxNodes) {
    s.exhausted = true;
    return;
  }
  std::vector<std::vector<double>> relaxed;
  LpStatus status = SolveLinearProgram(lp, 1, relaxed);
  if (status == LpStatus::kUnbounded) s.unbounded = true;
  if (status == LpStatus::kNoConvergence) s.exhausted = true;
  if (status != LpStatus::kOptimal) return;
  const std::vector<double>& x = relaxed[0];
  double value = Value(lp, x);
  double tolerance = 1e-9 * (1 + std::fabs(s.best));
  if (s.found && value < s.best - tolerance) return;  // cannot beat what is known
  // The fractional variable of the largest fraction is branched on first.
  uint32_t pick = lp.a.columns();
  double widest = 1e-7;
  for (uint32_t j = 0; j < x.size(); ++j) {
    if (!s.base->integer[j]) continue;
    double frac = std::fabs(x[j] - std::round(x[j]));
    if (frac > widest) {
      widest = frac;
      pick = j;
    }
  }
  if (pick == lp.a.columns()) {
    std::vector<double> whole = x;
    for (uint32_t j = 0; j < whole.size(); ++j) {
      if (s.base->integer[j]) whole[j] = std::round(whole[j]);
    }
    if (!s.found || value > s.best + tolerance) {
      s.found = true;
      s.best = value;
      s.optima.assign(1, whole);
    } else if (s.optima.size() < s.most && !Known(s.optima, whole, lp.epsilon)) {
      s.optima.push_back(whole);
    }
    return;
  }
  LinearProgram down, up;
  if (!WithBound(lp, pick, 1, std::floor(x[pick]), down) ||
      !WithBound(lp, pick, -1, std::ceil(x[pick]), up)) {
    s.exhausted = true;
    return;
  }
  Branch(s, up);
  if (s.exhausted) return;
  Branch(s, down);
}

}  // namespace

LpStatus SolveIntegerProgram(const LinearProgram& lp, size_t most,
                             std::vector<std::vector<double>>& optima) {
  Search s;
  s.base = &lp;
  s.most = most;
  Branch(s, lp);
  optima = std::move(s.optima);
  if (s.exhausted) return LpStatus::kNoConvergence;
  if (s.found) return LpStatus::kOptimal;
  return s.unbounded ? LpStatus::kUnbounded : LpStatus::kInfeasible;
}

}  // namespace kelpdex::numeric
