// What laps would have been without mistakes, estimated for a whole event at once.
//
// The logarithm of a lap is the runner's speed plus the leg plus noise, and on some laps a mistake
// on top of it, which only ever costs time:
//
//     log lap = s(runner) + b(leg) + noise (+ mistake)
//
// The noise is normal, with a spread of the runner times a spread of the leg; the mistake is
// exponential with a mean of the class. Six passes, always the same number, go round between these
// figures, and the figures of each lap are computed as if that lap had not been among those that
// were used. docs/analysis.md has the formulas and where they come from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace keltrun {

/// The laps of one class.
struct LapTable {
  std::vector<std::int32_t> pairs;  // per leg a number, from 0, for its pair of controls
  std::vector<double> seconds;      // runner by runner, one for each leg; 0 for none
  std::size_t runners = 0;

  double& At(std::size_t runner, std::size_t leg) { return seconds[runner * pairs.size() + leg]; }
  double At(std::size_t runner, std::size_t leg) const {
    return seconds[runner * pairs.size() + leg];
  }
};

/// The figures of one lap, in seconds. All are 0 unless they are known: without a lap, or when
/// there is too little to compare it with, they are not.
struct LapFigures {
  bool known = false;
  double normal = 0;      // what the runner needs for the leg without a mistake
  double error = 0;       // standard error of that, in log time, with the noise of one lap
  double loss = 0;        // lap - normal
  double least_loss = 0;  // the range in which nine of ten losses are
  double largest_loss = 0;
  double mistake = 0;             // probability that there is a mistake
  double large_mistake = 0;       // probability that it cost more than 20 s
  double time_lost = 0;           // expected seconds that mistakes cost
  double time_lost_variance = 0;  // square seconds
};

/// The figures of one runner.
struct RunnerFigures {
  bool known = false;          // the runner has a lap
  double speed = 0;            // factor, compared with the mean of the three fastest of the class
  double speed_error = 0;      // relative standard error of the speed
  double spread = 0;           // standard deviation of the laps without mistakes; only rough
  double time_lost = 0;        // seconds, sum over the legs
  double least_time_lost = 0;  // the range in which nine of ten such sums are, never negative
  double largest_time_lost = 0;
  int mistakes = 0;         // number of laps that are more likely than not mistakes of over 20 s
  double mistake_size = 0;  // seconds, mean of those; 0 if there are none
};

/// The figures of one leg of a class.
struct LegFigures {
  bool known = false;       // somebody has a lap
  double normal = 0;        // seconds, for the mean of the three fastest runners
  double spread = 0;        // factor, 1 is a usual leg
  double mistake_rate = 0;  // factor, 1 is a usual leg of the class
};

/// The figures of one class.
struct ClassEstimate {
  std::vector<LapFigures> laps;  // as LapTable::seconds
  std::vector<RunnerFigures> runners;
  std::vector<LegFigures> legs;
  double mistake_rate = 0;  // share of laps with a mistake
  double mistake_size = 0;  // mean mistake in log time
};

/// Estimates all classes of an event. Classes that run between the same two controls (equal
/// `pairs`) inform each other about the leg. The result depends on nothing but the argument; times
/// may be any finite number. The time needed grows in proportion to the number of laps.
std::vector<ClassEstimate> EstimateLaps(const std::vector<LapTable>& classes);

/// A mistake is one that costs more than this; smaller ones cannot be told from noise.
inline constexpr double kMistakeSeconds = 20;
/// A lap whose probability of such a mistake is above this counts as one.
inline constexpr double kMistakeLimit = 0.5;

}  // namespace keltrun
