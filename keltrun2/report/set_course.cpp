#include "keltrun2/report/set_course.h"

#include "keltrun2/model/class_data_internal.h"

namespace keltrun {
namespace {

// The number of the course of the set; 0 when it is unknown. A segment belongs to several courses.
std::int32_t CourseNumberOfSet(const EventModel& model, const clsAnalyzer& analyzer,
                               DataSetKind kind) {
  if (kind == DataSetKind::kClass) {
    const auto klass = model.ClassByName(analyzer.DataSetName());
    return klass ? klass->CourseNum : 0;
  }
  // All runners of a course had the same controls, so any of them will do.
  const auto first = kind == DataSetKind::kCourse ? analyzer.FullSetItem(1) : nullptr;
  if (!first) return 0;
  const auto klass = model.ClassByName(first->OtherData()->ClassName());
  return klass ? ClassDataInternal::CourseOf(*klass, *first->OtherData()) : 0;
}

}  // namespace

std::shared_ptr<clsCourseData> CourseOfSet(const EventModel& model, const clsAnalyzer& analyzer,
                                           DataSetKind kind) {
  const std::int32_t number = CourseNumberOfSet(model, analyzer, kind);
  return number != 0 ? model.CourseByNumber(number) : nullptr;
}

}  // namespace keltrun
