// What the analysis computed for one runner.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "keltrun2/base/export.h"
#include "keltrun2/model/lap_data.h"
#include "keltrun2/model/time_values.h"

namespace keltrun {

/// One runner of the data set of an analyzer. Legs are numbered from 1 to 51; index 0 exists but is
/// never filled. Times are in days, ratios are factors (1 means equal to the reference), and ranks
/// start at 1, where 0 means no rank. An index outside 0 to 51 raises subscript out of range (9).
///
/// A runner who skipped controls has a range: the legs from the first skipped one to the next one
/// with a time, which have only that time in common. It is the lap of the last leg of the range.
class KELTRUN2_API clsAnalyzedRunnerData {
 public:
  /// The highest leg of an analysis: 50 controls and the finish. A record holds one leg less
  /// (`clsLapData::kMostLegs`).
  static constexpr std::int32_t kMostAnalyzedLegs = 51;

  clsAnalyzedRunnerData(const clsAnalyzedRunnerData&) = delete;
  clsAnalyzedRunnerData& operator=(const clsAnalyzedRunnerData&) = delete;

  /// Place on the map of loss profiles, to the right, from -100 to 100; 0 until
  /// `clsAnalyzer::Vesmer` makes the map.
  double VesmerX() const { return map_x_; }
  /// Moves the runner on the map until the next `clsAnalyzer::Vesmer`.
  void SetVesmerX(double X) { map_x_ = X; }
  /// Place on the map of loss profiles, downwards, from -100 to 100; 0 until `clsAnalyzer::Vesmer`
  /// makes the map.
  double VesmerY() const { return map_y_; }
  /// Moves the runner on the map until the next `clsAnalyzer::Vesmer`.
  void SetVesmerY(double Y) { map_y_ = Y; }

  /// Rank of SplitTime among the complete splits at the leg, from 1; 0 for none. Equal splits share
  /// a rank (1, 2, 2, 4).
  std::int32_t SplitRank(std::int32_t Index) const { return Leg(Index).split_rank; }
  /// Overrides SplitRank; the next `clsAnalyzer::Execute` ranks the leg anew.
  void SetSplitRank(std::int32_t Index, std::int32_t Rank) { Leg(Index).split_rank = Rank; }
  /// SplitRank as `clsLegRankValue::ToString` shows a rank.
  std::string SplitRankToString(std::int32_t Index, bool UseHyphen = true,
                                bool UseParentheses = false) const;
  /// Rank of LapTime among the valid laps of the leg, from 1; 0 for none. Equal laps share a rank
  /// (1, 2, 2, 4).
  std::int32_t LapRank(std::int32_t Index) const { return Leg(Index).lap_rank; }
  /// Overrides LapRank; the next `clsAnalyzer::Execute` ranks the leg anew.
  void SetLapRank(std::int32_t Index, std::int32_t Rank) { Leg(Index).lap_rank = Rank; }
  /// LapRank as `clsLegRankValue::ToString` shows a rank.
  std::string LapRankToString(std::int32_t Index, bool UseHyphen = true,
                              bool UseParentheses = false) const;
  /// Rank of ModifiedSplitTime at the leg, from 1; 0 for none.
  std::int32_t ModifiedSplitRank(std::int32_t Index) const {
    return Leg(Index).modified_split_rank;
  }
  /// Overrides ModifiedSplitRank; the next `clsAnalyzer::Execute` ranks the leg anew.
  void SetModifiedSplitRank(std::int32_t Index, std::int32_t Rank) {
    Leg(Index).modified_split_rank = Rank;
  }
  /// ModifiedSplitRank as `clsLegRankValue::ToString` shows a rank.
  std::string ModifiedSplitRankToString(std::int32_t Index, bool UseHyphen = true,
                                        bool UseParentheses = false) const;
  /// Rank of ModifiedLapTime on the leg, from 1; 0 for none.
  std::int32_t ModifiedLapRank(std::int32_t Index) const { return Leg(Index).modified_lap_rank; }
  /// Overrides ModifiedLapRank; the next `clsAnalyzer::Execute` ranks the leg anew.
  void SetModifiedLapRank(std::int32_t Index, std::int32_t Rank) {
    Leg(Index).modified_lap_rank = Rank;
  }
  /// ModifiedLapRank as `clsLegRankValue::ToString` shows a rank.
  std::string ModifiedLapRankToString(std::int32_t Index, bool UseHyphen = true,
                                      bool UseParentheses = false) const;

  /// Last leg of the range that the leg belongs to; 0 for none.
  std::int32_t TotalLapTo(std::int32_t Index) const { return Leg(Index).range_to; }
  /// First leg of the range that the leg belongs to; 0 for none.
  std::int32_t TotalLapFrom(std::int32_t Index) const { return Leg(Index).range_from; }

  /// Whether LapTime is a time, and one of this leg alone: the lap after a skipped or disqualified
  /// leg covers more.
  bool IsValidLapTime(std::int32_t Index) const { return Leg(Index).valid_lap; }
  /// Whether SplitTime is complete: no leg up to this one is disqualified or without data, except
  /// legs on which no runner has data. A skipped leg does not break the split.
  bool IsValidSplitTime(std::int32_t Index) const { return Leg(Index).valid_split; }

  /// Rank by result in the data set; empty for a runner without a time.
  const std::string& RankInDataSet() const { return rank_in_data_set_; }
  /// The official rank if at least two runners of the data set have one, otherwise RankInDataSet.
  const std::string& Rank() const { return rank_; }

  // The values below are objects of the runner: they are valid and up to date as long as the runner
  // exists.

  /// The time of the runner over the reference laps, on their best legs that cover half of the
  /// course.
  const clsPercentValue* CruiseSpeed() const { return &cruise_speed_; }
  /// The same for the best legs that cover a fifth of the course within its first part (about half
  /// of it); 0 until `clsAnalyzer::ExtraAnalyze`.
  const clsPercentValue* FirstHalfCruiseSpeed() const { return &first_half_cruise_speed_; }
  /// The same for the best legs that cover a fifth of the course within its last part (about half
  /// of it); 0 until `clsAnalyzer::ExtraAnalyze`.
  const clsPercentValue* SecondHalfCruiseSpeed() const { return &second_half_cruise_speed_; }
  /// The split at the finish divided by the sum of the reference laps.
  const clsPercentValue* TotalTimeRelative() const { return &total_time_relative_; }
  /// The lap divided by the reference lap; for a range, on its last leg. Null at index 0.
  const clsPercentValue* LapRelative(std::int32_t Index) const {
    return Index == 0 ? nullptr : &Leg(Index).lap_relative;
  }

  /// The record's lap. Reading it never changes the record's LegCount.
  DateTime LapTime(std::int32_t Index) const;
  /// LapTime as `clsTimeValue::ToString` shows a time.
  std::string LapTimeToString(std::int32_t Index, std::string_view FormatExpression = "hh:nn:ss",
                              bool Compact = false, std::string_view NoDataValue = kNoDataText,
                              std::string_view SkipValue = kSkipText,
                              std::string_view DisqValue = kDisqText) const;

  /// The record's serial number, which no other runner of the event has.
  std::int32_t SerialNum() const { return other_data_->SerialNum(); }

  /// The sum of the laps up to the leg, or a marker of LapTimeConst.
  DateTime SplitTime(std::int32_t Index) const { return Leg(Index).split_time; }
  /// Overrides SplitTime, which is computed once, when the runner is added to the analyzer.
  void SetSplitTime(std::int32_t Index, DateTime Time) { Leg(Index).split_time = Time; }
  /// SplitTime as `clsTimeValue::ToString` shows a time.
  std::string SplitTimeToString(std::int32_t Index, std::string_view FormatExpression = "hh:nn:ss",
                                bool Compact = false, std::string_view NoDataValue = kNoDataText,
                                std::string_view SkipValue = kSkipText,
                                std::string_view DisqValue = kDisqText) const;

  /// The lap, where the time of a range is shared among its legs; 0 for none.
  DateTime ModifiedLapTime(std::int32_t Index) const { return Leg(Index).modified_lap_time; }
  /// Overrides ModifiedLapTime until the next `clsAnalyzer::Execute`.
  void SetModifiedLapTime(std::int32_t Index, DateTime Time) {
    Leg(Index).modified_lap_time = Time;
  }
  /// Shows SplitTime, not ModifiedLapTime, because the exports of cumulative times use it.
  std::string ModifiedLapTimeToString(std::int32_t Index,
                                      std::string_view FormatExpression = "hh:nn:ss",
                                      bool Compact = false,
                                      std::string_view NoDataValue = kNoDataText,
                                      std::string_view SkipValue = kSkipText,
                                      std::string_view DisqValue = kDisqText) const;

  /// The split, which inside ranges is computed from modified laps; 0 for none.
  DateTime ModifiedSplitTime(std::int32_t Index) const { return Leg(Index).modified_split_time; }
  /// Overrides ModifiedSplitTime until the next `clsAnalyzer::Execute`.
  void SetModifiedSplitTime(std::int32_t Index, DateTime Time) {
    Leg(Index).modified_split_time = Time;
  }
  /// ModifiedSplitTime as `clsTimeValue::ToString` shows a time.
  std::string ModifiedSplitTimeToString(std::int32_t Index,
                                        std::string_view FormatExpression = "hh:nn:ss",
                                        bool Compact = false,
                                        std::string_view NoDataValue = kNoDataText,
                                        std::string_view SkipValue = kSkipText,
                                        std::string_view DisqValue = kDisqText) const;

  /// The time lost on the leg, measured against the cruise speed of the runner; for a range, on its
  /// last leg. Null at index 0.
  const clsMissTimeValue* MissTime(std::int32_t Index) const {
    return Index == 0 ? nullptr : &Leg(Index).miss_time;
  }
  /// The sum of the losses, without gains.
  const clsMissTimeValue* MissTimeTotal() const { return &miss_time_total_; }
  /// MissTimeTotal divided by the sum of the modified laps.
  const clsPercentValue* MissRate() const { return &miss_rate_; }
  /// The result reduced by MissRate: what it would be without losses.
  const clsTimeValue* TotalTimeWithoutMiss() const { return &total_time_without_miss_; }

  /// The record's name of the runner.
  const std::string& RunnerName() const { return other_data_->RunnerName; }
  /// The record's name of the runner's club.
  const std::string& ClubName() const { return other_data_->ClubName; }
  /// The result of the record. If it has none, the split at its last leg, provided it is complete.
  std::string Result() const;
  /// The official rank of the record.
  const std::string& ResultRank() const { return other_data_->Rank; }
  /// The start time as a time of day; 0 when unknown.
  DateTime StartTime() const { return other_data_->StartTime()->Value(); }

  /// The runner record itself, not a copy.
  const std::shared_ptr<clsLapData>& OtherData() const { return other_data_; }

 private:
  friend class AnalyzedRunnerInternal;

  struct LegFigures {
    DateTime split_time = 0;
    DateTime modified_lap_time = 0;
    DateTime modified_split_time = 0;
    clsMissTimeValue miss_time;
    clsPercentValue lap_relative;
    std::int32_t lap_rank = 0;
    std::int32_t split_rank = 0;
    std::int32_t modified_lap_rank = 0;
    std::int32_t modified_split_rank = 0;
    std::int16_t range_from = 0;
    std::int16_t range_to = 0;
    bool valid_lap = false;
    bool valid_split = false;
  };

  explicit clsAnalyzedRunnerData(std::shared_ptr<clsLapData> record)
      : other_data_(std::move(record)) {}

  const LegFigures& Leg(std::int32_t index) const;
  LegFigures& Leg(std::int32_t index);

  std::shared_ptr<clsLapData> other_data_;
  std::string rank_;
  std::string rank_in_data_set_;
  clsPercentValue cruise_speed_, first_half_cruise_speed_, second_half_cruise_speed_;
  clsPercentValue total_time_relative_, miss_rate_;
  clsMissTimeValue miss_time_total_;
  clsTimeValue total_time_without_miss_;
  double map_x_ = 0;
  double map_y_ = 0;
  std::array<LegFigures, kMostAnalyzedLegs + 1> legs_;
};

}  // namespace keltrun
