// The runners of a class who had another course than that of the class, as with forks.
#pragma once

#include <memory>
#include <vector>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

/// A data set for each such course, in the order of the courses, not executed. Its name is that of
/// the class with the number of the course: "W21A (2)". At most 100, so that a class in which
/// everybody ran a different course does not make a set for each of its runners.
std::vector<std::shared_ptr<clsAnalyzer>> AnalyzersOfOtherCourses(const EventModel& model,
                                                                  const clsClassData& klass);

}  // namespace keltrun
