// What the library can do with a data set and a host cannot.
#pragma once

#include <memory>
#include <vector>

#include "keltrun2/analysis/data_set.h"
#include "keltrun2/analysis/untimed_legs.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

class DataSetInternal {
 public:
  /// Adds these classes, whether or not their event is the current one.
  static void AddClasses(DataSet& set, const std::vector<std::shared_ptr<clsClassData>>& classes) {
    set.AddClasses(classes);
  }
  /// Adds the runners of these classes of an event, which may be another than the current one, who
  /// had the course.
  static void AddCourse(DataSet& set, const EventModel& model, std::int32_t course_number,
                        const std::vector<std::shared_ptr<clsClassData>>& classes) {
    set.AddCourseOf(classes, course_number, model);
  }

  /// Says that leg 1 of the set goes from the control at a position (0 is the start) of the course.
  static void SetCourse(DataSet& set, std::int32_t course_num, std::int32_t start) {
    set.course_ = {course_num, start};
  }
  /// The pairs of controls of the legs; empty if they are not known.
  static std::vector<ControlPair> LegPairs(const DataSet& set, const EventModel& model) {
    return keltrun::LegPairs(model, set.course_.number, set.course_.start, set.ControlCount + 1);
  }
};

}  // namespace keltrun
