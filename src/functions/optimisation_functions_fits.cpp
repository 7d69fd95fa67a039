// polyReg, polyPoints and timeSeries: fits of polynomials through orthonormal polynomials on the
// measured points, and the confidence limits of the fitted values.
#include <cmath>
#include <vector>

#include "functions/arguments.h"
#include "functions/matrix_arguments.h"
#include "functions/numeric/student.h"
#include "functions/optimisation_functions.h"

namespace kelpdex::fn {

namespace {

// r polynomials orthonormal on the points t under the weights g: each as its values on the
// points and its coefficients of t^0 .. t^(r-1).
struct Family {
  std::vector<std::vector<double>> values, coefficients;
};

// A new polynomial starts from t times the last and is made orthogonal to all before it twice
// over, which keeps the family orthonormal to rounding even when the points crowd. False when the
// points cannot carry a polynomial of that degree (too few distinct t).
bool BuildFamily(const double* t, const double* g, size_t n, size_t r, Family& out) {
  out.values.assign(r, std::vector<double>(n));
  out.coefficients.assign(r, std::vector<double>(r, 0.0));
  auto dot = [&](const std::vector<double>& p, const std::vector<double>& q) {
    double s = 0;
    for (size_t i = 0; i < n; ++i) s += g[i] * p[i] * q[i];
    return s;
  };
  for (size_t j = 0; j < r; ++j) {
    std::vector<double>& f = out.values[j];
    std::vector<double>& c = out.coefficients[j];
    if (j == 0) {
      f.assign(n, 1.0);
      c[0] = 1;
    } else {
      for (size_t i = 0; i < n; ++i) f[i] = t[i] * out.values[j - 1][i];
      for (size_t k = 0; k < j; ++k) c[k + 1] = out.coefficients[j - 1][k];
    }
    double before = std::sqrt(dot(f, f));
    for (int pass = 0; pass < 2; ++pass) {
      for (size_t k = 0; k < j; ++k) {
        double p = dot(f, out.values[k]);
        for (size_t i = 0; i < n; ++i) f[i] -= p * out.values[k][i];
        for (size_t l = 0; l < r; ++l) c[l] -= p * out.coefficients[k][l];
      }
    }
    double norm = std::sqrt(dot(f, f));
    if (!(norm > 1e-12 * before)) return false;
    for (double& x : f) x /= norm;
    for (double& x : c) x /= norm;
  }
  return true;
}

// The sum of the squares of the first r polynomials at t, whose coefficients are the rows of b:
// the variance of a fitted value when every coefficient has deviation 1.
template <typename Row>
double SquaredSum(Row b, size_t r, double t, const double* valueWeights, double& value) {
  double squares = 0;
  value = 0;
  for (size_t j = 0; j < r; ++j) {
    double f = 0;
    for (size_t k = r; k-- > 0;) f = f * t + b(j, k);
    squares += f * f;
    value += valueWeights[j] * f;
  }
  return squares;
}

// The half-width factor of a two-sided confidence interval of probability p with `freedom`
// degrees of freedom; 0x50 when p is outside (0, 1).
uint8_t StudentFactor(double p, double freedom, double& factor) {
  if (!(p > 0 && p < 1)) return ferr::kNum;
  return numeric::StudentUpperQuantile((1 - p) / 2, freedom, factor) ? 0 : ferr::kNum;
}

}  // namespace

void PolyReg(FormulaEngine& e) {
  mtx::Arguments a;
  if (!mtx::ReadArguments(e, "mmmnn", 5, a)) return;
  uint8_t error = a.error;
  const numeric::Matrix &t = a.matrix[0], &y = a.matrix[1], &sy = a.matrix[2];
  size_t n = size_t(t.rows()) * t.columns();
  bool shapes = a.given[0] && a.given[1] && a.given[2] && size_t(y.rows()) * y.columns() == n &&
                size_t(sy.rows()) * sy.columns() == n;
  if (error == 0 && !shapes) error = ferr::kValue;
  double rr = RoundHalfAway(a.number[3]), type = RoundHalfAway(a.number[4]);
  if (error == 0 && (rr < 1 || rr > static_cast<double>(n) || type < 1 || type > 3)) {
    error = ferr::kNum;
  }
  std::vector<double> g(n);
  for (size_t i = 0; error == 0 && i < n; ++i) {
    if (!(sy.data()[i] > 0))
      error = ferr::kNum;
    else
      g[i] = 1 / (sy.data()[i] * sy.data()[i]);
  }
  size_t r = error == 0 ? static_cast<size_t>(rr) : 0;
  Family family;
  if (error == 0 && !BuildFamily(t.data(), g.data(), n, r, family)) error = ferr::kNum;
  const auto& values = family.values;
  const auto& coefficients = family.coefficients;
  numeric::Matrix out;
  if (error == 0) {
    std::vector<double> x(r), fitted(n, 0.0);
    bool ok = true;
    if (type == 2) {
      ok = out.Allocate(static_cast<uint32_t>(r), static_cast<uint32_t>(r));
      for (size_t j = 0; ok && j < r; ++j) {
        for (size_t k = 0; k <= j; ++k)
          out(static_cast<uint32_t>(j), static_cast<uint32_t>(k)) = coefficients[j][k];
      }
    } else {
      ok = out.Allocate(static_cast<uint32_t>(r), 1);
      for (size_t j = 0; ok && j < r; ++j) {
        x[j] = 0;
        for (size_t i = 0; i < n; ++i) x[j] += g[i] * y.data()[i] * values[j][i];
        double chi2 = 0;
        for (size_t i = 0; i < n; ++i) {
          fitted[i] += x[j] * values[j][i];
          double d = y.data()[i] - fitted[i];
          chi2 += g[i] * d * d;
        }
        out(static_cast<uint32_t>(j), 0) = type == 1 ? x[j] : chi2;
      }
    }
    if (!ok) error = ferr::kMemory;
  }
  mtx::SetMatrixResult(e, a.base, out, error);
}

// The chi2 of the fit with r terms has N - r degrees of freedom; it scales the unit deviation of
// the coefficients to the scatter the measurements show, so the limits hold also when sy gave
// only relative weights.
void PolyPoints(FormulaEngine& e) {
  mtx::Arguments a;
  if (!mtx::ReadArguments(e, "mmmnnmn", 7, a)) return;
  uint8_t error = a.error;
  const numeric::Matrix &x = a.matrix[0], &b = a.matrix[1], &chi2 = a.matrix[2], &t = a.matrix[5];
  size_t xs = size_t(x.rows()) * x.columns(), cs = size_t(chi2.rows()) * chi2.columns();
  size_t ts = size_t(t.rows()) * t.columns();
  double measured = RoundHalfAway(a.number[3]), rr = RoundHalfAway(a.number[4]);
  if (error == 0 && (xs == 0 || cs == 0 || ts == 0 || b.empty())) error = ferr::kValue;
  if (error == 0 && (rr < 1 || rr > measured)) error = ferr::kNum;
  size_t r = error == 0 ? static_cast<size_t>(rr) : 0;
  if (error == 0 && (xs < r || b.rows() < r || b.columns() < r || (cs != 1 && cs < r))) {
    error = ferr::kValue;
  }
  double freedom = measured - rr;
  if (error == 0 && freedom < 1) error = ferr::kDivZero;
  double squares = error == 0 ? chi2.data()[cs == 1 ? 0 : r - 1] : 0;
  if (error == 0 && !(squares >= 0)) error = ferr::kNum;
  double factor = 0;
  if (error == 0) error = StudentFactor(a.number[6], freedom, factor);
  numeric::Matrix out;
  if (error == 0 && !out.Allocate(static_cast<uint32_t>(ts), 2)) error = ferr::kMemory;
  double scale = factor * std::sqrt(squares / freedom);
  auto row = [&](size_t j, size_t k) {
    return b(static_cast<uint32_t>(j), static_cast<uint32_t>(k));
  };
  for (size_t i = 0; error == 0 && i < ts; ++i) {
    double value = 0;
    double variance = SquaredSum(row, r, t.data()[i], x.data(), value);
    out(static_cast<uint32_t>(i), 0) = value;
    out(static_cast<uint32_t>(i), 1) = scale * std::sqrt(variance);
  }
  mtx::SetMatrixResult(e, a.base, out, error);
}

// Every window of 2k + 1 points has the same positions relative to its centre, so one family of
// orthonormal polynomials, on u = -1 .. 1 in steps of 1/k, serves all windows. The scatter
// within each window, with 2k - l degrees of freedom, gives its limits.
void TimeSeries(FormulaEngine& e) {
  mtx::Arguments a;
  if (!mtx::ReadArguments(e, "mnnn", 4, a)) return;
  uint8_t error = a.error;
  const numeric::Matrix& y = a.matrix[0];
  size_t n = size_t(y.rows()) * y.columns();
  double ll = RoundHalfAway(a.number[1]), kk = RoundHalfAway(a.number[2]);
  if (error == 0 && n == 0) error = ferr::kValue;
  if (error == 0 && (ll < 0 || kk < 1 || ll >= 2 * kk || 2 * kk + 1 > static_cast<double>(n))) {
    error = ferr::kNum;
  }
  size_t k = error == 0 ? static_cast<size_t>(kk) : 0, terms = error == 0 ? size_t(ll) + 1 : 0;
  size_t width = 2 * k + 1;
  std::vector<double> u(width), ones(width, 1.0);
  for (size_t i = 0; i < width; ++i) u[i] = (static_cast<double>(i) - static_cast<double>(k)) / kk;
  Family family;
  if (error == 0 && !BuildFamily(u.data(), ones.data(), width, terms, family)) error = ferr::kNum;
  double factor = 0;
  if (error == 0) error = StudentFactor(a.number[3], static_cast<double>(width - terms), factor);
  numeric::Matrix out;
  if (error == 0 && !out.Allocate(static_cast<uint32_t>(n + 2 * k), 2)) error = ferr::kMemory;
  auto row = [&](size_t j, size_t c) { return family.coefficients[j][c]; };
  std::vector<double> x(terms);
  // Centres k .. n-k-1 counted from 0; row `time + k` answers the time, from -k to n-1+k.
  for (size_t centre = k; error == 0 && centre + k < n; ++centre) {
    const double* window = y.data() + centre - k;
    for (size_t j = 0; j < terms; ++j) {
      x[j] = 0;
      for (size_t i = 0; i < width; ++i) x[j] += window[i] * family.values[j][i];
    }
    double residuals = 0;
    for (size_t i = 0; i < width; ++i) {
      double fitted = 0;
      for (size_t j = 0; j < terms; ++j) fitted += x[j] * family.values[j][i];
      residuals += (window[i] - fitted) * (window[i] - fitted);
    }
    double deviation = std::sqrt(residuals / static_cast<double>(width - terms));
    // The first and the last windows also answer the times before and after them.
    size_t firstRow = centre == k ? 0 : centre + k;
    size_t lastRow = centre + k + 1 == n ? n + 2 * k - 1 : centre + k;
    for (size_t r = firstRow; r <= lastRow; ++r) {
      double at = (static_cast<double>(r) - static_cast<double>(centre + k)) / kk, value = 0;
      double variance = SquaredSum(row, terms, at, x.data(), value);
      out(static_cast<uint32_t>(r), 0) = value;
      out(static_cast<uint32_t>(r), 1) = factor * deviation * std::sqrt(variance);
    }
  }
  mtx::SetMatrixResult(e, a.base, out, error);
}

}  // namespace kelpdex::fn
