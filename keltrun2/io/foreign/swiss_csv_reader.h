// The tables in which Swiss result services hand on split times.
#pragma once

#include <string_view>

#include "keltrun2/io/foreign/foreign_event.h"
#include "keltrun2/io/lap_records.h"

namespace keltrun {

/// Whether the first lines are those of such a table: German titles with the number of controls
/// ("PoAnz"), the line "//Format:", or "BasicData". The beginning of a text suffices.
bool LooksLikeSwissCsv(std::string_view text);

/// Reads a text in UTF-8. Fails when it has no runners.
ReadResult ReadSwissCsv(std::string_view text, const ForeignOptions& options);

}  // namespace keltrun
