// Analyses, result lists and the event as JSON, in the form of docs/json.md.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/analysis/data_set_kind.h"
#include "keltrun2/analysis/estimate.h"
#include "keltrun2/analysis/results_holder.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

struct ResultJsonSet {
  const clsResultsHolder* Results;
  DataSetKind Kind;
};

/// The word for a kind of data set: "class", "course" or "segment".
std::string_view KindWord(DataSetKind kind);

/// An executed analysis of the event's runners; that of a class or course with the figures of the
/// estimate, unless that is null.
std::string AnalysisJson(const EventModel& model, const clsAnalyzer& analyzer, DataSetKind kind,
                         const clsEstimate* estimate = nullptr);

/// Result lists of the event.
std::string ResultJson(const EventModel& model, const std::vector<ResultJsonSet>& sets);

/// The event: header, file, classes, courses, segment sets, choices.
std::string InfoJson(const EventModel& model);

}  // namespace keltrun
