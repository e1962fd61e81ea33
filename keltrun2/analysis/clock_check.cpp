#include "keltrun2/analysis/clock_check.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <span>

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
constexpr int kCuts = 19;                // times of day at which a jump is tried
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

// A value of each punch with its variance.
struct Observation {
  std::size_t klass;
  double regressor;
  double value;
  double variance;
  double weight = 0;
};

// Each class has a mean of its own: its runners start at other times, and the legs of its course
// are other ones.
struct ClassMeans {
  double weight = 0, regressor = 0, value = 0;
};

std::map<std::size_t, ClassMeans> MeansOf(const std::vector<Observation>& observations) {
  std::map<std::size_t, ClassMeans> means;
  for (const Observation& one : observations) {
    ClassMeans& mean = means[one.klass];
    mean.weight += one.weight;
    mean.regressor += one.weight * one.regressor;
    mean.value += one.weight * one.value;
  }
  for (auto& [klass, mean] : means) {
    mean.regressor /= mean.weight;
    mean.value /= mean.weight;
  }
  return means;
}

// Weighted least squares within classes; mistakes, which are far off, count less (Huber 1964).
Change Regress(std::vector<Observation>& observations) {
  for (Observation& one : observations) one.weight = 1 / one.variance;
  Change change;
  for (int round = 0; round < kRounds; ++round) {
    const auto means = MeansOf(observations);
    double squares = 0;
    double products = 0;
    for (const Observation& one : observations) {
      const ClassMeans& mean = means.at(one.klass);
      squares += one.weight * Square(one.regressor - mean.regressor);
      products += one.weight * (one.regressor - mean.regressor) * (one.value - mean.value);
    }
    if (!(squares > 0)) return {};
    change.size = products / squares;
    double residuals = 0;
    for (Observation& one : observations) {
      const ClassMeans& mean = means.at(one.klass);
      const double residual =
          one.value - mean.value - change.size * (one.regressor - mean.regressor);
      residuals += one.weight * Square(residual);
      const double limit = kFarthest * std::sqrt(one.variance);
      one.weight = std::min(1.0, limit / std::max(std::fabs(residual), limit)) / one.variance;
    }
    const auto freedom =
        static_cast<double>(observations.size()) - static_cast<double>(means.size()) - 1;
    const double scale = freedom > 0 ? std::sqrt(residuals / freedom) : 1;
    change.deviations = change.size * std::sqrt(squares) / std::max(1.0, scale);
    change.explained = products * products / squares;
  }
  return change;
}

enum class Legs { kBoth, kBefore, kAfter };

// The error of the clock at a punch: the losses on both legs, the second with the opposite sign,
// each with the weight of its precision.
template <typename Regressor>
Change ChangeOf(std::span<const ClockPunch> punches, Legs legs, Regressor regressor) {
  std::vector<Observation> observations;
  observations.reserve(punches.size());
  for (const ClockPunch& punch : punches) {
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
    observations.push_back(
        {punch.klass, regressor(punch.time), value, variance + kRoundingVariance});
  }
  return Regress(observations);
}

template <typename Regressor>
bool BothLegsShow(std::span<const ClockPunch> punches, const Change& change, Regressor regressor) {
  for (const Legs legs : {Legs::kBefore, Legs::kAfter}) {
    const double part = ChangeOf(punches, legs, regressor).size / change.size;
    if (!(part >= kPartOfEachLeg)) return false;
  }
  return true;
}

// The punches at one control, the earliest first.
ClockFinding CheckClock(std::span<const ClockPunch> punches) {
  const double first = punches.front().time;
  const double day = punches.back().time - first;
  const auto drift = [&](double time) { return (time - first) / day; };
  ClockFinding finding{punches.front().code,
                       false,
                       0,
                       first,
                       punches.back().time,
                       0,
                       static_cast<std::int32_t>(punches.size())};
  if (!(day > 0)) return finding;
  Change best = ChangeOf(punches, Legs::kBoth, drift);
  double jump = 0;
  for (int cut = 1; cut <= kCuts; ++cut) {
    const std::size_t at = punches.size() * static_cast<std::size_t>(cut) / (kCuts + 1);
    const double time = punches[at].time;
    const Change step =
        ChangeOf(punches, Legs::kBoth, [time](double t) { return t >= time ? 1.0 : 0.0; });
    if (step.explained <= best.explained * (jump > 0 ? 1 : kClearlyBetter)) continue;
    best = step;
    jump = time;
  }
  const bool both =
      jump > 0 ? BothLegsShow(punches, best, [jump](double t) { return t >= jump ? 1.0 : 0.0; })
               : BothLegsShow(punches, best, drift);
  if (!both) return finding;
  finding.jumps = jump > 0;
  if (finding.jumps) finding.last = jump;
  finding.seconds = best.size;
  finding.deviations = std::fabs(best.deviations);
  return finding;
}

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
    if (static_cast<std::size_t>(end - begin) >= kFewestRunners) {
      const ClockFinding finding = CheckClock({begin, end});
      if (std::fabs(finding.seconds) >= kLeastSeconds && finding.deviations >= kLeastDeviations) {
        findings.push_back(finding);
      }
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
