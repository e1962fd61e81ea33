// The lines of separated texts, some of whose cells are in quotes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "keltrun2/io/csv_header.h"
#include "keltrun2/io/text_reading.h"

namespace keltrun {

/// How a text separates its cells. The form is the same for all its lines.
struct CsvForm {
  char separator = ',';
  bool has_quotes = true;  // else quotation marks are ordinary characters
};

/// A line whose quotes are resolved.
struct CsvLine {
  std::string_view text;    // without blanks at its ends
  char separator = ',';     // of this line; another than the text's where it had quotes
  std::int32_t number = 0;  // from 1; the first, when a cell joins several lines
  std::string_view shown;   // the line as it is in the text, for remarks
};

/// The form of a text. The first header line decides: the separator (comma, semicolon or TAB) that
/// splits it into the most known titles is used. A lap file of the previous generation has commas
/// and no quotes.
CsvForm FindCsvForm(std::string_view text, const CsvHeaderReader& headers);

/// Walks the lines of a text. Cells in quotes follow RFC 4180: a doubled quote is one quote, and
/// line breaks inside are read as blanks. A quote is an ordinary character when it is not closed
/// within kMostBreaks line breaks, or when anything but blanks follows the closing quote before the
/// next separator. Both give remarks.
class CsvLineCursor {
 public:
  static constexpr std::int32_t kMostBreaks = 10;

  /// At the first line. The text and the remarks must outlive the cursor.
  CsvLineCursor(std::string_view text, CsvForm form, RemarkList& remarks);

  bool AtEnd() const { return lines_.AtEnd(); }
  /// Valid until Next.
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
