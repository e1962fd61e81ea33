#include "keltrun2/io/foreign/csv_rows.h"

#include <algorithm>
#include <string>

#include "keltrun2/io/csv_lines.h"

namespace keltrun {
namespace {

constexpr char kQuote = '"';

// Removes blanks, TABs and no-break spaces at both ends.
std::string_view Trimmed(std::string_view cell) {
  constexpr std::string_view kNoBreakSpace = "\u00A0";
  for (;;) {
    if (cell.starts_with(' ') || cell.starts_with('\t')) {
      cell.remove_prefix(1);
    } else if (cell.ends_with(' ') || cell.ends_with('\t')) {
      cell.remove_suffix(1);
    } else if (cell.starts_with(kNoBreakSpace)) {
      cell.remove_prefix(kNoBreakSpace.size());
    } else if (cell.ends_with(kNoBreakSpace)) {
      cell.remove_suffix(kNoBreakSpace.size());
    } else {
      return cell;
    }
  }
}

std::string_view WithoutLeadingSpaces(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(' '), text.size()));
}

// What stands inside the quotes at the start of a text, and what follows them.
struct Quoted {
  std::string_view inside;
  std::string_view rest;
  bool has_doubled = false;
  bool is_closed = false;
};

// `text` begins after the opening quote.
Quoted ReadQuoted(std::string_view text) {
  Quoted quoted;
  for (std::size_t at = text.find(kQuote);; at = text.find(kQuote, at + 2)) {
    quoted.inside = text.substr(0, at);
    if (at == std::string_view::npos) return quoted;
    quoted.rest = text.substr(at + 1);
    quoted.is_closed = !quoted.rest.starts_with(kQuote);
    if (quoted.is_closed) return quoted;
    quoted.has_doubled = true;
  }
}

void AppendUndoubled(std::string& out, std::string_view text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    out += text[at];
    if (text[at] == kQuote) ++at;
  }
}

}  // namespace

CsvRows::CsvRows(std::string_view text, char separator, RemarkList& remarks)
    : separator_(separator), remarks_(remarks), lines_(text) {}

bool CsvRows::IsBlank(std::string_view line) const {
  return std::all_of(line.begin(), line.end(),
                     [this](char c) { return c == separator_ || c == ' ' || c == '\t'; });
}

bool CsvRows::Next() {
  if (started_) lines_.Next();
  started_ = true;
  while (!lines_.AtEnd() && IsBlank(lines_.Line())) lines_.Next();
  if (lines_.AtEnd()) return false;
  number_ = lines_.Number();
  cells_.clear();
  copies_.clear();
  Split();
  return true;
}

// False when the row is full.
bool CsvRows::Add(std::string_view cell) {
  if (cells_.size() == kMostCells) {
    remarks_.Add(RemarkSeverity::kWarning, number_, static_cast<std::int32_t>(kMostCells + 1),
                 "cell", cell, "a row has no more than 2,000 cells; the rest is not read");
    return false;
  }
  cells_.push_back(cell);
  return true;
}

void CsvRows::Split() {
  for (std::string_view rest = lines_.Line();;) {
    while (rest.starts_with(' ')) rest.remove_prefix(1);
    const std::string_view cell = rest.starts_with(kQuote) ? QuotedCell(rest) : PlainCell(rest);
    if (!Add(cell) || rest.empty()) return;
    rest.remove_prefix(1);
  }
}

// Leaves `rest` at the separator that follows the cell, or empty. Most cells are so short that a
// search by the library would take longer.
std::string_view CsvRows::PlainCell(std::string_view& rest) const {
  std::size_t size = 0;
  while (size < rest.size() && rest[size] != separator_) ++size;
  const std::string_view cell = rest.substr(0, size);
  rest.remove_prefix(size);
  return Trimmed(cell);
}

// The same for a cell that begins with a quote.
std::string_view CsvRows::QuotedCell(std::string_view& rest) {
  const Quoted quoted = ReadQuoted(rest.substr(1));
  if (!quoted.is_closed) {
    std::string_view cell;
    return JoinedCell(rest, cell) ? cell : BadlyQuotedCell(rest);
  }
  const std::string_view after = WithoutLeadingSpaces(quoted.rest);
  if (!after.empty() && after.front() != separator_) return BadlyQuotedCell(rest);
  rest = after;
  if (!quoted.has_doubled) return Trimmed(quoted.inside);
  AppendUndoubled(copies_.emplace_back(), quoted.inside);
  return Trimmed(copies_.back());
}

// Reads a cell whose closing quote stands in a later line.
bool CsvRows::JoinedCell(std::string_view& rest, std::string_view& cell) {
  std::string joined;
  AppendUndoubled(joined, rest.substr(1));
  LineCursor lines = lines_;
  for (std::int32_t breaks = 0; breaks < CsvLineCursor::kMostBreaks; ++breaks) {
    lines.Next();
    if (lines.AtEnd()) return false;
    const Quoted quoted = ReadQuoted(lines.Line());
    joined += ' ';
    AppendUndoubled(joined, quoted.inside);
    if (!quoted.is_closed) continue;
    const std::string_view after = WithoutLeadingSpaces(quoted.rest);
    if (!after.empty() && after.front() != separator_) return false;
    cell = Trimmed(copies_.emplace_back(std::move(joined)));
    remarks_.Add(
        RemarkSeverity::kNote, number_, static_cast<std::int32_t>(cells_.size() + 1), "cell", cell,
        "continues to line " + std::to_string(lines.Number()) + "; its line breaks are blanks");
    lines_ = lines;
    rest = after;
    return true;
  }
  return false;
}

// Quotes inside that are not doubled are characters; the outer ones are not part of the text.
std::string_view CsvRows::BadlyQuotedCell(std::string_view& rest) {
  const std::string_view cell = PlainCell(rest);
  if (cell.size() >= 2 && cell.ends_with(kQuote)) return Trimmed(cell.substr(1, cell.size() - 2));
  remarks_.Add(RemarkSeverity::kWarning, number_, static_cast<std::int32_t>(cells_.size() + 1),
               "cell", cell, "the quote is not closed at the end of the cell and is a character");
  return cell;
}

}  // namespace keltrun
