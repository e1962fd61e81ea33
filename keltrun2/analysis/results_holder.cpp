#include "keltrun2/analysis/results_holder.h"

#include <algorithm>

#include "keltrun2/base/automation_error.h"
#include "keltrun2/model/length_and_climb.h"
#include "keltrun2/model/result_status.h"
#include "keltrun2/model/sort.h"
#include "keltrun2/text/file_names.h"
#include "keltrun2/text/letters.h"

namespace keltrun {
namespace {

bool Competes(const std::shared_ptr<clsLapData>& runner) {
  return runner->Status != RunnerStatus::kNotCompeting;
}

template <typename Order>
std::shared_ptr<clsLapData> At(Order& order, std::int32_t index) {
  return index >= 1 && index <= order.Count() ? order.Item(index) : nullptr;
}

}  // namespace

// Runners in result order, by ResultSortKey.
struct clsResultsHolder::Order : CclsSort<std::shared_ptr<clsLapData>> {};

clsResultsHolder::clsResultsHolder()
    : full_(std::make_unique<Order>()), selected_(std::make_unique<Order>()) {}

clsResultsHolder::~clsResultsHolder() = default;

std::int32_t clsResultsHolder::Count() const { return selected_->Count(); }

std::int32_t clsResultsHolder::FullSetCount() const { return full_->Count(); }

void clsResultsHolder::SelectNone() { selected_->Clear(); }

std::string clsResultsHolder::ClassInfo() const { return LengthAndClimb(Length, Climb, "\u2191"); }

void clsResultsHolder::AddLap(const std::shared_ptr<clsLapData>& LapObject) {
  CheckObject(LapObject, "clsResultsHolder.AddLap");
  if (LapObject->Result().empty()) return;
  const DateTime key = ResultSortKey(LapObject->Result());
  full_->Add(key, LapObject);
  selected_->Add(key, LapObject);
}

void clsResultsHolder::Clear() {
  full_->Clear();
  selected_->Clear();
  ClearHead();
}

std::shared_ptr<clsLapData> clsResultsHolder::Item(std::int32_t Index) const {
  return At(*selected_, Index);
}

std::shared_ptr<clsLapData> clsResultsHolder::FullSetItem(std::int32_t Index) const {
  return At(*full_, Index);
}

std::string clsResultsHolder::RankInDataSet(std::int32_t Index) const {
  CheckIndex(Index, 1, Count(), "clsResultsHolder.RankInDataSet");
  const auto& line = selected_->LineObject(Index);
  const bool has_rank = IsFinished(line.Item->Result()) && Competes(line.Item);
  return has_rank ? std::to_string(line.RankOrder) : "";
}

void clsResultsHolder::CalcRank() {
  if (Count() == 0) return;
  full_->CalcRankOrder(Competes);
  selected_->CalcRankOrder(Competes);
  const auto& lines = selected_->LineSet();
  const auto official = std::count_if(lines.begin(), lines.end(),
                                      [](const auto& line) { return !line.Item->Rank.empty(); });
  rank_is_available_ = official >= 2;
}

void clsResultsHolder::SelectItem(std::int32_t SerialNum) {
  for (const auto& line : full_->LineSet()) {
    if (line.Item->SerialNum() == SerialNum) selected_->Add(line.SortKey, line.Item);
  }
}

void clsResultsHolder::SelectAll() {
  selected_->Clear();
  for (const auto& line : full_->LineSet()) selected_->Add(line.SortKey, line.Item);
}

std::string clsResultsHolder::SafeFileName(std::string_view name) const {
  return RemoveUnsafeKeepingExtension(LowerAscii(name));
}

}  // namespace keltrun
