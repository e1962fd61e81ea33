// The viewer page: one page that contains its data, its style and its scripts.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/analysis/data_set_kind.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

struct ViewerPageSet {
  std::shared_ptr<const clsAnalyzer> Analyzer;
  DataSetKind Kind;
};

/// Appends the viewer page of the event, in UTF-8. It offers the sets in the order given; the data
/// of each is its AnalysisJson, gzip-packed and in Base64.
void AppendViewerPage(std::string& page, const EventModel& model,
                      const std::vector<ViewerPageSet>& sets);

}  // namespace keltrun
