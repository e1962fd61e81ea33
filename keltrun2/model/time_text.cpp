#include "keltrun2/model/time_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "keltrun2/model/time_values.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"
#include "keltrun2/text/split.h"
#include "keltrun2/text/utf16.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

constexpr DateTime kOneSecond = 1.0 / 86400;
constexpr DateTime kOneMinute = 1.0 / 1440;
constexpr DateTime kTenMinutes = 1.0 / 144;
constexpr DateTime kOneHour = 1.0 / 24;
constexpr long long kDaySeconds = 86400;

void AppendNumber(std::string& out, long long value) {
  std::array<char, 24> buffer;
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
  out.append(buffer.data(), result.ptr);
}

void AppendMinutesSeconds(std::string& out, long long seconds) {
  AppendTwoDigits(out, static_cast<int>(seconds / 60 % 60));
  out += ':';
  AppendTwoDigits(out, static_cast<int>(seconds % 60));
}

void AppendTotalHours(std::string& out, DateTime value) {
  const long long seconds = WholeSeconds(value);
  AppendNumber(out, seconds / 3600);
  out += ':';
  AppendMinutesSeconds(out, seconds);
}

void AppendFormattedTime(std::string& out, DateTime value, std::string_view pattern) {
  const bool is_plain = value >= 0 && pattern == "h\\:nn\\:ss" && WholeSeconds(value) < kDaySeconds;
  if (value >= 1 || is_plain) {
    AppendTotalHours(out, value);
  } else {
    AppendDateTime(out, value, pattern);
  }
}

// Whether a text matches a pattern in which "#" stands for a digit and every other character for
// itself.
bool IsLike(std::string_view text, std::string_view pattern) {
  return text.size() == pattern.size() &&
         std::equal(text.begin(), text.end(), pattern.begin(),
                    [](char c, char p) { return p == '#' ? IsDigit(c) : c == p; });
}

bool IsHourPattern(std::string_view pattern) {
  return pattern == "hh\\:nn\\:ss" || pattern == "hh:nn:ss" || pattern == "h\\:nn\\:ss" ||
         pattern == "h:nn:ss";
}

// Whether a number can be a date-time number: 100-01-01 to the end of 9999-12-31.
bool IsDateNumber(DateTime value) {
  static const DateTime first = *DateNumber(100, 1, 1);
  static const DateTime end = *DateNumber(9999, 12, 31) + 1;
  return value >= first && value < end;
}

// Formats a text with a pattern. A bare number is taken as a number of days, other texts are read
// as a date or time. A text that is neither, such as a number beyond the last date, is returned
// unchanged.
std::string FormatText(std::string_view text, std::string_view pattern) {
  if (const auto number = NumericValue(text)) {
    return IsDateNumber(*number) ? FormatDateTime(*number, pattern) : std::string(text);
  }
  if (const auto value = ParseDateTime(text)) return FormatDateTime(*value, pattern);
  return std::string(text);
}

// Formats three pairs of characters, placed as in "hh:mm:ss". They are not read as a time of day,
// so hours of 24 and more are possible.
std::string FormatEightCharacters(const std::u16string& text, std::string_view pattern) {
  const std::string hour = ToUtf8(text.substr(0, 2));
  const std::string rest = ":" + ToUtf8(text.substr(3, 2)) + ":" + ToUtf8(text.substr(6, 2));
  if (pattern == "hh\\:nn\\:ss" || pattern == "hh:nn:ss") return hour + rest;
  if (pattern == "h\\:nn\\:ss" || pattern == "h:nn:ss") {
    return (hour.starts_with('0') ? hour.substr(1) : hour) + rest;
  }
  return FormatText(hour + rest, pattern);
}

// The last step of normalization. Eight characters are three pairs only if they are separated as
// pairs; a point before the last two begins a fraction.
std::string FinishText(std::string_view text, std::string_view pattern) {
  const std::u16string units = ToUtf16(text);
  if (units.size() != 8) return FormatText(text, pattern);
  const bool pairs = (units[2] == u':' || units[2] == u'.') && units[5] == u':';
  return pairs ? FormatEightCharacters(units, pattern) : std::string(text);
}

std::string WithColons(std::string_view text) {
  std::string out(text);
  std::replace(out.begin(), out.end(), '.', ':');
  return out;
}

// Formats minutes and seconds, divided by a separator. 60 minutes and more are carried into hours.
std::string CarryMinutes(std::string_view text, char separator, std::string_view pattern) {
  const std::size_t at = text.find(separator);
  const std::int32_t minutes = NumericLong(text.substr(0, at));
  const std::int32_t seconds = NumericLong(text.substr(at + 1));
  return FormatTime((minutes * 60 + seconds) / kSecondsPerDay, pattern, false);
}

bool HasSixtyMinutes(std::string_view text) { return NumericLong(text.substr(0, 2)) >= 60; }

std::string NormalizeElapsedNumber(const std::string& s, std::string_view pattern) {
  if (IsLike(s, "##.##") && HasSixtyMinutes(s)) return CarryMinutes(s, '.', pattern);
  if (IsLike(s, "##.##")) return FinishText("00:" + WithColons(s), pattern);
  if (IsLike(s, "###.##")) return CarryMinutes(s, '.', pattern);
  if (IsLike(s, "#")) return FinishText("00:00:0" + s, pattern);
  if (IsLike(s, "##")) return FinishText("00:00:" + s, pattern);
  if (IsLike(s, "###")) return FinishText("00:0" + s.substr(0, 1) + ":" + s.substr(1), pattern);
  if (IsLike(s, "####")) {
    const std::string time = s.substr(0, 2) + ":" + s.substr(2);
    return HasSixtyMinutes(s) ? CarryMinutes(time, ':', pattern)
                              : FinishText("00:" + time, pattern);
  }
  if (IsLike(s, "#####")) {
    return FinishText("0" + s.substr(0, 1) + ":" + s.substr(1, 2) + ":" + s.substr(3), pattern);
  }
  if (IsLike(s, "######")) {
    return FinishText(s.substr(0, 2) + ":" + s.substr(2, 2) + ":" + s.substr(4), pattern);
  }
  return FinishText(s, pattern);
}

std::string NormalizeClockNumber(const std::string& s, std::string_view pattern) {
  if (IsLike(s, "##.##")) return FinishText(WithColons(s) + ":00", pattern);
  if (IsLike(s, "#") || IsLike(s, "##")) return FinishText(s + ":00:00", pattern);
  if (IsLike(s, "###")) {
    return FinishText("0" + s.substr(0, 1) + ":" + s.substr(1) + ":00", pattern);
  }
  if (IsLike(s, "####")) {
    return FinishText(s.substr(0, 2) + ":" + s.substr(2) + ":00", pattern);
  }
  if (IsLike(s, "#####") || IsLike(s, "######")) return NormalizeElapsedNumber(s, pattern);
  return FinishText(s, pattern);
}

// Normalizes the other notations of an elapsed time; nullopt if the text is none of them.
std::optional<std::string> RewriteElapsed(const std::string& s, std::string_view pattern) {
  if (IsLike(s, "#:##")) return FinishText("00:0" + s, pattern);
  if (IsLike(s, "##:##") && HasSixtyMinutes(s)) return CarryMinutes(s, ':', pattern);
  if (IsLike(s, "##:##")) return FinishText("00:" + s, pattern);
  if (IsLike(s, "#:##'##\"")) {
    return FinishText("0" + s.substr(0, 4) + ":" + s.substr(5, 2), pattern);
  }
  if (IsLike(s, "##:##'##\"")) return FinishText(s.substr(0, 5) + ":" + s.substr(6, 2), pattern);
  if (IsLike(s, "###:##")) return CarryMinutes(s, ':', pattern);
  if (IsLike(s, "#:##.##.#")) return FinishText(WithColons(s.substr(0, s.size() - 2)), pattern);
  return std::nullopt;
}

std::string NormalizeElapsedText(const std::string& s, std::string_view pattern);

// Normalizes minutes and seconds with a decimal fraction, which is kept after the formatted time;
// nullopt if the text is something else.
std::optional<std::string> NormalizeFraction(const std::string& s, std::string_view pattern) {
  const std::size_t point = s.find('.');
  if (point == std::string::npos || point + 1 == s.size()) return std::nullopt;
  if (!IsDigits(std::string_view(s).substr(point + 1))) return std::nullopt;
  const std::string whole = s.substr(0, point);
  const bool has_minutes =
      IsLike(whole, "#:##") || IsLike(whole, "##:##") || IsLike(whole, "###:##");
  if (!has_minutes || whole[whole.size() - 2] > '5') return std::nullopt;
  return NormalizeElapsedText(whole, pattern) + s.substr(point);
}

std::string NormalizeElapsedText(const std::string& s, std::string_view pattern) {
  const std::string colons = WithColons(s);
  if (ParseDateTime(s)) {
    if (std::count(s.begin(), s.end(), ':') == 1) return FormatText("0:" + s, pattern);
    if (IsLike(s, "##.##.##")) return FormatEightCharacters(ToUtf16(colons), pattern);
    return FormatText(s, pattern);
  }
  if (IsTimeText(s)) return FormatTotalTime(ParseSignedTime(s, false, false, 0), pattern);
  if (auto rewritten = RewriteElapsed(s, pattern)) return *rewritten;
  if (auto normal = NormalizeFraction(s, pattern)) return *normal;
  return FinishText(s, pattern);
}

std::string NormalizeClockText(const std::string& s, std::string_view pattern) {
  if (IsLike(s, "##.##.##")) {
    const std::string colons = WithColons(s);
    return ParseDateTime(colons) ? FormatEightCharacters(ToUtf16(colons), pattern)
                                 : FormatText(s, pattern);
  }
  if (IsTimeText(s)) return FormatTotalTime(ParseSignedTime(s, false, false, 0), pattern);
  return FormatText(s, pattern);
}

struct LongTime {
  std::int32_t hours;
  DateTime rest;  // minutes, seconds and the hours that do not make up a whole day
};

// Reads "h:mm:ss" with any number of hours.
std::optional<LongTime> ParseLongTime(std::string_view text) {
  constexpr std::int32_t kMostHours = 24000000 - 1;  // below kLongestTime
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const std::string_view tail = text.substr(colon + 1);
  if (std::count(tail.begin(), tail.end(), ':') != 1) return std::nullopt;
  const auto first = NumericValue(text.substr(0, colon));
  if (!first || !(*first >= 0 && *first <= kMostHours)) return std::nullopt;
  const std::int32_t hours = RoundToLong(*first);
  const auto rest = ParseDateTime(std::to_string(hours % 24) + ":" + std::string(tail));
  if (!rest) return std::nullopt;
  return LongTime{hours, *rest};
}

// The number of two digits if it is below 60; -1 for anything else.
int BelowSixty(char tens, char ones) {
  return tens >= '0' && tens <= '5' && IsDigit(ones) ? (tens - '0') * 10 + (ones - '0') : -1;
}

std::optional<DateTime> ParseUnsigned(std::string_view text, bool allow_number) {
  if (allow_number) {
    if (const auto number = NumericValue(text)) return number;
  }
  return ParseDateTime(text);
}

}  // namespace

std::string_view SignText(DateTime value) { return value <= -kOneSecond ? "-" : ""; }

void AppendPlaneTime(std::string& out, DateTime value) {
  const int seconds = static_cast<int>(WholeSeconds(value) % 60);
  if (value >= kOneMinute) {
    AppendNumber(out, TotalMinutes(value));
    AppendTwoDigits(out, seconds);
  } else {
    AppendNumber(out, seconds);
  }
}

void AppendTime(std::string& out, DateTime value, std::string_view pattern, bool compact,
                const MarkerTexts& markers) {
  if (value == kTimeNoData) {
    out += markers.NoData;
  } else if (value == kTimeDisq) {
    out += markers.Disq;
  } else if (value == kTimeSkip) {
    out += markers.Skip;
  } else if (compact) {
    AppendCompactTime(out, value);
  } else {
    out += SignText(value);
    const DateTime magnitude = std::fabs(value);
    if (pattern == kPlanePattern) {
      AppendPlaneTime(out, magnitude);
    } else {
      AppendFormattedTime(out, magnitude, pattern);
    }
  }
}

std::string TimeToString(DateTime value, std::string_view pattern, bool compact,
                         std::string_view no_data, std::string_view skip, std::string_view disq) {
  std::string out;
  AppendTime(out, value, pattern, compact, {no_data, skip, disq});
  return out;
}

DateTime RoundToSeconds(DateTime time) {
  if (!(time > 0 && time < kLongestTime)) return time;
  return static_cast<double>(WholeSeconds(time)) / kSecondsPerDay;
}

bool RoundsToNothing(DateTime lap) { return lap > 0 && WholeSeconds(lap) == 0; }

std::string FormatTime(DateTime value, std::string_view pattern, bool tenths) {
  std::string out;
  if (!tenths) {
    AppendFormattedTime(out, value, pattern);
    return out;
  }
  // The small addition keeps a time such as 83.4 s from becoming 83.39999.
  const double seconds = std::clamp(value, 0.0, kLongestTime) * kSecondsPerDay + 0.00001;
  const double whole = std::floor(seconds);
  const int milliseconds = static_cast<int>((seconds - whole) * 1000);
  AppendDateTime(out, whole / kSecondsPerDay, pattern);
  out += '.';
  AppendNumber(out, milliseconds / 100);
  return out;
}

void AppendCompactTime(std::string& out, DateTime value) {
  const DateTime magnitude = std::fabs(value);
  const long long seconds = WholeSeconds(magnitude);
  // The unrounded time decides which parts are shown; the digits are those of the rounded time. A
  // value that is rounded to zero has no sign.
  if (value < 0 && seconds != 0) out += '-';
  if (magnitude >= 1) {
    AppendTotalHours(out, magnitude);
  } else if (magnitude >= kOneHour) {
    AppendNumber(out, seconds / 3600 % 24);
    out += ':';
    AppendMinutesSeconds(out, seconds);
  } else if (magnitude >= kTenMinutes) {
    AppendMinutesSeconds(out, seconds);
  } else {
    AppendNumber(out, seconds / 60);
    out += ':';
    AppendTwoDigits(out, static_cast<int>(seconds % 60));
  }
}

std::string CompactTime(DateTime value, std::size_t width) {
  std::string out;
  AppendCompactTime(out, value);
  return width == 0 ? out : PadByWidth(out, width, true, true);
}

std::int32_t TotalMinutes(DateTime value) {
  return static_cast<std::int32_t>(WholeSeconds(value) / 60);
}

std::string FormatTotalTime(DateTime value, std::string_view pattern) {
  std::string out;
  if (value >= 1 && value <= 4 && IsHourPattern(pattern)) {
    AppendTotalHours(out, value);
  } else {
    AppendDateTime(out, value, pattern);
  }
  return out;
}

void AppendRank(std::string& out, std::int32_t rank, bool use_hyphen, bool use_parentheses) {
  if (rank == 0 && !use_hyphen) return;
  if (rank == 0) {
    out += '-';
  } else {
    AppendNumber(out, rank);
  }
  if (use_parentheses) out += ')';
}

std::string RankToString(std::int32_t rank, bool use_hyphen, bool use_parentheses) {
  std::string out;
  AppendRank(out, rank, use_hyphen, use_parentheses);
  return out;
}

std::optional<double> ParseFraction(std::string_view digits) {
  if (!IsDigits(digits)) return std::nullopt;
  digits = digits.substr(0, 3);
  static constexpr std::array<double, 4> kScale = {1, 10, 100, 1000};
  return NumericLong(digits) / kScale[digits.size()];
}

bool IsTimeText(std::string_view text) {
  return ParseDateTime(text).has_value() || ParseLongTime(text).has_value();
}

DateTime ParseSignedTime(std::string_view text, bool allow_number, bool skip_width_folding,
                         DateTime default_value) {
  const std::string folded = skip_width_folding ? std::string(text) : ToHalfWidth(text);
  std::string_view rest = folded;
  if (rest.starts_with('-') || rest.starts_with('+')) {
    rest.remove_prefix(1);
    const auto value = ParseUnsigned(rest, allow_number);
    if (!value) return default_value;
    return Canonical(folded.front() == '-' ? -*value : *value);
  }
  if (const auto value = ParseUnsigned(rest, allow_number)) return Canonical(*value);
  const auto time = ParseLongTime(rest);
  if (!time) return default_value;
  const std::int32_t whole_days = time->hours / 24;
  return Canonical(time->rest + whole_days);
}

DateTime ParseTime(std::string_view text, DateTime default_value) {
  if (const auto plain = ParsePlainTime(text)) return *plain;
  const auto [whole, fraction] = SplitAt(text, ".");
  if (!fraction.empty()) {
    const auto seconds = ParseFraction(fraction);
    const auto time = ParseDateTime(NormalizeTimeText(whole, Digits::kElapsed));
    if (!seconds || !time) return default_value;
    return Canonical(*time + *seconds / kSecondsPerDay);
  }
  const std::string normal = NormalizeTimeText(text, Digits::kElapsed);
  return IsTimeText(normal) ? ParseSignedTime(normal, false, false, 0) : default_value;
}

std::string NormalizeTimeText(std::string_view text, Digits digits, std::string_view pattern) {
  const std::string folded = ToHalfWidth(TrimSpaces(text));
  const std::string s(TrimSpaces(std::string_view(folded).substr(0, folded.find('('))));
  const bool elapsed = digits == Digits::kElapsed;
  if (const auto number = NumericValue(s)) {
    if (*number < 0) return FinishText(s, pattern);
    return elapsed ? NormalizeElapsedNumber(s, pattern) : NormalizeClockNumber(s, pattern);
  }
  return elapsed ? NormalizeElapsedText(s, pattern) : NormalizeClockText(s, pattern);
}

std::optional<DateTime> ParsePlainTime(std::string_view text) {
  const std::size_t size = text.size();
  const bool has_hours = size == 7 || size == 8;
  if (!has_hours && size != 4 && size != 5) return std::nullopt;
  const bool two_digits = size == 5 || size == 8;  // at the beginning
  const char* const end = text.data() + size;
  if (end[-3] != ':' || (has_hours && end[-6] != ':')) return std::nullopt;
  const int seconds = BelowSixty(end[-2], end[-1]);
  const int minutes = BelowSixty(has_hours || two_digits ? end[-5] : '0', end[-4]);
  const int hours = has_hours ? BelowSixty(two_digits ? end[-8] : '0', end[-7]) : 0;
  if (seconds < 0 || minutes < 0 || hours < 0 || hours > 23) return std::nullopt;
  return (hours * 3600 + minutes * 60 + seconds) / kSecondsPerDay;
}

std::optional<DateTime> ParseTimeOfDay(std::string_view text) {
  if (text.size() >= kShortestWithSeconds) {
    if (const auto plain = ParsePlainTime(text)) return plain;
  }
  text = TrimSpaces(text);
  if (const auto time = ParseDateTime(text)) return time;
  const std::size_t point = text.find('.');
  const std::string_view whole = text.substr(0, point);
  if (point == std::string_view::npos || std::count(whole.begin(), whole.end(), ':') != 2) {
    return std::nullopt;
  }
  const auto time = ParseDateTime(whole);
  const auto seconds = ParseFraction(text.substr(point + 1));
  if (!time || !seconds || point + 1 == text.size()) return std::nullopt;
  return Canonical(*time + *seconds / kSecondsPerDay);
}

}  // namespace keltrun
