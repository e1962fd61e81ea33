// The sorter behind every order and every rank.
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

/// Keeps items in ascending order of a key and numbers them by rank. Among equal keys the item
/// added last comes first. Positions run from 1.
///
/// Items are collected as they come and put in order when they are first read after that, which
/// gives the same order as inserting each at its place.
template <typename ItemType, typename KeyType = double>
class CclsSort {
 public:
  struct CclsSortLine {
    KeyType SortKey;
    std::int32_t RankOrder;  // 0 until CalcRankOrder
    ItemType Item;
    std::size_t added;  // order of adding
  };

  void Add(KeyType SortKey, ItemType Item) {
    lines_.push_back({std::move(SortKey), 0, std::move(Item), added_++});
    sorted_ = false;
  }

  /// Also registers the line under a key of its own; a key in use adds nothing.
  void AddObjectByStringKey(std::string_view Key, ItemType Item, KeyType SortKey) {
    if (!by_key_.emplace(Key, added_).second) return;
    Add(std::move(SortKey), std::move(Item));
  }

  /// The rank of the line registered under the key; 0 for an unknown key.
  std::int32_t RankOrder(std::string_view Key) {
    const auto found = by_key_.find(std::string(Key));
    if (found == by_key_.end()) return 0;
    for (const CclsSortLine& line : LineSet()) {
      if (line.added == found->second) return line.RankOrder;
    }
    return 0;
  }

  std::int32_t Count() const { return static_cast<std::int32_t>(lines_.size()); }

  /// The line at a position; raises error 9 outside 1 to Count.
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

  /// Competition ranks: equal keys share the rank of the first of them (1, 2, 2, 4).
  void CalcRankOrder() {
    std::int32_t position = 0;
    const CclsSortLine* previous = nullptr;
    for (CclsSortLine& line : LineSet()) {
      ++position;
      const bool tied = previous != nullptr && previous->SortKey == line.SortKey;
      line.RankOrder = tied ? previous->RankOrder : position;
      previous = &line;
    }
  }

  /// Empties the sorter; memory is kept for the next use.
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
  std::unordered_map<std::string, std::size_t> by_key_;  // registered key to order of adding
  std::size_t added_ = 0;
  bool sorted_ = true;
};

}  // namespace keltrun
