// The two largest eigenvalues of a symmetric matrix and their eigenvectors.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

namespace keltrun {

/// A symmetric matrix, held by columns of which only the part from the diagonal down is used: the
/// rest is never touched and of a large matrix takes no memory.
class SymmetricMatrix {
 public:
  /// The elements are not initialized.
  explicit SymmetricMatrix(std::size_t size)
      : size_(size), elements_(std::make_unique_for_overwrite<double[]>(size * size)) {}

  std::size_t Size() const { return size_; }

  /// The element of row i >= j is Column(j)[i].
  double* Column(std::size_t j) { return elements_.get() + j * size_; }
  const double* Column(std::size_t j) const { return elements_.get() + j * size_; }

 private:
  std::size_t size_;
  std::unique_ptr<double[]> elements_;
};

/// An eigenvector of length 1; empty, with the value 0, where none was found.
struct Eigenpair {
  double value = 0;
  std::vector<double> vector;
};

/// The largest first.
using TopEigenpairs = std::array<Eigenpair, 2>;

/// By Jacobi rotations, from the identity, so that the signs of the vectors do not depend on the
/// solver's chance. Exact to about 1e-6 of the largest row sum of absolute values. The time grows
/// with the cube of the size. The elements must be finite; the matrix is used up.
TopEigenpairs TopByJacobi(SymmetricMatrix&& matrix);

/// By the block Lanczos method: fast for large matrices, the signs of the vectors mean nothing.
/// Exact to 1e-7 of the largest eigenvalue; a pair that is not found in a bounded number of steps
/// stays empty. The elements must be finite, and the trace about 1: what is very small counts as 0.
TopEigenpairs TopByLanczos(const SymmetricMatrix& matrix);

}  // namespace keltrun
