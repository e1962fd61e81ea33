// A result page as rows of cells, whether it has tables or preformatted lines.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace keltrun {

/// A cell of a table, or a piece of a preformatted line.
struct PageCell {
  std::string text;         // runs of blanks are one blank, lines are separated by LF
  std::int32_t column = 0;  // from 0; cells above that reach down are counted
  std::int32_t span = 1;    // the columns that it takes
  /// Of a preformatted line: the display columns where it begins and ends, from the end of the
  /// pieces in markup that the line begins with.
  std::int32_t start = 0, end = 0;
  bool italic = false;  // of a preformatted line
};

enum class RowKind : std::int32_t {
  kTable,    // of a table
  kMarked,   // a preformatted line that has elements
  kPlain,    // a preformatted line of characters only
  kText,     // a line of text outside both
  kHeading,  // the same, of a heading
};

struct PageRow {
  RowKind kind = RowKind::kTable;
  std::int32_t line = 0;  // of the page's text, from 1
  std::vector<PageCell> cells;
};

/// What a page says about itself.
struct PageFacts {
  std::string title;
  std::string generator;     // the program that wrote it
  bool has_script = false;   // its rows were in a script
  bool is_complete = false;  // false when the page is beyond the limits of WalkHtml
};

/// Calls a function with every row of a page that has some text or several cells, in the order of
/// the page. A row of an inner table comes before the row that it is in.
PageFacts ReadPageRows(std::string_view text, const std::function<void(PageRow&)>& on_row);

/// More cells of a row are not read.
inline constexpr std::int32_t kMostColumns = 1000;

}  // namespace keltrun
