// Single values as programs of many countries write them.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "keltrun2/codec/utf8.h"
#include "keltrun2/io/foreign/foreign_event.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

constexpr Milliseconds kMillisecondsPerMinute = 60 * kMillisecondsPerSecond;
constexpr std::size_t kMostParts = 3;
constexpr Milliseconds kLargestPart = 999'999;  // hours, minutes or seconds

// Kana, kanji, hangul, and half-width katakana.
bool IsEastAsian(char32_t c) {
  return (c >= 0x3041 && c <= 0x30FF) || (c >= 0x3400 && c <= 0x9FFF) ||
         (c >= 0xAC00 && c <= 0xD7A3) || (c >= 0xF900 && c <= 0xFAFF) ||
         (c >= 0xFF66 && c <= 0xFF9F) || (c >= 0x20000 && c <= 0x3FFFF);
}

bool HasEastAsianLetter(std::string_view text) {
  for (std::size_t pos = 0; pos < text.size();) {
    if (IsEastAsian(NextCodePoint(text, pos))) return true;
  }
  return false;
}

// Reads digits up to kLargestPart and removes them from the text.
std::optional<Milliseconds> TakeNumber(std::string_view& text) {
  if (text.empty() || !IsDigit(text.front())) return std::nullopt;
  Milliseconds number = 0;
  while (!text.empty() && IsDigit(text.front())) {
    number = number * 10 + (text.front() - '0');
    if (number > kLargestPart) return std::nullopt;
    text.remove_prefix(1);
  }
  return number;
}

// The milliseconds of the digits after a decimal sign; further digits are dropped.
std::optional<Milliseconds> Decimals(std::string_view digits) {
  Milliseconds value = 0;
  Milliseconds unit = 100;
  for (const char c : digits) {
    if (!IsDigit(c)) return std::nullopt;
    value += (c - '0') * unit;
    unit /= 10;
  }
  return value;
}

// One to three numbers with colons between them and decimals after the last one; the first can be
// any number of its unit.
struct TimeParts {
  std::array<Milliseconds, kMostParts> numbers{};
  std::size_t count = 0;
  Milliseconds decimals = 0;
};

std::optional<TimeParts> ReadParts(std::string_view text) {
  TimeParts parts;
  for (;;) {
    if (parts.count == kMostParts) return std::nullopt;
    const auto number = TakeNumber(text);
    if (!number || (parts.count > 0 && *number > 59)) return std::nullopt;
    parts.numbers[parts.count++] = *number;
    if (text.empty()) return parts;
    const char separator = text.front();
    text.remove_prefix(1);
    if (separator == ':') continue;
    if (separator != '.' && separator != ',') return std::nullopt;
    const auto decimals = Decimals(text);
    if (!decimals) return std::nullopt;
    parts.decimals = *decimals;
    return parts;
  }
}

// Removes blanks, TABs and no-break spaces at both ends.
std::string_view TrimAll(std::string_view text) {
  constexpr std::array<std::string_view, 3> kBlanks = {" ", "\t", "\u00A0"};
  const auto starts = [&](std::string_view blank) { return text.starts_with(blank); };
  const auto ends = [&](std::string_view blank) { return text.ends_with(blank); };
  for (auto blank = kBlanks.begin(); blank != kBlanks.end();) {
    blank = std::find_if(kBlanks.begin(), kBlanks.end(), starts);
    if (blank != kBlanks.end()) text.remove_prefix(blank->size());
  }
  for (auto blank = kBlanks.begin(); blank != kBlanks.end();) {
    blank = std::find_if(kBlanks.begin(), kBlanks.end(), ends);
    if (blank != kBlanks.end()) text.remove_suffix(blank->size());
  }
  return text;
}

}  // namespace

std::string ShownName(std::string_view given, std::string_view family) {
  const bool family_first = HasEastAsianLetter(given) || HasEastAsianLetter(family);
  std::string name(TrimAll(family_first ? family : given));
  const std::string_view second = TrimAll(family_first ? given : family);
  if (!name.empty() && !second.empty()) name += ' ';
  return name.append(second);
}

std::string NormalSex(std::string_view text) {
  // M, male, man; Herr, homme, hombre. F, female; W, woman; D, Dame; K, kvinna; N, nainen; Z, žena.
  constexpr std::string_view kMale = "MH";
  constexpr std::string_view kFemale = "FWDKNZ";
  const std::string_view trimmed = TrimAll(text);
  if (trimmed.size() == 1) {
    const std::string letter = UpperAscii(trimmed);
    if (kMale.find(letter) != std::string_view::npos) return "M";
    if (kFemale.find(letter) != std::string_view::npos) return "F";
  }
  const std::string word = LowerAscii(trimmed);
  if (word == "male" || word == "man" || word == "men") return "M";
  if (word == "female" || word == "woman" || word == "women") return "F";
  return std::string(trimmed);
}

std::optional<Milliseconds> ForeignTime(std::string_view text) {
  text = TrimAll(text);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  const auto parts = ReadParts(text);
  if (!parts) return std::nullopt;
  Milliseconds seconds = 0;
  for (std::size_t i = 0; i < parts->count; ++i) seconds = seconds * 60 + parts->numbers[i];
  const Milliseconds time = seconds * kMillisecondsPerSecond + parts->decimals;
  return negative ? -time : time;
}

std::optional<Milliseconds> ForeignClock(std::string_view text) {
  const auto parts = ReadParts(TrimAll(text));
  if (!parts || parts->count < 2) return std::nullopt;
  const Milliseconds minutes = parts->numbers[0] * 60 + parts->numbers[1];
  const Milliseconds seconds = parts->count == kMostParts ? parts->numbers[2] : 0;
  const Milliseconds time =
      minutes * kMillisecondsPerMinute + seconds * kMillisecondsPerSecond + parts->decimals;
  if (time >= kMillisecondsOfDay) return std::nullopt;
  return time;
}

std::int32_t Meters(std::string_view number, std::string_view unit) {
  constexpr double kMetersPerFoot = 0.3048;
  constexpr double kLongest = 1e6;
  std::string text(TrimAll(number));
  std::replace(text.begin(), text.end(), ',', '.');
  const auto value = NumericValue(text);
  if (!value) return 0;
  const std::string name = LowerAscii(TrimAll(unit));
  const double meters = *value * (name == "km" ? 1000 : name == "ft" ? kMetersPerFoot : 1);
  return meters > 0 && meters < kLongest ? static_cast<std::int32_t>(std::lround(meters)) : 0;
}

}  // namespace keltrun
