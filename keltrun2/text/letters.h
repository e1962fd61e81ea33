// Kinds of characters, and upper and lower case. Nothing here depends on the locale.
#pragma once

#include <string>
#include <string_view>

namespace keltrun {

/// Whether a character is one of "0" to "9".
constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }
/// Whether a text consists of digits only. True for the empty text.
bool IsDigits(std::string_view text);

bool Contains(std::string_view text, std::string_view part);

/// Converts ASCII letters to lower case; every other character is kept.
std::string LowerAscii(std::string_view text);
/// Converts ASCII letters to upper case; every other character is kept.
std::string UpperAscii(std::string_view text);

/// Converts every letter to upper case, including full-width and accented ones. Each character
/// becomes exactly one character.
std::string UpperAll(std::string_view text);

/// A form in which texts that differ only in letter case are equal (simple case folding). Width
/// matters: a full-width letter equals its other case but not its half-width form.
std::string FoldCase(std::string_view text);

/// The text without the spaces (U+0020 only) at both ends.
std::string_view TrimSpaces(std::string_view text);

}  // namespace keltrun
