// Text for other programs.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/analysis/data_set_kind.h"
#include "keltrun2/analysis/results_holder.h"

namespace keltrun {

/// Turns data sets into text for other programs, returned as UTF-8.
class clsTextControl {
 public:
  /// An executed analysis as one JSON object in the form of docs/json.md. Raises object not set
  /// (91) for null.
  std::string OutputJson(const std::shared_ptr<clsAnalyzer>& Analyzer,
                         DataSetKind Kind = DataSetKind::kClass) const;

  /// One result list of a JSON document of result lists, see OutputResultJson.
  struct ResultSet {
    std::shared_ptr<clsResultsHolder> ResultsHolder;
    DataSetKind Kind = DataSetKind::kClass;
  };

  /// Result lists as one JSON object. Raises object not set (91) for a null list.
  std::string OutputResultJson(const std::vector<ResultSet>& Sets) const;

  /// The current event, its classes, courses, segment sets and choices as one JSON object.
  std::string OutputInfoJson() const;
};

}  // namespace keltrun
