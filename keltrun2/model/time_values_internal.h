// Write access to the values that the analysis sets.
#pragma once

#include "keltrun2/model/time_values.h"

namespace keltrun {

class AnalysisValue {
 public:
  static void Set(clsMissTimeValue& value, DateTime time) { value.value_ = time; }
  static void Reset(clsMissTimeValue& value) { value.value_ = clsMissTimeValue::kNotSet; }
  static bool IsSet(const clsMissTimeValue& value) {
    return value.value_ != clsMissTimeValue::kNotSet;
  }
  /// The stored time, which may be a marker.
  static DateTime Stored(const clsMissTimeValue& value) { return value.value_; }

  static void Set(clsPercentValue& value, double ratio) {
    value.value_ = static_cast<float>(ratio);
  }
  /// The stored ratio, which may be a marker.
  static float Stored(const clsPercentValue& value) { return value.value_; }

  static void Set(clsLegRankValue& value, std::int32_t rank) { value.value_ = rank; }
};

}  // namespace keltrun
