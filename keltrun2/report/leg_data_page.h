// The HTML page of the legs: how long and how difficult each one is, and who was fastest.
#pragma once

#include <string>
#include <string_view>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

/// The charset that the page declares when the caller passes `charset`: outside the Japanese mode
/// the texts are in English and the page is always in iso-8859-1.
std::string_view LegDataCharset(std::string_view charset);

/// Appends the whole page of an executed analysis; difficulties are shown when ExtraAnalyze was
/// called. `charset` is the charset that the page declares. `link_style_file` is the host's own
/// HTML; "" links no style sheet.
void AppendLegDataPage(std::string& out, const EventModel& model, const clsAnalyzer& analyzer,
                       std::string_view link_style_file, std::string_view charset);

}  // namespace keltrun
