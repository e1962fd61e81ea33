// Escaping for HTML. Every text that comes from data is escaped with these functions.
#pragma once

#include <string>
#include <string_view>

namespace keltrun {

/// Appends `text` with the characters & < > and " escaped.
void AppendEscaped(std::string& out, std::string_view text);

/// The same, also with &nbsp; in place of every blank.
void AppendEscapedNoBreak(std::string& out, std::string_view text);

/// The text that AppendEscaped appends.
std::string EscapeHtml(std::string_view text);

/// Encodes a file name for a link: every byte except A-Z a-z 0-9 - . _ ~ / is percent-encoded.
std::string PercentEncode(std::string_view name);

}  // namespace keltrun
