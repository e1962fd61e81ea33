// The HTML page that shows the chart pictures of an analysis.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

/// The chart modes of a comma-separated list of numbers, in its order, repeated ones
/// repeated. Entries that are no mode are skipped.
std::vector<std::int32_t> ChartModes(std::string_view chart_option);

/// Whether somebody of the data set has a start time, so that there is something to show in real
/// time.
bool HasStartTimes(const clsAnalyzer& analyzer);

/// Whether Vesmer makes a map of the analysis.
bool HasMap(const clsAnalyzer& analyzer);

/// Appends the whole page: a heading and a picture for each chart mode of `chart_option`, without
/// the map (a sentence where there are too many finishers for one), and without the real-time chart
/// where nobody has a start time. `chart_name` is the pictures' address, HTML already; "?" in it
/// stands for the mode number.
void AppendChartPage(std::string& out, const EventModel& model, const clsAnalyzer& analyzer,
                     std::string_view chart_name, std::string_view chart_option,
                     std::string_view charset);

}  // namespace keltrun
