// Write access to the figures of an analyzed runner.
#pragma once

#include <memory>
#include <utility>

#include "keltrun2/analysis/analyzed_runner_data.h"

namespace keltrun {

class AnalyzedRunnerInternal {
 public:
  using LegFigures = clsAnalyzedRunnerData::LegFigures;

  static std::shared_ptr<clsAnalyzedRunnerData> Make(std::shared_ptr<clsLapData> record) {
    return std::shared_ptr<clsAnalyzedRunnerData>(new clsAnalyzedRunnerData(std::move(record)));
  }

  /// The leg, from 0 to 51, is not checked.
  static LegFigures& Leg(clsAnalyzedRunnerData& runner, std::int32_t leg) {
    return runner.legs_[static_cast<std::size_t>(leg)];
  }
  static const LegFigures& Leg(const clsAnalyzedRunnerData& runner, std::int32_t leg) {
    return runner.legs_[static_cast<std::size_t>(leg)];
  }

  static std::string& Rank(clsAnalyzedRunnerData& runner) { return runner.rank_; }
  static std::string& RankInDataSet(clsAnalyzedRunnerData& runner) {
    return runner.rank_in_data_set_;
  }
  static clsPercentValue& CruiseSpeed(clsAnalyzedRunnerData& runner) {
    return runner.cruise_speed_;
  }
  static clsPercentValue& FirstHalfCruiseSpeed(clsAnalyzedRunnerData& runner) {
    return runner.first_half_cruise_speed_;
  }
  static clsPercentValue& SecondHalfCruiseSpeed(clsAnalyzedRunnerData& runner) {
    return runner.second_half_cruise_speed_;
  }
  static clsPercentValue& TotalTimeRelative(clsAnalyzedRunnerData& runner) {
    return runner.total_time_relative_;
  }
  static clsMissTimeValue& MissTimeTotal(clsAnalyzedRunnerData& runner) {
    return runner.miss_time_total_;
  }
  static clsPercentValue& MissRate(clsAnalyzedRunnerData& runner) { return runner.miss_rate_; }
  static clsTimeValue& TotalTimeWithoutMiss(clsAnalyzedRunnerData& runner) {
    return runner.total_time_without_miss_;
  }
};

}  // namespace keltrun
