// Where a segment is in the records of the runners who ran it.
#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "keltrun2/model/event_model.h"
#include "keltrun2/model/segment_set.h"

namespace keltrun {

/// A runner's record, and the number of its legs before the first one of the segment.
struct SegmentRun {
  const clsLapData* record;  // owned by the event; not null
  std::int32_t legs_before;
};

/// The runs of a segment: the classes in the order of the segment's list, and in each its runners.
std::vector<SegmentRun> RunsOfSegment(const SegmentSet& segment, const EventModel& model);

/// The same for the segment of that name, by the serial number of the runner; empty when the event
/// has no such segment.
std::unordered_map<std::int32_t, SegmentRun> RunsBySerialNum(std::string_view segment_name,
                                                             const EventModel& model);

}  // namespace keltrun
