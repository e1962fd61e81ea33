// The five value classes: one value each, and the text it is shown as.
#pragma once

#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

#include "keltrun2/base/export.h"
#include "keltrun2/text/datetime.h"

namespace keltrun {

/// Exact values of a lap, split or result that are markers, never times. In days, like every time.
enum LapTimeConst : std::int32_t {
  KR_TIME_NODATA = 0,  ///< No time was recorded.
  KR_TIME_SKIP = -1,   ///< The control was skipped or not punched.
  KR_TIME_DISQ = -2,   ///< Disqualified, or no readable time.
};

/// KR_TIME_NODATA as a time, to compare with.
inline constexpr DateTime kTimeNoData = KR_TIME_NODATA;
/// KR_TIME_SKIP as a time, to compare with.
inline constexpr DateTime kTimeSkip = KR_TIME_SKIP;
/// KR_TIME_DISQ as a time, to compare with.
inline constexpr DateTime kTimeDisq = KR_TIME_DISQ;

/// What texts show for KR_TIME_NODATA unless the caller names something else: "－" (U+FF0D).
inline constexpr std::string_view kNoDataText = "\uFF0D";
/// What texts show for KR_TIME_SKIP unless the caller names something else: "↓".
inline constexpr std::string_view kSkipText = "\u2193";
/// What texts show for KR_TIME_DISQ unless the caller names something else: "×".
inline constexpr std::string_view kDisqText = "\u00D7";

/// A time: a start time, a lap, a split, a duration.
class KELTRUN2_API clsTimeValue {
 public:
  /// A time of 0.
  clsTimeValue() = default;
  /// A time of that many days; 0 when the number is not finite.
  explicit clsTimeValue(DateTime value) { SetValue(value); }

  /// In days; 0 at first.
  DateTime Value() const { return value_; }
  /// Stores a number of days; one that is not finite stores 0.
  void SetValue(DateTime Value) { value_ = std::isfinite(Value) ? Value : 0; }

  /// The marker texts for 0, -1 and -2; otherwise the time by a pattern of "hh" "h" "nn" "n" "ss"
  /// "s", with "-" in front from one second below zero on. From a day on, total hours, minutes and
  /// seconds whatever the pattern. Compact: "9:05", "42:00", "1:02:03". The pattern "plane" gives
  /// minutes and seconds as digits without separator: "6203" for 1:02:03, "45" for 45 seconds.
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
  /// No date.
  clsDateValue() = default;
  /// The date of that day number; no date when the number is not finite.
  explicit clsDateValue(DateTime value) { SetValue(value); }

  /// Days since 1899-12-30; 0 at first, which stands for no date.
  DateTime Value() const { return value_; }
  /// Stores a day number; one that is not finite stores 0.
  void SetValue(DateTime Value) { value_ = std::isfinite(Value) ? Value : 0; }

  /// The date by a pattern of "yyyy" "mm" "dd"; empty for the value 0.
  std::string ToString(std::string_view FormatExpression = "yyyy/mm/dd") const;

 private:
  DateTime value_ = 0;
};

/// The time lost on a leg or in total; negative where the runner was faster than expected.
class KELTRUN2_API clsMissTimeValue {
 public:
  /// In days; 0 while not set, -1 for a skipped leg.
  DateTime Value() const { return value_ == kNotSet ? 0 : value_; }

  /// As clsTimeValue, but a value of 0 is a time ("00:00:00") and only a value that was never set
  /// shows NoDataValue. Of a day and more the pattern shows the time of day.
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
  /// The factor; 0 while not set and for the markers.
  float Value() const { return value_ < 0 ? 0 : value_; }

  /// The percentage by a numeric pattern ("#0", "#0.0"); NoDataValue for 0 (a real 0 percent
  /// included), SkipValue for a skipped leg.
  std::string ToString(std::string_view FormatExpression = "#0",
                       std::string_view NoDataValue = kNoDataText,
                       std::string_view SkipValue = kSkipText) const;

 private:
  friend class AnalysisValue;
  float value_ = 0;
};

/// A rank on a leg; 0 is none.
class KELTRUN2_API clsLegRankValue {
 public:
  /// The rank, from 1; 0 for none.
  std::int32_t Value() const { return value_; }

  /// The rank, or "-" for none (empty without UseHyphen); UseParentheses appends ")" to what is
  /// shown.
  std::string ToString(bool UseHyphen = true, bool UseParentheses = false) const;

 private:
  friend class AnalysisValue;
  std::int32_t value_ = 0;
};

}  // namespace keltrun
