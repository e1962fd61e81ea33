// Reading and writing UTF-8. The whole library uses this one decoder.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace keltrun {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

/// Reads the character at `pos` and moves `pos` past it. Each byte that is not part of valid UTF-8
/// (overlong forms, surrogates, values above U+10FFFF, truncated sequences) is read as U+FFFD.
/// Requires pos < text.size().
char32_t NextCodePoint(std::string_view text, std::size_t& pos);

/// Appends the UTF-8 form of `c`; surrogates and values above U+10FFFF are written as U+FFFD.
void AppendUtf8(std::string& out, char32_t c);

/// The offset of the first byte that is not part of valid UTF-8, or npos.
std::size_t FindInvalidUtf8(std::string_view text);

/// The text with U+FFFD in place of every byte that is not part of valid UTF-8.
std::string ValidUtf8(std::string_view text);

/// True when every byte is below 128.
bool IsAscii(std::string_view text);

}  // namespace keltrun
