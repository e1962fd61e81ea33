// The split-time list of the event software OEvent, from text to records.
#pragma once

#include <string_view>

#include "keltrun2/io/lap_records.h"

namespace keltrun {

/// Reads an OEvent split list: comma-separated lines (no quoting), "Split times of" in the second.
/// The event name is the first line as it stands; a host keeps one that it has already. LegsSeen of
/// a class is the last leg with a time; codes are not read. Creation date and application are those
/// behind "Created with OEvent"; without that line neither is set.
///
/// An error means that the text is no such list, that a runner stands before any class line, or
/// that there are more than 10,000 classes or 200,000 runners. What was read before stays. The
/// column of a remark is a field's number, from 1.
ReadResult ReadOEvent(std::string_view text);

}  // namespace keltrun
