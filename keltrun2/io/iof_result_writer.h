// The IOF result list, for other orienteering software.
#pragma once

#include <string>

#include "keltrun2/model/event_model.h"

namespace keltrun {

/// The event as an IOF XML 2.0.3 result list in UTF-8: every class with its runners in result order
/// and their split times. Runners without a result are left out, and so are characters that XML
/// does not allow. `now`, the time of saving, is the modification date of an event that has none.
std::string WriteIofXmlResult(const EventModel& model, DateTime now);

}  // namespace keltrun
