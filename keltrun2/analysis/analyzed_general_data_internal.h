// Write access to the figures of the legs of a data set.
#pragma once

#include <memory>
#include <utility>

#include "keltrun2/analysis/analyzed_general_data.h"

namespace keltrun {

class AnalyzedGeneralInternal {
 public:
  static void SetUpperLapObject(clsAnalyzedGeneralData& general, std::int32_t leg,
                                std::int32_t position,
                                std::shared_ptr<clsAnalyzedRunnerData> runner) {
    general.legs_[static_cast<std::size_t>(leg)].upper_laps[static_cast<std::size_t>(position)] =
        std::move(runner);
  }

  /// The leg, from 0 to 51, is not checked.
  static clsPercentValue& Difficulty(clsAnalyzedGeneralData& general, std::int32_t leg) {
    return general.legs_[static_cast<std::size_t>(leg)].difficulty;
  }

  /// The leg, from 0 to 51, is not checked.
  static bool IsTimed(const clsAnalyzedGeneralData& general, std::int32_t leg) {
    return general.legs_[static_cast<std::size_t>(leg)].timed;
  }
  static void SetUntimed(clsAnalyzedGeneralData& general, std::int32_t leg) {
    general.legs_[static_cast<std::size_t>(leg)].timed = false;
  }

  /// Computes the reference laps, their total and the shares of legs 1 to `legs` from the upper
  /// laps.
  static void CalcUpperLaps(clsAnalyzedGeneralData& general, std::int32_t legs);
};

}  // namespace keltrun
