// The laps of a runner from the times at the controls.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "keltrun2/io/foreign/foreign_event.h"
#include "keltrun2/model/lap_data.h"

namespace keltrun {

/// What was noticed about the laps of a runner.
struct LapFaults {
  std::size_t backward = 0;            // splits that contradict the others
  bool total_contradicts = false;      // the total does; the finish has no lap
  std::vector<std::size_t> zero_legs;  // legs of 0 seconds, from 1
};

/// Sets the laps from the times at the controls of a course and the total time. A leg to a missed
/// control is a skipped one: the next lap covers it. A lap of 0 s is stored as one millisecond,
/// because 0 means no data. Splits that contradict most of the others are kept out: their leg has
/// no data. From the 50th leg on, all legs are one.
LapFaults SetLaps(clsLapData& runner, std::vector<std::optional<Milliseconds>> times,
                  std::optional<Milliseconds> total);

}  // namespace keltrun
