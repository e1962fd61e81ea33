// The text lap file of the previous generation and result lists.
#pragma once

#include <string_view>

#include "keltrun2/io/lap_records.h"

namespace keltrun {

/// Reads a text lap file of the previous generation, or a result list with a header line that names
/// its columns (UTF-8). Without any header line the error holds the resource text
/// RES_MESSAGE_CSV_HEADER_ERROR; a lap file of an event without classes needs none. A list without
/// columns for results or legs is an error, too, with no records, and so are more than 200,000
/// runners or 10,000 classes: no event has so many.
ReadResult ReadKeltrun1(std::string_view text);

}  // namespace keltrun
