// Operations on a class that only the component may use.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "keltrun2/model/class_data.h"
#include "keltrun2/model/lap_data_internal.h"

namespace keltrun {

class ClassDataInternal {
 public:
  /// Sets the name of the class and derives its file base name from it.
  static void SetClassName(clsClassData& klass, std::string_view name) {
    klass.class_name_ = std::make_shared<const std::string>(name);
    klass.SetFileName("");
  }
  /// Gives a record the name of the class, which stays in one place.
  static void GiveClassName(const clsClassData& klass, clsLapData& lap) {
    LapDataInternal::ShareClassName(lap, klass.class_name_);
  }
  /// Adds a record without searching for a match.
  static void Append(clsClassData& klass, const std::shared_ptr<clsLapData>& lap) {
    klass.Append(lap);
  }
  static const std::vector<std::shared_ptr<clsLapData>>& Runners(const clsClassData& klass) {
    return klass.laps_;
  }
  /// The number of the course that a runner of the class had.
  static std::int32_t CourseOf(const clsClassData& klass, const clsLapData& runner) {
    return runner.CourseNum != 0 ? runner.CourseNum : klass.CourseNum;
  }
  /// The courses that runners of the class had, with the number of runners. The course of the class
  /// is there even when nobody had it.
  static std::map<std::int32_t, std::int32_t> RunnersOfCourses(const clsClassData& klass) {
    std::map<std::int32_t, std::int32_t> courses = {{klass.CourseNum, 0}};
    for (const auto& runner : Runners(klass)) ++courses[CourseOf(klass, *runner)];
    return courses;
  }
};

/// Adds many records to one class, with the same result as clsClassData::AddLapObject for each. A
/// map finds the matching runners quickly. Nothing else may change the class meanwhile.
class LapMerger {
 public:
  LapMerger(clsClassData& klass, KrLapFileLoadModeCosnt mode);

  /// True only if the record was added as a new runner.
  bool Add(const std::shared_ptr<clsLapData>& lap);

 private:
  void Remember(const std::shared_ptr<clsLapData>& lap);

  clsClassData& class_;
  const KrLapFileLoadModeCosnt mode_;
  std::unordered_map<std::string, std::shared_ptr<clsLapData>> first_by_key_;
};

}  // namespace keltrun
