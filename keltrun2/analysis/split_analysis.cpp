#include "keltrun2/analysis/split_analysis.h"

#include <algorithm>
#include <optional>

#include "keltrun2/analysis/analyzed_general_data_internal.h"
#include "keltrun2/analysis/analyzed_runner_data_internal.h"
#include "keltrun2/analysis/best_legs.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/result_status.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/model/time_values_internal.h"

namespace keltrun {
namespace {

using Figures = AnalyzedRunnerInternal;

// The cruise speed is taken over the best legs covering this share of the course.
constexpr double kCruiseShare = 0.5;

DateTime LapOf(const clsAnalyzedRunnerData& runner, std::int32_t leg) {
  return LapDataInternal::Lap(*runner.OtherData(), leg);
}

bool IsRangeEnd(const clsAnalyzedRunnerData& runner, std::int32_t leg) {
  return Figures::Leg(runner, leg).range_to == leg;
}

}  // namespace

void SplitAnalysis::Run() {
  OrderByResult();
  AssignRanks();
  RankLaps();
  AnalyzedGeneralInternal::CalcUpperLaps(general_, legs_);  // the leg shares sum to 1 from here on
  OpenLegsNobodyPunched();
  RankSplits();
  SpreadRanges();
  RankModifiedLaps();
  MakeModifiedSplits();
  CalcRunnerFigures();
}

void SplitAnalysis::OrderByResult() {
  CclsSort<std::shared_ptr<clsAnalyzedRunnerData>> order;
  for (const auto& runner : runners_) order.Add(ResultSortKey(runner->Result()), runner);
  order.CalcRankOrder();
  runners_.clear();
  for (auto& line : order.LineSet()) {
    // Keys below a day are times, the others statuses: such a runner keeps the rank text he has.
    const bool finished = line.SortKey < 1;
    Figures::RankInDataSet(*line.Item) =
        finished ? std::to_string(line.RankOrder) : line.Item->Rank();
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

bool SplitAnalysis::NobodyPunched(std::int32_t leg) const {
  return !general_.IsUpperLapExists(leg, 1) &&
         std::all_of(runners_.begin(), runners_.end(),
                     [leg](const auto& runner) { return LapOf(*runner, leg) == kTimeNoData; });
}

// A control whose records were all lost leaves the splits behind it comparable: every runner misses
// the same time.
void SplitAnalysis::OpenLegsNobodyPunched() {
  for (std::int32_t leg = 1; leg <= legs_; ++leg) {
    if (!NobodyPunched(leg)) continue;
    for (const auto& runner : runners_) {
      if (leg > 1 && !Figures::Leg(*runner, leg - 1).valid_split) continue;
      Figures::Leg(*runner, leg).valid_split = true;
      for (std::int32_t k = leg + 1; k <= clsAnalyzedRunnerData::kMostLegs; ++k) {
        if (!Figures::Leg(*runner, k).valid_lap) break;
        Figures::Leg(*runner, k).valid_split = true;
      }
    }
  }
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
    for (std::int32_t leg = 1; leg <= clsAnalyzedRunnerData::kMostLegs; ++leg) {
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

// False when the runner takes no part on the leg.
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

// The lap over the reference lap, of a range over the sum of its reference laps; -1 shows as
// skipped, 0 as no value.
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
  constexpr DateTime kNoTime = -1.0;
  const DateTime result = ParseTime(runner.Result(), kNoTime);
  if (result == kNoTime || lap_sum == 0) return;
  AnalysisValue::Set(Figures::MissTimeTotal(runner), miss_sum);
  AnalysisValue::Set(Figures::MissRate(runner), miss_sum / lap_sum);
  const double rate = AnalysisValue::Stored(Figures::MissRate(runner));
  Figures::TotalTimeWithoutMiss(runner).SetValue((1 - rate) * result);
}

}  // namespace keltrun
