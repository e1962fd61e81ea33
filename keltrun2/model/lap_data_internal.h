// Operations on a runner's record that only the component may use.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "keltrun2/model/lap_data.h"

namespace keltrun {

class LapDataInternal {
 public:
  static void SetSerialNum(clsLapData& lap, std::int32_t serial) { lap.serial_num_ = serial; }

  /// Sets the name of the class to a text that its other runners have as well: a name can be as
  /// long as a file, and a class can have many runners.
  static void ShareClassName(clsLapData& lap, const std::shared_ptr<const std::string>& name) {
    lap.class_name_ = name;
  }
  static void ShareClassName(clsLapData& lap, const clsLapData& other) {
    lap.class_name_ = other.class_name_;
  }

  /// The lap of a leg, without increasing LegCount: analysis and outputs must not change a record
  /// by reading it. Legs outside 0 to 50 have no data.
  static DateTime Lap(const clsLapData& lap, std::int32_t leg) {
    const auto at = static_cast<std::size_t>(leg);
    return leg >= 0 && at < lap.laps_.size() ? lap.laps_[at] : kTimeNoData;
  }

  /// LegCount, limited to the 0 to 50 legs that a record can really have.
  static std::int32_t HeldLegs(const clsLapData& lap) {
    return std::clamp(lap.leg_count_, 0, clsLapData::kMostLegs);
  }

  /// Sets the result to a text as it is: one that is stored already, or one that is not a time.
  static void SetResultText(clsLapData& lap, std::string_view text) { lap.result_ = text; }

  /// Replaces a lap, for example by a marker, without changing LegCount.
  static void ReplaceLap(clsLapData& lap, std::int32_t leg, DateTime time) {
    lap.StoreLap(leg, time);
  }
};

}  // namespace keltrun
