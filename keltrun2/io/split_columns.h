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

/// The runners below a header line of a list.
struct ListBlock {
  std::int32_t line = 0;        // of the header
  std::int32_t finish_leg = 0;  // the last leg of the header
  std::vector<ListRow> rows;    // of a block with leg columns
};

/// Decides for each block whether its leg columns are splits, and if so replaces the laps of the
/// rows by the differences, with a remark. A row with a result looks like splits when its times
/// ascend and the last one is the result. It looks like laps when the last one is not the result
/// and it has a time at the finish, or its times do not ascend, or they add up to the result. More
/// than half of the rows that show a difference have to look like splits. Rows that look the same
/// either way, such as those with fewer than two times, without a result or without a time at the
/// finish, follow the decision. A row that looks like laps keeps its times, with a remark.
void TurnSplitsIntoLaps(const std::vector<ListBlock>& blocks, RemarkList& remarks);

}  // namespace keltrun
