// Lists whose leg columns hold the times since the start in place of the laps.
#pragma once

#include <cstdint>
#include <vector>

#include "keltrun2/io/text_reading.h"
#include "keltrun2/model/lap_data.h"

namespace keltrun {

/// A runner of a list and the line it stands in.
struct ListRow {
  std::int32_t line = 0;
  clsLapData* runner = nullptr;
};

/// The leg columns of a list are splits when in most rows with a result the times ascend and the
/// last one is the result, or stays below it while they add up to more. Then the laps of all rows
/// become the differences, and a remark says so. Rows that look the same either way do not count,
/// such as those with fewer than two times.
void TurnSplitsIntoLaps(const std::vector<ListRow>& rows, RemarkList& remarks);

}  // namespace keltrun
