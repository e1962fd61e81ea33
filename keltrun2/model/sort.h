// The sorter that all orders and ranks are made with.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "keltrun2/base/automation_error.h"

namespace keltrun {

/// Sorts items in ascending order of a key and computes their ranks. Of items with equal keys, the
/// one added last comes first. Positions are counted from 1.
///
/// Items are sorted when they are read for the first time after an item was added. The order is the
/// same as if each item had been inserted in its place.
template <typename ItemType, typename KeyType = double>
class CclsSort {
 public:
  struct CclsSortLine {
    KeyType SortKey;
    std::int32_t RankOrder;  // 0 until CalcRankOrder
    ItemType Item;
    std::size_t added;  // position in the order of adding, from 0
  };

  void Add(KeyType SortKey, ItemType Item) {
    lines_.push_back({std::move(SortKey), 0, std::move(Item), added_++});
    sorted_ = false;
  }

  /// Adds an item and registers it under a name of its own, Key. If the name is in use, nothing is
  /// added.
  void AddObjectByStringKey(std::string_view Key, ItemType Item, KeyType SortKey) {
    if (!by_key_.emplace(Key, added_).second) return;
    Add(std::move(SortKey), std::move(Item));
  }

  /// The rank of the line registered under the name; 0 for an unknown name.
  std::int32_t RankOrder(std::string_view Key) {
    const auto found = by_key_.find(std::string(Key));
    if (found == by_key_.end()) return 0;
    for (const CclsSortLine& line : LineSet()) {
      if (line.added == found->second) return line.RankOrder;
    }
    return 0;
  }

  std::int32_t Count() const { return static_cast<std::int32_t>(lines_.size()); }

  /// The line at a position. Raises error 9 for a position outside 1 to Count.
  CclsSortLine& LineObject(std::int32_t Position) {
    CheckIndex(Position, 1, Count(), "CclsSort");
    return LineSet()[static_cast<std::size_t>(Position) - 1];
  }
  ItemType& Item(std::int32_t Position) { return LineObject(Position).Item; }
  const KeyType& SortKey(std::int32_t Position) { return LineObject(Position).SortKey; }

  /// All lines in order.
  std::vector<CclsSortLine>& LineSet() {
    if (!sorted_) SortLines();
    return lines_;
  }

  /// Sets competition ranks: lines with equal keys share the rank of the first of them (1, 2, 2,
  /// 4).
  void CalcRankOrder() {
    CalcRankOrder([](const ItemType&) { return true; });
  }
  /// The same among the items for which `competes` is true. The others get the rank 0.
  template <typename Competes>
  void CalcRankOrder(Competes competes) {
    std::int32_t position = 0;
    const CclsSortLine* previous = nullptr;
    for (CclsSortLine& line : LineSet()) {
      line.RankOrder = 0;
      if (!competes(line.Item)) continue;
      ++position;
      const bool tied = previous != nullptr && previous->SortKey == line.SortKey;
      line.RankOrder = tied ? previous->RankOrder : position;
      previous = &line;
    }
  }

  /// Removes all items. The memory is kept for the next use.
  void Clear() {
    lines_.clear();
    by_key_.clear();
    added_ = 0;
    sorted_ = true;
  }

 private:
  void SortLines() {
    std::sort(lines_.begin(), lines_.end(), [](const CclsSortLine& a, const CclsSortLine& b) {
      if (a.SortKey < b.SortKey) return true;
      if (b.SortKey < a.SortKey) return false;
      return a.added > b.added;
    });
    sorted_ = true;
  }

  std::vector<CclsSortLine> lines_;
  std::unordered_map<std::string, std::size_t> by_key_;  // registered name to `added` of the line
  std::size_t added_ = 0;
  bool sorted_ = true;
};

}  // namespace keltrun
