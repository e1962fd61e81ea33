// What the laps of a data set say about each of its legs as a whole.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/analysis/estimate.h"
#include "keltrun2/analysis/segment_runs.h"

namespace keltrun {

/// What the runners of a data set did on one leg.
struct LegFacts {
  std::int32_t laps = 0;      // runners with a lap of this leg alone
  std::int32_t mistakes = 0;  // those of them who made a mistake
  DateTime cost = 0;          // mean of what mistakes cost these runners, in days
  DateTime decisive = 0;      // mean of how far places 2 to 10 moved to or from the winner, in days
};

/// The last place that counts for LegFacts::decisive.
inline constexpr std::int32_t kLastDecisivePlace = 10;

/// Where the legs of a segment are in the records of its runners, by their serial numbers; empty
/// for a class and a course, whose legs are those of the records.
using SegmentRuns = std::unordered_map<std::int32_t, SegmentRun>;

/// The facts of the legs of an executed analysis, leg 1 first. What is a mistake and what it cost
/// is that of the estimate, which may be null, for the laps that it knows. Of the others, a loss
/// counts as a mistake from 8 s, 0.5 percent of the reference time of the course and 15 percent of
/// the runner's own pace on the leg on, and the loss is what it cost.
std::vector<LegFacts> FactsOfLegs(const clsAnalyzer& analyzer, const clsEstimate* estimate,
                                  const SegmentRuns& runs = {});

/// What the estimate says about a runner of a set, and how many of its legs are before the first
/// one of the set. `figures` is null when there is none.
struct RunnerEstimate {
  const clsEstimatedRunnerData* figures = nullptr;
  std::int32_t legs_before = 0;
  /// Whether the estimate has figures of a leg of the set.
  bool IsKnown(std::int32_t leg) const {
    return figures != nullptr && legs_before + leg <= clsLapData::kMostLegs &&
           figures->IsKnown(legs_before + leg);
  }
};

/// The estimate for a runner of a set, which lives as long as `estimate`, which may be null.
RunnerEstimate EstimateOfRunner(const clsAnalyzedRunnerData& runner, const clsEstimate* estimate,
                                const SegmentRuns& runs = {});

}  // namespace keltrun
