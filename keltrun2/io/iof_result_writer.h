// The event as a result list for other orienteering software.
#pragma once

#include <string>

#include "keltrun2/model/event_model.h"

namespace keltrun {

/// The event as an IOF XML 2.0.3 result list in UTF-8: every class with its runners in result order
/// and their split times. Runners without a result are left out. `now` is the moment of saving, the
/// modification date of an event that has none. Characters that XML does not allow are dropped.
std::string WriteIofXmlResult(const EventModel& model, DateTime now);

}  // namespace keltrun
