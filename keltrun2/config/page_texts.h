// The texts of pages that are fixed in Japanese and have a resource in other languages.
#pragma once

#include <string>
#include <string_view>

namespace keltrun {

/// Whether texts are Japanese. Unlike IsJapaneseMode this does not ask for the user's locale.
bool HasJapaneseTexts();

/// `japanese`, which programs that read the pages expect, when texts are Japanese; otherwise the
/// text of the resource key, and `japanese` again when a host's own resource file does not have the
/// key.
std::string PageText(std::string_view key, std::string_view japanese);

}  // namespace keltrun
