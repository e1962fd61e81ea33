// Analyses as one table for programs that evaluate data: a row for each runner and leg.
#pragma once

#include <string>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/analysis/data_set_kind.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

/// Appends the line with the titles of the columns.
void AppendLapCsvTitles(std::string& out, char delimiter);

/// Appends the rows of an executed analysis: the selected runners in its order, each with legs 1 to
/// L. The figures are those of AnalysisJson, with as many decimals; a figure that is null there is
/// an empty cell here. The text is UTF-8, and lines end in CR LF.
void AppendLapCsv(std::string& out, const EventModel& model, const clsAnalyzer& analyzer,
                  DataSetKind kind, char delimiter);

}  // namespace keltrun
