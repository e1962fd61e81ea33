// The text lap file of the previous generation, from the model to text.
#pragma once

#include <string>

#include "keltrun2/model/event_model.h"

namespace keltrun {

/// The event as a text lap file of the previous generation: UTF-8 text whose lines end in CR LF.
/// Runners without legs are left out, and so is everything that has no place in the format (cards,
/// identifiers, courses, metadata). A disqualified leg is written as one without data.
std::string WriteKeltrun1LapFile(const EventModel& model);

}  // namespace keltrun
