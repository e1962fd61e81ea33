// The speed of a runner when nothing goes wrong.
#pragma once

#include <cstdint>

#include "keltrun2/analysis/analyzed_general_data.h"
#include "keltrun2/analysis/analyzed_runner_data.h"
#include "keltrun2/model/sort.h"

namespace keltrun {

/// How many times the reference laps the runner needs on his best legs among `from` to `to`: as
/// many as reach `share` of the course, the last of them included. 0 when he has no such leg.
/// `order` is working memory that callers reuse.
double SpeedOnBestLegs(const clsAnalyzedRunnerData& runner, const clsAnalyzedGeneralData& general,
                       std::int32_t from, std::int32_t to, double share,
                       CclsSort<std::int32_t>& order);

}  // namespace keltrun
