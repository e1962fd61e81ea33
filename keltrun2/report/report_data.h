// The data block of the report page: everything that the page shows, each thing once.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/analysis/data_set_kind.h"
#include "keltrun2/analysis/estimate.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

struct ReportPageSet {
  std::shared_ptr<const clsAnalyzer> Analyzer;
  DataSetKind Kind;
};

/// The data block as JSON. Its form is that of one version of the page and is described in
/// report_page/README.md; others read the documents of docs/json.md. `estimate` may be null.
std::string ReportData(const EventModel& model, const std::vector<ReportPageSet>& sets,
                       const clsEstimate* estimate);

}  // namespace keltrun
