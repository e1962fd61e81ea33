// An analysis as comma-separated lines without quoting, for two programs that read them. Runners
// without a finish time are left out. Both functions append whole lines that end in CR LF.
#pragma once

#include <string>

#include "keltrun2/analysis/analyzer.h"

namespace keltrun {

/// For the spreadsheet macro: a header line, then class, name, club, rank, result, start time and
/// the split of every leg.
void AppendQuillonMacroCsv(std::string& out, const clsAnalyzer& analyzer);

/// For the split-time viewer: a line with data set and number of controls, then name, club, start
/// time and the split of every leg.
void AppendSplitsBrowserCsv(std::string& out, const clsAnalyzer& analyzer);

}  // namespace keltrun
