// The HTML page of the legs: how long and how difficult each one is, and who was fastest.
#pragma once

#include <string>
#include <string_view>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

/// What the page declares when `charset` is asked for: outside the Japanese mode its texts are
/// English and the page is always in iso-8859-1.
std::string_view LegDataCharset(std::string_view charset);

/// Appends the whole page of an executed analysis; difficulties show when ExtraAnalyze was called.
/// `charset` is what the page declares, `link_style_file` the host's own HTML, "" links no style
/// sheet.
void AppendLegDataPage(std::string& out, const EventModel& model, const clsAnalyzer& analyzer,
                       std::string_view link_style_file, std::string_view charset);

}  // namespace keltrun
