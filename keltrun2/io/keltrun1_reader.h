// The text lap file of the previous generation, and result lists, from text to records.
#pragma once

#include <string_view>

#include "keltrun2/io/lap_records.h"

namespace keltrun {

/// Reads a text lap file of the previous generation, or a result list with a header line that names
/// its columns (UTF-8).
///
/// A text without a header line is an error with the resource text RES_MESSAGE_CSV_HEADER_ERROR;
/// only the lap file of an event without classes needs none. A list without columns for results or
/// legs is an error that leaves no records. More than 200,000 runners or 10,000 classes are an
/// error that leaves what was read before.
ReadResult ReadKeltrun1(std::string_view text);

}  // namespace keltrun
