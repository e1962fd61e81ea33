#include "keltrun2/analysis/analyzer.h"

#include <algorithm>
#include <utility>

#include "keltrun2/analysis/analyzed_runner_data_internal.h"
#include "keltrun2/analysis/analyzer_internal.h"
#include "keltrun2/analysis/extra_analysis.h"
#include "keltrun2/analysis/loss_map.h"
#include "keltrun2/analysis/split_analysis.h"
#include "keltrun2/base/automation_error.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/model/length_and_climb.h"
#include "keltrun2/model/result_status.h"
#include "keltrun2/model/sort.h"
#include "keltrun2/text/file_names.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

std::shared_ptr<clsAnalyzedRunnerData> At(const AnalyzerInternal::Runners& runners,
                                          std::int32_t index) {
  const bool inside = index >= 1 && static_cast<std::size_t>(index) <= runners.size();
  return inside ? runners[static_cast<std::size_t>(index) - 1] : nullptr;
}

}  // namespace

clsAnalyzer::clsAnalyzer() : general_(std::make_shared<clsAnalyzedGeneralData>()) {}

std::string clsAnalyzer::ClassInfo() const {
  return LengthAndClimb(Length, Climb, ResourceText("RES_META_CLIMB_SYMBOLE"));
}

void clsAnalyzer::AddLap(const std::shared_ptr<clsLapData>& LapObject) {
  CheckObject(LapObject, "clsAnalyzer.AddLap");
  if (LapObject->LegCount() <= 0) return;
  CheckLap(*LapObject);
  auto runner = AnalyzedRunnerInternal::Make(LapObject);
  ReadLegs(*LapObject, *runner);
  full_.push_back(std::move(runner));
  is_executed_ = false;
}

void clsAnalyzer::CheckLap(const clsLapData& lap) const {
  if (lap.LegCount() <= 0) return;
  CheckIndex(lap.LegCount(), 1, clsAnalyzedRunnerData::kMostAnalyzedLegs, "clsAnalyzer.AddLap");
}

void clsAnalyzer::Clear() {
  full_.clear();
  selected_.clear();
  general_ = std::make_shared<clsAnalyzedGeneralData>();
  ClearHead();
  is_executed_ = false;
}

std::shared_ptr<clsAnalyzedRunnerData> clsAnalyzer::Item(std::int32_t Index) const {
  return At(selected_, Index);
}

std::shared_ptr<clsAnalyzedRunnerData> clsAnalyzer::FullSetItem(std::int32_t Index) const {
  return At(full_, Index);
}

void clsAnalyzer::Execute() {
  if (ControlCount >= clsAnalyzedRunnerData::kMostAnalyzedLegs) {
    CheckIndex(ControlCount, 0, clsAnalyzedRunnerData::kMostAnalyzedLegs - 1,
               "clsAnalyzer.Execute");
  }
  general_ = std::make_shared<clsAnalyzedGeneralData>();
  SplitAnalysis(full_, AnalyzerInternal::LegCount(*this), *general_).Run();
  selected_ = full_;
  is_executed_ = true;
}

void clsAnalyzer::ExtraAnalyze() {
  ExtraAnalysis(full_, AnalyzerInternal::LegCount(*this), *general_).Run();
  SelectAll();
}

std::int32_t clsAnalyzer::FinisherCount() const {
  return static_cast<std::int32_t>(std::count_if(
      full_.begin(), full_.end(), [](const auto& runner) { return IsFinished(runner->Result()); }));
}

void clsAnalyzer::Vesmer() { PlaceOnMap(full_, AnalyzerInternal::LegCount(*this), *general_); }

void clsAnalyzer::SelectItem(std::int32_t SerialNum) {
  for (const auto& runner : full_) {
    if (runner->SerialNum() == SerialNum) {
      selected_.push_back(runner);
      return;
    }
  }
}

void clsAnalyzer::SelectSort() {
  CclsSort<std::shared_ptr<clsAnalyzedRunnerData>> order;
  for (const auto& runner : selected_) order.Add(ResultSortKey(runner->Result()), runner);
  selected_.clear();
  for (auto& line : order.LineSet()) selected_.push_back(std::move(line.Item));
}

void clsAnalyzer::SelectAll() { selected_ = full_; }

void clsAnalyzer::SelectNone() { selected_.clear(); }

std::string clsAnalyzer::SafeFileName(std::string_view name) const {
  return ToHalfWidth(RemoveUnsafeKeepingExtension(LowerAscii(name)));
}

}  // namespace keltrun
