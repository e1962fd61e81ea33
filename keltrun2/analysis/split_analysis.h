// The split analysis, step by step.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "keltrun2/analysis/analyzed_general_data.h"
#include "keltrun2/analysis/analyzed_runner_data.h"
#include "keltrun2/analysis/untimed_legs.h"
#include "keltrun2/model/lap_data.h"
#include "keltrun2/model/sort.h"

namespace keltrun {

/// The first step, done for each runner when they are added: finds the ranges, splits and valid
/// laps of the record. Skipped legs that no later time covers become legs without data in the
/// record itself. The laps of untimed legs are taken as no data, except after a skipped leg, whose
/// time they have.
void ReadLegs(clsLapData& record, clsAnalyzedRunnerData& runner, const LegSet& untimed = {});

/// One run of the analysis over a set of runners; the results go into the runners and `general`.
class SplitAnalysis {
 public:
  using Runners = std::vector<std::shared_ptr<clsAnalyzedRunnerData>>;

  /// Analyzes legs 1 to `legs` (1 to 51). `general` is a new object, except that its untimed legs
  /// are known; the legs of the runners were read without these.
  SplitAnalysis(Runners& runners, std::int32_t legs, clsAnalyzedGeneralData& general)
      : runners_(runners), legs_(legs), general_(general) {}

  /// Does the other steps in order. Afterwards `runners` is in result order.
  void Run();

 private:
  struct LegSums {  // of the legs of a range
    DateTime reference = 0;
    double share = 0;
  };

  void OrderByResult();
  void AssignRanks();
  void RankLaps();
  void OpenLegsNobodyPunched();
  void RankSplits();
  void SpreadRanges();
  void RankModifiedLaps();
  void MakeModifiedSplits();
  void CalcRunnerFigures();

  bool IsTimed(std::int32_t leg) const;
  bool NobodyPunched(std::int32_t leg) const;
  [[maybe_unused]] bool LegsNobodyPunchedAreOpen() const;  // for an assert
  void SpreadRange(clsAnalyzedRunnerData& runner, std::int32_t leg);
  void CopySplits(clsAnalyzedRunnerData& runner);
  bool MakeModifiedSplit(clsAnalyzedRunnerData& runner, std::int32_t leg);
  double LapRelative(const clsAnalyzedRunnerData& runner, std::int32_t leg) const;
  void CalcTotalTimeRelative(clsAnalyzedRunnerData& runner) const;
  void CalcMissTimes(clsAnalyzedRunnerData& runner) const;
  DateTime RangeMiss(const clsAnalyzedRunnerData& runner, std::int32_t leg, double cruise) const;
  LegSums SumRange(std::int32_t from, std::int32_t to) const;

  // Ranks the runners for whom `key` gives a time on the leg, and stores the ranks in `rank`.
  template <typename Key, typename Rank>
  void RankLeg(Key key, Rank rank);

  Runners& runners_;
  std::int32_t legs_;
  clsAnalyzedGeneralData& general_;
  CclsSort<std::size_t> order_;          // reused by every leg
  CclsSort<std::int32_t> cruise_order_;  // reused by every runner
  bool has_ranges_ = false;
};

}  // namespace keltrun
