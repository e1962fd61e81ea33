// The CSV of SplitsBrowser: lines of classes and of runners, with the times of the legs.
#pragma once

#include <string_view>

#include "keltrun2/io/foreign/foreign_event.h"
#include "keltrun2/io/lap_records.h"

namespace keltrun {

/// Whether the first line is that of a class, its name and number of controls, and the lines of
/// runners have times, one of them for each leg. The beginning of a text suffices.
bool LooksLikeSplitsBrowser(std::string_view text);

/// Reads a text in UTF-8. Fails when it has no runners.
ReadResult ReadSplitsBrowser(std::string_view text, const ForeignOptions& options);

}  // namespace keltrun
