#include "keltrun2/io/foreign/leg_times.h"

#include <algorithm>
#include <cstdint>

namespace keltrun {

void SetLegTimes(std::span<const std::optional<Milliseconds>> times, std::size_t class_legs,
                 LegTimeKind kind, ForeignRunner& runner) {
  const std::size_t legs = std::max(times.size(), class_legs);
  runner.control_count = static_cast<std::int32_t>(legs) - 1;
  runner.punches.reserve(times.size());
  Milliseconds since_start = 0;
  for (const auto& time : times) {
    Punch punch;
    if (time) {
      since_start = kind == LegTimeKind::kSplits ? *time : since_start + *time;
      punch.time = since_start;
    }
    if (runner.punches.size() + 1 == legs) {
      punch.code = ForeignEvent::kFinishCode;
      runner.time = punch.time;
    }
    runner.punches.push_back(punch);
  }
}

bool AreAscending(std::span<const std::optional<Milliseconds>> times) {
  Milliseconds last = 0;
  for (const auto& time : times) {
    if (!time) continue;
    if (*time <= last) return false;
    last = *time;
  }
  return true;
}

}  // namespace keltrun
