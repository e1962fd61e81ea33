// What is lost when an event is saved as a certain type of lap file.
#pragma once

#include <optional>
#include <vector>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/io/lap_file_types.h"
#include "keltrun2/io/remarks.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

/// What is lost when the event is written as a file of the previous generation or as an IOF result
/// list, or as a file for other programs: runners and classes that are left out, values that have
/// no place or are rounded, and characters that the charset does not have. For a native file, the
/// laps that are rounded. Other types give no remarks. Without an encoding, the file has the usual
/// one of its type.
std::vector<LoadRemark> FormLosses(const EventModel& model, KrLapFileTypeConst type,
                                   const std::optional<TextEncoding>& encoding = std::nullopt);

}  // namespace keltrun
