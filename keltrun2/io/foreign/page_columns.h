// Which columns of a result page have what about a runner.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "keltrun2/io/foreign/foreign_event.h"
#include "keltrun2/io/foreign/html_page.h"
#include "keltrun2/model/runner_status.h"

namespace keltrun {

inline constexpr std::int32_t kNoColumn = -1;

/// The columns before the splits.
struct PageColumns {
  std::int32_t place = kNoColumn, bib = kNoColumn, name = kNoColumn, club = kNoColumn,
               klass = kNoColumn, total = kNoColumn, card = kNoColumn, nationality = kNoColumn,
               sex = kNoColumn, age = kNoColumn, start = kNoColumn;
  std::int32_t other = kNoColumn;  // a text after the name: the club or the class
};

/// The text in a column; empty when the row has none.
std::string_view TextAt(const PageRow& row, std::int32_t column);

/// The columns by their titles; nullopt for a row that is no row of titles.
std::optional<PageColumns> TitledColumns(const PageRow& row);

/// The columns that the row of a runner shows: a name, before it a place and a start number, after
/// it perhaps a text, and the total time or a status. `first_label` is the column of the first
/// control.
PageColumns ColumnsOfRunner(const PageRow& row, std::int32_t first_label);

/// Whether a text has a letter of any script.
bool HasLetter(std::string_view text);

/// Whether a text can be the name of a runner or club: letters, but no time and no status.
bool IsPageName(std::string_view text);

/// The status in a column of total times, where British programs write "m3,5" when controls 3 and 5
/// are missing.
std::optional<RunnerStatus> StatusOfTotal(std::string_view text);

/// The number of a place ("1", "1.", "1st", "=3"); empty for another text.
std::string_view PlaceIn(std::string_view text);

/// Takes the total time, the status, or both. `point_times` as in TimesIn.
void TakeTotal(std::string_view text, bool point_times, ForeignRunner& runner);

/// Preformatted lines without markup. Blanks are all that separates their cells, so a cell that is
/// missing is only seen from where the others begin and end.
class PlainLines {
 public:
  static constexpr std::int32_t kFirstLabel = 5;  // the columns before it are those of Columns
  static PageColumns Columns();

  /// Gives the cells of a runner's line their columns. The first line tells where things are.
  /// `labels` is the largest number of labels in a row.
  void Arrange(PageRow& row, std::size_t labels);

 private:
  std::size_t CountNumbers(const PageRow& row) const;
  void ArrangeNumbers(PageRow& row, std::size_t count);

  std::int32_t place_end_ = 0, bib_end_ = 0, name_start_ = -1;
};

}  // namespace keltrun
