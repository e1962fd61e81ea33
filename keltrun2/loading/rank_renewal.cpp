#include "keltrun2/loading/rank_renewal.h"

#include <algorithm>

#include "keltrun2/analysis/results_holder.h"
#include "keltrun2/model/class_data_internal.h"

namespace keltrun {
namespace {

// The rank by result of each runner; empty for a runner without a time.
std::unordered_map<const clsLapData*, std::string> RanksByResult(const clsClassData& klass) {
  clsResultsHolder results;
  for (const auto& runner : ClassDataInternal::Runners(klass)) results.AddLap(runner);
  results.CalcRank();
  std::unordered_map<const clsLapData*, std::string> ranks;
  for (std::int32_t i = 1; i <= results.Count(); ++i) {
    ranks[results.Item(i).get()] = results.RankInDataSet(i);
  }
  return ranks;
}

bool HasRanks(const clsClassData& klass) {
  const auto& runners = ClassDataInternal::Runners(klass);
  return std::any_of(runners.begin(), runners.end(),
                     [](const auto& runner) { return !runner->Rank.empty(); });
}

bool IsRankedByResult(const clsClassData& klass) {
  auto ranks = RanksByResult(klass);
  const auto& runners = ClassDataInternal::Runners(klass);
  return HasRanks(klass) && std::all_of(runners.begin(), runners.end(), [&](const auto& runner) {
           return runner->Rank == ranks[runner.get()];
         });
}

}  // namespace

RankRenewal::RankRenewal(const EventModel& model) {
  for (const auto& klass : model.Classes()) {
    classes_.push_back({klass, StandingsOf(*klass), IsRankedByResult(*klass)});
  }
}

RankRenewal::Standings RankRenewal::StandingsOf(const clsClassData& klass) {
  Standings standings;
  for (const auto& runner : ClassDataInternal::Runners(klass)) {
    standings[runner.get()] = {runner->Result(), runner->Rank};
  }
  return standings;
}

void RankRenewal::Renew(std::vector<LoadRemark>& remarks) const {
  for (const Before& before : classes_) {
    const clsClassData& klass = *before.klass;
    if (before.ranked_by_result) {
      auto ranks = RanksByResult(klass);
      for (const auto& runner : ClassDataInternal::Runners(klass)) {
        runner->Rank = ranks[runner.get()];
      }
    } else if (HasRanks(klass) && StandingsOf(klass) != before.standings) {
      remarks.push_back({0, 0, RemarkSeverity::kNote,
                         "class \"" + klass.ClassName() +
                             "\": the official ranks may be stale: before the merge they were not "
                             "the ranks of the results, so they stay as they are",
                         ""});
    }
  }
}

}  // namespace keltrun
