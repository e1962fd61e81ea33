#include "keltrun2/report/class_lists.h"

#include <algorithm>
#include <string_view>

#include "keltrun2/analysis/analyzer_internal.h"
#include "keltrun2/analysis/results_holder.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/result_status.h"

namespace keltrun {
namespace {

std::shared_ptr<const clsAnalyzer> AnalyzerOf(std::string_view class_name,
                                              const std::vector<ReportPageSet>& sets) {
  for (const ReportPageSet& set : sets) {
    if (set.Kind == DataSetKind::kClass && set.Analyzer->DataSetName() == class_name) {
      return set.Analyzer;
    }
  }
  return nullptr;
}

std::vector<ListedRunner> Analyzed(const clsAnalyzer& analyzer) {
  std::vector<ListedRunner> list;
  for (const auto& runner : AnalyzerInternal::Selected(analyzer)) {
    list.push_back({runner->OtherData(), runner->Rank(), TotalTime(runner->Result())});
  }
  return list;
}

std::vector<ListedRunner> Ranked(const clsClassData& klass) {
  clsResultsHolder results;
  for (const auto& record : ClassDataInternal::Runners(klass)) results.AddLap(record);
  results.CalcRank();
  std::vector<ListedRunner> list;
  for (std::int32_t i = 1; i <= results.Count(); ++i) {
    const auto record = results.Item(i);
    list.push_back({record, results.RankIsAvalilable() ? record->Rank : results.RankInDataSet(i),
                    TotalTime(record->Result())});
  }
  return list;
}

bool HasLaps(const clsLapData& runner) { return runner.LegCount() > 0; }

bool HasTimeWithoutLaps(const std::shared_ptr<clsLapData>& runner) {
  return !HasLaps(*runner) && TotalTime(runner->Result());
}

// An analysis leaves out who had another course and who has a time but no laps, as with a broken
// card. The result list of the class has them.
std::vector<ListedRunner> Listed(const clsClassData& klass, const clsAnalyzer* analyzer) {
  if (analyzer == nullptr) return Ranked(klass);
  const auto& runners = ClassDataInternal::Runners(klass);
  if (analyzer->LeftOutCount() == 0 &&
      std::none_of(runners.begin(), runners.end(), HasTimeWithoutLaps)) {
    return Analyzed(*analyzer);
  }
  std::vector<ListedRunner> list = Ranked(klass);
  std::erase_if(
      list, [](const ListedRunner& runner) { return !HasLaps(*runner.record) && !runner.time; });
  return list;
}

}  // namespace

std::vector<ClassList> ListsOfClasses(const EventModel& model,
                                      const std::vector<ReportPageSet>& sets) {
  std::vector<ClassList> lists;
  for (const auto& klass : model.Classes()) {
    const auto analyzer = AnalyzerOf(klass->ClassName(), sets);
    if (!analyzer && klass->LapCount() == 0) continue;
    lists.push_back({klass, analyzer, Listed(*klass, analyzer.get())});
  }
  return lists;
}

}  // namespace keltrun
