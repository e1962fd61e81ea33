// Texts from data as parts of lines.
#pragma once

#include <string>
#include <string_view>

namespace keltrun {

/// How the lines of written files end.
inline constexpr std::string_view kCrLf = "\r\n";

/// Appends the text with a blank for each CR, LF and TAB: it must not break its line.
void AppendInLine(std::string& out, std::string_view text);

/// The same with each comma as U+FF0C: in a file of comma-separated lines without quoting it must
/// not start a cell of its own.
void AppendCell(std::string& out, std::string_view text);

/// AppendInLine as a text of its own.
std::string InLine(std::string_view text);

}  // namespace keltrun
