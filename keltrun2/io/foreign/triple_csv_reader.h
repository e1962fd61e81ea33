// Result tables with three columns for each control: code, time and points.
#pragma once

#include <string_view>

#include "keltrun2/io/foreign/foreign_event.h"
#include "keltrun2/io/lap_records.h"

namespace keltrun {

/// Whether the first line has the titles of such a table, or is a row of one. The beginning of a
/// text suffices.
bool LooksLikeTripleCsv(std::string_view text);

/// Reads a text in UTF-8. Fails when it has no runners, or points for the controls.
ReadResult ReadTripleCsv(std::string_view text, const ForeignOptions& options);

}  // namespace keltrun
