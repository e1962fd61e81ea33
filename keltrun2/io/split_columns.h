// Lists whose leg columns contain the times since the start instead of the laps.
#pragma once

#include <cstdint>
#include <vector>

#include "keltrun2/io/text_reading.h"
#include "keltrun2/model/lap_data.h"

namespace keltrun {

/// A runner of a list and the line of the file that they come from.
struct ListRow {
  std::int32_t line = 0;
  clsLapData* runner = nullptr;
};

/// Decides whether the leg columns of a list are splits, and if so replaces the laps of all rows by
/// the differences, with a remark. A row with a result looks like splits when its times ascend and
/// either the last one is the result, or it is less than the result and the times add up to more.
/// More than half of the rows that show a difference have to look so. Rows that look the same
/// either way, such as those with fewer than two times, are not counted.
void TurnSplitsIntoLaps(const std::vector<ListRow>& rows, RemarkList& remarks);

}  // namespace keltrun
