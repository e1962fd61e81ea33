// Split times of individual events as OE2003, OE2010, OE12 and programs with their interface write
// them: one row for each runner.
#pragma once

#include <string_view>

#include "keltrun2/io/foreign/foreign_event.h"
#include "keltrun2/io/lap_records.h"

namespace keltrun {

/// Whether a text, or the beginning of one, is such a list. Lists of the same programs without
/// results are recognized too, so that ReadOeCsv can say what they are.
bool LooksLikeOeCsv(std::string_view text);

/// Reads a list. `options.race` chooses among the results of several races.
ReadResult ReadOeCsv(std::string_view text, const ForeignOptions& options);

}  // namespace keltrun
