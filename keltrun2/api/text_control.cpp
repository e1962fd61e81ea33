#include "keltrun2/api/text_control.h"

#include "keltrun2/model/process_state.h"
#include "keltrun2/platform/automation_error.h"
#include "keltrun2/report/json.h"

namespace keltrun {

std::string clsTextControl::OutputJson(const std::shared_ptr<clsAnalyzer>& Analyzer,
                                       DataSetKind Kind) const {
  CheckObject(Analyzer, "clsTextControl.OutputJson");
  return AnalysisJson(*CurrentModel(), *Analyzer, Kind);
}

std::string clsTextControl::OutputResultJson(const std::vector<ResultSet>& Sets) const {
  for (const ResultSet& set : Sets) {
    CheckObject(set.ResultsHolder, "clsTextControl.OutputResultJson");
  }
  std::vector<ResultJsonSet> lists;
  lists.reserve(Sets.size());
  for (const ResultSet& set : Sets) lists.push_back({set.ResultsHolder.get(), set.Kind});
  return ResultJson(*CurrentModel(), lists);
}

std::string clsTextControl::OutputInfoJson() const { return InfoJson(*CurrentModel()); }

}  // namespace keltrun
