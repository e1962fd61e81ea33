// The two largest eigenvalues of a symmetric matrix and their eigenvectors.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

namespace keltrun {

/// A symmetric matrix, stored by columns. Only the part from the diagonal down is used; the rest is
/// never touched and, in a large matrix, takes no memory.
class SymmetricMatrix {
 public:
  /// The elements are not initialized.
  explicit SymmetricMatrix(std::size_t size)
      : size_(size), elements_(std::make_unique_for_overwrite<double[]>(size * size)) {}

  std::size_t Size() const { return size_; }

  /// Column(j)[i] is the element of row i, for i >= j.
  double* Column(std::size_t j) { return elements_.get() + j * size_; }
  const double* Column(std::size_t j) const { return elements_.get() + j * size_; }

 private:
  std::size_t size_;
  std::unique_ptr<double[]> elements_;
};

/// An eigenvalue and its eigenvector of length 1. When none was found, 0 and an empty vector.
struct Eigenpair {
  double value = 0;
  std::vector<double> vector;
};

/// The pair with the largest eigenvalue comes first.
using TopEigenpairs = std::array<Eigenpair, 2>;

/// Uses Jacobi rotations, starting from the identity, so that the signs of the vectors do not
/// depend on chance. The error is about 1e-6 of the largest row sum of absolute values. The time
/// grows with the cube of the size. The elements must be finite. Destroys the matrix.
TopEigenpairs TopByJacobi(SymmetricMatrix&& matrix);

/// Uses the block Lanczos method, which is fast for large matrices. The signs of the vectors mean
/// nothing. The error is below 1e-7 of the largest eigenvalue; a pair that is not found within a
/// limited number of steps is empty. The elements must be finite and the trace about 1, because
/// very small values are taken as 0.
TopEigenpairs TopByLanczos(const SymmetricMatrix& matrix);

}  // namespace keltrun
