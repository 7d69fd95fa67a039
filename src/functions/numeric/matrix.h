// The dense matrix of the numerical core: rows times columns doubles, row-major, in one heap block
// whose size is a multiple of 8192 bytes. Every routine of the core works on these.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kelpdex::numeric {

// More elements than this are refused rather than allocated: 128 MB of doubles, far more than
// any matrix a sheet can give that the routines could also finish with in reasonable time.
constexpr size_t kMaxMatrixElements = size_t(1) << 24;

class Matrix {
 public:
  Matrix() = default;
  ~Matrix();
  Matrix(Matrix&& other) noexcept;
  Matrix& operator=(Matrix&& other) noexcept;
  Matrix(const Matrix&) = delete;
  Matrix& operator=(const Matrix&) = delete;

  // Makes a rows x columns matrix of zeros, reusing the block when it is large enough. False (and
  // an empty matrix) when the size passes kMaxMatrixElements or memory runs out.
  bool Allocate(uint32_t rows, uint32_t columns);
  // A copy of `other`; false when memory runs out.
  bool CopyFrom(const Matrix& other);

  uint32_t rows() const { return rows_; }
  uint32_t columns() const { return columns_; }
  bool empty() const { return rows_ == 0 || columns_ == 0; }
  double* data() { return data_; }
  const double* data() const { return data_; }
  // Element (i, j), both counted from 0.
  double& operator()(uint32_t i, uint32_t j) { return data_[size_t(i) * columns_ + j]; }
  double operator()(uint32_t i, uint32_t j) const { return data_[size_t(i) * columns_ + j]; }

 private:
  void Free();

  double* data_ = nullptr;
  size_t capacity_ = 0;  // doubles the block holds
  uint32_t rows_ = 0;
  uint32_t columns_ = 0;
};

// out = a * b; false when the inner sizes differ or memory runs out.
bool Multiply(const Matrix& a, const Matrix& b, Matrix& out);
// out = a^T.
bool Transpose(const Matrix& a, Matrix& out);
// An n x n identity.
bool Identity(uint32_t n, Matrix& out);

}  // namespace kelpdex::numeric
