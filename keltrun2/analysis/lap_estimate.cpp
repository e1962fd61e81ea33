#include "keltrun2/analysis/lap_estimate.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <span>

#include "keltrun2/analysis/inverse_mills.h"
#include "keltrun2/analysis/leg_pooling.h"

namespace keltrun {
namespace {

// The number of passes is part of the method: more of them make the spread creep up, because ever
// more mistakes are taken for noise.
constexpr int kPasses = 6;
constexpr int kFirstScalePass = 1;
constexpr int kFirstMistakePass = 2;
bool IsPoolPass(int pass) { return pass == 2 || pass == 4; }

// The low quantiles from which the passes start, because mistakes only cost time.
constexpr double kLegQuantile = 0.35;
constexpr double kResidualQuantile = 0.4;

// What is known about spreads before the first lap is seen, and how many laps that counts for.
constexpr double kSpread = 0.085;
constexpr double kLeastSpread = 0.02;
constexpr double kEventLaps = 20;
constexpr double kClassLaps = 20;
constexpr double kRunnerLaps = 8;
constexpr double kLegLaps = 8;

// The same for mistakes: their share, their mean size in log time, their number on a leg.
constexpr double kMistakeShare = 0.2;
constexpr double kShareLaps = 20;
constexpr double kMistakeSize = 0.25;
constexpr double kSizeMistakes = 50;
constexpr double kLegMistakes = 4;
constexpr double kLeastShare = 0.01, kLargestShare = 0.6;     // of a class
constexpr double kLeastSize = 0.08, kLargestSize = 1;         // of a class
constexpr double kLeastChance = 0.005, kLargestChance = 0.8;  // on a leg

// Laps are whole seconds in most sources; a lap is the difference of two of them.
constexpr double kRoundingSeconds = 0.3;
// Faster than so many deviations is a wrong clock rather than a good leg, and counts less.
constexpr double kFastLimit = 2.5;
constexpr double kLeastWeight = 1e-4;
constexpr double kLargestPull = 0.9;  // of a lap on what it is compared with
constexpr double kLeastRest = 1e-9;   // weight of what the other laps say
// What is less certain than this about a normal time is not worth showing.
constexpr double kLargestError = 0.5;
constexpr double kRangeDeviations = 1.6448536269514722;  // nine of ten are inside
constexpr std::size_t kFastestRunners = 3;
// How many deviations the range of a runner's time lost reaches. There are more than in the range
// of a lap, because the deviation takes the spreads and the number and size of mistakes for known,
// and noise for normal. Simulated events gave the number; bench/estimate_quality checks it.
constexpr double kTotalRangeDeviations = 2.5;
// In a small class the spreads and the legs rest on few laps, for all of its runners alike.
double SmallClassFactor(double runners) { return std::sqrt(1 + 2 / runners); }

// Times beyond these are faults of the source. Their logarithms are safe in all that follows.
constexpr double kShortestLap = 0.001;  // seconds
constexpr double kLongestLap = 1e12;
bool IsLap(double seconds) { return seconds >= kShortestLap && seconds <= kLongestLap; }

double Square(double value) { return value * value; }

double Inverse(double value) { return value > 0 ? 1 / value : 0; }

// Changes the order of the values.
double LowQuantile(std::span<double> values, double share) {
  if (values.empty()) return 0;
  const auto last = static_cast<double>(values.size() - 1);
  const auto at = values.begin() + static_cast<std::ptrdiff_t>(std::floor(share * last + 0.5));
  std::nth_element(values.begin(), at, values.end());
  return *at;
}

// A sum with what was known before, as if that had been seen in other laps.
struct Shrunk {
  double sum = 0;
  double count = 0;

  double Mean() const { return sum / count; }
  double Without(double part, double parts) const { return (sum - part) / (count - parts); }
};

// The laps of an event, with runners and legs numbered through all classes.
struct Laps {
  explicit Laps(const std::vector<const LapTable*>& tables);

  std::size_t Count() const { return log_times.size(); }
  std::size_t LegCount() const { return pairs.size(); }
  std::size_t RunnerCount() const { return runner_begins.size() - 1; }

  // Runner by runner.
  std::vector<double> log_times;
  std::vector<std::uint32_t> legs;

  std::vector<std::size_t> runner_begins;  // the laps of each runner, and the end of the last
  std::vector<LegSpan> class_legs;
  std::vector<LegSpan> class_runners;
  std::vector<std::int32_t> pairs;  // per leg
  std::vector<double> laps_of_leg;
  std::vector<double> laps_of_class;
};

Laps::Laps(const std::vector<const LapTable*>& tables) : runner_begins{0} {
  for (const LapTable* source : tables) {
    const LapTable& table = *source;
    const std::size_t first_leg = pairs.size();
    const std::size_t first_runner = RunnerCount();
    const std::size_t first_lap = Count();
    pairs.insert(pairs.end(), table.pairs.begin(), table.pairs.end());
    laps_of_leg.resize(pairs.size());
    for (std::size_t runner = 0; runner < table.runners; ++runner) {
      for (std::size_t leg = 0; leg < table.pairs.size(); ++leg) {
        const double seconds = table.At(runner, leg);
        if (!IsLap(seconds)) continue;
        log_times.push_back(std::log(seconds));
        legs.push_back(static_cast<std::uint32_t>(first_leg + leg));
        ++laps_of_leg[first_leg + leg];
      }
      runner_begins.push_back(Count());
    }
    class_legs.push_back({first_leg, pairs.size()});
    class_runners.push_back({first_runner, RunnerCount()});
    laps_of_class.push_back(static_cast<double>(Count() - first_lap));
  }
}

// The figures of runners, legs and classes, pass by pass.
class Fit {
 public:
  explicit Fit(const Laps& laps);

  void Run();

  // What the laps are worth without mistakes, compared with all others. Afterwards the weights are
  // those of the last spreads.
  void Weigh();
  void WriteClass(std::size_t klass, const LapTable& table, ClassEstimate& result) const;

 private:
  struct ClassSums {
    double squares = 0;   // of the residuals over the leg's spread
    double counted = 0;   // laps without mistakes
    double mistakes = 0;  // expected number
    double sizes = 0;     // their sum
  };

  void Start();
  void ExpectMistakes();
  void ExpectMistakes(std::size_t klass);
  void PoolLegs();
  void MoveLegs();
  void MoveRunners();
  void SumResiduals();
  void SetSpreads();
  void SetMistakes();
  void InvertLevels();

  double RoundingSquare(std::size_t runner, std::size_t leg) const {
    return Square(runner_rounding_[runner] * leg_inverse_[leg]);
  }
  double ErrorSquare(std::size_t runner, std::size_t lap) const;
  LapFigures FiguresOf(std::size_t runner, std::size_t lap, double seconds, double mean_size) const;
  double MeanOfFastest(const LegSpan& runners) const;

  const Laps& laps_;
  const InverseMills& mills_ = InverseMills::Table();
  LegPooling pooling_;
  std::vector<PooledLeg> pooled_;

  // Per runner.
  std::vector<double> speeds_, runner_spreads_, runner_weights_, runner_rounding_;
  std::vector<Shrunk> runner_sums_;
  // Per leg.
  std::vector<double> levels_, leg_spreads_, leg_weights_, leg_sums_, leg_inverse_;
  std::vector<double> former_inverse_squares_;  // of the leg's spread in the last pass
  std::vector<double> chances_, odds_, leg_mistakes_, mistake_rates_;
  std::vector<Shrunk> leg_shrunk_;
  // Per class.
  std::vector<double> mistake_shares_, mistake_sizes_;
  std::vector<ClassSums> class_sums_;
  // Per lap: how far it counts as one without a mistake, and so on.
  std::vector<double> parts_, weights_, counted_, squares_;
};

Fit::Fit(const Laps& laps)
    : laps_(laps),
      pooling_(laps.class_legs, laps.pairs,
               laps.pairs.empty() ? 0
                                  : static_cast<std::size_t>(
                                        *std::max_element(laps.pairs.begin(), laps.pairs.end())) +
                                        1),
      pooled_(laps.LegCount()),
      speeds_(laps.RunnerCount()),
      runner_spreads_(laps.RunnerCount(), kSpread),
      runner_weights_(laps.RunnerCount()),
      runner_rounding_(laps.RunnerCount()),
      runner_sums_(laps.RunnerCount()),
      levels_(laps.LegCount()),
      leg_spreads_(laps.LegCount(), 1),
      leg_weights_(laps.LegCount()),
      leg_sums_(laps.LegCount()),
      leg_inverse_(laps.LegCount()),
      former_inverse_squares_(laps.LegCount()),
      chances_(laps.LegCount(), kMistakeShare),
      odds_(laps.LegCount()),
      leg_mistakes_(laps.LegCount()),
      mistake_rates_(laps.LegCount(), 1),
      leg_shrunk_(laps.LegCount()),
      mistake_shares_(laps.class_legs.size(), kMistakeShare),
      mistake_sizes_(laps.class_legs.size(), kMistakeSize),
      class_sums_(laps.class_legs.size()),
      parts_(laps.Count()),
      weights_(laps.Count()),
      counted_(laps.Count()),
      squares_(laps.Count()) {}

void Fit::Run() {
  Start();
  for (int pass = 0; pass < kPasses; ++pass) {
    ExpectMistakes();
    if (laps_.class_legs.size() > 1 && IsPoolPass(pass)) PoolLegs();
    MoveLegs();
    MoveRunners();
    if (pass >= kFirstScalePass) {
      SumResiduals();
      SetSpreads();
    }
    if (pass >= kFirstMistakePass) SetMistakes();
  }
}

// Legs from low quantiles of their laps, runners from low quantiles over these, legs again.
void Fit::Start() {
  std::vector<std::size_t> ends(laps_.LegCount() + 1);
  for (const std::uint32_t leg : laps_.legs) ++ends[leg + 1];
  for (std::size_t leg = 0; leg < laps_.LegCount(); ++leg) ends[leg + 1] += ends[leg];
  const std::vector<std::size_t> begins = ends;
  std::vector<double> times(laps_.Count());
  const auto set_levels = [&](double quantile) {
    std::copy(begins.begin(), begins.end(), ends.begin());
    for (std::size_t runner = 0; runner < laps_.RunnerCount(); ++runner) {
      for (auto lap = laps_.runner_begins[runner]; lap < laps_.runner_begins[runner + 1]; ++lap) {
        times[ends[laps_.legs[lap]]++] = laps_.log_times[lap] - speeds_[runner];
      }
    }
    for (std::size_t leg = 0; leg < laps_.LegCount(); ++leg) {
      const auto on_leg = std::span(times).subspan(begins[leg], ends[leg] - begins[leg]);
      levels_[leg] = LowQuantile(on_leg, quantile);
    }
  };
  set_levels(kLegQuantile);
  std::vector<double> residuals;
  for (std::size_t runner = 0; runner < laps_.RunnerCount(); ++runner) {
    residuals.clear();
    for (auto lap = laps_.runner_begins[runner]; lap < laps_.runner_begins[runner + 1]; ++lap) {
      residuals.push_back(laps_.log_times[lap] - levels_[laps_.legs[lap]]);
    }
    speeds_[runner] = LowQuantile(residuals, kResidualQuantile);
  }
  set_levels(kResidualQuantile);
}

void Fit::InvertLevels() {
  for (std::size_t i = 0; i < speeds_.size(); ++i) {
    runner_rounding_[i] = kRoundingSeconds * std::exp(-speeds_[i]);
  }
  for (std::size_t i = 0; i < levels_.size(); ++i) leg_inverse_[i] = std::exp(-levels_[i]);
}

// How likely each lap is to be free of a mistake, and what it says about its leg.
void Fit::ExpectMistakes() {
  InvertLevels();
  std::fill(leg_weights_.begin(), leg_weights_.end(), 0.0);
  std::fill(leg_sums_.begin(), leg_sums_.end(), 0.0);
  std::fill(leg_mistakes_.begin(), leg_mistakes_.end(), 0.0);
  for (std::size_t klass = 0; klass < laps_.class_legs.size(); ++klass) ExpectMistakes(klass);
}

void Fit::ExpectMistakes(std::size_t klass) {
  const double rate = 1 / mistake_sizes_[klass];  // of the exponential distribution
  for (auto leg = laps_.class_legs[klass].begin; leg < laps_.class_legs[klass].end; ++leg) {
    odds_[leg] = chances_[leg] / (1 - chances_[leg]) * rate;
  }
  ClassSums sums;
  const LegSpan& runners = laps_.class_runners[klass];
  for (std::size_t runner = runners.begin; runner < runners.end; ++runner) {
    for (auto lap = laps_.runner_begins[runner]; lap < laps_.runner_begins[runner + 1]; ++lap) {
      const std::size_t leg = laps_.legs[lap];
      const double time = laps_.log_times[lap] - speeds_[runner];
      const double residual = time - levels_[leg];
      const double spread = std::sqrt(Square(runner_spreads_[runner] * leg_spreads_[leg]) +
                                      RoundingSquare(runner, leg));
      const double precision = 1 / spread;
      const double u = residual * precision - spread * rate;
      const double mills = mills_(u);
      const double clean = mills / (mills + odds_[leg] * spread);
      double counted = clean;
      if (-residual > kFastLimit * spread) counted *= Square(kFastLimit * spread / residual);
      counted = std::max(counted, kLeastWeight);
      parts_[lap] = counted;
      weights_[lap] = counted * precision * precision;
      leg_weights_[leg] += weights_[lap];
      leg_sums_[leg] += weights_[lap] * time;
      leg_mistakes_[leg] += 1 - clean;
      sums.mistakes += 1 - clean;
      sums.sizes += (1 - clean) * spread * std::max(u + mills, 0.0);
    }
  }
  class_sums_[klass] = sums;
}

void Fit::PoolLegs() {
  std::vector<double> own(levels_);
  for (std::size_t leg = 0; leg < own.size(); ++leg) {
    if (leg_weights_[leg] > 0) own[leg] = leg_sums_[leg] / leg_weights_[leg];
  }
  pooled_ = pooling_.Pool(own, leg_weights_);
}

void Fit::MoveLegs() {
  for (std::size_t leg = 0; leg < levels_.size(); ++leg) {
    const PooledLeg& others = pooled_[leg];
    leg_sums_[leg] += others.weight * others.mean;
    leg_weights_[leg] += others.weight;
    if (leg_weights_[leg] > 0) levels_[leg] = leg_sums_[leg] / leg_weights_[leg];
  }
}

void Fit::MoveRunners() {
  for (std::size_t runner = 0; runner < speeds_.size(); ++runner) {
    double weights = 0;
    double sum = 0;
    for (auto lap = laps_.runner_begins[runner]; lap < laps_.runner_begins[runner + 1]; ++lap) {
      weights += weights_[lap];
      sum += weights_[lap] * (laps_.log_times[lap] - levels_[laps_.legs[lap]]);
    }
    runner_weights_[runner] = weights;
    if (weights > 0) speeds_[runner] = sum / weights;
  }
}

// A lap has drawn its runner and its leg to itself; `counted_` is what it counts for without that.
void Fit::SumResiduals() {
  for (std::size_t leg = 0; leg < levels_.size(); ++leg) {
    former_inverse_squares_[leg] = 1 / Square(leg_spreads_[leg]);
    leg_sums_[leg] = Inverse(leg_weights_[leg]);
    leg_shrunk_[leg] = {kLegLaps, kLegLaps};
  }
  for (std::size_t klass = 0; klass < class_sums_.size(); ++klass) {
    const LegSpan& runners = laps_.class_runners[klass];
    for (std::size_t runner = runners.begin; runner < runners.end; ++runner) {
      const double inverse = Inverse(runner_weights_[runner]);
      Shrunk sums;
      for (auto lap = laps_.runner_begins[runner]; lap < laps_.runner_begins[runner + 1]; ++lap) {
        const std::size_t leg = laps_.legs[lap];
        const double pull = std::min(kLargestPull, weights_[lap] * (leg_sums_[leg] + inverse));
        counted_[lap] = parts_[lap] * (1 - pull);
        squares_[lap] = parts_[lap] * Square(laps_.log_times[lap] - speeds_[runner] - levels_[leg]);
        sums.sum += squares_[lap] * former_inverse_squares_[leg];
        sums.count += counted_[lap];
        leg_shrunk_[leg].count += counted_[lap];
      }
      runner_sums_[runner] = sums;
      class_sums_[klass].squares += sums.sum;
      class_sums_[klass].counted += sums.count;
    }
  }
}

// The event's spread is a prior for its classes, theirs for their runners; legs are compared with
// the runners on them.
void Fit::SetSpreads() {
  Shrunk event{kEventLaps * Square(kSpread), kEventLaps};
  for (std::size_t lap = 0; lap < laps_.Count(); ++lap) {
    event.sum += squares_[lap];
    event.count += counted_[lap];
  }
  for (std::size_t klass = 0; klass < class_sums_.size(); ++klass) {
    const ClassSums& sums = class_sums_[klass];
    const double square =
        std::max(Square(kLeastSpread),
                 (kClassLaps * event.Mean() + sums.squares) / (kClassLaps + sums.counted));
    const LegSpan& runners = laps_.class_runners[klass];
    for (std::size_t runner = runners.begin; runner < runners.end; ++runner) {
      runner_sums_[runner].sum += kRunnerLaps * square;
      runner_sums_[runner].count += kRunnerLaps;
      runner_spreads_[runner] = std::sqrt(runner_sums_[runner].Mean());
      const double inverse = 1 / runner_sums_[runner].Mean();
      for (auto lap = laps_.runner_begins[runner]; lap < laps_.runner_begins[runner + 1]; ++lap) {
        leg_shrunk_[laps_.legs[lap]].sum += squares_[lap] * inverse;
      }
    }
  }
  for (std::size_t leg = 0; leg < leg_spreads_.size(); ++leg) {
    leg_spreads_[leg] = std::sqrt(leg_shrunk_[leg].Mean());
  }
}

// How many mistakes there are and how large they are, for classes and legs.
void Fit::SetMistakes() {
  Shrunk share{kShareLaps * kMistakeShare, kShareLaps + static_cast<double>(laps_.Count())};
  Shrunk size{kSizeMistakes * kMistakeSize, kSizeMistakes};
  for (const ClassSums& sums : class_sums_) {
    share.sum += sums.mistakes;
    size.sum += sums.sizes;
    size.count += sums.mistakes;
  }
  for (std::size_t klass = 0; klass < class_sums_.size(); ++klass) {
    const ClassSums& sums = class_sums_[klass];
    const double class_share = std::clamp(
        (kShareLaps * share.Mean() + sums.mistakes) / (kShareLaps + laps_.laps_of_class[klass]),
        kLeastShare, kLargestShare);
    mistake_shares_[klass] = class_share;
    mistake_sizes_[klass] =
        std::clamp((kSizeMistakes * size.Mean() + sums.sizes) / (kSizeMistakes + sums.mistakes),
                   kLeastSize, kLargestSize);
    for (auto leg = laps_.class_legs[klass].begin; leg < laps_.class_legs[klass].end; ++leg) {
      mistake_rates_[leg] = (kLegMistakes + leg_mistakes_[leg]) /
                            (kLegMistakes + class_share * laps_.laps_of_leg[leg]);
      const double odds = class_share / (1 - class_share) * mistake_rates_[leg];
      chances_[leg] = std::clamp(odds / (1 + odds), kLeastChance, kLargestChance);
    }
  }
}

void Fit::Weigh() {
  InvertLevels();
  for (std::size_t leg = 0; leg < levels_.size(); ++leg) leg_weights_[leg] = pooled_[leg].weight;
  for (std::size_t runner = 0; runner < speeds_.size(); ++runner) {
    double sum = 0;
    for (auto lap = laps_.runner_begins[runner]; lap < laps_.runner_begins[runner + 1]; ++lap) {
      const std::size_t leg = laps_.legs[lap];
      weights_[lap] = parts_[lap] / (Square(runner_spreads_[runner] * leg_spreads_[leg]) +
                                     RoundingSquare(runner, leg));
      leg_weights_[leg] += weights_[lap];
      sum += weights_[lap];
    }
    runner_weights_[runner] = sum;
  }
}

// How uncertain a lap is: its own noise, as far as the other laps of the runner and of the leg tell
// it, and what is uncertain about both.
double Fit::ErrorSquare(std::size_t runner, std::size_t lap) const {
  const std::size_t leg = laps_.legs[lap];
  const double weight = weights_[lap];
  const double runner_square =
      runner_sums_[runner].Without(squares_[lap] * former_inverse_squares_[leg], counted_[lap]);
  const double leg_square =
      leg_shrunk_[leg].Without(squares_[lap] / Square(runner_spreads_[runner]), counted_[lap]);
  return runner_square * leg_square + RoundingSquare(runner, leg) +
         1 / std::max(leg_weights_[leg] - weight, kLeastRest) +
         1 / std::max(runner_weights_[runner] - weight, kLeastRest);
}

// Phi(lower) / Phi(upper) by g(u) = phi(u) / Phi(u), which needs no integral where g is not tiny.
double ShareRatio(double lower, double upper, double mills_lower, double mills_upper) {
  constexpr double kTinyMills = 1e-4;
  if (mills_upper < kTinyMills) return NormalShare(lower) / NormalShare(upper);
  return std::exp(0.5 * (upper - lower) * (upper + lower)) * mills_upper / mills_lower;
}

// The part of a lap that remains without its mistake, to the power n, for a lap with one: the mean
// of exp(-n mistake) is exp(n (-residual + error^2 (1 / size + n/2))) Phi(u - n error) / Phi(u), in
// which all but g cancels.
double RemainingPower(const InverseMills& mills, double n, double u, double error,
                      double mills_upper) {
  constexpr double kTinyMills = 1e-4;
  const double lower = u - n * error;
  if (mills_upper < kTinyMills) {
    return std::exp(n * error * (0.5 * n * error - u)) * NormalShare(lower) / NormalShare(u);
  }
  return mills_upper / mills(lower);
}

LapFigures Fit::FiguresOf(std::size_t runner, std::size_t lap, double seconds,
                          double mean_size) const {
  const double error_square = ErrorSquare(runner, lap);
  if (!(error_square <= Square(kLargestError))) return {};
  const std::size_t leg = laps_.legs[lap];
  const double error = std::sqrt(error_square);
  const double pull =
      std::min(kLargestPull, weights_[lap] * (1 / leg_weights_[leg] + 1 / runner_weights_[runner]));
  const double residual = (laps_.log_times[lap] - speeds_[runner] - levels_[leg]) / (1 - pull);

  LapFigures figures;
  figures.known = true;
  figures.error = error;
  figures.normal = seconds * std::exp(-residual);
  figures.loss = seconds - figures.normal;
  const double factor = std::exp(kRangeDeviations * error);
  figures.least_loss = seconds - figures.normal * factor;
  figures.largest_loss = seconds - figures.normal / factor;

  const double u = residual / error - error / mean_size;
  const double mills = mills_(u);
  const double odds = chances_[leg] / (1 - chances_[leg]) * error / mean_size;
  figures.mistake = odds / (odds + mills);
  if (seconds > kMistakeSeconds) {
    const double lower = u + std::log(1 - kMistakeSeconds / seconds) / error;
    figures.large_mistake = figures.mistake * ShareRatio(lower, u, mills_(lower), mills);
  }
  const double remaining = RemainingPower(mills_, 1, u, error, mills);
  const double remaining_square = RemainingPower(mills_, 2, u, error, mills);
  figures.time_lost = std::max(0.0, seconds * figures.mistake * (1 - remaining));
  const double mean_square =
      Square(seconds) * figures.mistake * (1 - 2 * remaining + remaining_square);
  figures.time_lost_variance = std::max(0.0, mean_square - Square(figures.time_lost));
  return figures;
}

// The mean speed, as logarithm, of the three fastest runners with a lap.
double Fit::MeanOfFastest(const LegSpan& runners) const {
  std::vector<double> speeds;
  for (std::size_t runner = runners.begin; runner < runners.end; ++runner) {
    if (runner_weights_[runner] > 0) speeds.push_back(speeds_[runner]);
  }
  const std::size_t count = std::min(kFastestRunners, speeds.size());
  if (count == 0) return 0;
  std::partial_sort(speeds.begin(), speeds.begin() + static_cast<std::ptrdiff_t>(count),
                    speeds.end());
  double sum = 0;
  for (std::size_t i = 0; i < count; ++i) sum += speeds[i];
  return sum / static_cast<double>(count);
}

void AddLap(RunnerFigures& runner, const LapFigures& lap) {
  runner.time_lost += lap.time_lost;
  if (!(lap.large_mistake > kMistakeLimit)) return;
  ++runner.mistakes;
  runner.mistake_size += lap.time_lost;
}

// The errors of the legs are independent; that of the runner's speed is the same on all, and counts
// where there is a mistake: elsewhere the lap itself says that nothing was lost.
void SetRange(RunnerFigures& runner, std::span<const LapFigures> laps, double runners) {
  double variance = 0;
  double exposed = 0;
  for (const LapFigures& lap : laps) {
    variance += lap.time_lost_variance;
    exposed += lap.normal * lap.mistake;
  }
  const double reach = kTotalRangeDeviations * SmallClassFactor(runners) *
                       std::sqrt(variance + Square(exposed * runner.speed_error));
  runner.least_time_lost = std::max(0.0, runner.time_lost - reach);
  runner.largest_time_lost = runner.time_lost + reach;
}

void Fit::WriteClass(std::size_t klass, const LapTable& table, ClassEstimate& result) const {
  const LegSpan& runners = laps_.class_runners[klass];
  const std::size_t first_leg = laps_.class_legs[klass].begin;
  const double fastest = MeanOfFastest(runners);
  const auto with_laps = static_cast<double>(
      std::count_if(runner_weights_.begin() + static_cast<std::ptrdiff_t>(runners.begin),
                    runner_weights_.begin() + static_cast<std::ptrdiff_t>(runners.end),
                    [](double weight) { return weight > 0; }));
  result.mistake_rate = mistake_shares_[klass];
  result.mistake_size = mistake_sizes_[klass];
  result.laps.resize(table.runners * table.pairs.size());
  result.runners.resize(table.runners);
  result.legs.resize(table.pairs.size());
  for (std::size_t i = 0; i < table.runners; ++i) {
    const std::size_t runner = runners.begin + i;
    if (!(runner_weights_[runner] > 0)) continue;
    RunnerFigures& figures = result.runners[i];
    figures.known = true;
    figures.speed = std::exp(speeds_[runner] - fastest);
    figures.speed_error = 1 / std::sqrt(runner_weights_[runner]);
    figures.spread = runner_spreads_[runner];
    for (auto lap = laps_.runner_begins[runner]; lap < laps_.runner_begins[runner + 1]; ++lap) {
      const std::size_t leg = laps_.legs[lap] - first_leg;
      LapFigures& of_lap = result.laps[i * table.pairs.size() + leg];
      of_lap = FiguresOf(runner, lap, table.At(i, leg), mistake_sizes_[klass]);
      AddLap(figures, of_lap);
    }
    if (figures.mistakes > 0) figures.mistake_size /= figures.mistakes;
    SetRange(figures, std::span(result.laps).subspan(i * table.pairs.size(), table.pairs.size()),
             with_laps);
  }
  for (std::size_t leg = 0; leg < table.pairs.size(); ++leg) {
    if (!(laps_.laps_of_leg[first_leg + leg] > 0)) continue;
    result.legs[leg] = {true, std::exp(levels_[first_leg + leg] + fastest),
                        leg_spreads_[first_leg + leg], mistake_rates_[first_leg + leg]};
  }
}

// The positions of the classes, the one with the most laps first. Classes are pooled in turn, so
// the order has to depend on nothing but their laps.
std::vector<std::size_t> PoolingOrder(const std::vector<LapTable>& classes) {
  struct Key {
    std::size_t laps = 0;
    double seconds = 0;
  };
  std::vector<Key> keys(classes.size());
  for (std::size_t klass = 0; klass < classes.size(); ++klass) {
    for (const double seconds : classes[klass].seconds) {
      if (!IsLap(seconds)) continue;
      ++keys[klass].laps;
      keys[klass].seconds += seconds;
    }
  }
  std::vector<std::size_t> order(classes.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&keys](std::size_t a, std::size_t b) {
    if (keys[a].laps != keys[b].laps) return keys[a].laps > keys[b].laps;
    return keys[a].seconds > keys[b].seconds;
  });
  return order;
}

}  // namespace

std::vector<ClassEstimate> EstimateLaps(const std::vector<LapTable>& classes) {
  const std::vector<std::size_t> order = PoolingOrder(classes);
  std::vector<const LapTable*> tables;
  tables.reserve(order.size());
  for (const std::size_t klass : order) tables.push_back(&classes[klass]);
  const Laps laps(tables);
  Fit fit(laps);
  fit.Run();
  fit.Weigh();
  std::vector<ClassEstimate> estimates(classes.size());
  for (std::size_t i = 0; i < order.size(); ++i) {
    fit.WriteClass(i, *tables[i], estimates[order[i]]);
  }
  return estimates;
}

}  // namespace keltrun
