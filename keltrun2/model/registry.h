// An ordered list of objects, each under a key of its own.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace keltrun {

/// Holds classes or courses in order; positions run from 1.
template <typename T>
class Registry {
 public:
  using Pointer = std::shared_ptr<T>;

  const std::vector<Pointer>& Items() const { return items_; }
  std::int32_t Count() const { return static_cast<std::int32_t>(items_.size()); }

  /// The object under the key, or null.
  Pointer Find(const std::string& key) const {
    const auto found = by_key_.find(key);
    return found == by_key_.end() ? nullptr : found->second;
  }

  /// The object at a position, or null.
  Pointer At(std::int32_t position) const {
    if (position < 1 || position > Count()) return nullptr;
    return items_[static_cast<std::size_t>(position) - 1];
  }

  /// False when the key is taken; nothing is changed then.
  bool Add(const std::string& key, const Pointer& item) {
    if (!by_key_.emplace(key, item).second) return false;
    items_.push_back(item);
    return true;
  }

  /// Unknown keys are ignored.
  void Remove(const std::string& key) {
    const auto found = by_key_.find(key);
    if (found == by_key_.end()) return;
    items_.erase(std::find(items_.begin(), items_.end(), found->second));
    by_key_.erase(found);
  }

  /// Puts an object under another key, at its old position; the new key must be free or its own.
  void Rekey(const std::string& old_key, const std::string& new_key) {
    auto node = by_key_.extract(old_key);
    node.key() = new_key;
    by_key_.insert(std::move(node));
  }

  /// Takes over an order of the same objects.
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
