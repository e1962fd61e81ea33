// Result lists of IOF XML 3.0.
#pragma once

#include <string_view>

#include "keltrun2/io/foreign/foreign_event.h"
#include "keltrun2/io/lap_records.h"

namespace keltrun {

/// Whether the text is a document of IOF XML 3.0, of any kind. The beginning of a text suffices.
bool LooksLikeIof3(std::string_view text);

/// Reads a result list of IOF XML 3.0, of individuals or teams. Elements may stand in any order and
/// have any prefix. Documents of other kinds are refused by name. A document that ends too early or
/// is damaged is an error; the runners before that place are in the records.
ReadResult ReadIof3(std::string_view text, const ForeignOptions& options);

}  // namespace keltrun
