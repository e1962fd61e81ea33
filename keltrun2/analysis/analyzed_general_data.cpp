#include "keltrun2/analysis/analyzed_general_data.h"

#include "keltrun2/analysis/analyzed_general_data_internal.h"
#include "keltrun2/base/automation_error.h"

namespace keltrun {
namespace {

// The reference lap is the mean of at most this many laps.
constexpr std::size_t kReferenceLaps = 3;

}  // namespace

const clsAnalyzedGeneralData::LegFigures& clsAnalyzedGeneralData::Leg(std::int32_t index) const {
  CheckIndex(index, 0, kMostAnalyzedLegs, "clsAnalyzedGeneralData");
  return legs_[static_cast<std::size_t>(index)];
}

const clsPercentValue* clsAnalyzedGeneralData::LegDifficulty(std::int32_t LegIndex) const {
  return LegIndex == 0 ? nullptr : &Leg(LegIndex).difficulty;
}

bool clsAnalyzedGeneralData::IsUpperLapExists(std::int32_t LegIndex, std::int32_t RankIndex) const {
  return UpperLapObject(LegIndex, RankIndex) != nullptr;
}

DateTime clsAnalyzedGeneralData::UpperLapAverage(std::int32_t LegIndex) const {
  return Leg(LegIndex).upper_lap_average;
}

float clsAnalyzedGeneralData::LegLength(std::int32_t LegIndex) const {
  return Leg(LegIndex).leg_length;
}

std::shared_ptr<clsAnalyzedRunnerData> clsAnalyzedGeneralData::UpperLapObject(
    std::int32_t LegIndex, std::int32_t RankIndex) const {
  CheckIndex(RankIndex, 0, kMostUpperLaps, "clsAnalyzedGeneralData.UpperLapObject");
  return Leg(LegIndex).upper_laps[static_cast<std::size_t>(RankIndex)];
}

void AnalyzedGeneralInternal::CalcUpperLaps(clsAnalyzedGeneralData& general, std::int32_t legs) {
  DateTime total = 0;
  std::int32_t timed_legs = 0;
  for (std::int32_t leg = 1; leg <= legs; ++leg) {
    auto& figures = general.legs_[static_cast<std::size_t>(leg)];
    DateTime sum = 0;
    int count = 0;
    for (std::size_t position = 1; position <= kReferenceLaps; ++position) {
      const auto& runner = figures.upper_laps[position];
      if (!runner) break;
      sum += runner->LapTime(leg);
      ++count;
    }
    figures.upper_lap_average = count > 0 ? sum / count : 0;
    total += figures.upper_lap_average;
    if (figures.timed) ++timed_legs;
  }
  general.upper_lap_total_ = total;
  for (std::int32_t leg = 1; leg <= legs; ++leg) {
    auto& figures = general.legs_[static_cast<std::size_t>(leg)];
    const DateTime share = total == 0 ? 1.0 / timed_legs : figures.upper_lap_average / total;
    figures.leg_length = figures.timed ? static_cast<float>(share) : 0;
  }
}

}  // namespace keltrun
