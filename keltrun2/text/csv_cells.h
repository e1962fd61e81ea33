// Cells of comma-separated files with quotes (RFC 4180), for spreadsheets and scripts.
#pragma once

#include <string>
#include <string_view>

namespace keltrun {

/// Appends a text as a cell. It is in quotes when it contains the delimiter, a quote or a line
/// break. A text that begins with "=", "+", "-" or "@", also full-width, or with a TAB or line
/// break gets an apostrophe before it, because a spreadsheet would take it for a formula.
void AppendCsvText(std::string& out, std::string_view text, char delimiter);

}  // namespace keltrun
