// Times as texts, both ways: the shared rules of every reader and output.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "keltrun2/text/datetime.h"

namespace keltrun {

/// The pattern name for minutes and seconds as bare digits.
inline constexpr std::string_view kPlanePattern = "plane";

/// The texts that stand for the markers.
struct MarkerTexts {
  std::string_view NoData, Skip, Disq;
};

/// The rule of clsTimeValue::ToString for a bare value.
std::string TimeToString(DateTime value, std::string_view pattern, bool compact,
                         std::string_view no_data, std::string_view skip, std::string_view disq);
void AppendTime(std::string& out, DateTime value, std::string_view pattern, bool compact,
                const MarkerTexts& markers);

/// "-" from one second below zero on, else "".
std::string_view SignText(DateTime value);

/// A time that is not negative by a pattern; from a day on total hours, minutes and seconds. With
/// tenths, ".", and the tenth of a second (cut, not rounded) behind the pattern's text.
std::string FormatTime(DateTime value, std::string_view pattern, bool tenths);

/// "9:05", "42:00", "1:02:03", "25:03:07"; a width above 0 right-aligns the text in that many
/// Shift-JIS bytes, or cuts it.
std::string CompactTime(DateTime value, std::size_t width = 0);
void AppendCompactTime(std::string& out, DateTime value);

/// Minutes and seconds of a time that is not negative as digits: "6203", or "45" below a minute.
void AppendPlaneTime(std::string& out, DateTime value);

/// Whole minutes of a time, hours and days included.
std::int32_t TotalMinutes(DateTime value);

/// By a pattern of hours, minutes and seconds, with total hours from one to four days.
std::string FormatTotalTime(DateTime value, std::string_view pattern);

/// The rule of clsLegRankValue::ToString for a bare rank.
std::string RankToString(std::int32_t rank, bool use_hyphen, bool use_parentheses);
void AppendRank(std::string& out, std::int32_t rank, bool use_hyphen, bool use_parentheses);

/// A result or lap text as a time; `default_value` for everything that is none. Up to three
/// decimals of a second count.
DateTime ParseTime(std::string_view text, DateTime default_value);

/// A text with an optional sign as a time; bare numbers are day counts when `allow_number`.
DateTime ParseSignedTime(std::string_view text, bool allow_number, bool skip_width_folding,
                         DateTime default_value);

/// The part of a second that the digits behind a decimal point are; the first three count, "" is 0.
/// nullopt when a character is no digit.
std::optional<double> ParseFraction(std::string_view digits);

/// A date or time of the platform, or h:mm:ss with hours of 24 and more.
bool IsTimeText(std::string_view text);

/// From which end bare digits count: "1234" is 12 min 34 s as an elapsed time, 12:34:00 as a clock
/// time.
enum class Digits : std::int32_t { kElapsed, kClock };

/// The many ways in which timing systems and people write a time, as one text in the pattern; a
/// decimal fraction of an elapsed time stays behind it ("12:34.56" is "00:12:34.56"). A text that
/// is no time is returned folded and trimmed.
std::string NormalizeTimeText(std::string_view text, Digits digits,
                              std::string_view pattern = "hh\\:nn\\:ss");

/// A result that counts as a finish time: the platform's date or time test, also with a decimal
/// fraction of seconds; or nullopt.
std::optional<DateTime> ParseFinishTime(std::string_view text);

}  // namespace keltrun
