#include "keltrun2/io/csv_lines.h"

#include <algorithm>
#include <optional>

#include "keltrun2/text/letters.h"

namespace keltrun {
namespace {

constexpr std::string_view kLapFileMark = "$LAPFILE";
constexpr char kQuote = '"';

// Separates the cells of a line whose quotes are resolved. No cell contains it.
constexpr char kUnitSeparator = '\x1F';

// Copies a line, resolving the quotes of its cells.
class Unquoter {
 public:
  // `remarks` is null when the line is only looked at ahead of its turn.
  Unquoter(const LineCursor& line, char separator, RemarkList* remarks)
      : lines_(line),
        rest_(line.Line()),
        number_(line.Number()),
        separator_(separator),
        remarks_(remarks) {}

  void AppendTo(std::string& out) {
    for (std::int32_t column = 1;; ++column) {
      rest_ = WithoutLeadingSpaces(rest_);
      if (!rest_.starts_with(kQuote) || !AppendQuoted(out, column)) AppendPlain(out);
      if (rest_.empty()) return;
      out += kUnitSeparator;
      rest_.remove_prefix(1);
    }
  }

  // The last line that was read.
  const LineCursor& Lines() const { return lines_; }

 private:
  static std::string_view WithoutLeadingSpaces(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(' '), text.size()));
  }

  static void AppendPiece(std::string& out, std::string_view piece) {
    for (const char c : piece) out += c == kUnitSeparator ? ' ' : c;
  }

  // Up to the next separator.
  void AppendPlain(std::string& out) {
    const std::string_view cell = rest_.substr(0, rest_.find(separator_));
    AppendPiece(out, cell);
    rest_.remove_prefix(cell.size());
  }

  // False, with nothing appended, when the quote is an ordinary character.
  bool AppendQuoted(std::string& out, std::int32_t column) {
    const std::size_t start = out.size();
    LineCursor lines = lines_;
    const auto rest = AppendUpToQuote(out, lines);
    if (!rest) {
      out.resize(start);
      Remark(RemarkSeverity::kWarning, column, rest_,
             "the quote is not closed at the end of a cell and is read as a character");
      return false;
    }
    if (lines.Number() > lines_.Number()) {
      Remark(RemarkSeverity::kNote, column, std::string_view(out).substr(start),
             "continues to line " + std::to_string(lines.Number()) +
                 "; its line breaks are read as blanks");
    }
    lines_ = lines;
    rest_ = *rest;
    return true;
  }

  // Returns what follows the closing quote of the cell: nothing, or a separator and more cells.
  std::optional<std::string_view> AppendUpToQuote(std::string& out, LineCursor& lines) const {
    std::string_view text = rest_.substr(1);
    for (std::int32_t breaks = 0;;) {
      const std::string_view piece = text.substr(0, text.find(kQuote));
      AppendPiece(out, piece);
      text.remove_prefix(piece.size());
      if (text.empty()) {
        lines.Next();
        if (lines.AtEnd() || ++breaks > CsvLineCursor::kMostBreaks) return std::nullopt;
        out += ' ';
        text = lines.Line();
        continue;
      }
      text.remove_prefix(1);
      if (!text.starts_with(kQuote)) break;
      out += kQuote;
      text.remove_prefix(1);
    }
    text = WithoutLeadingSpaces(text);
    if (!text.empty() && text.front() != separator_) return std::nullopt;
    return text;
  }

  void Remark(RemarkSeverity severity, std::int32_t column, std::string_view cell,
              std::string_view consequence) {
    if (remarks_ != nullptr) remarks_->Add(severity, number_, column, "cell", cell, consequence);
  }

  LineCursor lines_;
  std::string_view rest_;
  std::int32_t number_;
  char separator_;
  RemarkList* remarks_;
};

std::ptrdiff_t KnownTitles(const std::optional<CsvHeader>& header) {
  if (!header) return 0;
  return std::count_if(header->titles.begin(), header->titles.end(),
                       [](const CsvTitle& title) { return title.column != CsvColumn::kOther; });
}

std::optional<CsvHeader> ReadHeader(const LineCursor& line, char separator,
                                    const CsvHeaderReader& headers) {
  if (line.Line().find(kQuote) == std::string_view::npos) {
    return headers.Read(TrimSpaces(line.Line()), separator);
  }
  std::string unquoted;
  Unquoter(line, separator, nullptr).AppendTo(unquoted);
  return headers.Read(TrimSpaces(unquoted), kUnitSeparator);
}

}  // namespace

CsvForm FindCsvForm(std::string_view text, const CsvHeaderReader& headers) {
  for (LineCursor line(text); !line.AtEnd(); line.Next()) {
    if (TrimSpaces(line.Line()).starts_with(kLapFileMark)) return {',', false};
    std::ptrdiff_t most = 0;
    CsvForm form;
    for (const char separator : {',', ';', '\t'}) {
      if (separator != ',' && line.Line().find(separator) == std::string_view::npos) continue;
      const std::ptrdiff_t known = KnownTitles(ReadHeader(line, separator, headers));
      if (known > most) form.separator = separator;
      most = std::max(most, known);
    }
    if (most > 0) return form;
  }
  return {};
}

CsvLineCursor::CsvLineCursor(std::string_view text, CsvForm form, RemarkList& remarks)
    : text_(text), form_(form), remarks_(remarks), lines_(text), quote_(text.find(kQuote)) {
  Read();
}

void CsvLineCursor::Next() {
  lines_.Next();
  Read();
}

// Searches the text only once for each quote.
bool CsvLineCursor::HasQuote() {
  if (!form_.has_quotes || quote_ == std::string_view::npos || lines_.AtEnd()) return false;
  const std::string_view line = lines_.Line();
  const auto begin = static_cast<std::size_t>(line.data() - text_.data());
  if (quote_ < begin) quote_ = text_.find(kQuote, begin);
  return quote_ != std::string_view::npos && quote_ < begin + line.size();
}

void CsvLineCursor::Read() {
  const std::string_view line = TrimSpaces(lines_.Line());
  line_ = {line, form_.separator, lines_.Number(), line};
  if (!HasQuote()) return;
  buffer_.clear();
  Unquoter unquoter(lines_, form_.separator, &remarks_);
  unquoter.AppendTo(buffer_);
  lines_ = unquoter.Lines();
  line_.text = TrimSpaces(buffer_);
  line_.separator = kUnitSeparator;
}

}  // namespace keltrun
