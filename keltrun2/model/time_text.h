// Reading times from texts and formatting them: the rules that all readers and outputs share.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "keltrun2/text/datetime.h"

namespace keltrun {

/// The pattern that stands for minutes and seconds as digits without separators.
inline constexpr std::string_view kPlanePattern = "plane";

/// The texts shown for the markers.
struct MarkerTexts {
  std::string_view NoData, Skip, Disq;
};

/// Formats a value as clsTimeValue::ToString does.
std::string TimeToString(DateTime value, std::string_view pattern, bool compact,
                         std::string_view no_data, std::string_view skip, std::string_view disq);
void AppendTime(std::string& out, DateTime value, std::string_view pattern, bool compact,
                const MarkerTexts& markers);

/// "-" for a value of minus one second or less, else "".
std::string_view SignText(DateTime value);

/// Formats a time that is not negative by a pattern; a day or more is shown as total hours, minutes
/// and seconds. With `tenths`, the formatted time is followed by "." and the tenth of a second,
/// which is truncated, not rounded.
std::string FormatTime(DateTime value, std::string_view pattern, bool tenths);

/// Formats a time as "9:05", "42:00", "1:02:03" or "25:03:07". If the width is above 0, the text is
/// right-aligned in that many display columns, or cut.
std::string CompactTime(DateTime value, std::size_t width = 0);
void AppendCompactTime(std::string& out, DateTime value);

/// Appends the minutes and seconds of a time that is not negative as digits: "6203", or "45" below
/// a minute.
void AppendPlaneTime(std::string& out, DateTime value);

/// The whole minutes of a time, including those of its hours and days.
std::int32_t TotalMinutes(DateTime value);

/// Formats a time by a pattern of hours, minutes and seconds. From one to four days it is shown as
/// total hours, minutes and seconds.
std::string FormatTotalTime(DateTime value, std::string_view pattern);

/// Formats a rank as clsLegRankValue::ToString does.
std::string RankToString(std::int32_t rank, bool use_hyphen, bool use_parentheses);
void AppendRank(std::string& out, std::int32_t rank, bool use_hyphen, bool use_parentheses);

/// The value that callers of ParseTime and ParseSignedTime pass as the default value to recognize a
/// text that is not a time.
inline constexpr DateTime kNoTime = -1;

/// Whether a time is one of day 0: not negative, below 24 hours and no date.
inline bool IsTimeOfDay(DateTime time) { return time >= 0 && time < 1; }

/// A time rounded to whole seconds; markers and other negative values stay. Formatting decides by
/// the unrounded time whether there are 24 hours or more, so that 23:59:59.9 would become
/// "00:00:00". Files round first.
DateTime RoundToSeconds(DateTime time);

/// Whether a lap is so short that in whole seconds it would be 0, which means no data.
bool RoundsToNothing(DateTime lap);

/// Reads a result or lap as a time; returns `default_value` for any other text. At most three
/// decimals of a second are used.
DateTime ParseTime(std::string_view text, DateTime default_value);

/// Reads a time with an optional sign; returns `default_value` for any other text. With
/// `allow_number`, a bare number is a number of days.
DateTime ParseSignedTime(std::string_view text, bool allow_number, bool skip_width_folding,
                         DateTime default_value);

/// Reads the digits after a decimal point as a part of a second. Only the first three are used; ""
/// is 0. nullopt if a character is not a digit.
std::optional<double> ParseFraction(std::string_view digits);

/// Whether a text is a date or time that ParseDateTime accepts, or h:mm:ss with hours of 24 and
/// more.
bool IsTimeText(std::string_view text);

/// How digits without separators are read: "1234" is 12 min 34 s as an elapsed time and 12:34:00 as
/// a clock time.
enum class Digits : std::int32_t { kElapsed, kClock };

/// Converts the many ways in which timing systems and people write a time to one form, given by the
/// pattern. A decimal fraction of an elapsed time is kept after it: "12:34.56" becomes
/// "00:12:34.56". A text that is not a time is returned in half-width characters and trimmed.
std::string NormalizeTimeText(std::string_view text, Digits digits,
                              std::string_view pattern = "hh\\:nn\\:ss");

/// The elapsed time in a text in one of the forms that nearly all times have: "m:ss", "mm:ss",
/// "h:mm:ss" and "hh:mm:ss", with hours below 24 and all else below 60. nullopt for any other text,
/// which may still be a time in another notation.
std::optional<DateTime> ParsePlainTime(std::string_view text);
/// The size of the shortest such text that has hours, minutes and seconds.
inline constexpr std::size_t kShortestWithSeconds = 7;

/// A time of day (h:mm or h:mm:ss, hours below 24) or a date; h:mm:ss also with decimals of a
/// second. nullopt for every other text.
std::optional<DateTime> ParseTimeOfDay(std::string_view text);

}  // namespace keltrun
