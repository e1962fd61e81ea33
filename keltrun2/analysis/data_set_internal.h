// What the library can do with a data set and a host cannot.
#pragma once

#include <memory>
#include <vector>

#include "keltrun2/analysis/data_set.h"

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
};

}  // namespace keltrun
