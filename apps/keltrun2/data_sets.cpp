#include "apps/keltrun2/data_sets.h"

#include <map>
#include <set>
#include <string>

#include "apps/keltrun2/command_error.h"
#include "apps/keltrun2/display_text.h"

namespace keltrun::cli {
namespace {

// The class with this name. If there is none, the first one that differs only in the width of
// letters, because pages show narrow letters wide.
std::shared_ptr<clsClassData> ClassOf(const clsKeltrun2& root, const std::string& name) {
  if (auto klass = root.ClassData(name)) return klass;
  for (std::int32_t i = 1; i <= root.ClassCount(); ++i) {
    auto klass = root.ClassData(i);
    if (FoldedName(klass->ClassName()) == FoldedName(name)) return klass;
  }
  return nullptr;
}

ChosenSet FindClass(const clsKeltrun2& root, const std::string& name) {
  const auto wanted = ClassOf(root, name);
  std::string names;
  for (std::int32_t i = 1; i <= root.ClassCount(); ++i) {
    const auto klass = root.ClassData(i);
    if (klass == wanted) return {DataSetKind::kClass, i, nullptr};
    names += "\n  " + klass->ClassName();
  }
  if (names.empty()) throw CommandError("the event has no classes");
  throw CommandError("there is no class \"" + name + "\"; the classes are" + names);
}

// Courses by number, with the names of the classes that run them.
std::map<std::int32_t, std::string> CoursesWithClasses(const clsKeltrun2& root) {
  std::map<std::int32_t, std::string> courses;
  for (std::int32_t i = 1; i <= root.ClassCount(); ++i) {
    const auto klass = root.ClassData(i);
    std::set<std::int32_t> own = {klass->CourseNum};
    for (std::int32_t j = 1; j <= klass->LapCount(); ++j) own.insert(klass->LapData(j)->CourseNum);
    for (const std::int32_t course : own) {
      if (course > 0) courses[course] += " " + klass->ClassName();
    }
  }
  return courses;
}

ChosenSet FindCourse(const clsKeltrun2& root, std::int32_t number) {
  const auto courses = CoursesWithClasses(root);
  if (courses.contains(number)) return {DataSetKind::kCourse, number, nullptr};
  if (courses.empty()) throw CommandError("no class of the event has a course");
  std::string names;
  for (const auto& [course, classes] : courses) {
    names += "\n  " + std::to_string(course) + ":" + classes;
  }
  throw CommandError("no class runs course " + std::to_string(number) +
                     "; the courses and their classes are" + names);
}

ChosenSet FindSegment(const clsKeltrun2& root, const std::string& name) {
  std::string names;
  for (std::int32_t i = 1; i <= root.SegmentCount(); ++i) {
    const auto segment = root.SegmentData(i);
    if (segment->SegmentName() == name) return {DataSetKind::kSegment, i, segment};
    names += "\n  " + segment->SegmentName();
  }
  if (names.empty()) throw CommandError("no courses of the event share a segment");
  throw CommandError("there is no segment \"" + name + "\"; the segments are" + names);
}

ChosenSet FromChoice(const ClassAndCourseValue& choice) {
  if (choice.ClassIndex > 0) return {DataSetKind::kClass, choice.ClassIndex, nullptr};
  return {DataSetKind::kCourse, choice.CourseNum, nullptr};
}

// Puts the runners of a class or course into an empty data set; the data set of a segment has its
// runners already.
void Fill(DataSet& set, const ChosenSet& choice) {
  if (choice.kind == DataSetKind::kClass) {
    set.AddClass(choice.number);
  } else if (choice.kind == DataSetKind::kCourse) {
    set.AddCourse(choice.number);
  }
}

}  // namespace

bool NamesOneSet(const Options& options) {
  return options.class_name || options.course || options.segment;
}

std::vector<ChosenSet> ChosenSets(const clsKeltrun2& root, const Options& options) {
  if (options.class_name) return {FindClass(root, *options.class_name)};
  if (options.course) return {FindCourse(root, *options.course)};
  if (options.segment) return {FindSegment(root, *options.segment)};
  std::vector<ChosenSet> sets;
  for (const std::string& text : root.ClassAndCourseList()) {
    sets.push_back(FromChoice(root.SeparateClassAndCourseValue(text)));
  }
  return sets;
}

std::vector<ChosenSet> NamedSetOrClasses(const clsKeltrun2& root, const Options& options) {
  auto sets = ChosenSets(root, options);
  if (!NamesOneSet(options)) {
    std::erase_if(sets, [](const ChosenSet& set) { return set.kind != DataSetKind::kClass; });
  }
  return sets;
}

ChosenSet OneSet(const clsKeltrun2& root, const Options& options) {
  const auto sets = ChosenSets(root, options);
  if (sets.empty()) throw CommandError("the event has no classes");
  if (sets.size() > 1) {
    throw CommandError("there are several sets: name one with --class, --course or --segment",
                       kWrongUse);
  }
  return sets.front();
}

std::shared_ptr<clsCourseData> CourseOf(const clsKeltrun2& root, const ChosenSet& choice) {
  if (choice.kind == DataSetKind::kSegment) return nullptr;
  const std::int32_t number = choice.kind == DataSetKind::kCourse
                                  ? choice.number
                                  : root.ClassData(choice.number)->CourseNum;
  return number != 0 ? root.CourseData(std::to_string(number)) : nullptr;
}

void AddControlCodes(clsAnalyzer& analyzer, std::shared_ptr<clsCourseData> course) {
  if (course && course->ControlCount() >= analyzer.ControlCount) {
    analyzer.SetCourseData(std::move(course));
  }
}

std::shared_ptr<clsAnalyzer> Analysis(const clsKeltrun2& root, const ChosenSet& choice,
                                      const Options& options) {
  auto analyzer = choice.segment ? choice.segment->Analyzer() : root.NewAnalyzer();
  Fill(*analyzer, choice);
  analyzer->SetUntimedLegs(options.untimed);
  analyzer->Execute();
  return analyzer;
}

std::vector<clsTextControl::AnalysisSet> AnalysesOfAll(const clsKeltrun2& root,
                                                       const std::vector<ChosenSet>& choices,
                                                       const Options& options) {
  std::vector<clsTextControl::AnalysisSet> sets;
  for (const ChosenSet& choice : choices) {
    sets.push_back({Analysis(root, choice, options), choice.kind});
    if (sets.back().Analyzer->LeftOutCount() == 0) continue;
    for (auto& analyzer : root.NewAnalyzersOfOtherCourses(choice.number)) {
      analyzer->SetUntimedLegs(options.untimed);
      analyzer->Execute();
      sets.push_back({std::move(analyzer), DataSetKind::kCourse});
    }
  }
  return sets;
}

std::shared_ptr<clsResultsHolder> ResultList(const clsKeltrun2& root, const ChosenSet& choice) {
  auto results = choice.segment ? choice.segment->ResultsHolder() : root.NewResultsHolder();
  Fill(*results, choice);
  results->CalcRank();
  return results;
}

}  // namespace keltrun::cli
