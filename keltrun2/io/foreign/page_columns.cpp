#include "keltrun2/io/foreign/page_columns.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <utility>

#include "keltrun2/io/foreign/page_texts.h"
#include "keltrun2/text/letters.h"

namespace keltrun {
namespace {

constexpr std::string_view kDigits = "0123456789";

std::int32_t* ColumnWithTitle(PageColumns& columns, ColumnTitle title) {
  switch (title) {
    case ColumnTitle::kPlace:
      return &columns.place;
    case ColumnTitle::kBib:
      return &columns.bib;
    case ColumnTitle::kName:
      return &columns.name;
    case ColumnTitle::kClub:
      return &columns.club;
    case ColumnTitle::kClass:
      return &columns.klass;
    case ColumnTitle::kClubOrClass:
      return &columns.other;
    case ColumnTitle::kTime:
      return &columns.total;
    case ColumnTitle::kCard:
      return &columns.card;
    case ColumnTitle::kNationality:
      return &columns.nationality;
    case ColumnTitle::kSex:
      return &columns.sex;
    case ColumnTitle::kAge:
      return &columns.age;
    case ColumnTitle::kStart:
      return &columns.start;
    case ColumnTitle::kBehind:
    case ColumnTitle::kUnused:
    case ColumnTitle::kNone:
      break;
  }
  return nullptr;
}

bool IsTimeCell(const PageCell& cell) { return !TimesIn(cell.text, false).IsEmpty(); }

// "1", "1.", "101".
bool IsNumberCell(const PageCell& cell) {
  const std::string_view text = cell.text;
  return IsPlaceCell(text.ends_with('.') ? text.substr(0, text.size() - 1) : text);
}

// Moves a status that one blank separates from the name before it into a cell of its own.
void SplitStatus(PageRow& row) {
  for (std::size_t i = 0; i < row.cells.size(); ++i) {
    const std::string& text = row.cells[i].text;
    const std::size_t blank = text.rfind(' ');
    if (blank == std::string::npos || !StatusOfPageWord(text.substr(blank + 1))) continue;
    PageCell status = row.cells[i];
    status.text = text.substr(blank + 1);
    row.cells[i].text.resize(blank);
    row.cells.insert(row.cells.begin() + static_cast<std::ptrdiff_t>(i) + 1, std::move(status));
    return;
  }
}

bool IsNamePart(const PageCell& cell) { return !IsTimeCell(cell) && !StatusOfPageWord(cell.text); }

// Joins the words of a name that begins with this cell: one blank is between them.
void JoinNameParts(PageRow& row, std::size_t first) {
  auto& cells = row.cells;
  while (first + 1 < cells.size() && IsNamePart(cells[first]) && IsNamePart(cells[first + 1]) &&
         cells[first + 1].start == cells[first].end + 1) {
    cells[first].text += " " + cells[first + 1].text;
    cells[first].end = cells[first + 1].end;
    cells.erase(cells.begin() + static_cast<std::ptrdiff_t>(first) + 1);
  }
}

}  // namespace

std::string_view TextAt(const PageRow& row, std::int32_t column) {
  if (column == kNoColumn) return {};
  for (const PageCell& cell : row.cells) {
    if (cell.column == column) return cell.text;
    if (cell.column > column) break;
  }
  return {};
}

std::optional<PageColumns> TitledColumns(const PageRow& row) {
  PageColumns columns;
  std::size_t count = 0;
  for (const PageCell& cell : row.cells) {
    std::int32_t* const column = ColumnWithTitle(columns, ColumnTitleOf(cell.text));
    if (column == nullptr) continue;
    ++count;
    if (*column == kNoColumn) *column = cell.column;
  }
  if (count < 2 || columns.name == kNoColumn) return std::nullopt;
  return columns;
}

PageColumns ColumnsOfRunner(const PageRow& row, std::int32_t first_label) {
  PageColumns columns;
  const auto name = std::find_if(row.cells.begin(), row.cells.end(),
                                 [](const PageCell& cell) { return IsPageName(cell.text); });
  columns.name = name == row.cells.end() ? 0 : name->column;
  columns.place = columns.name > 0 ? 0 : kNoColumn;
  columns.bib = columns.name > 1 ? 1 : kNoColumn;
  for (const PageCell& cell : row.cells) {
    if (cell.column <= columns.name || cell.text.empty()) continue;
    if (!StatusOfPageWord(cell.text) && !IsTimeCell(cell)) {
      if (columns.other == kNoColumn) columns.other = cell.column;
      continue;
    }
    // A time below the first control is the total only if there are more columns before the times
    // than before the labels.
    const bool has_more_columns = columns.other != kNoColumn || first_label <= columns.name;
    if (cell.column < first_label || has_more_columns) columns.total = cell.column;
    break;
  }
  return columns;
}

bool HasLetter(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           static_cast<unsigned char>(c) >= 0x80;
  });
}

bool IsPageName(std::string_view text) {
  return HasLetter(text) && TimesIn(text, false).IsEmpty() && !StatusOfPageWord(text);
}

std::optional<RunnerStatus> StatusOfTotal(std::string_view text) {
  if (const auto status = StatusOfPageWord(text)) return status;
  const bool lists_missing = text.size() > 1 && (text.front() == 'm' || text.front() == 'M') &&
                             IsDigit(text[1]) &&
                             text.find_first_not_of("0123456789,- ", 1) == std::string_view::npos;
  return lists_missing ? std::optional(RunnerStatus::kMissingPunch) : std::nullopt;
}

std::string_view PlaceIn(std::string_view text) {
  constexpr std::size_t kLongestPrefix = 1;
  constexpr std::size_t kLongestSuffix = 2;
  const std::size_t first = std::min(text.find_first_of(kDigits), text.size());
  const std::size_t end = std::min(text.find_first_not_of(kDigits, first), text.size());
  const bool is_place = first <= kLongestPrefix && text.size() - end <= kLongestSuffix;
  return is_place ? text.substr(first, end - first) : std::string_view();
}

void TakeTotal(std::string_view text, bool point_times, ForeignRunner& runner) {
  if (const auto status = StatusOfTotal(text)) {
    runner.status = status;
    return;
  }
  const auto times = TimesIn(text, point_times);
  if (!times.IsEmpty()) runner.time = *times.begin();
  for (std::size_t pos = 0; pos < text.size();) {
    const std::size_t end = std::min(text.find_first_of(" \n()", pos), text.size());
    if (const auto status = StatusOfTotal(text.substr(pos, end - pos))) runner.status = status;
    pos = end + 1;
  }
}

PageColumns PlainLines::Columns() {
  PageColumns columns;
  columns.place = 0;
  columns.bib = 1;
  columns.name = 2;
  columns.other = 3;
  columns.total = kFirstLabel - 1;
  return columns;
}

void PlainLines::Arrange(PageRow& row, std::size_t labels) {
  SplitStatus(row);
  auto& cells = row.cells;
  const std::size_t numbers = CountNumbers(row);
  JoinNameParts(row, numbers);
  std::size_t next = numbers;
  const PageColumns columns = Columns();
  std::int32_t text_column = columns.name;
  for (; next < cells.size() && IsNamePart(cells[next]); ++next) {
    if (name_start_ < 0) name_start_ = cells[next].start;
    cells[next].column = std::min(text_column++, columns.other);
  }
  ArrangeNumbers(row, numbers);
  const auto rest = cells.begin() + static_cast<std::ptrdiff_t>(next);
  const auto times = static_cast<std::size_t>(std::count_if(rest, cells.end(), IsTimeCell));
  const bool has_status = rest != cells.end() && !IsTimeCell(*rest);
  std::int32_t column = numbers > 0 || has_status || times > labels ? columns.total : kFirstLabel;
  for (auto cell = rest; cell != cells.end(); ++cell) cell->column = column++;
}

std::size_t PlainLines::CountNumbers(const PageRow& row) const {
  constexpr std::size_t kMost = 2;
  std::size_t count = 0;
  while (count < std::min(kMost, row.cells.size()) && IsNumberCell(row.cells[count])) {
    // A number where names begin is the beginning of a club's name.
    if (name_start_ >= 0 && row.cells[count].start >= name_start_) break;
    ++count;
  }
  return count;
}

void PlainLines::ArrangeNumbers(PageRow& row, std::size_t count) {
  const PageColumns columns = Columns();
  if (count == 0) return;
  PageCell& first = row.cells[0];
  first.column = columns.place;
  if (count == 2) {
    row.cells[1].column = columns.bib;
    place_end_ = first.end;
    bib_end_ = row.cells[1].end;
  } else if (bib_end_ > 0 && std::abs(first.end - bib_end_) < std::abs(first.end - place_end_)) {
    first.column = columns.bib;
  }
}

}  // namespace keltrun
