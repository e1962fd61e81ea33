// The HTML page of an analysis: one wide table, a column pair a runner, a row a leg.
#pragma once

#include <string>
#include <string_view>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

/// Appends the whole page. `charset` is what the page declares; the bytes are the caller's affair.
/// `link_style_file` is the host's own HTML, "" links no style sheet.
void AppendAnalysisPage(std::string& out, const EventModel& model, const clsAnalyzer& analyzer,
                        std::string_view link_style_file, std::string_view charset);

}  // namespace keltrun
