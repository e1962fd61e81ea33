// Walking UTF-8: the one decoder that every floor uses.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace keltrun {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

/// Reads the character at `pos` and moves `pos` behind it. Anything that is no valid UTF-8
/// (overlong forms, surrogates, values above U+10FFFF, cut sequences) reads as U+FFFD, one per
/// byte. Requires pos < text.size().
char32_t NextCodePoint(std::string_view text, std::size_t& pos);

/// Appends the UTF-8 form of `c`; surrogates and values above U+10FFFF are written as U+FFFD.
void AppendUtf8(std::string& out, char32_t c);

/// Offset of the first byte that is no valid UTF-8, or npos.
std::size_t FindInvalidUtf8(std::string_view text);

/// The text with U+FFFD in place of every byte that is no valid UTF-8.
std::string ValidUtf8(std::string_view text);

/// True when every byte is below 128.
bool IsAscii(std::string_view text);

}  // namespace keltrun
