#include "keltrun2/analysis/clock_check.h"

#include <Eigen/Core>
#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <optional>
#include <span>
#include <utility>

#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/text/datetime.h"

namespace keltrun {
namespace {

constexpr std::size_t kFewestRunners = 60;
constexpr double kLeastSeconds = 30;
constexpr double kLeastDeviations = 5;
constexpr int kRounds = 6;               // of weighting
constexpr double kFarthest = 3;          // deviations; what is farther off counts less
constexpr double kRoundingVariance = 1;  // s^2, of punches in whole seconds
constexpr std::size_t kCuts = 19;        // times of day at which a jump is tried
constexpr double kClearlyBetter = 1.15;  // what a jump has to explain more than a drift
// Both legs have to show the change, with opposite signs and at least this part of it.
constexpr double kPartOfEachLeg = 0.4;

double Square(double value) { return value * value; }

// The change of a clock that the punches show, per unit of the regressor.
struct Change {
  double size = 0;
  double deviations = 0;  // standard errors
  double explained = 0;   // weighted sum of squares
};

// How many regressions are worked out side by side. Each is a chain of sums in which a step waits
// for the one before, so several at a time take little longer than one.
constexpr std::size_t kLanes = 4;
using Lanes = Eigen::Array<double, kLanes, 1>;
using Changes = std::array<Change, kLanes>;
static_assert((1 + kCuts) % kLanes == 0, "the drift and the jumps fill their lanes");

// What the laps before and after a punch say about the clock.
struct Observation {
  std::size_t klass;  // the position of its class among those of the control
  double value;
  double variance;
  double weight;  // of a value that is not far off
  double limit;   // what is farther off counts less
};

// Each class has a mean of its own: its runners start at other times, and the legs of its course
// are other ones.
struct ClassMeans {
  Lanes weight = Lanes::Zero();
  Lanes regressor = Lanes::Zero();
  Lanes value = Lanes::Zero();
};

// Weighted least squares within classes; mistakes, which are far off, count less (Huber 1964). Each
// lane has a regressor of its own and the observations of all.
class Regression {
 public:
  Regression(const std::vector<Observation>& observations, const std::vector<Lanes>& regressors,
             std::size_t classes)
      : observations_(observations), regressors_(regressors), means_(classes) {
    weights_.reserve(observations.size());
    for (const Observation& one : observations) weights_.push_back(Lanes::Constant(one.weight));
  }

  Changes Run() {
    Eigen::Array<bool, kLanes, 1> varies = Eigen::Array<bool, kLanes, 1>::Constant(true);
    for (int round = 0; round < kRounds; ++round) {
      FindMeans();
      FindSlopes();
      varies = varies && squares_ > 0;
      WeighAnew();
    }
    Changes changes;
    const Lanes deviations = slopes_ * squares_.sqrt() / scales_.max(1);
    const Lanes explained = products_ * products_ / squares_;
    for (Eigen::Index lane = 0; lane < Lanes::SizeAtCompileTime; ++lane) {
      if (!varies[lane]) continue;
      changes[static_cast<std::size_t>(lane)] = {slopes_[lane], deviations[lane], explained[lane]};
    }
    return changes;
  }

 private:
  void FindMeans() {
    std::fill(means_.begin(), means_.end(), ClassMeans());
    for (std::size_t i = 0; i < observations_.size(); ++i) {
      ClassMeans& mean = means_[observations_[i].klass];
      mean.weight += weights_[i];
      mean.regressor += weights_[i] * regressors_[i];
      mean.value += weights_[i] * observations_[i].value;
    }
    for (ClassMeans& mean : means_) {
      mean.regressor /= mean.weight;
      mean.value /= mean.weight;
    }
  }

  void FindSlopes() {
    Lanes squares = Lanes::Zero();
    Lanes products = Lanes::Zero();
    for (std::size_t i = 0; i < observations_.size(); ++i) {
      const ClassMeans& mean = means_[observations_[i].klass];
      const Lanes regressor = regressors_[i] - mean.regressor;
      squares += weights_[i] * (regressor * regressor);
      products += weights_[i] * regressor * (observations_[i].value - mean.value);
    }
    squares_ = squares;
    products_ = products;
    slopes_ = products / squares;
  }

  // Finds the scales of the residuals and the weights for the next round.
  void WeighAnew() {
    const Lanes slopes = slopes_;
    Lanes sum = Lanes::Zero();
    for (std::size_t i = 0; i < observations_.size(); ++i) {
      const Observation& one = observations_[i];
      const ClassMeans& mean = means_[one.klass];
      const Lanes residual =
          (one.value - mean.value - slopes * (regressors_[i] - mean.regressor)).abs();
      sum += weights_[i] * (residual * residual);
      const auto is_far = residual > one.limit;
      weights_[i] = Lanes::Constant(one.weight);
      if (is_far.any()) {
        weights_[i] = is_far.select(one.limit / residual / one.variance, weights_[i]);
      }
    }
    const auto freedom =
        static_cast<double>(observations_.size()) - static_cast<double>(means_.size()) - 1;
    scales_ = freedom > 0 ? Lanes((sum / freedom).sqrt()) : Lanes(Lanes::Constant(1));
  }

  const std::vector<Observation>& observations_;
  const std::vector<Lanes>& regressors_;
  std::vector<ClassMeans> means_;
  std::vector<Lanes> weights_;
  Lanes squares_, products_;  // of the regressor, and with the value
  Lanes slopes_;
  Lanes scales_;
};

enum class Legs { kBoth, kBefore, kAfter };

// The error of the clock at a punch: the losses on both legs, the second with the opposite sign,
// each with the weight of its precision.
Observation Observe(const ClockPunch& punch, std::size_t klass, Legs legs) {
  const double before = Square(punch.before_error);
  const double after = Square(punch.after_error);
  double value = punch.before;
  double variance = before;
  if (legs == Legs::kAfter) {
    value = -punch.after;
    variance = after;
  } else if (legs == Legs::kBoth) {
    value = (punch.before * after - punch.after * before) / (before + after);
    variance = before * after / (before + after);
  }
  variance += kRoundingVariance;
  return {klass, value, variance, 1 / variance, kFarthest * std::sqrt(variance)};
}

// How a clock can go wrong: it jumps at a time of day; nullopt: it drifts over the day.
using Fault = std::optional<double>;

// The punches at one control, the earliest first, which are not all of one moment.
class ClockCheck {
 public:
  explicit ClockCheck(std::span<const ClockPunch> punches)
      : punches_(punches),
        first_(punches.front().time),
        day_(punches.back().time - punches.front().time),
        classes_(ClassesOf(punches)) {}

  // What is wrong with the clock, if anything is.
  std::optional<ClockFinding> Find() const {
    const auto [fault, change] = BestExplanation();
    const bool clear =
        std::fabs(change.size) >= kLeastSeconds && std::fabs(change.deviations) >= kLeastDeviations;
    if (!clear || !BothLegsShow(fault, change.size)) return std::nullopt;
    ClockFinding finding;
    finding.code = punches_.front().code;
    finding.jumps = fault.has_value();
    finding.seconds = change.size;
    finding.first = first_;
    finding.last = fault.value_or(punches_.back().time);
    finding.deviations = std::fabs(change.deviations);
    finding.runners = static_cast<std::int32_t>(punches_.size());
    return finding;
  }

 private:
  static std::vector<std::size_t> ClassesOf(std::span<const ClockPunch> punches) {
    std::vector<std::size_t> classes;
    classes.reserve(punches.size());
    for (const ClockPunch& punch : punches) classes.push_back(punch.klass);
    std::sort(classes.begin(), classes.end());
    classes.erase(std::unique(classes.begin(), classes.end()), classes.end());
    return classes;
  }

  // A jump has to explain clearly more than the drift.
  std::pair<Fault, Change> BestExplanation() const {
    std::array<Fault, 1 + kCuts> faults;  // the drift comes first
    for (std::size_t cut = 1; cut <= kCuts; ++cut) {
      faults[cut] = punches_[punches_.size() * cut / (kCuts + 1)].time;
    }
    const std::vector<Observation> observations = Observations(Legs::kBoth);
    std::pair<Fault, Change> best;
    for (std::size_t at = 0; at < faults.size(); at += kLanes) {
      const auto tried = std::span(faults).subspan(at).first<kLanes>();
      const Changes changes = Explain(observations, tried);
      if (at == 0) best.second = changes[0];
      for (std::size_t lane = at == 0 ? 1 : 0; lane < kLanes; ++lane) {
        const double least = best.second.explained * (best.first ? 1 : kClearlyBetter);
        if (changes[lane].explained > least) best = {tried[lane], changes[lane]};
      }
    }
    return best;
  }

  bool BothLegsShow(const Fault& fault, double size) const {
    std::array<Fault, kLanes> same;
    same.fill(fault);
    for (const Legs legs : {Legs::kBefore, Legs::kAfter}) {
      const double part = Explain(Observations(legs), same)[0].size / size;
      if (!(part >= kPartOfEachLeg)) return false;
    }
    return true;
  }

  std::vector<Observation> Observations(Legs legs) const {
    std::vector<Observation> observations;
    observations.reserve(punches_.size());
    for (const ClockPunch& punch : punches_) {
      const auto klass = std::lower_bound(classes_.begin(), classes_.end(), punch.klass);
      observations.push_back(
          Observe(punch, static_cast<std::size_t>(klass - classes_.begin()), legs));
    }
    return observations;
  }

  Changes Explain(const std::vector<Observation>& observations,
                  std::span<const Fault, kLanes> faults) const {
    std::vector<Lanes> regressors(punches_.size());
    for (std::size_t i = 0; i < regressors.size(); ++i) {
      for (std::size_t lane = 0; lane < kLanes; ++lane) {
        regressors[i][static_cast<Eigen::Index>(lane)] = Regressor(faults[lane], punches_[i].time);
      }
    }
    return Regression(observations, regressors, classes_.size()).Run();
  }

  // How far the clock has gone wrong at a time of day, in units of what the fault comes to.
  double Regressor(const Fault& fault, double time) const {
    if (!fault) return (time - first_) / day_;
    return time >= *fault ? 1 : 0;
  }

  std::span<const ClockPunch> punches_;
  double first_;
  double day_;
  std::vector<std::size_t> classes_;  // ascending
};

// The punches of one runner.
void AddPunches(const clsLapData& record, std::size_t klass, const std::vector<ControlPair>& pairs,
                const LapFigures* laps, std::vector<ClockPunch>& punches) {
  double time = record.StartTime()->Value() * kSecondsPerDay;
  if (!(time > 0)) return;
  for (std::size_t leg = 0; leg + 1 < pairs.size(); ++leg) {
    const DateTime lap = LapDataInternal::Lap(record, static_cast<std::int32_t>(leg) + 1);
    if (lap > 0) time += lap * kSecondsPerDay;
    const LapFigures& before = laps[leg];
    const LapFigures& after = laps[leg + 1];
    if (!before.known || !after.known) continue;
    punches.push_back({pairs[leg].second, klass, time, before.loss, after.loss,
                       before.normal * before.error, after.normal * after.error});
  }
}

std::string ClockTime(double seconds) {
  return FormatDateTime(std::fmod(seconds / kSecondsPerDay, 1.0), "hh:nn");
}

std::string SecondsText(double seconds) {
  const long long whole = std::llround(seconds);
  return (whole > 0 ? "+" : "") + std::to_string(whole) + " s";
}

// The laps of a record with a shift at the controls of its course; false if one would not be above
// 0, or none changes.
bool ShiftedLaps(const clsLapData& record, const std::vector<ControlPair>& pairs, std::int32_t code,
                 DateTime shift, std::vector<DateTime>& laps) {
  const auto legs =
      std::min(static_cast<std::size_t>(LapDataInternal::HeldLegs(record)), pairs.size());
  laps.clear();
  for (std::size_t leg = 1; leg <= legs; ++leg) {
    laps.push_back(LapDataInternal::Lap(record, static_cast<std::int32_t>(leg)));
  }
  bool changes = false;
  for (std::size_t i = 0; i + 1 < laps.size(); ++i) {
    if (pairs[i].second != code) continue;
    if (!(laps[i] > 0) || !(laps[i + 1] > 0)) continue;
    laps[i] = Canonical(laps[i] + shift);
    laps[i + 1] = Canonical(laps[i + 1] - shift);
    changes = true;
  }
  return changes && std::all_of(laps.begin(), laps.end(), [](DateTime lap) {
           return lap > 0 || lap == kTimeNoData || lap == kTimeSkip || lap == kTimeDisq;
         });
}

}  // namespace

std::string ClockFinding::Remark() const {
  const std::string amount = SecondsText(seconds);
  const std::string errors = std::to_string(std::llround(10 * deviations) / 10) + "." +
                             std::to_string(std::llround(10 * deviations) % 10);
  return "the clock of control " + std::to_string(code) + " seems to " +
         (jumps ? "jump by " + amount + " at about " + ClockTime(last)
                : "drift by " + amount + " from " + ClockTime(first) + " to " + ClockTime(last)) +
         " (" + std::to_string(runners) + " runners, " + errors + " standard errors)";
}

std::vector<ClockFinding> FindClocks(std::vector<ClockPunch> punches) {
  std::stable_sort(punches.begin(), punches.end(), [](const ClockPunch& a, const ClockPunch& b) {
    return a.code != b.code ? a.code < b.code : a.time < b.time;
  });
  std::vector<ClockFinding> findings;
  for (auto begin = punches.begin(); begin != punches.end();) {
    const auto end = std::find_if(
        begin, punches.end(), [&](const ClockPunch& punch) { return punch.code != begin->code; });
    const bool enough = static_cast<std::size_t>(end - begin) >= kFewestRunners;
    if (enough && begin->time < std::prev(end)->time) {
      if (const auto finding = ClockCheck({&*begin, static_cast<std::size_t>(end - begin)}).Find())
        findings.push_back(*finding);
    }
    begin = end;
  }
  return findings;
}

std::vector<ClockFinding> FindClocks(const std::vector<CourseGroup>& groups,
                                     const std::vector<ClassEstimate>& estimates) {
  std::vector<ClockPunch> punches;
  for (std::size_t i = 0; i < groups.size(); ++i) {
    const auto& pairs = groups[i].pairs;
    if (pairs.empty()) continue;
    const auto& runners = groups[i].runners;
    for (std::size_t runner = 0; runner < runners.size(); ++runner) {
      AddPunches(*runners[runner], i, pairs, estimates[i].laps.data() + runner * pairs.size(),
                 punches);
    }
  }
  return FindClocks(std::move(punches));
}

std::int32_t ShiftClock(EventModel& model, std::int32_t code, double seconds) {
  std::int32_t changed = 0;
  std::vector<DateTime> laps;
  for (const CourseGroup& group : CourseGroups(model)) {
    for (const auto& runner : group.runners) {
      if (!ShiftedLaps(*runner, group.pairs, code, seconds / kSecondsPerDay, laps)) continue;
      for (std::size_t i = 0; i < laps.size(); ++i) {
        LapDataInternal::ReplaceLap(*runner, static_cast<std::int32_t>(i) + 1, laps[i]);
      }
      ++changed;
    }
  }
  model.Corrections.push_back("the clock of control " + std::to_string(code) +
                              " was corrected by " + SecondsText(seconds) + " for " +
                              std::to_string(changed) + (changed == 1 ? " runner" : " runners"));
  return changed;
}

}  // namespace keltrun
