#include "keltrun2/text/numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "keltrun2/text/letters.h"

namespace keltrun {
namespace {

std::size_t SkipDigits(std::string_view text, std::size_t pos) {
  while (pos < text.size() && IsDigit(text[pos])) ++pos;
  return pos;
}

// The length of the number (sign, digits, point, exponent) at the start of `text`, 0 if there is
// none.
std::size_t NumberLength(std::string_view text) {
  std::size_t pos = 0;
  if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) ++pos;
  const std::size_t whole = pos;
  pos = SkipDigits(text, pos);
  std::size_t digits = pos - whole;
  if (pos < text.size() && text[pos] == '.') {
    const std::size_t fraction = pos + 1;
    const std::size_t end = SkipDigits(text, fraction);
    digits += end - fraction;
    pos = end;
  }
  if (digits == 0) return 0;
  if (pos < text.size() && (text[pos] == 'e' || text[pos] == 'E')) {
    std::size_t exponent = pos + 1;
    if (exponent < text.size() && (text[exponent] == '+' || text[exponent] == '-')) ++exponent;
    const std::size_t end = SkipDigits(text, exponent);
    if (end > exponent) pos = end;
  }
  return pos;
}

std::optional<double> Read(std::string_view number) {
  if (number.front() == '+') number.remove_prefix(1);
  double value = 0;
  const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
  if (result.ec == std::errc::result_out_of_range) return std::nullopt;
  return value;
}

struct NumberPattern {
  std::string_view before;
  std::string_view after;
  std::size_t whole_digits = 0;     // "0" before the point
  std::size_t fraction_always = 0;  // decimals that are always shown: up to the last "0"
  std::size_t fraction_most = 0;    // decimals that are shown at most: "0" and "#"
};

NumberPattern ParsePattern(std::string_view pattern) {
  NumberPattern parsed;
  const std::size_t start = pattern.find_first_of("#0");
  if (start == std::string_view::npos) return {pattern, {}};
  parsed.before = pattern.substr(0, start);
  std::size_t pos = start;
  for (; pos < pattern.size() && (pattern[pos] == '#' || pattern[pos] == '0'); ++pos) {
    parsed.whole_digits += pattern[pos] == '0' ? 1 : 0;
  }
  if (pos < pattern.size() && pattern[pos] == '.') {
    for (++pos; pos < pattern.size() && (pattern[pos] == '#' || pattern[pos] == '0'); ++pos) {
      parsed.fraction_most += 1;
      if (pattern[pos] == '0') parsed.fraction_always = parsed.fraction_most;
    }
  }
  parsed.after = pattern.substr(pos);
  return parsed;
}

// The value rounded half away from zero; it has to fit. std::round would be a call of the C
// library.
std::int64_t RoundHalfAway(double value) {
  const auto whole = static_cast<std::int64_t>(value);
  const double rest = value - static_cast<double>(whole);
  return whole + (rest >= 0.5 ? 1 : 0) - (rest <= -0.5 ? 1 : 0);
}

// Writes value / kScale, without zeros at the end, and returns where it ends. The scale, a power of
// ten, is a constant because dividing by one is several times faster.
template <std::uint64_t kScale>
char* WriteDecimal(char* to, std::uint64_t value) {
  to = std::to_chars(to, to + std::numeric_limits<std::uint64_t>::digits10 + 1, value / kScale).ptr;
  std::uint64_t fraction = value % kScale;
  if (fraction == 0) return to;
  *to = '.';
  std::ptrdiff_t last = 0;
  std::ptrdiff_t digit = 0;
  for (std::uint64_t scale = kScale; scale > 1; scale /= 10) ++digit;
  for (; digit > 0; --digit, fraction /= 10) {
    to[digit] = static_cast<char>('0' + fraction % 10);
    if (last == 0 && to[digit] != '0') last = digit;
  }
  return to + last + 1;
}

template <std::uint64_t kScale>
void AppendDecimal(std::string& out, double units) {
  // Halves are common (the mean of two laps), but a time in days represents them only up to its
  // last bits, so a value a hair short of a half is rounded as a half.
  constexpr double kHair = 1e-14;
  constexpr double kMostUnits = 9e15;  // beyond it a double has no fractions
  std::array<char, 320> buffer;        // the largest double has 309 digits
  char* end = buffer.data();
  const double padded = units + units * kHair;
  if (std::fabs(padded) < kMostUnits) {
    const std::int64_t rounded = RoundHalfAway(padded);
    if (rounded < 0) *end++ = '-';
    end = WriteDecimal<kScale>(end, static_cast<std::uint64_t>(std::abs(rounded)));
  } else {
    end = std::to_chars(end, buffer.data() + buffer.size(), units / static_cast<double>(kScale),
                        std::chars_format::fixed, 0)
              .ptr;
  }
  out.append(buffer.data(), end);
}

}  // namespace

std::optional<double> NumericValue(std::string_view text) {
  text = TrimSpaces(text);
  const std::size_t length = NumberLength(text);
  if (length == 0 || length != text.size()) return std::nullopt;
  return Read(text);
}

double LeadingNumber(std::string_view text) {
  text = TrimSpaces(text);
  const std::size_t length = NumberLength(text);
  return length == 0 ? 0 : Read(text.substr(0, length)).value_or(0);
}

std::int32_t RoundToLong(double value) {
  if (!std::isfinite(value)) return 0;
  double rounded = std::floor(value);
  const double rest = value - rounded;
  if (rest > 0.5 || (rest == 0.5 && std::fmod(rounded, 2) != 0)) rounded += 1;
  const bool fits = rounded >= std::numeric_limits<std::int32_t>::min() &&
                    rounded <= std::numeric_limits<std::int32_t>::max();
  return fits ? static_cast<std::int32_t>(rounded) : 0;
}

std::int32_t NumericLong(std::string_view text) {
  return RoundToLong(NumericValue(text).value_or(0));
}

std::int32_t LeadingLong(std::string_view text) {
  constexpr std::size_t kFewDigits = 9;  // cannot overflow
  if (!text.empty() && text.size() <= kFewDigits && SkipDigits(text, 0) == text.size()) {
    std::int32_t value = 0;
    for (const char c : text) value = value * 10 + (c - '0');
    return value;
  }
  return RoundToLong(LeadingNumber(text));
}

std::string FormatNumber(double value, std::string_view pattern) {
  constexpr double kLargest = 1e15;  // the digits of a larger double would not be exact
  constexpr std::size_t kMostDecimals = 9;
  const NumberPattern parsed = ParsePattern(pattern);
  if (!std::isfinite(value)) value = 0;
  const std::size_t decimals = std::min(parsed.fraction_most, kMostDecimals);
  const double scale = std::pow(10.0, static_cast<double>(decimals));
  const double magnitude = std::floor(std::min(std::fabs(value), kLargest / scale) * scale + 0.5);

  std::string digits = std::to_string(static_cast<std::uint64_t>(magnitude));
  if (digits.size() <= decimals) digits.insert(0, decimals + 1 - digits.size(), '0');
  std::string whole = digits.substr(0, digits.size() - decimals);
  std::string fraction = digits.substr(digits.size() - decimals);
  if (whole == "0") whole.clear();
  if (whole.size() < parsed.whole_digits) whole.insert(0, parsed.whole_digits - whole.size(), '0');
  while (fraction.size() > parsed.fraction_always && fraction.back() == '0') fraction.pop_back();

  std::string out(parsed.before);
  if (value < 0 && magnitude > 0) out.insert(0, "-");
  out += whole;
  if (!fraction.empty()) out.append(".").append(fraction);
  return out.append(parsed.after);
}

std::string FormatGeneral(double value) {
  if (!std::isfinite(value)) return "0";
  std::array<char, 400> buffer;  // the largest double has 309 digits
  const auto result =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed);
  return std::string(buffer.data(), result.ptr);
}

void AppendInteger(std::string& out, std::int64_t value) {
  if (value >= 0 && value <= 9) {
    out += static_cast<char>('0' + value);
    return;
  }
  std::array<char, 24> buffer;
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
  out.append(buffer.data(), end.ptr);
}

void AppendThousandths(std::string& out, double units) { AppendDecimal<1000>(out, units); }

void AppendMillionths(std::string& out, double units) { AppendDecimal<1000000>(out, units); }

}  // namespace keltrun
