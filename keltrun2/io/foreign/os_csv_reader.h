// Split times of relays as OS2003, OS2010 and OS12 write them: one row for each leg of a team.
#pragma once

#include <string_view>

#include "keltrun2/io/foreign/foreign_event.h"
#include "keltrun2/io/lap_records.h"

namespace keltrun {

/// Whether a text, or the beginning of one, is such a list.
bool LooksLikeOsCsv(std::string_view text);

/// Reads a list. Each leg of a class becomes a class "Name-1", "Name-2", ...; the club of a runner
/// is their team.
ReadResult ReadOsCsv(std::string_view text, const ForeignOptions& options);

}  // namespace keltrun
