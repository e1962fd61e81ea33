#include "keltrun2/analysis/other_courses.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "keltrun2/analysis/data_set_internal.h"
#include "keltrun2/model/class_data_internal.h"

namespace keltrun {
namespace {

constexpr std::size_t kMostCourses = 100;

std::shared_ptr<clsAnalyzer> NewAnalyzer(const EventModel& model, const clsClassData& klass,
                                         std::int32_t course_number) {
  auto analyzer = std::make_shared<clsAnalyzer>();
  analyzer->SetDataSetName(klass.ClassName() + " (" + std::to_string(course_number) + ")");
  const auto course = model.CourseByNumber(course_number);
  analyzer->ControlCount = course ? course->ControlCount() : klass.ControlCount;
  if (course) DataSetInternal::SetCourse(*analyzer, course_number, 0);
  return analyzer;
}

}  // namespace

std::vector<std::shared_ptr<clsAnalyzer>> AnalyzersOfOtherCourses(const EventModel& model,
                                                                  const clsClassData& klass) {
  std::map<std::int32_t, std::shared_ptr<clsAnalyzer>> by_course;
  for (const auto& runner : ClassDataInternal::Runners(klass)) {
    const std::int32_t course = ClassDataInternal::CourseOf(klass, *runner);
    if (course == klass.CourseNum) continue;
    if (by_course.size() == kMostCourses && !by_course.contains(course)) continue;
    auto& analyzer = by_course[course];
    if (!analyzer) analyzer = NewAnalyzer(model, klass, course);
    analyzer->AddLap(runner);
  }
  std::vector<std::shared_ptr<clsAnalyzer>> analyzers;
  analyzers.reserve(by_course.size());
  for (auto& [course, analyzer] : by_course) analyzers.push_back(std::move(analyzer));
  return analyzers;
}

}  // namespace keltrun
