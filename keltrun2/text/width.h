// Full-width and half-width characters, and fitting texts into display columns.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace keltrun {

/// Which full-width characters `ToHalfWidth` converts. The default suits nearly every caller: all
/// of them, and letters keep their case.
struct HalfWidth {
  bool Letters = true;
  bool Digits = true;
  bool Space = true;     // U+3000
  bool Symbols = true;   // U+FFE5, and U+FF01 to U+FF5E except letters, digits and U+FF3C
  bool ToUpper = false;  // also ASCII letters
  bool ToLower = false;
};

/// Converts full-width characters to their ASCII counterparts. The full-width yen sign becomes a
/// backslash; the full-width backslash (U+FF3C) is kept.
std::string ToHalfWidth(std::string_view text, const HalfWidth& fold = {});

/// The reverse: converts ASCII letters, digits, blanks and symbols to full-width characters. The
/// backslash becomes the full-width yen sign.
std::string ToFullWidth(std::string_view text);

/// The text without blanks, ideographic spaces and NUL characters, so that a name is the same with
/// and without them.
std::string NormalizeName(std::string_view text);

/// The number of display columns of a text: its length in Shift-JIS bytes, where a character that
/// Shift-JIS does not have takes 1.
std::size_t DisplayWidth(std::string_view text);

/// The characters in the columns StartColumn (from 1) to StartColumn + Width - 1. Characters above
/// U+00FF take two columns, others and half-width katakana take one. A two-column character across
/// either edge becomes one blank. The result is not padded.
std::string CutByWidth(std::string_view text, std::size_t StartColumn, std::size_t Width);

/// The text in a field of Width display columns: padded with blanks (on the left if RightAlign), or
/// cut if it is wider. TrimFirst removes the spaces at both ends first.
std::string PadByWidth(std::string_view text, std::size_t Width, bool RightAlign, bool TrimFirst);

}  // namespace keltrun
