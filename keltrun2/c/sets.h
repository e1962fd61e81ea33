// The data sets of an export: the class, course or segment that the options name, or all.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/analysis/data_set_kind.h"
#include "keltrun2/analysis/results_holder.h"
#include "keltrun2/analysis/segment_data.h"
#include "keltrun2/api/text_control.h"
#include "keltrun2/c/event.h"

namespace keltrun::c {

struct ChosenSet {
  DataSetKind kind = DataSetKind::kClass;
  std::int32_t number = 0;                  // position of a class or segment, number of a course
  std::shared_ptr<clsSegmentData> segment;  // null for others
};

/// Whether the options name a set.
bool NamesOneSet(const Options& options);
/// The named set, or every class and every course that classes share. Raises Failure when the event
/// does not have what is named.
std::vector<ChosenSet> ChosenSets(const Event& event);
/// The named set, or every class.
std::vector<ChosenSet> NamedSetOrClasses(const Event& event);
/// The only set. Raises Failure when there is none or there are several.
ChosenSet OneSet(const Event& event);
/// What the report shows: ChosenSets and the first 40 segments, all analyzed; sets without runners
/// are left out.
std::vector<clsHtmlControl::ViewerSet> ReportedSets(const Event& event);

/// The executed analysis of a set.
std::shared_ptr<clsAnalyzer> Analysis(const Event& event, const ChosenSet& set);
/// The analyses of sets for a table of laps: with those of the other courses of runners of a class.
std::vector<clsTextControl::AnalysisSet> Analyses(const Event& event,
                                                  const std::vector<ChosenSet>& sets);
/// The ranked result list of a set.
std::shared_ptr<clsResultsHolder> ResultList(const Event& event, const ChosenSet& set);

}  // namespace keltrun::c
