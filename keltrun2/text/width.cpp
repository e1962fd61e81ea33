#include "keltrun2/text/width.h"

#include "keltrun2/codec/encodings.h"
#include "keltrun2/codec/utf8.h"
#include "keltrun2/text/letters.h"

namespace keltrun {
namespace {

constexpr char32_t kIdeographicSpace = 0x3000;
constexpr char32_t kFullWidthOffset = 0xFEE0;  // full-width form minus ASCII character
constexpr char32_t kFullWidthYen = 0xFFE5;
constexpr char32_t kFullWidthBackslash = 0xFF3C;

bool Between(char32_t c, char32_t first, char32_t last) { return c >= first && c <= last; }

char32_t HalfWidthLetter(char32_t c, const HalfWidth& fold) {
  if (Between(c, 'A', 'Z')) return fold.ToLower ? c + 32 : c;
  return fold.ToUpper ? c - 32 : c;
}

char32_t HalfWidthCharacter(char32_t c, const HalfWidth& fold) {
  if (Between(c, 'A', 'Z') || Between(c, 'a', 'z')) return HalfWidthLetter(c, fold);
  if (c == kIdeographicSpace) return fold.Space ? U' ' : c;
  if (c == kFullWidthYen) return fold.Symbols ? U'\\' : c;
  if (!Between(c, 0xFF01, 0xFF5E) || c == kFullWidthBackslash) return c;
  const char32_t ascii = c - kFullWidthOffset;
  if (Between(ascii, 'A', 'Z') || Between(ascii, 'a', 'z')) {
    return fold.Letters ? HalfWidthLetter(ascii, fold) : c;
  }
  if (Between(ascii, '0', '9')) return fold.Digits ? ascii : c;
  return fold.Symbols ? ascii : c;
}

char32_t FullWidthCharacter(char32_t c) {
  if (c == ' ') return kIdeographicSpace;
  if (c == '\\') return kFullWidthYen;
  return Between(c, 0x21, 0x7E) ? c + kFullWidthOffset : c;
}

std::size_t Columns(char32_t c) { return c <= 0xFF || Between(c, 0xFF61, 0xFF9F) ? 1 : 2; }

}  // namespace

std::string ToHalfWidth(std::string_view text, const HalfWidth& fold) {
  if (!fold.ToUpper && !fold.ToLower && IsAscii(text)) return std::string(text);
  std::string out;
  out.reserve(text.size());
  for (std::size_t pos = 0; pos < text.size();) {
    AppendUtf8(out, HalfWidthCharacter(NextCodePoint(text, pos), fold));
  }
  return out;
}

std::string ToFullWidth(std::string_view text) {
  std::string out;
  out.reserve(text.size() * 3);
  for (std::size_t pos = 0; pos < text.size();) {
    AppendUtf8(out, FullWidthCharacter(NextCodePoint(text, pos)));
  }
  return out;
}

std::string NormalizeName(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t pos = 0; pos < text.size();) {
    const char32_t c = NextCodePoint(text, pos);
    if (c != ' ' && c != kIdeographicSpace && c != 0) AppendUtf8(out, c);
  }
  return out;
}

std::size_t DisplayWidth(std::string_view text) {
  if (IsAscii(text)) return text.size();
  std::size_t width = 0;
  for (std::size_t pos = 0; pos < text.size();) {
    width += static_cast<std::size_t>(ShiftJisLength(NextCodePoint(text, pos)));
  }
  return width;
}

std::string CutByWidth(std::string_view text, std::size_t StartColumn, std::size_t Width) {
  std::string out;
  const std::size_t end = StartColumn + Width;  // the first column after the span
  std::size_t column = 1;
  for (std::size_t pos = 0; pos < text.size() && column < end;) {
    const char32_t c = NextCodePoint(text, pos);
    const std::size_t last = column + Columns(c) - 1;
    if (column >= StartColumn && last < end) {
      AppendUtf8(out, c);
    } else if (last >= StartColumn) {  // across an edge of the span
      out += ' ';
    }
    column = last + 1;
  }
  return out;
}

std::string PadByWidth(std::string_view text, std::size_t Width, bool RightAlign, bool TrimFirst) {
  if (TrimFirst) text = TrimSpaces(text);
  const std::size_t width = DisplayWidth(text);
  if (width > Width) return CutByWidth(text, 1, Width);
  const std::string blanks(Width - width, ' ');
  return RightAlign ? blanks + std::string(text) : std::string(text) + blanks;
}

}  // namespace keltrun
