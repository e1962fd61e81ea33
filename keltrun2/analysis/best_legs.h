// The speed of a runner when nothing goes wrong.
#pragma once

#include <cstdint>

#include "keltrun2/analysis/analyzed_general_data.h"
#include "keltrun2/analysis/analyzed_runner_data.h"
#include "keltrun2/model/sort.h"

namespace keltrun {

/// The time of the runner over the reference laps, on their best legs among `from` to `to`. The
/// legs are added up from the best one until they cover `share` of the course. 0 when the runner
/// has no such leg. `order` is working memory that callers reuse.
double SpeedOnBestLegs(const clsAnalyzedRunnerData& runner, const clsAnalyzedGeneralData& general,
                       std::int32_t from, std::int32_t to, double share,
                       CclsSort<std::int32_t>& order);

}  // namespace keltrun
