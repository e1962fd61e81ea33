#include "keltrun2/model/lap_data.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "keltrun2/base/automation_error.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/result_status.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

bool IsSexagesimal(char tens, char ones) { return tens >= '0' && tens <= '5' && IsDigit(ones); }

// Whether a text is "h:mm:ss" above zero. Results are stored in this form, so there is nothing to
// normalize.
bool IsStoredTime(std::string_view text) {
  return text.size() == 7 && IsDigit(text[0]) && text[1] == ':' &&
         IsSexagesimal(text[2], text[3]) && text[4] == ':' && IsSexagesimal(text[5], text[6]) &&
         text != "0:00:00";
}

}  // namespace

const std::string& clsLapData::ClassName() const {
  static const std::string none;
  return class_name_ ? *class_name_ : none;
}

void clsLapData::SetClassName(std::string_view ClassName) {
  class_name_ = std::make_shared<const std::string>(ClassName);
}

void clsLapData::SetStartTime(std::shared_ptr<clsTimeValue> Value) {
  start_time_ = Value ? std::move(Value) : std::make_shared<clsTimeValue>();
}

DateTime clsLapData::Lap(std::int32_t Index) {
  CheckIndex(Index, 0, kMostLegs, "clsLapData.Lap");
  if (Index > leg_count_) leg_count_ = Index;
  return LapDataInternal::Lap(*this, Index);
}

void clsLapData::SetLap(std::int32_t Index, DateTime Time) {
  CheckIndex(Index, 0, kMostLegs, "clsLapData.Lap");
  if (Index > leg_count_) leg_count_ = Index;
  StoreLap(Index, std::fabs(Time) < kLongestTime ? Time : kTimeNoData);
}

void clsLapData::StoreLap(std::int32_t index, DateTime time) {
  constexpr std::size_t kUsualLegs = 26;  // with room for them, most records allocate once
  const auto at = static_cast<std::size_t>(index);
  if (laps_.empty()) laps_.reserve(std::max(kUsualLegs, at + 1));
  if (at < laps_.size()) {
    laps_[at] = time;
    return;
  }
  if (at > laps_.size()) laps_.resize(at);
  laps_.push_back(time);  // most laps come in the order of the legs
}

std::string clsLapData::LapToString(std::int32_t Index, std::string_view FormatExpression,
                                    bool Compact, std::string_view NoDataValue,
                                    std::string_view SkipValue, std::string_view DisqValue) {
  return TimeToString(Lap(Index), FormatExpression, Compact, NoDataValue, SkipValue, DisqValue);
}

void clsLapData::SetResult(std::string_view Result) {
  if (IsStoredTime(Result)) {
    result_ = Result;
    return;
  }
  result_ = NormalizeTimeText(ToHalfWidth(UpperAll(Result)), Digits::kElapsed);
  const auto time = ReadableTime(result_);
  if (!time) return;  // a status word stays as it is
  const bool has_fraction = result_.find('.') != std::string::npos;
  result_ = *time > 0 ? FormatTime(*time, "h\\:nn\\:ss", has_fraction) : "DISQ";
}

}  // namespace keltrun
