// Finding the runs of controls that courses share.
#pragma once

#include <memory>
#include <vector>

#include "keltrun2/model/event_model.h"

namespace keltrun {

/// Beyond this number of different courses, of places where two of them agree, or of places listed
/// for all segments, no sets are made: no event has so many, and the work grows with their square.
inline constexpr std::size_t kMostCodeLists = 500;
inline constexpr std::size_t kMostMatches = 2'000'000;
inline constexpr std::size_t kMostPlaces = 2'000'000;

/// The runs of at least three consecutive codes (start and finish included) that two or more
/// courses of the event have in common. A run that lies inside another one at each of its
/// occurrences is left out. The runs that are found last come first. Empty above the limits.
std::vector<std::shared_ptr<SegmentSet>> FindSegmentSets(const EventModel& model);

}  // namespace keltrun
