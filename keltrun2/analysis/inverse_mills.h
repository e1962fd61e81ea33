// The inverse Mills ratio of the normal distribution.
#pragma once

#include <array>
#include <cstddef>

namespace keltrun {

/// g(u) = phi(u) / Phi(u), the density of the normal distribution over its distribution function.
/// It is the only special function that the estimate of laps needs for every lap in every pass, so
/// it comes from a table: cubic Hermite interpolation with the exact slope g' = -g (u + g). Below
/// the table it is an asymptotic series, above it 0.
class InverseMills {
 public:
  /// The table, made at the first call.
  static const InverseMills& Table();

  double operator()(double u) const {
    if (u >= kEnd) return 0;
    if (!(u >= -kEnd)) return Series(u);
    const double place = (u + kEnd) * kSteps;
    const auto index = static_cast<std::size_t>(place);
    const double t = place - static_cast<double>(index);
    const double rest = 1 - t;
    const Node& left = nodes_[index];
    const Node& right = nodes_[index + 1];
    return rest * rest * ((1 + 2 * t) * left.value + t * left.slope) +
           t * t * ((1 + 2 * rest) * right.value - rest * right.slope);
  }

 private:
  static constexpr int kEnd = 8;     // the table covers -8 to 8
  static constexpr int kSteps = 64;  // for each 1

  struct Node {
    double value;
    double slope;  // for one step of the table
  };

  InverseMills();
  static double Series(double u);

  std::array<Node, 2 * kEnd * kSteps + 1> nodes_;
};

/// The normal distribution function.
double NormalShare(double z);

}  // namespace keltrun
