#include "keltrun2/text/utf16.h"

#include "keltrun2/codec/utf8.h"

namespace keltrun {
namespace {

std::size_t Units(char32_t c) { return c > 0xFFFF ? 2 : 1; }

bool IsHighSurrogate(char16_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool IsLowSurrogate(char16_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

}  // namespace

std::u16string ToUtf16(std::string_view text) {
  std::u16string out;
  out.reserve(text.size());
  for (std::size_t pos = 0; pos < text.size();) {
    const char32_t c = NextCodePoint(text, pos);
    if (c > 0xFFFF) {
      out.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
    } else {
      out.push_back(static_cast<char16_t>(c));
    }
  }
  return out;
}

std::string ToUtf8(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    if (IsHighSurrogate(text[i]) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
      c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00u);
    }
    AppendUtf8(out, c);
  }
  return out;
}

std::string_view Utf16Prefix(std::string_view text, std::size_t units) {
  std::size_t used = 0;
  for (std::size_t pos = 0; pos < text.size();) {
    const std::size_t start = pos;
    used += Units(NextCodePoint(text, pos));
    if (used > units) return text.substr(0, start);
  }
  return text;
}

}  // namespace keltrun
