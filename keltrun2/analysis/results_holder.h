// A result list.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "keltrun2/analysis/data_set.h"
#include "keltrun2/base/export.h"

namespace keltrun {

/// The runners of one or more classes in result order, with their ranks in the data set.
///
///     auto results = root->NewResultsHolder();
///     results->AddClass("M21A");
///     results->CalcRank();
///     for (int i = 1; i <= results->Count(); ++i)
///       print(results->RankInDataSet(i), results->Item(i)->RunnerName);
///
/// The full set has every runner that was added, the selected set those that are shown. Both are
/// always in result order. Ranks are valid until runners are added or selected.
class KELTRUN2_API clsResultsHolder : public DataSet {
 public:
  /// An empty set without a name.
  clsResultsHolder();
  ~clsResultsHolder() override;

  /// "5.2km ↑150m"; empty when the length is unknown.
  std::string ClassInfo() const;

  /// Adds a runner to both sets; one without a result is ignored. Raises object not set (91) for
  /// null.
  void AddLap(const std::shared_ptr<clsLapData>& LapObject) override;

  /// Removes everything, except that CutOffRank and RankIsAvalilable stay.
  void Clear();

  /// Number of runners in the selected set.
  std::int32_t Count() const;
  /// The record at a position of the selected set; null outside 1 to Count.
  std::shared_ptr<clsLapData> Item(std::int32_t Index) const;

  /// The rank at a position of the selected set; empty for a runner without a finish time, "0"
  /// before CalcRank. Raises subscript out of range (9) outside 1 to Count.
  std::string RankInDataSet(std::int32_t Index) const;

  /// Ranks both sets (1, 2, 2, 4) and checks whether the official ranks can be used. Does nothing
  /// when no runner is selected.
  void CalcRank();

  /// True when at least two selected runners have an official rank.
  bool RankIsAvalilable() const { return rank_is_available_; }

  /// Number of runners in the full set.
  std::int32_t FullSetCount() const;
  /// The record at a position of the full set; null outside 1 to FullSetCount.
  std::shared_ptr<clsLapData> FullSetItem(std::int32_t Index) const;

  /// Adds every runner with that serial number to the selected set, even if they are already in it.
  void SelectItem(std::int32_t SerialNum);
  /// Selects every runner of the full set once.
  void SelectAll();
  /// Empties the selected set.
  void SelectNone();

 private:
  struct Order;

  std::string SafeFileName(std::string_view name) const override;
  bool ComparesLegs() const override { return false; }

  std::unique_ptr<Order> full_;
  std::unique_ptr<Order> selected_;
  bool rank_is_available_ = false;
};

}  // namespace keltrun
