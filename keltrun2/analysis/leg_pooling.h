// What the legs of other classes between the same two controls say about a leg.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace keltrun {

/// The legs of one class among those of the event.
struct LegSpan {
  std::size_t begin;
  std::size_t end;
};

/// Mean and weight (1 / variance) that the other classes give for the logarithm of a leg's time. A
/// weight of 0 says that they know nothing.
struct PooledLeg {
  double mean = 0;
  double weight = 0;
};

/// Pools the legs of an event. Classes differ by a factor of their own, which is estimated, and by
/// what remains on single legs, whose spread is estimated, too: where courses share control codes
/// but not the ground, the others then count for little.
class LegPooling {
 public:
  /// `pairs` has one number for each leg; legs between the same two controls have the same one,
  /// from 0 to `pair_count` - 1. Both vectors must stay alive.
  LegPooling(const std::vector<LegSpan>& classes, const std::vector<std::int32_t>& pairs,
             std::size_t pair_count);

  /// `levels` and `weights` are what the class itself says about each leg; a weight of 0 says
  /// nothing. The result is valid until the next call.
  const std::vector<PooledLeg>& Pool(const std::vector<double>& levels,
                                     const std::vector<double>& weights);

 private:
  struct Comparison {    // of a leg with those of the other classes
    double others = 0;   // their mean
    double support = 0;  // their weight
    double weight = 0;   // of the difference
    double difference = 0;
  };

  void WeighLegs();
  void CompareClass(const LegSpan& legs, std::size_t klass);
  void AddToPairs(const LegSpan& legs, double factor, double sign);
  void EstimateSpread();
  void DistrustOddLegs();

  const std::vector<LegSpan>& classes_;
  const std::vector<std::int32_t>& pairs_;
  const std::vector<double>* levels_ = nullptr;
  const std::vector<double>* weights_ = nullptr;

  double spread_ = 0;                // variance between classes on one leg
  std::vector<double> factors_;      // per class, as logarithm
  std::vector<double> trust_;        // per leg, 1 at most
  std::vector<double> leg_weights_;  // per leg, with the spread
  std::vector<double> pair_weights_, pair_sums_;
  std::vector<Comparison> comparisons_;
  std::vector<PooledLeg> pooled_;                // here the weight is without trust
  std::vector<std::size_t> checked_;             // legs with figures of their own and of others
  std::vector<double> squares_, known_, order_;  // of the checked legs
};

}  // namespace keltrun
