#include "functions/numeric/svd.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <span>
#include <utility>

namespace kelpdex::numeric {

namespace {

// Sweeps enough for any matrix that rounding lets converge; Jacobi converges quadratically once
// close, so more would only spin.
constexpr int kMaxSweeps = 80;

double Threshold(const Svd& svd, double ratio) {
  double largest = svd.s.empty() ? 0 : svd.s[0];
  return std::max(ratio, kMinMaxRatio) * largest;
}

}  // namespace

bool SvdDecompose(const Matrix& a, Svd& out, bool& notConvergent) {
  notConvergent = false;
  uint32_t m = a.rows(), n = a.columns();
  Matrix w;
  if (!w.CopyFrom(a) || !Identity(n, out.v)) return false;
  for (double x : std::span<const double>(a.data(), size_t(m) * n)) {
    if (!std::isfinite(x)) {
      notConvergent = true;
      return false;
    }
  }
  // Columns worn down to rounding noise (a wide or rank-deficient A) stay noise however they are
  // rotated, and would keep the sweeps going: below this square norm a column counts as zero.
  // It lies far below the smallest singular value that minMaxRatio can keep.
  double total = 0;
  for (double x : std::span<const double>(a.data(), size_t(m) * n)) total += x * x;
  const double negligible = 1e-36 * total;
  bool rotated = true;
  for (int sweep = 0; rotated; ++sweep) {
    if (sweep == kMaxSweeps) {
      notConvergent = true;
      return false;
    }
    rotated = false;
    for (uint32_t p = 0; p + 1 < n; ++p) {
      for (uint32_t q = p + 1; q < n; ++q) {
        double alpha = 0, beta = 0, gamma = 0;
        for (uint32_t i = 0; i < m; ++i) {
          alpha += w(i, p) * w(i, p);
          beta += w(i, q) * w(i, q);
          gamma += w(i, p) * w(i, q);
        }
        if (gamma == 0 || std::fabs(gamma) <= 1e-15 * std::sqrt(alpha * beta)) continue;
        if (alpha <= negligible || beta <= negligible) continue;
        rotated = true;
        double zeta = (beta - alpha) / (2 * gamma);
        double t = (zeta >= 0 ? 1.0 : -1.0) / (std::fabs(zeta) + std::hypot(1.0, zeta));
        double c = 1 / std::sqrt(1 + t * t), s = c * t;
        for (uint32_t i = 0; i < m; ++i) {
          double wp = w(i, p), wq = w(i, q);
          w(i, p) = c * wp - s * wq;
          w(i, q) = s * wp + c * wq;
        }
        for (uint32_t i = 0; i < n; ++i) {
          double vp = out.v(i, p), vq = out.v(i, q);
          out.v(i, p) = c * vp - s * vq;
          out.v(i, q) = s * vp + c * vq;
        }
      }
    }
  }
  std::vector<double> norms(n, 0.0);
  for (uint32_t j = 0; j < n; ++j) {
    double sum = 0;
    for (uint32_t i = 0; i < m; ++i) sum += w(i, j) * w(i, j);
    norms[j] = std::sqrt(sum);
  }
  // Largest first, so that the rank is a prefix and results read as users expect.
  std::vector<uint32_t> order(n);
  std::iota(order.begin(), order.end(), 0u);
  std::stable_sort(order.begin(), order.end(),
                   [&](uint32_t x, uint32_t y) { return norms[x] > norms[y]; });
  Matrix v;
  if (!out.u.Allocate(m, n) || !v.Allocate(n, n)) return false;
  out.s.assign(n, 0.0);
  for (uint32_t k = 0; k < n; ++k) {
    uint32_t j = order[k];
    out.s[k] = norms[j];
    for (uint32_t i = 0; i < n; ++i) v(i, k) = out.v(i, j);
    if (norms[j] == 0) continue;
    for (uint32_t i = 0; i < m; ++i) out.u(i, k) = w(i, j) / norms[j];
  }
  out.v = std::move(v);
  return true;
}

uint32_t SvdRank(const Svd& svd, double ratio) {
  double threshold = Threshold(svd, ratio);
  uint32_t rank = 0;
  for (double s : svd.s) rank += s > threshold && s > 0 ? 1 : 0;
  return rank;
}

bool SvdSolve(const Svd& svd, const Matrix& b, double ratio, Matrix& x) {
  uint32_t m = svd.u.rows(), n = svd.v.rows();
  if (b.rows() != m || !x.Allocate(n, b.columns())) return false;
  uint32_t rank = SvdRank(svd, ratio);
  for (uint32_t c = 0; c < b.columns(); ++c) {
    for (uint32_t k = 0; k < rank; ++k) {
      double dot = 0;
      for (uint32_t i = 0; i < m; ++i) dot += svd.u(i, k) * b(i, c);
      dot /= svd.s[k];
      for (uint32_t i = 0; i < n; ++i) x(i, c) += dot * svd.v(i, k);
    }
  }
  return true;
}

bool SvdPseudoInverse(const Svd& svd, double ratio, Matrix& inverse) {
  uint32_t m = svd.u.rows(), n = svd.v.rows();
  if (!inverse.Allocate(n, m)) return false;
  uint32_t rank = SvdRank(svd, ratio);
  for (uint32_t k = 0; k < rank; ++k) {
    for (uint32_t i = 0; i < n; ++i) {
      double vk = svd.v(i, k) / svd.s[k];
      for (uint32_t j = 0; j < m; ++j) inverse(i, j) += vk * svd.u(j, k);
    }
  }
  return true;
}

bool ConstrainedLeastSquares(const Matrix& a, const Matrix& b, const Matrix& e, const Matrix& d,
                             double ratio, Matrix& x, bool& notConvergent) {
  uint32_t n = a.columns();
  if (e.columns() != n || d.rows() != e.rows() || b.rows() != a.rows()) return false;
  Svd constraints;
  if (!SvdDecompose(e, constraints, notConvergent)) return false;
  Matrix x0;
  if (!SvdSolve(constraints, d, ratio, x0)) return false;
  // The columns of V past the rank span the constraints' null space.
  uint32_t rank = SvdRank(constraints, ratio);
  uint32_t free = n - rank;
  if (free == 0) return x.CopyFrom(x0);
  Matrix z, az, rest, y, ax0;
  if (!z.Allocate(n, free)) return false;
  for (uint32_t i = 0; i < n; ++i) {
    for (uint32_t k = 0; k < free; ++k) z(i, k) = constraints.v(i, rank + k);
  }
  if (!Multiply(a, z, az) || !Multiply(a, x0, ax0) || !rest.CopyFrom(b)) return false;
  for (uint32_t i = 0; i < rest.rows(); ++i) {
    for (uint32_t c = 0; c < rest.columns(); ++c) rest(i, c) -= ax0(i, 0);
  }
  Svd reduced;
  if (!SvdDecompose(az, reduced, notConvergent) || !SvdSolve(reduced, rest, ratio, y)) return false;
  Matrix zy;
  if (!Multiply(z, y, zy) || !x.Allocate(n, b.columns())) return false;
  for (uint32_t i = 0; i < n; ++i) {
    for (uint32_t c = 0; c < b.columns(); ++c) x(i, c) = x0(i, 0) + zy(i, c);
  }
  return true;
}

bool WeightedLeastSquares(const Matrix& a, const Matrix& b, const Matrix& g, double ratio,
                          Matrix& x, bool& notConvergent) {
  uint32_t m = a.rows();
  if (g.rows() != m || g.columns() != m || b.rows() != m) return false;
  // G = V*S*V^T for symmetric G, so W = sqrt(S)*V^T has W^T*W = G.
  Svd weights;
  if (!SvdDecompose(g, weights, notConvergent)) return false;
  Matrix w;
  if (!w.Allocate(m, m)) return false;
  for (uint32_t k = 0; k < m; ++k) {
    double root = std::sqrt(weights.s[k]);
    for (uint32_t j = 0; j < m; ++j) w(k, j) = root * weights.v(j, k);
  }
  Matrix wa, wb;
  if (!Multiply(w, a, wa) || !Multiply(w, b, wb)) return false;
  Svd reduced;
  return SvdDecompose(wa, reduced, notConvergent) && SvdSolve(reduced, wb, ratio, x);
}

}  // namespace kelpdex::numeric
