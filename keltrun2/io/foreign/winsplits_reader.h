// WinSplits Standard Text: cells between TABs, times with points.
#pragma once

#include <string_view>

#include "keltrun2/io/foreign/foreign_event.h"
#include "keltrun2/io/lap_records.h"

namespace keltrun {

/// Whether a line of a class, with the lengths of its legs, and a line of a runner with as many
/// times follow at most two lines about the event. The beginning of a text suffices.
bool LooksLikeWinSplits(std::string_view text);

/// Reads a text in UTF-8. Fails when it has no runners.
ReadResult ReadWinSplits(std::string_view text, const ForeignOptions& options);

}  // namespace keltrun
