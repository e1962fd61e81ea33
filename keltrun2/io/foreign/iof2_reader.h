// Result lists of IOF XML 2.0.3.
#pragma once

#include <string_view>

#include "keltrun2/io/foreign/foreign_event.h"
#include "keltrun2/io/lap_records.h"

namespace keltrun {

/// Whether the text is a document of IOF XML 2.0.3 or an older version, of any kind. The beginning
/// of a text suffices.
bool LooksLikeIof2(std::string_view text);

/// Reads a result list of IOF XML 2.0.3, of individuals or teams. Elements may stand in any order.
/// Documents of other kinds, and of version 1, are refused by name. A document that ends too early
/// or is damaged is an error; the runners before that place are in the records.
ReadResult ReadIof2(std::string_view text, const ForeignOptions& options);

}  // namespace keltrun
