#include "keltrun2/analysis/inverse_mills.h"

#include <cmath>
#include <numbers>

namespace keltrun {

double NormalShare(double z) { return 0.5 * std::erfc(-z / std::numbers::sqrt2); }

const InverseMills& InverseMills::Table() {
  static const InverseMills table;
  return table;
}

InverseMills::InverseMills() {
  const double root_of_two_pi = std::sqrt(2 * std::numbers::pi);
  for (std::size_t i = 0; i < nodes_.size(); ++i) {
    const double u = static_cast<double>(i) / kSteps - kEnd;
    const double value = std::exp(-0.5 * u * u) / root_of_two_pi / NormalShare(u);
    nodes_[i] = {value, -value * (u + value) / kSteps};
  }
}

// Four terms of the series of Phi: Phi(u) = phi(u) / -u (1 - 1/u^2 + 3/u^4 - 15/u^6 ...).
double InverseMills::Series(double u) {
  const double square = 1 / (u * u);
  return -u / (1 + square * (-1 + square * (3 - 15 * square)));
}

}  // namespace keltrun
