// UTF-16, for rules that count characters in its code units.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace keltrun {

/// Converts UTF-8 to UTF-16. A byte that is not part of valid UTF-8 becomes U+FFFD.
std::u16string ToUtf16(std::string_view text);
/// Converts UTF-16 to UTF-8. An unpaired surrogate becomes U+FFFD.
std::string ToUtf8(std::u16string_view text);

/// The longest prefix of at most `units` code units that does not split a surrogate pair: a pair
/// that does not fit as a whole is left out.
std::string_view Utf16Prefix(std::string_view text, std::size_t units);

}  // namespace keltrun
