// Date-time numbers: days as a double. Reading them from texts and formatting them by patterns.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "keltrun2/base/export.h"

namespace keltrun {

/// A date-time number: days since 1899-12-30 00:00. For a lap, split, result or loss it is simply a
/// duration in days: one second is 1/86400.
using DateTime = double;

/// Seconds in a day.
inline constexpr double kSecondsPerDay = 86400.0;
/// Milliseconds in a day.
inline constexpr double kMillisecondsPerDay = 86400000.0;

/// Durations are shorter than this, in days. Within the bound, whole milliseconds are exact.
inline constexpr double kLongestTime = 1e6;

/// The time rounded to whole milliseconds m, as m / 86400000.0. Equal durations then have equal
/// bits, no matter how they were read or summed. The markers (0, -1 and -2 days) do not change.
/// Values of kLongestTime and beyond, and values that are not finite, are returned unchanged.
[[nodiscard]] KELTRUN2_API DateTime Canonical(DateTime value);

/// A duration rounded to whole seconds, halves up. A half may be up to 1e-7 s too small, because
/// days cannot express it exactly. Durations are clamped to kLongestTime; NaN gives 0.
KELTRUN2_API long long WholeSeconds(DateTime value);

/// The day number of a date in the Gregorian calendar; nullopt for a date that does not exist or a
/// year outside 100 to 9999.
KELTRUN2_API std::optional<DateTime> DateNumber(int year, int month, int day);

/// Reads a date or a time: "h:mm" or "h:mm:ss", "hh.mm.ss" with two digits each, "yyyy/m/d", or
/// such a date, a blank and such a time. Spaces around it are allowed. Returns nullopt for any
/// other text, also for hours of 24 and more and for minutes or seconds of 60 and more.
KELTRUN2_API std::optional<DateTime> ParseDateTime(std::string_view text);

/// Formats the value by a pattern: "yyyy", "mm" and "dd" are the date, "h" and "hh" the hour (0 to
/// 23), "n" and "nn" the minutes, "s" and "ss" the seconds. A backslash makes the next character
/// literal; everything else is copied. The time is first rounded to whole seconds.
KELTRUN2_API std::string FormatDateTime(DateTime value, std::string_view pattern);
/// Appends the text that FormatDateTime returns.
KELTRUN2_API void AppendDateTime(std::string& out, DateTime value, std::string_view pattern);

/// Appends a value from 0 to 99 as two digits, with a leading zero if needed.
inline void AppendTwoDigits(std::string& out, int value) {
  out.push_back(static_cast<char>('0' + value / 10));
  out.push_back(static_cast<char>('0' + value % 10));
}

}  // namespace keltrun
