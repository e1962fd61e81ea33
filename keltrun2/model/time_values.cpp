#include "keltrun2/model/time_values.h"

#include "keltrun2/model/time_text.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {

std::string clsTimeValue::ToString(std::string_view FormatExpression, bool Compact,
                                   std::string_view NoDataValue, std::string_view SkipValue,
                                   std::string_view DisqValue) const {
  return TimeToString(value_, FormatExpression, Compact, NoDataValue, SkipValue, DisqValue);
}

std::string clsDateValue::ToString(std::string_view FormatExpression) const {
  return value_ == 0 ? "" : FormatDateTime(value_, FormatExpression);
}

std::string clsMissTimeValue::ToString(std::string_view FormatExpression, bool Compact,
                                       std::string_view NoDataValue,
                                       std::string_view SkipValue) const {
  std::string out;
  if (value_ == kNotSet || value_ == kTimeDisq) {
    out = NoDataValue;
  } else if (value_ == kTimeSkip) {
    out = SkipValue;
  } else if (Compact) {
    AppendCompactTime(out, value_);
  } else {
    out = SignText(value_);
    const DateTime magnitude = value_ < 0 ? -value_ : value_;
    if (FormatExpression == kPlanePattern) {
      AppendPlaneTime(out, magnitude);
    } else {
      AppendDateTime(out, magnitude, FormatExpression);
    }
  }
  return out;
}

std::string clsPercentValue::ToString(std::string_view FormatExpression,
                                      std::string_view NoDataValue,
                                      std::string_view SkipValue) const {
  if (value_ == 0 || value_ == kTimeDisq) return std::string(NoDataValue);
  if (value_ == kTimeSkip) return std::string(SkipValue);
  return FormatNumber(value_ * 100.0f, FormatExpression);
}

std::string clsLegRankValue::ToString(bool UseHyphen, bool UseParentheses) const {
  return RankToString(value_, UseHyphen, UseParentheses);
}

}  // namespace keltrun
