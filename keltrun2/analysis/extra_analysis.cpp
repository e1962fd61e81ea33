#include "keltrun2/analysis/extra_analysis.h"

#include <algorithm>
#include <cmath>

#include "keltrun2/analysis/analyzed_general_data_internal.h"
#include "keltrun2/analysis/analyzed_runner_data_internal.h"
#include "keltrun2/analysis/best_legs.h"
#include "keltrun2/model/time_values_internal.h"

namespace keltrun {
namespace {

using Figures = AnalyzedRunnerInternal;

// The shares of the course at which its first part ends and its last part begins, each with the leg
// on which the share is reached.
constexpr float kFirstPartShare = 0.4F;
constexpr float kLastPartShare = 0.6F;

// The speed on a part comes from its best legs that together cover this share of the course.
constexpr double kSpeedShare = 0.2;

// The slowest fifth of the laps says more about the runners than about the leg.
constexpr double kCountedShare = 0.8;

// The variance of a leg with too few runners.
constexpr double kUnknownVariance = 1;

}  // namespace

void ExtraAnalysis::Run() {
  FindParts();
  CalcPartSpeeds();
  CalcDifficulties();
}

// The parts overlap: the last one begins one leg before the leg that reaches its share.
void ExtraAnalysis::FindParts() {
  first_part_end_ = 0;
  last_part_begin_ = 1;
  float share = 0;
  for (std::int32_t leg = 1; leg <= legs_; ++leg) {
    share += general_.LegLength(leg);
    if (first_part_end_ == 0 && share >= kFirstPartShare) first_part_end_ = leg;
    if (share >= kLastPartShare) {
      last_part_begin_ = std::max(leg - 1, 1);
      break;
    }
  }
  // The legs may not reach the share when there are fewer of them than in the split analysis.
  if (first_part_end_ == 0) first_part_end_ = legs_;
}

void ExtraAnalysis::CalcPartSpeeds() {
  for (const auto& runner : runners_) {
    AnalysisValue::Set(Figures::FirstHalfCruiseSpeed(*runner),
                       PartSpeed(*runner, 1, first_part_end_));
    AnalysisValue::Set(Figures::SecondHalfCruiseSpeed(*runner),
                       PartSpeed(*runner, last_part_begin_, legs_));
  }
}

double ExtraAnalysis::PartSpeed(const clsAnalyzedRunnerData& runner, std::int32_t from,
                                std::int32_t to) {
  return SpeedOnBestLegs(runner, general_, from, to, kSpeedShare, order_);
}

// A leg is difficult when the runners lose very different shares of their time on it.
void ExtraAnalysis::CalcDifficulties() {
  double total = 0;
  std::int32_t timed_legs = 0;
  for (std::int32_t leg = 1; leg <= legs_; ++leg) {
    if (!AnalyzedGeneralInternal::IsTimed(general_, leg)) continue;
    clsPercentValue& difficulty = AnalyzedGeneralInternal::Difficulty(general_, leg);
    AnalysisValue::Set(difficulty, std::sqrt(LossVariance(leg)));
    total += difficulty.Value();
    ++timed_legs;
  }
  if (timed_legs == 0) return;
  const double mean = (total == 0 ? 1 : total) / timed_legs;
  for (std::int32_t leg = 1; leg <= legs_; ++leg) {
    clsPercentValue& difficulty = AnalyzedGeneralInternal::Difficulty(general_, leg);
    AnalysisValue::Set(difficulty, difficulty.Value() / mean);
  }
}

bool ExtraAnalysis::ShowsDifficulty(const clsAnalyzedRunnerData& runner, std::int32_t leg) const {
  const auto& figures = Figures::Leg(runner, leg);
  const double counted_ranks = kCountedShare * static_cast<double>(runners_.size());
  return figures.valid_lap && figures.lap_rank < counted_ranks &&
         Figures::Leg(runner, legs_).split_time > 0;
}

// The sums have single precision, and the difficulties depend on that.
double ExtraAnalysis::LossVariance(std::int32_t leg) const {
  float sum = 0;
  float squares = 0;
  double count = 0;
  for (const auto& runner : runners_) {
    if (!ShowsDifficulty(*runner, leg)) continue;
    const double loss = runner->MissTime(leg)->Value() / runner->SplitTime(legs_);
    sum = static_cast<float>(sum + loss);
    squares = static_cast<float>(squares + loss * loss);
    ++count;
  }
  if (count < 2) return kUnknownVariance;
  const double variance =
      (count * static_cast<double>(squares) - static_cast<double>(sum) * sum) / (count * count);
  return variance >= 0 && std::isfinite(variance) ? variance : kUnknownVariance;
}

}  // namespace keltrun
