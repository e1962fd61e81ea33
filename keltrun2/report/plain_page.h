// The frame of pages that need neither scripts nor other files.
#pragma once

#include <string>
#include <string_view>

namespace keltrun {

/// Appends everything up to the contents of the body: UTF-8, the language of the texts, and a style
/// for phones and desktops, light and dark.
void AppendPlainHead(std::string& page, std::string_view title);
void AppendPlainFoot(std::string& page);

/// Whether AppendPlainHead began a page, whatever its language is.
bool IsPlainPage(std::string_view page);

}  // namespace keltrun
