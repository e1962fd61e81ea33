// The course of a data set.
#pragma once

#include <memory>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/analysis/data_set_kind.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

/// The course that the runners of an analysis had; null when it is unknown, and for a segment,
/// which belongs to several.
std::shared_ptr<clsCourseData> CourseOfSet(const EventModel& model, const clsAnalyzer& analyzer,
                                           DataSetKind kind);

}  // namespace keltrun
