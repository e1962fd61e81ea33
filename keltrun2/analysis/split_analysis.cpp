#include "keltrun2/analysis/split_analysis.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <optional>

#include "keltrun2/analysis/analyzed_general_data_internal.h"
#include "keltrun2/analysis/analyzed_runner_data_internal.h"
#include "keltrun2/analysis/best_legs.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/result_status.h"
#include "keltrun2/model/time_values_internal.h"

namespace keltrun {
namespace {

using Figures = AnalyzedRunnerInternal;

// The cruise speed comes from the best legs that together cover this share of the course.
constexpr double kCruiseShare = 0.5;

DateTime LapOf(const clsAnalyzedRunnerData& runner, std::int32_t leg) {
  return LapDataInternal::Lap(*runner.OtherData(), leg);
}

bool IsRangeEnd(const clsAnalyzedRunnerData& runner, std::int32_t leg) {
  return Figures::Leg(runner, leg).range_to == leg;
}

// Finds the ranges and splits of one runner, leg by leg.
class LegReader {
 public:
  LegReader(clsLapData& record, clsAnalyzedRunnerData& runner, const LegSet& untimed)
      : record_(record),
        runner_(runner),
        untimed_(untimed),
        // The host may have changed the number since the record was added.
        legs_(std::min(record.LegCount(), clsAnalyzedRunnerData::kMostAnalyzedLegs)) {}

  void Read() {
    Forget();
    for (std::int32_t leg = 1; leg <= legs_; ++leg) {
      if (Lap(leg) == kTimeSkip && Figures::Leg(runner_, leg).range_from == 0) OpenRange(leg);
      ReadLeg(leg);
    }
    // Every skipped leg is in a range, and every range ends with the lap that covers its legs.
    assert(SkippedLegsAreInRanges());
  }

 private:
  DateTime Lap(std::int32_t leg) const {
    const DateTime lap = LapDataInternal::Lap(record_, leg);
    const bool counts =
        !(lap > 0) || !untimed_[static_cast<std::size_t>(leg)] || FollowsMarker(leg);
    return counts ? lap : kTimeNoData;
  }

  bool FollowsMarker(std::int32_t leg) const {
    return leg > 1 && LapDataInternal::Lap(record_, leg - 1) < 0;
  }

  // What was read before, with other untimed legs.
  void Forget() {
    for (std::int32_t leg = 1; leg <= legs_; ++leg) {
      auto& figures = Figures::Leg(runner_, leg);
      figures.split_time = 0;
      figures.range_from = figures.range_to = 0;
      figures.valid_lap = figures.valid_split = false;
    }
  }

  bool SplitWasValid(std::int32_t leg) const {
    return leg == 1 || Figures::Leg(runner_, leg - 1).valid_split;
  }

  // The next time covers all legs from the skipped one on. When no time follows, the leg has no
  // data at all, and the record says so from now on.
  void OpenRange(std::int32_t from) {
    std::int32_t to = from + 1;
    while (to <= legs_ && !(Lap(to) > 0)) ++to;
    if (to > legs_) {
      LapDataInternal::ReplaceLap(record_, from, kTimeNoData);
      return;
    }
    for (std::int32_t leg = from; leg <= to; ++leg) {
      Figures::Leg(runner_, leg).range_from = static_cast<std::int16_t>(from);
      Figures::Leg(runner_, leg).range_to = static_cast<std::int16_t>(to);
    }
  }

  void ReadLeg(std::int32_t leg) {
    auto& figures = Figures::Leg(runner_, leg);
    const DateTime lap = Lap(leg);
    if (lap > 0) {
      total_ = Canonical(total_ + lap);
      figures.split_time = total_;
      // After a skipped or disqualified leg the lap covers more than this leg.
      figures.valid_lap = leg == 1 || Lap(leg - 1) >= 0;
      figures.valid_split = SplitWasValid(leg);
    } else if (lap == kTimeSkip) {
      figures.split_time = kTimeSkip;
      figures.valid_split = SplitWasValid(leg);
    } else if (lap == kTimeDisq) {
      figures.split_time = kTimeDisq;
    }
  }

  [[maybe_unused]] bool SkippedLegsAreInRanges() const {
    for (std::int32_t leg = 1; leg <= legs_; ++leg) {
      if (Lap(leg) == kTimeSkip && !(Lap(Figures::Leg(runner_, leg).range_to) > 0)) return false;
    }
    return true;
  }

  clsLapData& record_;
  clsAnalyzedRunnerData& runner_;
  const LegSet& untimed_;
  std::int32_t legs_;
  DateTime total_ = 0;
};

// What holds between the steps of the analysis. Only asserts call these.

using Runners = SplitAnalysis::Runners;

[[maybe_unused]] bool AreInResultOrder(const Runners& runners) {
  return std::is_sorted(runners.begin(), runners.end(), [](const auto& a, const auto& b) {
    return ResultSortKey(a->Result()) < ResultSortKey(b->Result());
  });
}

[[maybe_unused]] bool HaveRankOfFileOrDataSet(const Runners& runners) {
  return std::all_of(runners.begin(), runners.end(), [](const auto& runner) {
    return runner->Rank() == runner->ResultRank() || runner->Rank() == runner->RankInDataSet();
  });
}

// The shares are of single precision, and negative ones of a host's own laps can be large.
[[maybe_unused]] bool SharesSumToOne(const clsAnalyzedGeneralData& general, std::int32_t legs) {
  constexpr double kPrecision = 1e-5;
  double sum = 0;
  double size = 1;
  bool any_timed = false;
  for (std::int32_t leg = 1; leg <= legs; ++leg) {
    any_timed = any_timed || general.IsTimed(leg);
    sum += general.LegLength(leg);
    size += std::fabs(general.LegLength(leg));
  }
  return !any_timed || std::fabs(sum - 1) <= kPrecision * size;
}

template <typename Condition>
[[maybe_unused]] bool HoldsOnEveryLeg(const Runners& runners, std::int32_t legs,
                                      Condition condition) {
  for (const auto& runner : runners) {
    for (std::int32_t leg = 1; leg <= legs; ++leg) {
      if (!condition(*runner, leg)) return false;
    }
  }
  return true;
}

[[maybe_unused]] bool ValidLapIsRanked(const clsAnalyzedRunnerData& runner, std::int32_t leg) {
  const auto& figures = Figures::Leg(runner, leg);
  return !figures.valid_lap || figures.lap_rank > 0;
}

[[maybe_unused]] bool ValidSplitIsRanked(const clsAnalyzedRunnerData& runner, std::int32_t leg) {
  const auto& figures = Figures::Leg(runner, leg);
  return !figures.valid_split || !(figures.split_time > 0) || figures.split_rank > 0;
}

[[maybe_unused]] bool OnlyRangesDiffer(const clsAnalyzedRunnerData& runner, std::int32_t leg) {
  const auto& figures = Figures::Leg(runner, leg);
  if (figures.valid_lap) return figures.modified_lap_time == LapOf(runner, leg);
  return figures.range_to > 0 || figures.modified_lap_time == 0;
}

[[maybe_unused]] bool ModifiedLapIsRanked(const clsAnalyzedRunnerData& runner, std::int32_t leg) {
  const auto& figures = Figures::Leg(runner, leg);
  return !(figures.modified_lap_time > 0) || figures.modified_lap_rank > 0;
}

[[maybe_unused]] bool ValidSplitIsKept(const clsAnalyzedRunnerData& runner, std::int32_t leg) {
  const auto& figures = Figures::Leg(runner, leg);
  if (!figures.valid_split || !(figures.split_time > 0)) return true;
  return figures.modified_split_time == figures.split_time && figures.modified_split_rank > 0;
}

[[maybe_unused]] bool NoTotalLossIsNegative(const Runners& runners) {
  return std::all_of(runners.begin(), runners.end(),
                     [](const auto& runner) { return runner->MissTimeTotal()->Value() >= 0; });
}

}  // namespace

void ReadLegs(clsLapData& record, clsAnalyzedRunnerData& runner, const LegSet& untimed) {
  LegReader(record, runner, untimed).Read();
}

void SplitAnalysis::Run() {
  OrderByResult();
  // The runners are in result order, and those with a time know their rank in the data set.
  assert(AreInResultOrder(runners_));

  AssignRanks();
  // Rank is the official rank for all runners or the rank in the data set for all of them.
  assert(HaveRankOfFileOrDataSet(runners_));

  RankLaps();
  // Every valid lap has a rank, and the best laps of each leg are known.
  assert(HoldsOnEveryLeg(runners_, legs_, ValidLapIsRanked));

  AnalyzedGeneralInternal::CalcUpperLaps(general_, legs_);
  // Every leg has its reference lap, and the shares of the legs sum to 1.
  assert(SharesSumToOne(general_, legs_));

  OpenLegsNobodyPunched();
  // A leg on which no runner has data breaks no split.
  assert(LegsNobodyPunchedAreOpen());

  RankSplits();
  // Every valid split has a rank.
  assert(HoldsOnEveryLeg(runners_, legs_, ValidSplitIsRanked));

  SpreadRanges();
  // Every leg of a range has its part of the common time; the other modified laps are the valid
  // laps, or 0.
  assert(HoldsOnEveryLeg(runners_, legs_, OnlyRangesDiffer));

  RankModifiedLaps();
  // Every modified lap has a rank.
  assert(HoldsOnEveryLeg(runners_, legs_, ModifiedLapIsRanked));

  MakeModifiedSplits();
  // Modified splits run on through ranges; everywhere else they are the splits. All have ranks.
  assert(HoldsOnEveryLeg(runners_, legs_, ValidSplitIsKept));

  CalcRunnerFigures();
  // Every runner has a cruise speed and the losses that follow from it.
  assert(NoTotalLossIsNegative(runners_));
}

void SplitAnalysis::OrderByResult() {
  CclsSort<std::shared_ptr<clsAnalyzedRunnerData>> order;
  for (const auto& runner : runners_) order.Add(ResultSortKey(runner->Result()), runner);
  const auto competes = [](const auto& runner) {
    return runner->OtherData()->Status != RunnerStatus::kNotCompeting;
  };
  order.CalcRankOrder(competes);
  runners_.clear();
  for (auto& line : order.LineSet()) {
    // Keys below a day are times, the others statuses. A runner with a status shows the rank that
    // an earlier run gave them, or none.
    std::string rank = IsTimeKey(line.SortKey) ? std::to_string(line.RankOrder) : line.Item->Rank();
    if (!competes(line.Item)) rank.clear();
    Figures::RankInDataSet(*line.Item) = std::move(rank);
    runners_.push_back(std::move(line.Item));
  }
}

void SplitAnalysis::AssignRanks() {
  const auto official = std::count_if(runners_.begin(), runners_.end(), [](const auto& runner) {
    return !runner->ResultRank().empty();
  });
  for (const auto& runner : runners_) {
    Figures::Rank(*runner) = official < 2 ? runner->RankInDataSet() : runner->ResultRank();
  }
}

template <typename Key, typename Rank>
void SplitAnalysis::RankLeg(Key key, Rank rank) {
  order_.Clear();
  for (std::size_t i = 0; i < runners_.size(); ++i) {
    if (const std::optional<DateTime> time = key(*runners_[i])) order_.Add(*time, i);
  }
  order_.CalcRankOrder();
  for (const auto& line : order_.LineSet()) rank(*runners_[line.Item]) = line.RankOrder;
}

void SplitAnalysis::RankLaps() {
  for (std::int32_t leg = 1; leg <= legs_; ++leg) {
    RankLeg(
        [leg](const auto& runner) -> std::optional<DateTime> {
          if (!Figures::Leg(runner, leg).valid_lap) return std::nullopt;
          return LapOf(runner, leg);
        },
        [leg](auto& runner) -> auto& { return Figures::Leg(runner, leg).lap_rank; });
    const std::int32_t kept = std::min(order_.Count(), clsAnalyzedGeneralData::kMostUpperLaps);
    for (std::int32_t position = 1; position <= kept; ++position) {
      AnalyzedGeneralInternal::SetUpperLapObject(general_, leg, position,
                                                 runners_[order_.Item(position)]);
    }
  }
}

bool SplitAnalysis::IsTimed(std::int32_t leg) const {
  return AnalyzedGeneralInternal::IsTimed(general_, leg);
}

bool SplitAnalysis::NobodyPunched(std::int32_t leg) const {
  if (!IsTimed(leg)) return true;
  return !general_.IsUpperLapExists(leg, 1) &&
         std::all_of(runners_.begin(), runners_.end(),
                     [leg](const auto& runner) { return LapOf(*runner, leg) == kTimeNoData; });
}

// Whether a split may go on through a leg that nobody punched: that of a runner who is disqualified
// there, on an untimed leg, ends.
bool GoesOn(const clsAnalyzedRunnerData& runner, std::int32_t leg) {
  return LapOf(runner, leg) != kTimeDisq && (leg == 1 || Figures::Leg(runner, leg - 1).valid_split);
}

// When the records of a control were all lost, or its leg was not timed, the later splits can still
// be compared: every runner misses the same time.
void SplitAnalysis::OpenLegsNobodyPunched() {
  for (std::int32_t leg = 1; leg <= legs_; ++leg) {
    if (!NobodyPunched(leg)) continue;
    for (const auto& runner : runners_) {
      if (!GoesOn(*runner, leg)) continue;
      Figures::Leg(*runner, leg).valid_split = true;
      for (std::int32_t k = leg + 1; k <= clsAnalyzedRunnerData::kMostAnalyzedLegs; ++k) {
        if (!Figures::Leg(*runner, k).valid_lap) break;
        Figures::Leg(*runner, k).valid_split = true;
      }
    }
  }
}

bool SplitAnalysis::LegsNobodyPunchedAreOpen() const {
  for (std::int32_t leg = 1; leg <= legs_; ++leg) {
    if (!NobodyPunched(leg)) continue;
    for (const auto& runner : runners_) {
      if (GoesOn(*runner, leg) && !Figures::Leg(*runner, leg).valid_split) return false;
    }
  }
  return true;
}

void SplitAnalysis::RankSplits() {
  for (std::int32_t leg = 1; leg <= legs_; ++leg) {
    RankLeg(
        [leg](const auto& runner) -> std::optional<DateTime> {
          const auto& figures = Figures::Leg(runner, leg);
          if (!figures.valid_split || !(figures.split_time > 0)) return std::nullopt;
          return figures.split_time;
        },
        [leg](auto& runner) -> auto& { return Figures::Leg(runner, leg).split_rank; });
  }
}

void SplitAnalysis::SpreadRanges() {
  for (const auto& runner : runners_) {
    for (std::int32_t leg = 1; leg <= clsAnalyzedRunnerData::kMostAnalyzedLegs; ++leg) {
      Figures::Leg(*runner, leg).modified_lap_time = 0;
    }
    for (std::int32_t leg = 1; leg <= legs_; ++leg) {
      if (Figures::Leg(*runner, leg).valid_lap) {
        Figures::Leg(*runner, leg).modified_lap_time = LapOf(*runner, leg);
      } else if (IsRangeEnd(*runner, leg)) {
        SpreadRange(*runner, leg);
        has_ranges_ = true;
      }
    }
  }
}

SplitAnalysis::LegSums SplitAnalysis::SumRange(std::int32_t from, std::int32_t to) const {
  LegSums sums;
  for (std::int32_t leg = from; leg <= to; ++leg) {
    sums.reference += general_.UpperLapAverage(leg);
    sums.share += general_.LegLength(leg);
  }
  return sums;
}

// The time of a range is shared among its legs in proportion to their shares of the course.
void SplitAnalysis::SpreadRange(clsAnalyzedRunnerData& runner, std::int32_t leg) {
  const std::int32_t from = Figures::Leg(runner, leg).range_from;
  const double share = SumRange(from, leg).share;
  const DateTime lap = LapOf(runner, leg);
  for (std::int32_t k = from; k <= leg; ++k) {
    Figures::Leg(runner, k).modified_lap_time =
        share != 0 ? general_.LegLength(k) * lap / share : lap / (leg - from + 1);
  }
}

void SplitAnalysis::RankModifiedLaps() {
  for (std::int32_t leg = 1; leg <= legs_; ++leg) {
    if (!has_ranges_) {
      for (const auto& runner : runners_) {
        auto& figures = Figures::Leg(*runner, leg);
        figures.modified_lap_rank = figures.lap_rank;
      }
      continue;
    }
    RankLeg(
        [leg](const auto& runner) -> std::optional<DateTime> {
          const DateTime time = Figures::Leg(runner, leg).modified_lap_time;
          if (!(time > 0)) return std::nullopt;
          return time;
        },
        [leg](auto& runner) -> auto& { return Figures::Leg(runner, leg).modified_lap_rank; });
  }
}

void SplitAnalysis::CopySplits(clsAnalyzedRunnerData& runner) {
  for (std::int32_t leg = 1; leg <= legs_; ++leg) {
    auto& figures = Figures::Leg(runner, leg);
    figures.modified_split_time = figures.split_time >= 0 ? figures.split_time : 0;
    figures.modified_split_rank = figures.split_rank;
  }
}

// False when the runner has no modified split on the leg.
bool SplitAnalysis::MakeModifiedSplit(clsAnalyzedRunnerData& runner, std::int32_t leg) {
  auto& figures = Figures::Leg(runner, leg);
  figures.modified_split_time = 0;
  if (!figures.valid_split) return false;
  if (figures.split_time > 0) {
    figures.modified_split_time = figures.split_time;
    return true;
  }
  if (figures.range_from < 1) return false;
  const DateTime before = leg > 1 ? Figures::Leg(runner, leg - 1).modified_split_time : 0;
  figures.modified_split_time = before + figures.modified_lap_time;
  return true;
}

void SplitAnalysis::MakeModifiedSplits() {
  if (!has_ranges_) {
    for (const auto& runner : runners_) CopySplits(*runner);
    return;
  }
  for (std::int32_t leg = 1; leg <= legs_; ++leg) {
    RankLeg(
        [this, leg](auto& runner) -> std::optional<DateTime> {
          if (!MakeModifiedSplit(runner, leg)) return std::nullopt;
          return runner.ModifiedSplitTime(leg);
        },
        [leg](auto& runner) -> auto& { return Figures::Leg(runner, leg).modified_split_rank; });
  }
}

void SplitAnalysis::CalcRunnerFigures() {
  for (const auto& runner : runners_) {
    for (std::int32_t leg = 1; leg <= legs_; ++leg) {
      AnalysisValue::Set(Figures::Leg(*runner, leg).lap_relative, LapRelative(*runner, leg));
    }
    CalcTotalTimeRelative(*runner);
    AnalysisValue::Set(Figures::CruiseSpeed(*runner),
                       SpeedOnBestLegs(*runner, general_, 1, legs_, kCruiseShare, cruise_order_));
    CalcMissTimes(*runner);
  }
}

// The lap divided by the reference lap; for a range, its time divided by the sum of its reference
// laps. -1 shows as skipped, 0 as no value.
double SplitAnalysis::LapRelative(const clsAnalyzedRunnerData& runner, std::int32_t leg) const {
  const DateTime lap = LapOf(runner, leg);
  if (lap == kTimeSkip) return kTimeSkip;
  if (!(lap > 0)) return 0;
  const auto& figures = Figures::Leg(runner, leg);
  if (!figures.valid_lap && figures.range_to == 0) return 0;  // follows a disqualified leg
  const DateTime reference = figures.valid_lap
                                 ? general_.UpperLapAverage(leg)
                                 : SumRange(figures.range_from, figures.range_to).reference;
  return reference != 0 ? lap / reference : 0;
}

void SplitAnalysis::CalcTotalTimeRelative(clsAnalyzedRunnerData& runner) const {
  const auto& finish = Figures::Leg(runner, legs_);
  const DateTime total = general_.UpperLapTotal();
  const bool comparable = finish.valid_split && finish.split_time > 0 && total != 0;
  AnalysisValue::Set(Figures::TotalTimeRelative(runner),
                     comparable ? finish.split_time / total : 0);
}

DateTime SplitAnalysis::RangeMiss(const clsAnalyzedRunnerData& runner, std::int32_t leg,
                                  double cruise) const {
  DateTime miss = 0;
  for (std::int32_t k = Figures::Leg(runner, leg).range_from; k <= leg; ++k) {
    const DateTime reference = general_.UpperLapAverage(k);
    if (reference != 0) miss += Figures::Leg(runner, k).modified_lap_time - reference * cruise;
  }
  return miss;
}

void SplitAnalysis::CalcMissTimes(clsAnalyzedRunnerData& runner) const {
  const double cruise = AnalysisValue::Stored(Figures::CruiseSpeed(runner));
  DateTime lap_sum = 0;
  DateTime miss_sum = 0;
  for (std::int32_t leg = 1; leg <= legs_; ++leg) {
    auto& figures = Figures::Leg(runner, leg);
    lap_sum += figures.modified_lap_time;
    const DateTime lap = LapOf(runner, leg);
    if (!figures.valid_lap && !IsRangeEnd(runner, leg)) {
      if (lap == kTimeSkip) {
        AnalysisValue::Set(figures.miss_time, kTimeSkip);
      } else {
        AnalysisValue::Reset(figures.miss_time);
      }
      continue;
    }
    // The loss of a whole range is reported on its last leg.
    const DateTime miss = figures.valid_lap ? lap - general_.UpperLapAverage(leg) * cruise
                                            : RangeMiss(runner, leg, cruise);
    AnalysisValue::Set(figures.miss_time, miss);
    if (miss > 0) miss_sum += miss;
  }
  const auto result = ReadableTime(runner.Result());
  if (!result || lap_sum == 0) return;
  AnalysisValue::Set(Figures::MissTimeTotal(runner), miss_sum);
  AnalysisValue::Set(Figures::MissRate(runner), miss_sum / lap_sum);
  const double rate = AnalysisValue::Stored(Figures::MissRate(runner));
  Figures::TotalTimeWithoutMiss(runner).SetValue((1 - rate) * *result);
}

}  // namespace keltrun
