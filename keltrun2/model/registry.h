// An ordered list of objects with unique keys.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace keltrun {

/// The classes or courses of an event, in order. Positions are counted from 1.
template <typename T>
class Registry {
 public:
  using Pointer = std::shared_ptr<T>;

  const std::vector<Pointer>& Items() const { return items_; }
  std::int32_t Count() const { return static_cast<std::int32_t>(items_.size()); }

  /// The object with this key, or null.
  Pointer Find(const std::string& key) const {
    const auto found = by_key_.find(key);
    return found == by_key_.end() ? nullptr : found->second;
  }

  /// The object at a position, or null.
  Pointer At(std::int32_t position) const {
    if (position < 1 || position > Count()) return nullptr;
    return items_[static_cast<std::size_t>(position) - 1];
  }

  /// Adds an object at the end. If the key is taken, returns false and changes nothing.
  bool Add(const std::string& key, const Pointer& item) {
    if (!by_key_.emplace(key, item).second) return false;
    items_.push_back(item);
    return true;
  }

  /// Removes the object with this key; an unknown key is ignored.
  void Remove(const std::string& key) {
    const auto found = by_key_.find(key);
    if (found == by_key_.end()) return;
    items_.erase(std::find(items_.begin(), items_.end(), found->second));
    by_key_.erase(found);
  }

  /// Changes the key of an object, which keeps its position. The new key must not belong to another
  /// object.
  void Rekey(const std::string& old_key, const std::string& new_key) {
    auto node = by_key_.extract(old_key);
    node.key() = new_key;
    by_key_.insert(std::move(node));
  }

  /// Replaces the list by the same objects in another order.
  void Reorder(std::vector<Pointer> items) { items_ = std::move(items); }

  void Clear() {
    items_.clear();
    by_key_.clear();
  }

 private:
  std::vector<Pointer> items_;
  std::unordered_map<std::string, Pointer> by_key_;
};

}  // namespace keltrun
