// Result pages with split times, as SPORTident's software, OE, SiTiming and other programs publish
// them.
#pragma once

#include <string_view>

#include "keltrun2/io/foreign/foreign_event.h"
#include "keltrun2/io/lap_records.h"

namespace keltrun {

/// Whether a text, of which the beginning suffices, is an HTML page.
bool LooksLikeHtml(std::string_view text);

/// Reads a page with tables or preformatted lines: above each class or course a row with the labels
/// of the controls, then for each runner a row with the splits or the laps, or two with both, and
/// further rows where the controls take several.
ReadResult ReadHtml(std::string_view text, const ForeignOptions& options);

}  // namespace keltrun
