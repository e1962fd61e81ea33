// What the readers of line-based texts share: lines, remarks, cells that hold times.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/io/remarks.h"
#include "keltrun2/text/datetime.h"

namespace keltrun {

/// A line of a text whose lines end at CR LF, CR or LF; a line break at the very end starts no
/// further line. A copy looks ahead while the original stays. Walking a text costs one pass
/// over it and no memory.
class LineCursor {
 public:
  /// At the first line.
  explicit LineCursor(std::string_view text);

  bool AtEnd() const { return at_end_; }
  /// The line without its break; "" at the end.
  std::string_view Line() const { return line_; }
  /// From 1.
  std::int32_t Number() const { return number_; }
  void Next();
  void Skip(std::int32_t lines);

 private:
  std::string_view text_;
  std::string_view line_;
  std::size_t next_ = 0;  // where the next line begins
  std::size_t feed_ = 0;  // the first LF from next_ on, or the text's size
  std::int32_t number_ = 0;
  bool at_end_ = false;
};

/// The remarks of one load. Of more than kMost only the number is kept.
class RemarkList {
 public:
  static constexpr std::size_t kMost = 1000;

  /// Adds: subject "cell": consequence. A long cell is cut; an empty one is left out.
  void Add(RemarkSeverity severity, std::int32_t line, std::int32_t column,
           std::string_view subject, std::string_view cell, std::string_view consequence);

  /// The remarks, a last one saying how many more there were.
  std::vector<LoadRemark> Take();

 private:
  std::vector<LoadRemark> remarks_;
  std::size_t more_ = 0;
};

/// Replaces the control characters of a text by blanks, TAB and line breaks aside, and returns
/// their number: a form feed, the end mark of old systems or a damaged byte is part of no name, and
/// the XML of a lap file could not hold it.
std::size_t BlankControlCharacters(std::string& text);

/// An elapsed time in any notation (NormalizeTimeText), never negative; nullopt for everything that
/// is none.
std::optional<DateTime> CellTime(std::string_view cell);

/// The same for a cell whose normalised text is known.
std::optional<DateTime> NormalizedTime(std::string_view normalized);

/// A date and time of a file header, full-width characters allowed.
std::optional<DateTime> HeaderDate(std::string_view text);

}  // namespace keltrun
