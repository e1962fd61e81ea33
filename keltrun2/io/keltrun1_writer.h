// The text lap file of the previous generation, from the model to text.
#pragma once

#include <string>

#include "keltrun2/model/event_model.h"

namespace keltrun {

/// The event as a text lap file of the previous generation: UTF-8 text, lines end in CR LF. Runners
/// without legs are left out, and so is what the format has no place for (cards, identifiers,
/// courses, metadata). A disqualified leg is written as one without data.
std::string WriteKeltrun1LapFile(const EventModel& model);

}  // namespace keltrun
