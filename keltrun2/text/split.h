// Splitting texts at separators.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace keltrun {

/// The parts before and after the first occurrence of the separator, both trimmed of spaces. If the
/// separator does not occur, the whole text (trimmed only if `trim` is true) and an empty text. The
/// results are views into `text`.
std::pair<std::string_view, std::string_view> SplitAt(std::string_view text,
                                                      std::string_view separator,
                                                      bool trim = false);

/// Splits a text into lines at CR LF, CR or LF. A line break at the very end does not start another
/// line.
std::vector<std::string_view> SplitLines(std::string_view text);

/// The fields of a separated text, to be read, changed and joined again.
class CclsSplit {
 public:
  CclsSplit() = default;
  CclsSplit(std::string_view separator, std::string_view text) { SetExpression(separator, text); }

  /// Splits the text at every occurrence of the separator. The empty text has no parts.
  void SetExpression(std::string_view separator, std::string_view text);
  /// All parts joined with the separator.
  std::string Expression(std::string_view separator) const { return AfterValue(0, separator); }

  /// The parts from `index` to Bound, untrimmed, joined with the separator. Empty if the index is
  /// outside 0 to Bound.
  std::string AfterValue(std::int32_t index, std::string_view separator) const;

  /// The part, trimmed of spaces. Empty if the index is outside 0 to Bound.
  std::string Value(std::int32_t index) const;
  /// Sets the part to the trimmed text. If the index is above Bound, the list grows and the parts
  /// in between are empty, except that an empty text does not make the list grow. An index below 0
  /// is ignored.
  void SetValue(std::int32_t index, std::string_view text);

  /// The last index, -1 if there are no parts.
  std::int32_t Bound() const { return static_cast<std::int32_t>(parts_.size()) - 1; }

 private:
  std::vector<std::string> parts_;
};

}  // namespace keltrun
