// An analysis as text for an e-mail, in columns of fixed width.
#pragma once

#include <string>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

/// Appends a heading and the sections lap times, split times, relative values, cruise speed, miss
/// rate and miss times, each in blocks of twelve columns, one for each runner, of six display
/// columns. Times are minutes and seconds without separator. Lines end in CR LF.
void AppendMailText(std::string& out, const EventModel& model, const clsAnalyzer& analyzer);

}  // namespace keltrun
