// Date-time numbers: days as a double, reading them from texts and formatting them by patterns.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "keltrun2/base/export.h"

namespace keltrun {

/// A date-time number: days since 1899-12-30 00:00. For a lap, split, result or time lost it is
/// simply a duration: one second is 1/86400.
using DateTime = double;

/// Seconds of a day.
inline constexpr double kSecondsPerDay = 86400.0;
/// Milliseconds of a day.
inline constexpr double kMillisecondsPerDay = 86400000.0;

/// Longest duration that counts as one, in days; beyond it milliseconds lose their precision.
inline constexpr double kLongestTime = 1e6;

/// The time on the grid of whole milliseconds m, as m / 86400000.0: equal durations become equal
/// bits, whichever way they were read or added up. Markers (0, -1, -2 days) are on the grid.
/// Values of kLongestTime and beyond, and values that are not finite, pass unchanged.
[[nodiscard]] KELTRUN2_API DateTime Canonical(DateTime value);

/// Whole seconds of a duration, floor(x + 0.5), with a hair (1e-7 s) for halves that days cannot
/// hold exactly; durations that are not finite or not below kLongestTime are clamped.
KELTRUN2_API long long WholeSeconds(DateTime value);

/// A day number for a date of the Gregorian calendar; nullopt for a date that does not exist or a
/// year outside 100 to 9999.
KELTRUN2_API std::optional<DateTime> DateNumber(int year, int month, int day);

/// The platform's date or time test, surrounding spaces allowed: "h:mm", "h:mm:ss" (hours 0 to 23),
/// "hh.mm.ss" with two digits each, "yyyy/m/d", or such a date, a blank and such a time. Hours of
/// 24 and more and minutes or seconds of 60 and more are refused.
KELTRUN2_API std::optional<DateTime> ParseDateTime(std::string_view text);

/// The value by a pattern: "yyyy" "mm" "dd" date, "h" "hh" hour (0 to 23), "n" "nn" minutes, "s"
/// "ss" seconds, a backslash makes the next character literal, everything else is copied. The time
/// of day is that of the value rounded to whole seconds.
KELTRUN2_API std::string FormatDateTime(DateTime value, std::string_view pattern);
/// Appends what FormatDateTime gives.
KELTRUN2_API void AppendDateTime(std::string& out, DateTime value, std::string_view pattern);

/// Appends two digits with a leading zero; value 0 to 99.
inline void AppendTwoDigits(std::string& out, int value) {
  out.push_back(static_cast<char>('0' + value / 10));
  out.push_back(static_cast<char>('0' + value % 10));
}

}  // namespace keltrun
