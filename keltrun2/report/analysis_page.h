// The HTML page of an analysis: one wide table with two columns for each runner and a row for each
// leg.
#pragma once

#include <string>
#include <string_view>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

/// Appends the whole page. `charset` is the charset that the page declares; encoding the text is up
/// to the caller. `link_style_file` is the host's own HTML; "" links no style sheet.
void AppendAnalysisPage(std::string& out, const EventModel& model, const clsAnalyzer& analyzer,
                        std::string_view link_style_file, std::string_view charset);

}  // namespace keltrun
