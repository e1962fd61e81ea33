#include "keltrun2/analysis/symmetric_eigen.h"

#include <Eigen/Core>
#include <Eigen/Eigenvalues>
#include <Eigen/Jacobi>
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>
#include <random>
#include <tuple>

namespace keltrun {
namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;

constexpr Index kPairs = static_cast<Index>(std::tuple_size_v<TopEigenpairs>);

Eigenpair MakePair(double value, const VectorXd& vector) {
  return {value, std::vector<double>(vector.begin(), vector.end())};
}

// Makes a symmetric matrix diagonal by rotations in two axes at a time, and accumulates them.
class JacobiSolver {
 public:
  explicit JacobiSolver(const Eigen::Map<MatrixXd>& matrix)
      : matrix_(matrix),
        vectors_(MatrixXd::Identity(matrix.rows(), matrix.rows())),
        threshold_(std::max(kThreshold * matrix.cwiseAbs().rowwise().sum().maxCoeff(),
                            std::numeric_limits<double>::min())) {}

  // The threshold grows beyond every element within a few hundred sweeps, so this ends.
  void Run() {
    for (int sweep = 1; sweep <= kMostSweeps && LargestOffDiagonal() >= threshold_; ++sweep) {
      Sweep();
      threshold_ *= kThresholdGrowth;
    }
  }

  TopEigenpairs Top() const {
    std::vector<Index> order(static_cast<std::size_t>(matrix_.rows()));
    std::iota(order.begin(), order.end(), Index{0});
    std::stable_sort(order.begin(), order.end(),
                     [this](Index a, Index b) { return matrix_(a, a) > matrix_(b, b); });
    TopEigenpairs top;
    for (std::size_t k = 0; k < std::min(top.size(), order.size()); ++k) {
      top[k] = MakePair(matrix_(order[k], order[k]), vectors_.col(order[k]));
    }
    return top;
  }

 private:
  static constexpr double kThreshold = 1e-6;
  static constexpr double kThresholdGrowth = 1.05;
  static constexpr int kMostSweeps = 32767;

  double LargestOffDiagonal() const {
    double largest = 0;
    for (Index p = 0; p + 1 < matrix_.rows(); ++p) {
      const auto below = matrix_.col(p).tail(matrix_.rows() - p - 1);
      largest = std::max(largest, below.cwiseAbs().maxCoeff());
    }
    return largest;
  }

  void Sweep() {
    for (Index p = 0; p < matrix_.rows(); ++p) {
      for (Index q = p + 1; q < matrix_.rows(); ++q) {
        if (std::fabs(matrix_(q, p)) >= threshold_) Rotate(p, q);
      }
      // Nothing has read the row up to this point.
      matrix_.row(p) = matrix_.col(p).transpose();
    }
  }

  // Rotates axes p and q by at most 45 degrees, so that their common element becomes 0.
  void Rotate(Index p, Index q) {
    const double element = matrix_(q, p);
    const double half_difference = (matrix_(p, p) - matrix_(q, q)) / 2;
    const double length = std::hypot(half_difference, element);
    const double cos_twice = std::fabs(half_difference) / length;
    const double sin_twice = (half_difference < 0 ? element : -element) / length;
    const double sine = sin_twice / (std::numbers::sqrt2 * std::sqrt(1 + cos_twice));
    const double cosine = std::sqrt(1 - sine * sine);
    const double shift = sine / cosine * element;
    const Eigen::JacobiRotation<double> rotation(cosine, sine);
    vectors_.applyOnTheRight(p, q, rotation);
    const double at_p = matrix_(p, p) - shift;
    const double at_q = matrix_(q, q) + shift;
    matrix_.applyOnTheRight(p, q, rotation);
    matrix_(p, p) = at_p;
    matrix_(q, q) = at_q;
    matrix_(p, q) = matrix_(q, p) = 0;
    matrix_.row(q) = matrix_.col(q).transpose();
  }

  Eigen::Map<MatrixXd>
      matrix_;  // both halves are kept up to date, because columns are fast to rotate
  MatrixXd vectors_;
  double threshold_;
};

// The block Lanczos method with full orthogonalization. The space of two vectors, their images, the
// images of the images and so on soon contains the eigenvectors of the largest eigenvalues. Two
// vectors are needed because the space of one shows a double eigenvalue only once. A library solver
// (Spectra 1.0.1) was tried; it returns eigenvalues of 1e104 when a few vectors already span the
// space, which happens when all runners have the same profile.
class LanczosSolver {
 public:
  explicit LanczosSolver(const SymmetricMatrix& matrix)
      : lower_(matrix.Column(0), Rows(matrix), Rows(matrix)),
        basis_(Rows(matrix), std::min(kMostVectors, Rows(matrix))),
        images_(Rows(matrix), basis_.cols()) {}

  void Run() {
    MatrixXd block = StartVectors();
    for (int step = 1; Extend(block); ++step) {
      block = images_.middleCols(count_ - added_, added_);
      if (step % kStepsBetweenChecks == 0 && IsFound()) return;
    }
    Solve();  // the space is complete, or there is no room to extend it
  }

  TopEigenpairs Top() const {
    TopEigenpairs top;
    for (Index k = 0; k < vectors_.cols(); ++k) {
      if (!IsEigenpair(k)) continue;
      top[static_cast<std::size_t>(k)] = MakePair(values_(k), vectors_.col(k));
    }
    return top;
  }

 private:
  static constexpr Index kMostVectors = 240;
  static constexpr int kStepsBetweenChecks = 4;
  static constexpr double kTolerance =
      1e-7;  // of the largest eigenvalue, which is far below a pixel
  static constexpr double kNoDirection =
      1e-12;  // of the length of a vector, which is then in the space already
  static constexpr double kRounding = 1e-15;  // of elements of about 1

  static Index Rows(const SymmetricMatrix& matrix) { return static_cast<Index>(matrix.Size()); }

  // The start vectors are the same in every run.
  MatrixXd StartVectors() const {
    std::mt19937 random;
    MatrixXd vectors(basis_.rows(), kPairs);
    for (double& element : vectors.reshaped()) {
      element = static_cast<double>(random()) / static_cast<double>(std::mt19937::max()) - 0.5;
    }
    return vectors;
  }

  // Adds the new directions of the block to the basis, with their images. False when there is none
  // or when there is no room.
  bool Extend(MatrixXd& block) {
    const Index before = count_;
    for (auto vector : block.colwise()) {
      if (count_ < basis_.cols()) Add(vector);
    }
    added_ = count_ - before;
    if (added_ == 0) return false;
    Multiply(before);
    return true;
  }

  void Add(Eigen::Ref<VectorXd> vector) {
    const auto known = basis_.leftCols(count_);
    for (int pass = 0; pass < 2; ++pass) {  // the second one removes what rounding left
      const double length = vector.norm();
      vector -= known * (known.transpose() * vector);
      if (!(vector.norm() > std::max(kNoDirection * length, kRounding))) return;
    }
    basis_.col(count_++) = vector.normalized();
  }

  // The images of the added vectors, in one pass over the matrix.
  void Multiply(Index first) {
    images_.middleCols(first, added_).setZero();
    for (Index j = 0; j < lower_.cols(); ++j) {
      const Index below = lower_.rows() - j - 1;
      const auto column = lower_.col(j).tail(below);
      for (Index k = first; k < count_; ++k) {
        images_(j, k) += lower_(j, j) * basis_(j, k) + column.dot(basis_.col(k).tail(below));
        images_.col(k).tail(below) += basis_(j, k) * column;
      }
    }
  }

  // Finds the best approximations of the top eigenpairs within the space.
  void Solve() {
    const auto basis = basis_.leftCols(count_);
    const auto images = images_.leftCols(count_);
    const Eigen::SelfAdjointEigenSolver<MatrixXd> solver(basis.transpose() * images);
    const Index pairs = std::min(kPairs, count_);
    const MatrixXd weights = solver.eigenvectors().rightCols(pairs).rowwise().reverse();
    values_ = solver.eigenvalues().tail(pairs).reverse();
    vectors_ = basis * weights;
    errors_ = (images * weights - vectors_ * values_.asDiagonal()).colwise().norm();
  }

  bool IsEigenpair(Index k) const { return errors_(k) <= kTolerance * std::fabs(values_(0)); }

  bool IsFound() {
    Solve();
    return vectors_.cols() == kPairs && IsEigenpair(0) && IsEigenpair(1);
  }

  Eigen::Map<const MatrixXd> lower_;
  MatrixXd basis_;   // orthonormal columns, count_ of them in use
  MatrixXd images_;  // the products of the matrix and the basis
  Index count_ = 0;
  Index added_ = 0;
  VectorXd values_;
  MatrixXd vectors_;
  VectorXd errors_;
};

}  // namespace

TopEigenpairs TopByJacobi(SymmetricMatrix&& matrix) {
  const auto size = static_cast<Index>(matrix.Size());
  Eigen::Map<MatrixXd> whole(matrix.Column(0), size, size);
  whole.triangularView<Eigen::StrictlyUpper>() = whole.transpose();
  JacobiSolver solver(whole);
  solver.Run();
  return solver.Top();
}

TopEigenpairs TopByLanczos(const SymmetricMatrix& matrix) {
  LanczosSolver solver(matrix);
  solver.Run();
  return solver.Top();
}

}  // namespace keltrun
