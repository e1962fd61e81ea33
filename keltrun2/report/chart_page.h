// The HTML page that shows the chart pictures of an analysis.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

/// The chart modes in a comma-separated list of numbers, in the order of the list and with its
/// repetitions. Entries that are not modes are skipped.
std::vector<std::int32_t> ChartModes(std::string_view chart_option);

/// Whether any runner of the data set has a start time, so that a real-time chart has something to
/// show.
bool HasStartTimes(const clsAnalyzer& analyzer);

/// Appends the whole page: a heading and a picture for each chart mode of `chart_option`. The map
/// is left out (a sentence says so when there are too many finishers for one), and so is the
/// real-time chart when no runner has a start time. `chart_name` is the address of the pictures and
/// is already HTML; "?" in it stands for the mode number.
void AppendChartPage(std::string& out, const EventModel& model, const clsAnalyzer& analyzer,
                     std::string_view chart_name, std::string_view chart_option,
                     std::string_view charset);

}  // namespace keltrun
