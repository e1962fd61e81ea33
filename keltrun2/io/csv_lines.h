// The lines of texts whose cells stand between separators, some of them in quotes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "keltrun2/io/csv_header.h"
#include "keltrun2/io/text_reading.h"

namespace keltrun {

/// How a text separates its cells: the same from its first line to its last.
struct CsvForm {
  char separator = ',';
  bool has_quotes = true;  // else quotation marks are characters like others
};

/// A line whose cells are separated without quotes.
struct CsvLine {
  std::string_view text;    // without blanks at its ends
  char separator = ',';     // of this line: not the text's where it had quotes
  std::int32_t number = 0;  // from 1; of several lines that a cell joins, the first
  std::string_view shown;   // the line as it stands in the text, for remarks
};

/// The form of a text: that of its first header line, by the separator (comma, semicolon or TAB)
/// that gives it the most known titles. A lap file of the previous generation has commas and no
/// quotes.
CsvForm FindCsvForm(std::string_view text, const CsvHeaderReader& headers);

/// Walks the lines of a text. Cells in quotes follow RFC 4180: a doubled quote stands for one, and
/// line breaks inside count as blanks. A quote that nothing closes within kMostBreaks lines, or
/// with more than blanks between its end and the next separator, is a character like others.
/// Remarks tell of both.
class CsvLineCursor {
 public:
  static constexpr std::int32_t kMostBreaks = 10;

  /// At the first line. The text and the remarks must outlive the cursor.
  CsvLineCursor(std::string_view text, CsvForm form, RemarkList& remarks);

  bool AtEnd() const { return lines_.AtEnd(); }
  /// Its Text is valid until Next.
  const CsvLine& Line() const { return line_; }
  void Next();

 private:
  bool HasQuote();
  void Read();

  std::string_view text_;
  CsvForm form_;
  RemarkList& remarks_;
  LineCursor lines_;
  std::size_t quote_;   // the first quote from the current line on, or npos
  std::string buffer_;  // the line with its quotes resolved
  CsvLine line_;
};

}  // namespace keltrun
