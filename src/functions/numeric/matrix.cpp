#include "functions/numeric/matrix.h"

#include <cstdlib>
#include <cstring>
#include <utility>

namespace kelpdex::numeric {

namespace {

constexpr size_t kBlockBytes = 8192;

}  // namespace

Matrix::~Matrix() {
  Free();
}

Matrix::Matrix(Matrix&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)),
      capacity_(std::exchange(other.capacity_, 0)),
      rows_(std::exchange(other.rows_, 0)),
      columns_(std::exchange(other.columns_, 0)) {}

Matrix& Matrix::operator=(Matrix&& other) noexcept {
  if (this != &other) {
    Free();
    data_ = std::exchange(other.data_, nullptr);
    capacity_ = std::exchange(other.capacity_, 0);
    rows_ = std::exchange(other.rows_, 0);
    columns_ = std::exchange(other.columns_, 0);
  }
  return *this;
}

void Matrix::Free() {
  std::free(data_);
  data_ = nullptr;
  capacity_ = 0;
  rows_ = columns_ = 0;
}

bool Matrix::Allocate(uint32_t rows, uint32_t columns) {
  size_t count = size_t(rows) * columns;
  if (count > kMaxMatrixElements) {
    Free();
    return false;
  }
  if (count > capacity_) {
    Free();
    // Whole 8 KB blocks, so that a matrix that grows a little reuses its block.
    size_t bytes = (count * sizeof(double) + kBlockBytes - 1) / kBlockBytes * kBlockBytes;
    data_ = static_cast<double*>(std::malloc(bytes));
    if (data_ == nullptr) return false;
    capacity_ = bytes / sizeof(double);
  }
  rows_ = rows;
  columns_ = columns;
  if (count > 0) std::memset(data_, 0, count * sizeof(double));
  return true;
}

bool Matrix::CopyFrom(const Matrix& other) {
  if (!Allocate(other.rows_, other.columns_)) return false;
  size_t count = size_t(rows_) * columns_;
  if (count > 0) std::memcpy(data_, other.data_, count * sizeof(double));
  return true;
}

bool Multiply(const Matrix& a, const Matrix& b, Matrix& out) {
  if (a.columns() != b.rows()) return false;
  Matrix product;
  if (!product.Allocate(a.rows(), b.columns())) return false;
  // The i-k-j order walks b and the product row by row.
  for (uint32_t i = 0; i < a.rows(); ++i) {
    double* row = product.data() + size_t(i) * b.columns();
    for (uint32_t k = 0; k < a.columns(); ++k) {
      double x = a(i, k);
      if (x == 0) continue;
      const double* bk = b.data() + size_t(k) * b.columns();
      for (uint32_t j = 0; j < b.columns(); ++j) row[j] += x * bk[j];
    }
  }
  out = std::move(product);
  return true;
}

bool Transpose(const Matrix& a, Matrix& out) {
  Matrix t;
  if (!t.Allocate(a.columns(), a.rows())) return false;
  for (uint32_t i = 0; i < a.rows(); ++i) {
    for (uint32_t j = 0; j < a.columns(); ++j) t(j, i) = a(i, j);
  }
  out = std::move(t);
  return true;
}

bool Identity(uint32_t n, Matrix& out) {
  if (!out.Allocate(n, n)) return false;
  for (uint32_t i = 0; i < n; ++i) out(i, i) = 1;
  return true;
}

}  // namespace kelpdex::numeric
