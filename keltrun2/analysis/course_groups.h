// The runners of a class by the courses that they had.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "keltrun2/model/event_model.h"

namespace keltrun {

/// The codes of the controls at both ends of a leg.
using ControlPair = std::pair<std::int32_t, std::int32_t>;

/// The pairs of a number of legs of a course, from the control at the position `start` on (0 is the
/// start). Empty if there is no such course, or if it is shorter.
std::vector<ControlPair> LegPairs(const EventModel& model, std::int32_t course_num,
                                  std::int32_t start, std::int32_t legs);

/// The runners of a class who had the same course.
struct CourseGroup {
  const clsClassData* klass = nullptr;
  std::int32_t course_num = 0;  // 0 if it is not known
  std::int32_t legs = 1;        // 1 to 51
  /// The pair of each leg, leg 1 first; empty if the course is not known or has other legs.
  std::vector<ControlPair> pairs;
  std::vector<std::shared_ptr<clsLapData>> runners;
};

/// The groups of a class: the one with the course of the class first, even if nobody had it. Only
/// the first `most` runners are looked at.
std::vector<CourseGroup> CourseGroups(const EventModel& model, const clsClassData& klass,
                                      std::size_t most = std::numeric_limits<std::size_t>::max());

/// The groups of all classes in their order.
std::vector<CourseGroup> CourseGroups(const EventModel& model);

}  // namespace keltrun
