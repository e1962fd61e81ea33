// Counting in UTF-16 code units, where a rule counts characters.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace keltrun {

std::u16string ToUtf16(std::string_view text);
/// An unpaired surrogate becomes U+FFFD.
std::string ToUtf8(std::u16string_view text);

/// The longest beginning of at most `units` code units that splits no surrogate pair: a pair that
/// does not fit whole goes to the piece that follows.
std::string_view Utf16Prefix(std::string_view text, std::size_t units);

}  // namespace keltrun
