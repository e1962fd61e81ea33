// The printed analysis.
#pragma once

#include <cstdint>

namespace keltrun {

/// What a printed analysis shows of each leg.
enum KrPrintAnalysisModeConst : std::int32_t {
  KR_PRINT_ANALYSIS_LAP = 0,   ///< Laps and splits with their ranks.
  KR_PRINT_ANALYSIS_MISS = 1,  ///< Laps with their ranks, and the time lost.
};

}  // namespace keltrun
