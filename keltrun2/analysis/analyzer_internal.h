// What outputs read of an analyzer without reference counting.
#pragma once

#include <algorithm>

#include "keltrun2/analysis/analyzer.h"

namespace keltrun {

class AnalyzerInternal {
 public:
  using Runners = std::vector<std::shared_ptr<clsAnalyzedRunnerData>>;

  static const Runners& Selected(const clsAnalyzer& analyzer) { return analyzer.selected_; }

  /// Number of legs: ControlCount + 1, within 1 to 51.
  static std::int32_t LegCount(const clsAnalyzer& analyzer) {
    return std::clamp(analyzer.ControlCount, 0, clsAnalyzedRunnerData::kMostLegs - 1) + 1;
  }
};

}  // namespace keltrun
