// Text inside HTML: everything that comes from data goes through here.
#pragma once

#include <string>
#include <string_view>

namespace keltrun {

/// Appends `text` with & < > and the double quote escaped.
void AppendEscaped(std::string& out, std::string_view text);

/// The same with every blank as &nbsp;.
void AppendEscapedNoBreak(std::string& out, std::string_view text);

std::string EscapeHtml(std::string_view text);

/// A file name for a link: every byte percent-encoded except A-Z a-z 0-9 - . _ ~ /.
std::string PercentEncode(std::string_view name);

}  // namespace keltrun
