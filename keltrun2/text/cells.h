// Putting texts from data into the lines of a file.
#pragma once

#include <string>
#include <string_view>

namespace keltrun {

/// The line ending of written files.
inline constexpr std::string_view kCrLf = "\r\n";

/// Appends the text with a blank in place of each CR, LF and TAB, so that it does not break the
/// line.
void AppendInLine(std::string& out, std::string_view text);

/// The same, also with U+FF0C in place of each comma. In a file of comma-separated lines without
/// quoting, a comma would start another cell.
void AppendCell(std::string& out, std::string_view text);

/// The text that AppendInLine appends.
std::string InLine(std::string_view text);

}  // namespace keltrun
