// Finding the runs of controls that courses share.
#pragma once

#include <cstddef>

#include "keltrun2/model/event_model.h"

namespace keltrun {

/// How many entries the lists of all segments may have before containment is looked at: one for
/// each place of a run, and one for each class of its course. 2,000 courses of 20 controls with a
/// class each stay below, whatever they share.
inline constexpr std::size_t kMostSegmentEntries = 2'000'000;

/// Makes the segment sets of the event anew: the runs of at least three consecutive codes (start
/// and finish included) that two or more courses have in common. A run that lies inside another one
/// at each of its occurrences is left out. The runs that are found last come first. Above the limit
/// the runs of the fewest codes are left out, and SegmentRemark says so.
void MakeSegmentSets(EventModel& model);

}  // namespace keltrun
