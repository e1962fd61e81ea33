// What is odd about the times of an event.
#pragma once

#include <string>
#include <vector>

#include "keltrun2/model/event_model.h"

namespace keltrun {

/// One sentence in English for each oddity: what was corrected, legs that were not timed and the
/// laps of single runners that are on them all the same, clocks that went wrong during the day.
std::vector<std::string> EventRemarks(const EventModel& model);

}  // namespace keltrun
