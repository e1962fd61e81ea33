#include "keltrun2/analysis/analyzer.h"

#include <algorithm>
#include <utility>

#include "keltrun2/analysis/analyzed_general_data_internal.h"
#include "keltrun2/analysis/analyzed_runner_data_internal.h"
#include "keltrun2/analysis/analyzer_internal.h"
#include "keltrun2/analysis/data_set_internal.h"
#include "keltrun2/analysis/extra_analysis.h"
#include "keltrun2/analysis/loss_map.h"
#include "keltrun2/analysis/split_analysis.h"
#include "keltrun2/base/automation_error.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/model/length_and_climb.h"
#include "keltrun2/model/process_state.h"
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

void clsAnalyzer::SetUntimedLegs(std::string_view Legs) {
  untimed_choice_ = CheckedUntimedLegs(Legs, "clsAnalyzer.UntimedLegs").ToString();
}

clsAnalyzer::LegSet clsAnalyzer::FindUntimedLegs() const {
  const auto choice = CheckedUntimedLegs(untimed_choice_, "clsAnalyzer.UntimedLegs");
  if (!choice.IsAutomatic()) return choice.Legs();
  std::vector<ZeroLaps> counts(static_cast<std::size_t>(AnalyzerInternal::LegCount(*this)));
  for (const auto& runner : full_) CountZeroLaps(*runner->OtherData(), counts);
  const auto model = FindCurrentModel();
  const auto pairs = model ? DataSetInternal::LegPairs(*this, *model) : std::vector<ControlPair>();
  return keltrun::FindUntimedLegs(counts, pairs, model.get());
}

// Runners were read with all legs when they were added.
void clsAnalyzer::ReadWithout(const LegSet& untimed) {
  if (untimed.none() && read_without_.none()) return;
  for (const auto& runner : full_) ReadLegs(*runner->OtherData(), *runner, untimed);
  read_without_ = untimed;
  for (std::int32_t leg = 1; leg <= AnalyzerInternal::LegCount(*this); ++leg) {
    if (untimed[static_cast<std::size_t>(leg)]) AnalyzedGeneralInternal::SetUntimed(*general_, leg);
  }
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
  read_without_ = {};
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
  ReadWithout(FindUntimedLegs());
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
