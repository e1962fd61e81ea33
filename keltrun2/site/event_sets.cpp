#include "keltrun2/site/event_sets.h"

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/analysis/data_set_internal.h"
#include "keltrun2/analysis/other_courses.h"
#include "keltrun2/analysis/segment_data.h"
#include "keltrun2/model/class_data_internal.h"

namespace keltrun {
namespace {

// Each segment has all its runners once more, and nobody looks at more of them.
constexpr std::int32_t kMostSegments = 40;

}  // namespace

EventSets::EventSets(const EventModel& model) : model_(&model) {
  for (const auto& klass : model.Classes()) {
    for (const auto& [course, runners] : ClassDataInternal::RunnersOfCourses(*klass)) {
      classes_of_course_[course].push_back(klass);
    }
  }
}

std::vector<std::shared_ptr<clsClassData>> EventSets::ClassesOf(
    const ClassAndCourseChoice& choice) const {
  if (choice.ClassIndex != 0) return {model_->ClassAt(choice.ClassIndex)};
  if (choice.CourseNum <= 0) return {};  // no course that a data set can be made of
  return classes_of_course_.at(choice.CourseNum);
}

void EventSets::AddRunners(DataSet& set, const ClassAndCourseChoice& choice,
                           const std::vector<std::shared_ptr<clsClassData>>& classes) const {
  if (choice.ClassIndex != 0) {
    DataSetInternal::AddClasses(set, classes);
  } else {
    DataSetInternal::AddCourse(set, *model_, choice.CourseNum, classes);
  }
}

std::vector<ReportPageSet> ReportSets(const EventModel& model, const std::string& untimed_legs,
                                      const MakeSet& make_set) {
  const EventSets event_sets(model);
  std::vector<ReportPageSet> sets;
  const auto add = [&](const std::shared_ptr<clsAnalyzer>& analyzer, DataSetKind kind) {
    analyzer->SetUntimedLegs(untimed_legs);
    analyzer->Execute();
    if (analyzer->Count() == 0) return;
    analyzer->ExtraAnalyze();
    sets.push_back({analyzer, kind});
  };
  for (const ClassAndCourseChoice& choice : model.Choices()) {
    make_set(choice.ValueName, [&] {
      const auto analyzer = std::make_shared<clsAnalyzer>();
      const auto classes = event_sets.ClassesOf(choice);
      event_sets.AddRunners(*analyzer, choice, classes);
      add(analyzer, choice.ClassIndex != 0 ? DataSetKind::kClass : DataSetKind::kCourse);
      if (analyzer->LeftOutCount() == 0) return;
      for (const auto& other : AnalyzersOfOtherCourses(model, *classes.front())) {
        add(other, DataSetKind::kCourse);
      }
    });
  }
  std::int32_t segments = 0;
  for (const auto& segment : model.Segments) {
    if (++segments > kMostSegments) break;
    make_set(segment->SegmentName,
             [&] { add(clsSegmentData(segment).Analyzer(), DataSetKind::kSegment); });
  }
  return sets;
}

}  // namespace keltrun
