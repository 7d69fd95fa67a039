// polyReg: the fit of a polynomial through orthonormal polynomials on the measured points.
#include <cmath>
#include <vector>

#include "functions/arguments.h"
#include "functions/matrix_arguments.h"
#include "functions/optimisation_functions.h"

namespace kelpdex::fn {

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
  // Each f_j as its values on the points and its coefficients of t^0 .. t^(r-1). A new one starts
  // from t times the last and is made orthogonal to all before it twice over, which keeps the
  // family orthonormal to rounding even when the points crowd.
  std::vector<std::vector<double>> values(r, std::vector<double>(n)),
      coefficients(r, std::vector<double>(r, 0.0));
  auto dot = [&](const std::vector<double>& p, const std::vector<double>& q) {
    double s = 0;
    for (size_t i = 0; i < n; ++i) s += g[i] * p[i] * q[i];
    return s;
  };
  for (size_t j = 0; j < r && error == 0; ++j) {
    std::vector<double>& f = values[j];
    std::vector<double>& c = coefficients[j];
    if (j == 0) {
      f.assign(n, 1.0);
      c[0] = 1;
    } else {
      for (size_t i = 0; i < n; ++i) f[i] = t.data()[i] * values[j - 1][i];
      for (size_t k = 0; k < j; ++k) c[k + 1] = coefficients[j - 1][k];
    }
    double before = std::sqrt(dot(f, f));
    for (int pass = 0; pass < 2; ++pass) {
      for (size_t k = 0; k < j; ++k) {
        double p = dot(f, values[k]);
        for (size_t i = 0; i < n; ++i) f[i] -= p * values[k][i];
        for (size_t l = 0; l < r; ++l) c[l] -= p * coefficients[k][l];
      }
    }
    double norm = std::sqrt(dot(f, f));
    // Points that cannot carry a polynomial of this degree (repeated t) leave nothing behind.
    if (!(norm > 1e-12 * before)) {
      error = ferr::kNum;
      break;
    }
    for (double& x : f) x /= norm;
    for (double& x : c) x /= norm;
  }
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

}  // namespace kelpdex::fn
