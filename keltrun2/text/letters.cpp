#include "keltrun2/text/letters.h"

#include <locale.h>
#include <wctype.h>

#include <algorithm>

#include "keltrun2/codec/utf8.h"

namespace keltrun {
namespace {

constexpr char LowerChar(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }
constexpr char UpperChar(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; }

template <typename Map>
std::string MapBytes(std::string_view text, Map map) {
  std::string out(text);
  for (char& c : out) c = map(c);
  return out;
}

template <typename Map>
std::string MapCharacters(std::string_view text, Map map) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t pos = 0; pos < text.size();) AppendUtf8(out, map(NextCodePoint(text, pos)));
  return out;
}

locale_t Unicode() {
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  return locale;
}

char32_t Upper(char32_t c) {
  return static_cast<char32_t>(towupper_l(static_cast<wint_t>(c), Unicode()));
}
char32_t Lower(char32_t c) {
  return static_cast<char32_t>(towlower_l(static_cast<wint_t>(c), Unicode()));
}

}  // namespace

bool IsDigits(std::string_view text) { return std::all_of(text.begin(), text.end(), IsDigit); }

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

std::string LowerAscii(std::string_view text) { return MapBytes(text, LowerChar); }
std::string UpperAscii(std::string_view text) { return MapBytes(text, UpperChar); }

std::string UpperAll(std::string_view text) {
  return IsAscii(text) ? UpperAscii(text) : MapCharacters(text, Upper);
}

std::string FoldCase(std::string_view text) {
  if (IsAscii(text)) return LowerAscii(text);
  return MapCharacters(text, [](char32_t c) {
    // The dotted capital I and the dotless i have no other case than themselves.
    const bool turkish = c == 0x130 || c == 0x131;
    return turkish ? c : Lower(Upper(c));
  });
}

std::string_view TrimSpaces(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace keltrun
