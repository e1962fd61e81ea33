// Full width and half width, and texts as wide as a number of display columns.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace keltrun {

/// Which full-width characters `ToHalfWidth` converts. The default is what nearly every caller
/// wants: everything, letters keeping their case.
struct HalfWidth {
  bool Letters = true;
  bool Digits = true;
  bool Space = true;     // U+3000
  bool Symbols = true;   // U+FF01 to U+FF5E without the letters, digits and U+FF3C, and U+FFE5
  bool ToUpper = false;  // also ASCII letters
  bool ToLower = false;
};

/// Full-width characters as their ASCII counterparts; the full-width yen sign is a backslash, the
/// full-width backslash (U+FF3C) stays.
std::string ToHalfWidth(std::string_view text, const HalfWidth& fold = {});

/// The reverse: ASCII letters, digits, blank and symbols as full-width characters; the backslash is
/// the full-width yen sign.
std::string ToFullWidth(std::string_view text);

/// Without every blank, ideographic space and NUL: a name written with and without them is one.
std::string NormalizeName(std::string_view text);

/// Display columns of a text: its length in Shift-JIS bytes (a character that Shift-JIS lacks
/// counts 1).
std::size_t DisplayWidth(std::string_view text);

/// The characters in the columns StartColumn (from 1) to StartColumn + Width - 1. Characters above
/// U+00FF take two columns, others and half-width katakana one; a two-column character across
/// either edge becomes one blank. Nothing is padded.
std::string CutByWidth(std::string_view text, std::size_t StartColumn, std::size_t Width);

/// The text in a field of Width display columns: padded with blanks (in front when RightAlign), or
/// cut when it is wider. TrimFirst trims spaces before.
std::string PadByWidth(std::string_view text, std::size_t Width, bool RightAlign, bool TrimFirst);

}  // namespace keltrun
