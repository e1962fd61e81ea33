// An analysis as text for an e-mail, in columns of fixed width.
#pragma once

#include <string>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

/// Appends a heading and sections for laps, splits, relative values, cruise speed, loss rate and
/// losses. Each section has blocks of twelve columns, one for each runner and six display columns
/// wide. Times are minutes and seconds without a separator. Lines end in CR LF.
void AppendMailText(std::string& out, const EventModel& model, const clsAnalyzer& analyzer);

}  // namespace keltrun
