#include "keltrun2/c/sets.h"

#include <algorithm>
#include <string>
#include <utility>

namespace keltrun::c {
namespace {

// Courses that share many controls make more segments than anybody looks at.
constexpr std::int32_t kMostSegments = 40;

ChosenSet FindClass(const clsKeltrun2& root, const std::string& name) {
  const auto wanted = root.ClassData(name);
  std::string names;
  for (std::int32_t i = 1; i <= root.ClassCount(); ++i) {
    const auto klass = root.ClassData(i);
    if (klass == wanted) return {DataSetKind::kClass, i, nullptr};
    names += " " + klass->ClassName();
  }
  throw Failure("there is no class \"" + name + "\"; the classes are" + names);
}

bool HasRunners(const clsKeltrun2& root, std::int32_t course) {
  const auto analyzer = root.NewAnalyzer();
  analyzer->AddCourse(course);
  return analyzer->Count() > 0;
}

ChosenSet FindSegment(const clsKeltrun2& root, const std::string& name) {
  std::string names;
  for (std::int32_t i = 1; i <= root.SegmentCount(); ++i) {
    const auto segment = root.SegmentData(i);
    if (segment->SegmentName() == name) return {DataSetKind::kSegment, i, segment};
    names += " " + segment->SegmentName();
  }
  throw Failure("there is no segment \"" + name + "\"; the segments are" + names);
}

// Puts the runners of a class or course into an empty data set; the data set of a segment has its
// runners already.
void Fill(DataSet& data, const ChosenSet& set) {
  if (set.kind == DataSetKind::kClass) data.AddClass(set.number);
  if (set.kind == DataSetKind::kCourse) data.AddCourse(set.number);
}

void Execute(clsAnalyzer& analyzer, const Options& options) {
  analyzer.SetUntimedLegs(options.untimed);
  analyzer.Execute();
}

}  // namespace

bool NamesOneSet(const Options& options) {
  return options.class_name || options.course || options.segment;
}

std::vector<ChosenSet> ChosenSets(const Event& event) {
  const clsKeltrun2& root = event.Root();
  const Options& options = event.Options;
  if (options.class_name) return {FindClass(root, *options.class_name)};
  if (options.segment) return {FindSegment(root, *options.segment)};
  if (options.course) {
    if (HasRunners(root, *options.course)) {
      return {{DataSetKind::kCourse, *options.course, nullptr}};
    }
    throw Failure("no runner has course " + std::to_string(*options.course));
  }
  std::vector<ChosenSet> sets;
  for (const std::string& text : root.ClassAndCourseList()) {
    const ClassAndCourseValue choice = root.SeparateClassAndCourseValue(text);
    const bool is_class = choice.ClassIndex > 0;
    sets.push_back({is_class ? DataSetKind::kClass : DataSetKind::kCourse,
                    is_class ? choice.ClassIndex : choice.CourseNum, nullptr});
  }
  return sets;
}

std::vector<ChosenSet> NamedSetOrClasses(const Event& event) {
  auto sets = ChosenSets(event);
  if (!NamesOneSet(event.Options)) {
    std::erase_if(sets, [](const ChosenSet& set) { return set.kind != DataSetKind::kClass; });
  }
  return sets;
}

ChosenSet OneSet(const Event& event) {
  const auto sets = ChosenSets(event);
  if (sets.empty()) throw Failure("the event has no classes");
  if (sets.size() > 1) {
    throw Failure("there are several sets: name one with the option class, course or segment");
  }
  return sets.front();
}

std::vector<clsHtmlControl::ViewerSet> ReportedSets(const Event& event) {
  std::vector<ChosenSet> sets = ChosenSets(event);
  if (!NamesOneSet(event.Options)) {
    const std::int32_t count = std::min(event.Root().SegmentCount(), kMostSegments);
    for (std::int32_t i = 1; i <= count; ++i) {
      sets.push_back({DataSetKind::kSegment, i, event.Root().SegmentData(i)});
    }
  }
  std::vector<clsHtmlControl::ViewerSet> reported;
  for (const auto& [analyzer, kind] : Analyses(event, sets)) {
    if (analyzer->Count() == 0) continue;
    analyzer->ExtraAnalyze();
    reported.push_back({analyzer, kind});
  }
  return reported;
}

std::shared_ptr<clsAnalyzer> Analysis(const Event& event, const ChosenSet& set) {
  auto analyzer = set.segment ? set.segment->Analyzer() : event.Root().NewAnalyzer();
  Fill(*analyzer, set);
  Execute(*analyzer, event.Options);
  return analyzer;
}

std::vector<clsTextControl::AnalysisSet> Analyses(const Event& event,
                                                  const std::vector<ChosenSet>& sets) {
  std::vector<clsTextControl::AnalysisSet> analyses;
  for (const ChosenSet& set : sets) {
    analyses.push_back({Analysis(event, set), set.kind});
    if (analyses.back().Analyzer->LeftOutCount() == 0) continue;
    for (auto& analyzer : event.Root().NewAnalyzersOfOtherCourses(set.number)) {
      Execute(*analyzer, event.Options);
      analyses.push_back({std::move(analyzer), DataSetKind::kCourse});
    }
  }
  return analyses;
}

std::shared_ptr<clsResultsHolder> ResultList(const Event& event, const ChosenSet& set) {
  auto results = set.segment ? set.segment->ResultsHolder() : event.Root().NewResultsHolder();
  Fill(*results, set);
  results->CalcRank();
  return results;
}

}  // namespace keltrun::c
