#include "keltrun2/analysis/leg_pooling.h"

#include <algorithm>
#include <cmath>

namespace keltrun {
namespace {

constexpr int kSweeps = 4;
constexpr int kSpreadSteps = 3;
// How much classes differ on a leg, in log time: at first, and never less than.
constexpr double kFirstSpread = 0.05;
constexpr double kLeastSpread = 0.02;
constexpr double kPriorLegs = 10;        // how many legs the first spread counts for
constexpr double kFarthestSquare = 9;    // a leg counts as at most three deviations away
constexpr double kDegreesOfFreedom = 4;  // of the t distribution that doubts odd legs
constexpr double kLeastTrust = 1e-6;
constexpr double kLeastWeight = 1e-9;  // what is less is rounding of a sum

double Square(double value) { return value * value; }

// Changes the order of the values, which are not empty.
double Median(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  if (values.size() % 2 != 0) return *middle;
  return 0.5 * (*middle + *std::max_element(values.begin(), middle));
}

}  // namespace

LegPooling::LegPooling(const std::vector<LegSpan>& classes, const std::vector<std::int32_t>& pairs,
                       std::size_t pair_count)
    : classes_(classes),
      pairs_(pairs),
      leg_weights_(pairs.size()),
      pair_weights_(pair_count),
      pair_sums_(pair_count),
      comparisons_(pairs.size()),
      pooled_(pairs.size()) {}

const std::vector<PooledLeg>& LegPooling::Pool(const std::vector<double>& levels,
                                               const std::vector<double>& weights) {
  levels_ = &levels;
  weights_ = &weights;
  spread_ = Square(kFirstSpread);
  factors_.assign(classes_.size(), 0);
  trust_.assign(pairs_.size(), 1);
  for (int sweep = 0; sweep < kSweeps; ++sweep) {
    WeighLegs();
    for (std::size_t klass = 0; klass < classes_.size(); ++klass) {
      CompareClass(classes_[klass], klass);
    }
    EstimateSpread();
    DistrustOddLegs();
  }
  for (std::size_t leg = 0; leg < pooled_.size(); ++leg) {
    pooled_[leg].weight *= std::max(trust_[leg], kLeastTrust);
  }
  return pooled_;
}

void LegPooling::WeighLegs() {
  std::fill(pair_weights_.begin(), pair_weights_.end(), 0.0);
  std::fill(pair_sums_.begin(), pair_sums_.end(), 0.0);
  for (std::size_t leg = 0; leg < pairs_.size(); ++leg) {
    const double weight = (*weights_)[leg];
    leg_weights_[leg] = weight > 0 ? trust_[leg] / (1 / weight + spread_) : 0;
  }
  for (std::size_t klass = 0; klass < classes_.size(); ++klass) {
    AddToPairs(classes_[klass], factors_[klass], 1);
  }
}

// Puts the legs of a class into the sums of their pairs, or takes them out with the sign -1.
void LegPooling::AddToPairs(const LegSpan& legs, double factor, double sign) {
  for (std::size_t leg = legs.begin; leg < legs.end; ++leg) {
    const auto pair = static_cast<std::size_t>(pairs_[leg]);
    const double weight = sign * leg_weights_[leg];
    pair_weights_[pair] += weight;
    pair_sums_[pair] += weight * ((*levels_)[leg] - factor);
  }
}

// The factor of the class is the mean difference of its legs from those of the others; what the
// others say about a leg is their mean with the factor that the remaining legs give. A pair that
// the class runs twice informs neither of the two legs.
void LegPooling::CompareClass(const LegSpan& legs, std::size_t klass) {
  AddToPairs(legs, factors_[klass], -1);
  double weights = 0;
  double differences = 0;
  for (std::size_t leg = legs.begin; leg < legs.end; ++leg) {
    const auto pair = static_cast<std::size_t>(pairs_[leg]);
    Comparison& compared = comparisons_[leg];
    compared = {};
    if (!(pair_weights_[pair] > kLeastWeight)) continue;
    compared.support = pair_weights_[pair];
    compared.others = pair_sums_[pair] / compared.support;
    if (!(leg_weights_[leg] > 0)) continue;
    compared.weight = 1 / (1 / leg_weights_[leg] + 1 / compared.support);
    compared.difference = (*levels_)[leg] - compared.others;
    weights += compared.weight;
    differences += compared.weight * compared.difference;
  }
  if (weights > 0) factors_[klass] = differences / weights;
  for (std::size_t leg = legs.begin; leg < legs.end; ++leg) {
    const Comparison& compared = comparisons_[leg];
    const double rest = weights - compared.weight;
    pooled_[leg] = {};
    if (!(compared.support > 0) || !(rest > kLeastWeight)) continue;
    const double factor = (differences - compared.weight * compared.difference) / rest;
    pooled_[leg] = {factor + compared.others, 1 / (spread_ + 1 / compared.support + 1 / rest)};
  }
  AddToPairs(legs, factors_[klass], 1);
}

// A leg differs from what the others say by the spread and by what is uncertain about both.
void LegPooling::EstimateSpread() {
  checked_.clear();
  squares_.clear();
  known_.clear();
  for (std::size_t leg = 0; leg < pooled_.size(); ++leg) {
    if (!(pooled_[leg].weight > 0) || !((*weights_)[leg] > 0)) continue;
    checked_.push_back(leg);
    squares_.push_back(Square((*levels_)[leg] - pooled_[leg].mean));
    known_.push_back(1 / pooled_[leg].weight - spread_ + 1 / (*weights_)[leg]);
  }
  if (checked_.empty()) return;
  for (int step = 0; step < kSpreadSteps; ++step) {
    double weights = 0;
    double excess = 0;
    order_.clear();
    for (std::size_t i = 0; i < checked_.size(); ++i) {
      const double variance = known_[i] + spread_;
      const double weight = 1 / Square(variance);
      order_.push_back(weight);
      weights += weight;
      excess += weight * (std::min(squares_[i], kFarthestSquare * variance) - known_[i]);
    }
    const double prior = kPriorLegs * Median(order_);
    spread_ =
        std::max(Square(kLeastSpread), (excess + prior * Square(kFirstSpread)) / (weights + prior));
  }
}

void LegPooling::DistrustOddLegs() {
  for (std::size_t i = 0; i < checked_.size(); ++i) {
    const double distance = squares_[i] / (known_[i] + spread_);
    trust_[checked_[i]] = std::min(1.0, (kDegreesOfFreedom + 1) / (kDegreesOfFreedom + distance));
  }
}

}  // namespace keltrun
