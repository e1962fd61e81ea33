// The cells of the lines of separated texts, by position.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/io/text_reading.h"
#include "keltrun2/text/datetime.h"

namespace keltrun {

/// The cells of one line. One object serves all lines of a text, so that a line needs no memory of
/// its own.
class LineCells {
 public:
  /// No runner has that many. A line of a damaged file can consist of millions of separators.
  static constexpr std::size_t kMost = 4096;

  /// Takes the cells of a line; the views are valid as long as its text is. Every separator ends a
  /// cell. Cells from kMost on are dropped.
  void Split(std::string_view line, char separator);

  std::size_t Count() const { return cells_.size(); }
  /// Whether the line had more than kMost cells.
  bool IsCut() const { return is_cut_; }
  /// The cell without the blanks at its ends; empty after the last one.
  std::string_view operator[](std::size_t index) const;
  /// The cell with its blanks.
  std::string_view Raw(std::size_t index) const;
  /// The number of cells up to the last one that is not blank.
  std::size_t Used() const;
  /// The cells from `first` to before `end` as one text, with ", " between them.
  std::string Joined(std::size_t first, std::size_t end) const;

 private:
  std::vector<std::string_view> cells_;
  bool is_cut_ = false;
};

/// Counts the lines in which something happens, for one remark about all of them.
class LineCount {
 public:
  void Add(std::int32_t line) {
    if (count_ == 0) first_ = line;
    if (line != last_) ++count_;
    last_ = line;
  }
  /// Adds the remark `subject: consequence (COUNT lines)` at the first line, unless there is none.
  void Remark(RemarkSeverity severity, std::string_view subject, std::string_view consequence,
              RemarkList& remarks) const;

 private:
  std::size_t count_ = 0;
  std::int32_t first_ = 0;
  std::int32_t last_ = 0;
};

/// Whether a cell is written like a time: a digit or a minus sign first, then digits, colons and
/// decimals, with at least one colon.
bool IsWrittenAsTime(std::string_view cell);

/// Whether a cell is what programs write where there is no time: nothing, or only hyphens, colons
/// and points.
bool IsNoTimeMark(std::string_view cell);

/// The date of an event: year, month and day with hyphens, or in any form of HeaderDate.
std::optional<DateTime> EventDate(std::string_view text);

}  // namespace keltrun
