// The five value classes. Each has one value and formats it as text.
#pragma once

#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

#include "keltrun2/base/export.h"
#include "keltrun2/text/datetime.h"

namespace keltrun {

/// The values of a lap, split or result, in days, that are markers and never times.
enum LapTimeConst : std::int32_t {
  KR_TIME_NODATA = 0,  ///< No time was recorded.
  KR_TIME_SKIP = -1,   ///< The control was skipped or not punched.
  KR_TIME_DISQ = -2,   ///< Disqualified, or no readable time.
};

/// KR_TIME_NODATA as a time, for comparisons.
inline constexpr DateTime kTimeNoData = KR_TIME_NODATA;
/// KR_TIME_SKIP as a time, for comparisons.
inline constexpr DateTime kTimeSkip = KR_TIME_SKIP;
/// KR_TIME_DISQ as a time, for comparisons.
inline constexpr DateTime kTimeDisq = KR_TIME_DISQ;

/// The default text for KR_TIME_NODATA: "－" (U+FF0D).
inline constexpr std::string_view kNoDataText = "\uFF0D";
/// The default text for KR_TIME_SKIP: "↓".
inline constexpr std::string_view kSkipText = "\u2193";
/// The default text for KR_TIME_DISQ: "×".
inline constexpr std::string_view kDisqText = "\u00D7";

/// A time: a start time, a lap, a split, a duration.
class KELTRUN2_API clsTimeValue {
 public:
  /// Creates a time of 0.
  clsTimeValue() = default;
  /// Creates a time of a number of days; 0 if the number is not finite.
  explicit clsTimeValue(DateTime value) { SetValue(value); }

  /// The time in days; 0 at first.
  DateTime Value() const { return value_; }
  /// Sets the time in days; a number that is not finite sets 0.
  void SetValue(DateTime Value) { value_ = std::isfinite(Value) ? Value : 0; }

  /// Formats the time by a pattern of "hh" or "h", "nn" or "n" and "ss" or "s". The markers 0, -1
  /// and -2 are shown as NoDataValue, SkipValue and DisqValue. A time of minus one second or less
  /// begins with "-". A time of a day or more is shown as total hours, minutes and seconds,
  /// whatever the pattern. With Compact the time looks like "9:05", "42:00" or "1:02:03". The
  /// pattern "plane" gives minutes and seconds as digits without separators: "6203" for 1:02:03,
  /// "45" for 45 seconds.
  std::string ToString(std::string_view FormatExpression = "hh:nn:ss", bool Compact = false,
                       std::string_view NoDataValue = kNoDataText,
                       std::string_view SkipValue = kSkipText,
                       std::string_view DisqValue = kDisqText) const;

 private:
  DateTime value_ = 0;
};

/// A calendar date.
class KELTRUN2_API clsDateValue {
 public:
  /// Creates a value without a date.
  clsDateValue() = default;
  /// Creates the date with a day number; no date if the number is not finite.
  explicit clsDateValue(DateTime value) { SetValue(value); }

  /// The days since 1899-12-30; 0, the value at first, means no date.
  DateTime Value() const { return value_; }
  /// Sets the day number; a number that is not finite sets 0.
  void SetValue(DateTime Value) { value_ = std::isfinite(Value) ? Value : 0; }

  /// Formats the date by a pattern of "yyyy", "mm" and "dd"; empty for the value 0.
  std::string ToString(std::string_view FormatExpression = "yyyy/mm/dd") const;

 private:
  DateTime value_ = 0;
};

/// The loss on a leg or in total; negative if the runner was faster than expected.
class KELTRUN2_API clsMissTimeValue {
 public:
  /// The loss in days; 0 if it was never set, -1 for a skipped leg.
  DateTime Value() const { return value_ == kNotSet ? 0 : value_; }

  /// Formats the loss like clsTimeValue, with these differences: 0 is a time ("00:00:00"), and
  /// NoDataValue is shown for a loss that was never set or is KR_TIME_DISQ. For a loss of a day or
  /// more, the pattern shows only the part beyond whole days.
  std::string ToString(std::string_view FormatExpression = "hh:nn:ss", bool Compact = false,
                       std::string_view NoDataValue = kNoDataText,
                       std::string_view SkipValue = kSkipText) const;

 private:
  friend class AnalysisValue;
  static constexpr DateTime kNotSet = -10.0;
  DateTime value_ = kNotSet;
};

/// A ratio: 1 is 100 percent.
class KELTRUN2_API clsPercentValue {
 public:
  /// The ratio; 0 if it was never set and for the markers.
  float Value() const { return value_ < 0 ? 0 : value_; }

  /// Formats the percentage by a numeric pattern ("#0", "#0.0"). NoDataValue is shown for 0, also
  /// if it is a real 0 percent, and SkipValue for a skipped leg.
  std::string ToString(std::string_view FormatExpression = "#0",
                       std::string_view NoDataValue = kNoDataText,
                       std::string_view SkipValue = kSkipText) const;

 private:
  friend class AnalysisValue;
  float value_ = 0;
};

/// A rank on a leg; 0 means no rank.
class KELTRUN2_API clsLegRankValue {
 public:
  /// The rank, from 1; 0 if there is none.
  std::int32_t Value() const { return value_; }

  /// The rank as text. If there is none, the text is "-", or empty without UseHyphen.
  /// UseParentheses appends ")" unless the text is empty.
  std::string ToString(bool UseHyphen = true, bool UseParentheses = false) const;

 private:
  friend class AnalysisValue;
  std::int32_t value_ = 0;
};

}  // namespace keltrun
