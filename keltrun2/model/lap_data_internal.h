// What the component does with a runner record and a host may not.
#pragma once

#include <algorithm>

#include "keltrun2/model/lap_data.h"

namespace keltrun {

class LapDataInternal {
 public:
  static void SetSerialNum(clsLapData& lap, std::int32_t serial) { lap.serial_num_ = serial; }

  /// The lap without raising LegCount: analysis and output never change a record by reading it.
  /// Legs outside 0 to 50 have no data.
  static DateTime Lap(const clsLapData& lap, std::int32_t leg) {
    return leg >= 0 && leg <= clsLapData::kMostLegs ? lap.laps_[static_cast<std::size_t>(leg)]
                                                    : kTimeNoData;
  }

  /// Legs that the record can really hold: LegCount within 0 to 50.
  static std::int32_t HeldLegs(const clsLapData& lap) {
    return std::clamp(lap.leg_count_, 0, clsLapData::kMostLegs);
  }

  /// Puts a marker in the place of a lap without touching LegCount.
  static void ReplaceLap(clsLapData& lap, std::int32_t leg, DateTime time) {
    lap.laps_.at(static_cast<std::size_t>(leg)) = time;
  }
};

}  // namespace keltrun
