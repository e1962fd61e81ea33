#include "keltrun2/analysis/leg_facts.h"

#include <algorithm>
#include <cmath>

#include "keltrun2/analysis/analyzer_internal.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/result_status.h"
#include "keltrun2/model/time_values_internal.h"

namespace keltrun {
namespace {

constexpr DateTime kLeastMistake = 8 / kSecondsPerDay;
constexpr double kLeastShareOfCourse = 0.005;
constexpr double kLeastShareOfLap = 0.15;

// Adds up the facts of one leg.
class LegSummary {
 public:
  LegSummary(const clsAnalyzer& analyzer, const clsEstimate* estimate, const SegmentRuns& runs,
             std::int32_t leg)
      : runners_(AnalyzerInternal::Selected(analyzer)),
        estimate_(estimate),
        runs_(runs),
        least_mistake_(
            std::max(kLeastMistake, kLeastShareOfCourse * analyzer.GeneralData()->UpperLapTotal())),
        leg_(leg) {}

  LegFacts Facts() {
    for (const auto& runner : runners_) {
      if (runner->LapRank(leg_) > 0) AddLap(*runner);
    }
    if (facts_.laps > 0) facts_.cost /= facts_.laps;
    facts_.decisive = Decisive();
    return facts_;
  }

 private:
  void AddLap(const clsAnalyzedRunnerData& runner) {
    ++facts_.laps;
    const RunnerEstimate estimate = EstimateOfRunner(runner, estimate_, runs_);
    if (estimate.IsKnown(leg_)) {
      const std::int32_t leg = estimate.legs_before + leg_;
      facts_.mistakes += estimate.figures->IsMistake(leg) ? 1 : 0;
      facts_.cost += estimate.figures->MistakeTime(leg);
    } else {
      AddLoss(runner.LapTime(leg_), *runner.MissTime(leg_));
    }
  }

  void AddLoss(DateTime lap, const clsMissTimeValue& miss) {
    if (!AnalysisValue::IsSet(miss) || !(miss.Value() > 0)) return;
    const DateTime loss = miss.Value();
    facts_.cost += loss;
    if (loss >= least_mistake_ && loss >= kLeastShareOfLap * (lap - loss)) ++facts_.mistakes;
  }

  // Places are those of the result order.
  DateTime Decisive() const {
    if (runners_.empty() || runners_.front()->LapRank(leg_) <= 0) return 0;
    const DateTime best = runners_.front()->LapTime(leg_);
    const std::size_t last =
        std::min(runners_.size(), static_cast<std::size_t>(kLastDecisivePlace));
    DateTime moved = 0;
    std::int32_t count = 0;
    for (std::size_t i = 1; i < last && IsFinished(runners_[i]->Result()); ++i) {
      if (runners_[i]->LapRank(leg_) <= 0) continue;
      moved += std::fabs(runners_[i]->LapTime(leg_) - best);
      ++count;
    }
    return count > 0 ? moved / count : 0;
  }

  const AnalyzerInternal::Runners& runners_;
  const clsEstimate* estimate_;
  const SegmentRuns& runs_;
  const DateTime least_mistake_;
  const std::int32_t leg_;
  LegFacts facts_;
};

}  // namespace

std::vector<LegFacts> FactsOfLegs(const clsAnalyzer& analyzer, const clsEstimate* estimate,
                                  const SegmentRuns& runs) {
  std::vector<LegFacts> facts;
  for (std::int32_t leg = 1; leg <= AnalyzerInternal::LegCount(analyzer); ++leg) {
    facts.push_back(LegSummary(analyzer, estimate, runs, leg).Facts());
  }
  return facts;
}

RunnerEstimate EstimateOfRunner(const clsAnalyzedRunnerData& runner, const clsEstimate* estimate,
                                const SegmentRuns& runs) {
  if (estimate == nullptr) return {};
  const auto run = runs.find(runner.SerialNum());
  // The estimate keeps the runner alive.
  const clsEstimatedRunnerData* figures = estimate->RunnerData(runner.SerialNum()).get();
  if (figures == nullptr || figures->Speed() == 0) return {};
  return {figures, run != runs.end() ? run->second.legs_before : 0};
}

}  // namespace keltrun
