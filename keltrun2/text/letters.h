// Kinds of characters, upper and lower case. Never follows the process's locale.
#pragma once

#include <string>
#include <string_view>

namespace keltrun {

/// "0" to "9", and texts of nothing else: also the empty one.
constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsDigits(std::string_view text);

bool Contains(std::string_view text, std::string_view part);

/// "A" to "Z" lowered, or "a" to "z" raised; every other character is kept.
std::string LowerAscii(std::string_view text);
std::string UpperAscii(std::string_view text);

/// Every letter raised, full-width and accented ones included, one character to one.
std::string UpperAll(std::string_view text);

/// A form in which texts that differ only in letter case are equal (simple case folding). Width is
/// kept: a full-width letter equals its other case, not its half-width form.
std::string FoldCase(std::string_view text);

/// Without the spaces (U+0020 only) at both ends.
std::string_view TrimSpaces(std::string_view text);

}  // namespace keltrun
