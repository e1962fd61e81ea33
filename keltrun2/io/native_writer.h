// The native lap file, from the model to bytes.
#pragma once

#include <string>

#include "keltrun2/io/lap_file_types.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

/// The event as a native lap file in UTF-8; `file_date` is the time of saving. Characters that XML
/// does not allow are dropped. Laps are written in whole seconds, except that laps below half a
/// second and start times keep their fraction.
std::string WriteNativeLapFile(const EventModel& model, KrLapFileSaveModeCosnt mode,
                               DateTime file_date);

}  // namespace keltrun
