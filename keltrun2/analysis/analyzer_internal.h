// Read access to an analyzer for outputs, without reference counting.
#pragma once

#include <algorithm>

#include "keltrun2/analysis/analyzer.h"

namespace keltrun {

class AnalyzerInternal {
 public:
  using Runners = std::vector<std::shared_ptr<clsAnalyzedRunnerData>>;

  static const Runners& Selected(const clsAnalyzer& analyzer) { return analyzer.selected_; }

  /// The number of legs: ControlCount + 1, limited to 1 to 51.
  static std::int32_t LegCount(const clsAnalyzer& analyzer) {
    return std::clamp(analyzer.ControlCount, 0, clsAnalyzedRunnerData::kMostAnalyzedLegs - 1) + 1;
  }

  /// The codes of the controls at both ends of a leg (1 to the number of legs), 0 for none. The leg
  /// to the finish has no code at its end: its label shows none, and the course may not have one.
  struct LegCodes {
    std::int32_t From;
    std::int32_t To;
  };
  static LegCodes CodesOfLeg(const clsCourseData& course, std::int32_t leg, std::int32_t legs) {
    return {course.ControlNum(leg - 1), leg < legs ? course.ControlNum(leg) : 0};
  }
};

}  // namespace keltrun
