// A result list in columns of fixed width.
#pragma once

#include <string>

#include "keltrun2/analysis/results_holder.h"

namespace keltrun {

/// Appends a line for the data set, one for each runner in the holder's order, and an empty line.
/// Lines end in CR LF.
void AppendResultText(std::string& out, const clsResultsHolder& results);

}  // namespace keltrun
