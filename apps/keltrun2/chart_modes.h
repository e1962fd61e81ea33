// The words for the kinds of charts.
#pragma once

#include <string>
#include <vector>

#include "keltrun2/keltrun2.h"

namespace keltrun::cli {

/// The words in the order of their modes.
std::vector<std::string> ChartModeNames();

/// The mode of one of these words.
KrChartModeConst ChartMode(const std::string& name);

/// Words as the list of mode numbers that a site takes ("0,2,5"); "all" means every mode.
std::string ChartModeNumbers(const std::vector<std::string>& names);

}  // namespace keltrun::cli
