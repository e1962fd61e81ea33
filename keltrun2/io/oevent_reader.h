// The split-time list of the event software OEvent, from text to records.
#pragma once

#include <string_view>

#include "keltrun2/io/lap_records.h"

namespace keltrun {

/// Reads an OEvent split list: comma-separated lines without quoting, the second of which contains
/// "Split times of". The event name is the first line, unchanged; an event that has a name keeps
/// it. `legs_seen` of a class is the last leg with a time. Control codes are not read. The creation
/// date and the application come from the line "Created with OEvent" and the one after it; without
/// that line neither is set.
///
/// An error means that the text is not such a list, that a runner comes before the first class
/// line, or that there are more than 10,000 classes or 200,000 runners. What was read before stays.
/// The column of a remark is the number of the field, from 1.
ReadResult ReadOEvent(std::string_view text);

}  // namespace keltrun
