// Finds the runs of controls that courses share.
#pragma once

#include <cstddef>

#include "keltrun2/model/event_model.h"

namespace keltrun {

/// The maximum number of entries in the lists of all runs that are found, before contained runs are
/// removed. There is one entry for each place of a run and one for each class of its course. 2,000
/// courses with 20 controls and one class each stay below, whatever they share.
inline constexpr std::size_t kMostSegmentEntries = 2'000'000;

/// Makes the segments of the event anew: the runs of at least three consecutive codes (start and
/// finish included) that two or more courses have in common. A run that lies inside another one
/// wherever it occurs is left out. The runs that are found last come first. Above the limit, the
/// shortest runs are left out, and SegmentRemark says so.
void MakeSegmentSets(EventModel& model);

}  // namespace keltrun
