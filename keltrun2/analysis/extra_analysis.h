// What follows the split analysis: cruise speeds on parts of the course, difficulty of the legs.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "keltrun2/analysis/analyzed_general_data.h"
#include "keltrun2/analysis/analyzed_runner_data.h"
#include "keltrun2/model/sort.h"

namespace keltrun {

/// One run over a data set after the split analysis; the results go into the runners and `general`.
/// Without a split analysis the speeds are 0 and all legs are equally difficult.
class ExtraAnalysis {
 public:
  using Runners = std::vector<std::shared_ptr<clsAnalyzedRunnerData>>;

  /// Uses legs 1 to `legs` (1 to 51).
  ExtraAnalysis(const Runners& runners, std::int32_t legs, clsAnalyzedGeneralData& general)
      : runners_(runners), legs_(legs), general_(general) {}

  void Run();

 private:
  void FindParts();
  void CalcPartSpeeds();
  void CalcDifficulties();

  double PartSpeed(const clsAnalyzedRunnerData& runner, std::int32_t from, std::int32_t to);
  bool ShowsDifficulty(const clsAnalyzedRunnerData& runner, std::int32_t leg) const;
  double LossVariance(std::int32_t leg) const;

  const Runners& runners_;
  std::int32_t legs_;
  clsAnalyzedGeneralData& general_;
  std::int32_t first_part_end_ = 0;
  std::int32_t last_part_begin_ = 0;
  CclsSort<std::int32_t> order_;  // reused by every runner
};

}  // namespace keltrun
