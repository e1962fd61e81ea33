// The report of an event: one page that contains its data, its style and its scripts.
#pragma once

#include <string>
#include <vector>

#include "keltrun2/analysis/estimate.h"
#include "keltrun2/model/event_model.h"
#include "keltrun2/report/report_data.h"

namespace keltrun {

/// Appends the report of the event, in UTF-8. It offers the sets in the order given. Its first
/// view, and result lists for browsers without scripts, are plain HTML; the rest is made in the
/// browser from one data block, packed with gzip and in Base64. `estimate` may be null.
void AppendReportPage(std::string& page, const EventModel& model,
                      const std::vector<ReportPageSet>& sets, const clsEstimate* estimate,
                      const ReportSurroundings& surroundings = {});

}  // namespace keltrun
