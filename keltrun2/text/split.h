// Cutting separated texts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace keltrun {

/// The parts before and after the first occurrence of the separator, both trimmed of spaces.
/// Without one, the whole text as it is (trimmed only when `trim`) and the empty text. Views into
/// `text`.
std::pair<std::string_view, std::string_view> SplitAt(std::string_view text,
                                                      std::string_view separator,
                                                      bool trim = false);

/// A text cut into lines at CR LF, CR or LF. A line break at the very end starts no further line.
std::vector<std::string_view> SplitLines(std::string_view text);

/// The fields of a separated text, to be read, changed and joined again.
class CclsSplit {
 public:
  CclsSplit() = default;
  CclsSplit(std::string_view separator, std::string_view text) { SetExpression(separator, text); }

  /// Cuts the text at every occurrence of the separator; the empty text gives no parts.
  void SetExpression(std::string_view separator, std::string_view text);
  /// All parts joined with the separator.
  std::string Expression(std::string_view separator) const { return AfterValue(0, separator); }

  /// Parts index to Bound, untrimmed, joined with the separator; empty outside 0 to Bound.
  std::string AfterValue(std::int32_t index, std::string_view separator) const;

  /// The part, trimmed of spaces; empty outside 0 to Bound.
  std::string Value(std::int32_t index) const;
  /// Sets the part to the trimmed text. Above Bound the list grows to index with empty parts in
  /// between, but not for an empty text; below 0 nothing happens.
  void SetValue(std::int32_t index, std::string_view text);

  /// The last index, -1 without parts.
  std::int32_t Bound() const { return static_cast<std::int32_t>(parts_.size()) - 1; }

 private:
  std::vector<std::string> parts_;
};

}  // namespace keltrun
