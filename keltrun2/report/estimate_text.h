// The estimate of an event for people and for spreadsheets.
#pragma once

#include <string>

#include "keltrun2/analysis/estimate.h"

namespace keltrun {

/// Appends what the estimate says about each runner of a class, in sentences: how fast they are,
/// and where their time went. A runner takes at most a screen. Lines end in CR LF.
void AppendEstimateText(std::string& out, const clsEstimatedClassData& klass);

/// Appends the column names of AppendEstimateCsv.
void AppendEstimateCsvHead(std::string& out);
/// Appends the laps of a class with their figures, one lap in a line, separated by commas.
void AppendEstimateCsv(std::string& out, const clsEstimatedClassData& klass);

}  // namespace keltrun
