#include "keltrun2/text/datetime.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "keltrun2/os/clock.h"
#include "keltrun2/text/letters.h"

namespace keltrun {
namespace {

constexpr DateTime kFirstDate = -657434;  // 100-01-01
constexpr DateTime kLastDate = 2958465;   // 9999-12-31

// Half a second, in days, is usually not exact: it is slightly above or below the half. This
// tolerance makes all halves round up.
constexpr double kHairSeconds = 1e-7;

double RoundSeconds(double seconds) { return std::floor(seconds + (0.5 + kHairSeconds)); }

// Days since 1970-01-01 from a calendar date. This function and its inverse use 400-year eras and
// years that begin in March.
int DaysFromCivil(int year, int month, int day) {
  year -= month <= 2 ? 1 : 0;
  const int era = (year >= 0 ? year : year - 399) / 400;
  const int year_of_era = year - era * 400;
  const int day_of_year = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  const int day_of_era = year_of_era * 365 + year_of_era / 4 - year_of_era / 100 + day_of_year;
  return era * 146097 + day_of_era - 719468;
}

struct Civil {
  int year, month, day;
};

Civil CivilFromDays(int days) {
  days += 719468;
  const int era = (days >= 0 ? days : days - 146096) / 146097;
  const int day_of_era = days - era * 146097;
  const int year_of_era =
      (day_of_era - day_of_era / 1460 + day_of_era / 36524 - day_of_era / 146096) / 365;
  const int day_of_year = day_of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
  const int shifted_month = (5 * day_of_year + 2) / 153;
  const int day = day_of_year - (153 * shifted_month + 2) / 5 + 1;
  const int month = shifted_month + (shifted_month < 10 ? 3 : -9);
  return {year_of_era + era * 400 + (month <= 2 ? 1 : 0), month, day};
}

// Takes one to `most` digits from the front.
std::optional<int> TakeNumber(std::string_view& text, std::size_t most) {
  int value = 0;
  std::size_t length = 0;
  for (; length < text.size() && length < most && IsDigit(text[length]); ++length) {
    value = value * 10 + (text[length] - '0');
  }
  if (length == 0) return std::nullopt;
  text.remove_prefix(length);
  return value;
}

bool TakeCharacter(std::string_view& text, char c) {
  if (text.empty() || text.front() != c) return false;
  text.remove_prefix(1);
  return true;
}

// "h:mm" or "h:mm:ss"; also "hh.mm.ss", but only with two digits each.
std::optional<DateTime> ParseTimeOfDay(std::string_view text) {
  const bool dotted = text.size() == 8 && text[2] == '.' && text[5] == '.';
  const char separator = dotted ? '.' : ':';
  const auto hour = TakeNumber(text, 2);
  if (!hour || !TakeCharacter(text, separator)) return std::nullopt;
  const auto minute = TakeNumber(text, 2);
  if (!minute) return std::nullopt;
  std::optional<int> second = 0;
  if (!text.empty()) {
    if (!TakeCharacter(text, separator)) return std::nullopt;
    second = TakeNumber(text, 2);
  }
  if (!second || !text.empty() || *hour > 23 || *minute > 59 || *second > 59) return std::nullopt;
  return (*hour * 3600 + *minute * 60 + *second) / kSecondsPerDay;
}

std::optional<DateTime> ParseDate(std::string_view text) {
  if (text.size() < 5 || text[4] != '/') return std::nullopt;  // the year has four digits
  const auto year = TakeNumber(text, 4);
  if (!year || !TakeCharacter(text, '/')) return std::nullopt;
  const auto month = TakeNumber(text, 2);
  if (!month || !TakeCharacter(text, '/')) return std::nullopt;
  const auto day = TakeNumber(text, 2);
  if (!day || !text.empty()) return std::nullopt;
  return DateNumber(*year, *month, *day);
}

// A value split into its day and its time of day in whole seconds. In a date-time number the
// fraction is counted forward from midnight also before 1899-12-30, where the number is negative.
struct DayAndTime {
  int day;
  int seconds;
};

DayAndTime Split(DateTime value) {
  if (std::isnan(value)) value = 0;
  value = std::clamp(value, kFirstDate, kLastDate + 1 - 1 / kSecondsPerDay);
  double day = std::trunc(value);
  double seconds = RoundSeconds(std::fabs(value - day) * kSecondsPerDay);
  if (seconds >= kSecondsPerDay) {
    seconds -= kSecondsPerDay;
    day += 1;
  }
  return {static_cast<int>(day), static_cast<int>(seconds)};
}

enum class Token { kYear, kMonth, kDay, kHour2, kHour, kMinute2, kMinute, kSecond2, kSecond };

struct TokenText {
  std::string_view text;
  Token token;
};

// The longer form of a letter comes before the shorter one.
constexpr std::array<TokenText, 9> kTokens = {{{"yyyy", Token::kYear},
                                               {"mm", Token::kMonth},
                                               {"dd", Token::kDay},
                                               {"hh", Token::kHour2},
                                               {"h", Token::kHour},
                                               {"nn", Token::kMinute2},
                                               {"n", Token::kMinute},
                                               {"ss", Token::kSecond2},
                                               {"s", Token::kSecond}}};

void AppendToken(std::string& out, Token token, const DayAndTime& value) {
  const int hour = value.seconds / 3600;
  const int minute = value.seconds / 60 % 60;
  const int second = value.seconds % 60;
  switch (token) {
    case Token::kYear: {
      const int year = CivilFromDays(value.day - kDaysTo1970).year;
      AppendTwoDigits(out, year / 100);
      AppendTwoDigits(out, year % 100);
      break;
    }
    case Token::kMonth:
      AppendTwoDigits(out, CivilFromDays(value.day - kDaysTo1970).month);
      break;
    case Token::kDay:
      AppendTwoDigits(out, CivilFromDays(value.day - kDaysTo1970).day);
      break;
    case Token::kHour2:
      AppendTwoDigits(out, hour);
      break;
    case Token::kHour:
      out += std::to_string(hour);
      break;
    case Token::kMinute2:
      AppendTwoDigits(out, minute);
      break;
    case Token::kMinute:
      out += std::to_string(minute);
      break;
    case Token::kSecond2:
      AppendTwoDigits(out, second);
      break;
    case Token::kSecond:
      out += std::to_string(second);
      break;
  }
}

const TokenText* TokenAt(std::string_view pattern) {
  for (const TokenText& token : kTokens) {
    if (pattern.substr(0, token.text.size()) == token.text) return &token;
  }
  return nullptr;
}

}  // namespace

DateTime Canonical(DateTime value) {
  if (!(std::fabs(value) < kLongestTime)) return value;
  return std::floor(value * kMillisecondsPerDay + 0.5) / kMillisecondsPerDay;
}

long long WholeSeconds(DateTime value) {
  if (std::isnan(value)) return 0;
  value = std::clamp(value, -kLongestTime, kLongestTime);
  return static_cast<long long>(RoundSeconds(value * kSecondsPerDay));
}

std::optional<DateTime> DateNumber(int year, int month, int day) {
  if (year < 100 || year > 9999 || month < 1 || month > 12 || day < 1) return std::nullopt;
  const int days = DaysFromCivil(year, month, day);
  const Civil check = CivilFromDays(days);
  if (check.month != month || check.day != day) return std::nullopt;
  return days + kDaysTo1970;
}

std::optional<DateTime> ParseDateTime(std::string_view text) {
  text = TrimSpaces(text);
  if (const auto time = ParseTimeOfDay(text)) return time;
  const std::size_t blank = text.find(' ');
  const auto date = ParseDate(text.substr(0, blank));
  if (!date || blank == std::string_view::npos) return date;
  const auto time = ParseTimeOfDay(TrimSpaces(text.substr(blank)));
  if (!time) return std::nullopt;
  return *date < 0 ? *date - *time : *date + *time;
}

void AppendDateTime(std::string& out, DateTime value, std::string_view pattern) {
  const DayAndTime parts = Split(value);
  while (!pattern.empty()) {
    if (const TokenText* token = TokenAt(pattern)) {
      AppendToken(out, token->token, parts);
      pattern.remove_prefix(token->text.size());
      continue;
    }
    if (pattern.front() == '\\' && pattern.size() > 1) pattern.remove_prefix(1);
    out.push_back(pattern.front());
    pattern.remove_prefix(1);
  }
}

std::string FormatDateTime(DateTime value, std::string_view pattern) {
  std::string out;
  AppendDateTime(out, value, pattern);
  return out;
}

}  // namespace keltrun
