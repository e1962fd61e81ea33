// The rows of separated texts that other programs write, some of whose cells are in quotes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/io/text_reading.h"

namespace keltrun {

/// Walks the rows of a text and splits them into cells. Cells in quotes follow RFC 4180 as they do
/// for CsvLineCursor, but no row is copied: a cell is a part of the text unless it has doubled
/// quotes or joins several lines. Programs that do not double the quotes of a text write
/// `"Team "Fox""`; such a cell loses its outer quotes.
class CsvRows {
 public:
  /// A row has no more cells than this; the others are left out with a remark.
  static constexpr std::size_t kMostCells = 2000;

  /// Before the first row. The text and the remarks must outlive the object.
  CsvRows(std::string_view text, char separator, RemarkList& remarks);

  /// Moves to the next row that is not blank; false when there is none.
  bool Next();
  /// The cells without the blanks, TABs and no-break spaces at their ends. Valid until Next.
  const std::vector<std::string_view>& Cells() const { return cells_; }
  /// The line of the row, from 1; the first one, when a cell joins several lines.
  std::int32_t Line() const { return number_; }

 private:
  bool IsBlank(std::string_view line) const;
  void Split();
  std::string_view PlainCell(std::string_view& rest) const;
  std::string_view QuotedCell(std::string_view& rest);
  bool JoinedCell(std::string_view& rest, std::string_view& cell);
  std::string_view BadlyQuotedCell(std::string_view& rest);
  bool Add(std::string_view cell);

  char separator_;
  RemarkList& remarks_;
  LineCursor lines_;
  bool started_ = false;
  std::int32_t number_ = 0;
  std::vector<std::string_view> cells_;
  std::deque<std::string> copies_;  // the cells of the row that are no part of the text
};

}  // namespace keltrun
