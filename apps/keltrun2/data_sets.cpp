#include "apps/keltrun2/data_sets.h"

#include <map>
#include <string>

#include "apps/keltrun2/command_error.h"

namespace keltrun::cli {
namespace {

ClassAndCourseValue FindClass(const clsKeltrun2& root, const std::string& name) {
  const auto wanted = root.ClassData(name);
  std::string names;
  for (std::int32_t i = 1; i <= root.ClassCount(); ++i) {
    const auto klass = root.ClassData(i);
    if (klass == wanted) return {klass->ClassName(), i, 0, klass->FileName(), klass->LapCount()};
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
    if (klass->CourseNum > 0) courses[klass->CourseNum] += " " + klass->ClassName();
  }
  return courses;
}

ClassAndCourseValue FindCourse(const clsKeltrun2& root, std::int32_t number) {
  const auto courses = CoursesWithClasses(root);
  if (courses.contains(number)) return {courses.at(number), 0, number, "", 0};
  if (courses.empty()) throw CommandError("no class of the event names a course");
  std::string names;
  for (const auto& [course, classes] : courses) {
    names += "\n  " + std::to_string(course) + ":" + classes;
  }
  throw CommandError("no class runs course " + std::to_string(number) +
                     "; the courses and their classes are" + names);
}

}  // namespace

bool NamesOneSet(const Options& options) { return options.class_name || options.course; }

std::vector<ClassAndCourseValue> ChosenSets(const clsKeltrun2& root, const Options& options) {
  if (options.class_name) return {FindClass(root, *options.class_name)};
  if (options.course) return {FindCourse(root, *options.course)};
  std::vector<ClassAndCourseValue> sets;
  for (const std::string& text : root.ClassAndCourseList()) {
    sets.push_back(root.SeparateClassAndCourseValue(text));
  }
  return sets;
}

ClassAndCourseValue OneSet(const clsKeltrun2& root, const Options& options) {
  const auto sets = ChosenSets(root, options);
  if (sets.empty()) throw CommandError("the event has no classes");
  if (sets.size() > 1) {
    throw CommandError("an HTML page holds one class or course: name it with --class or --course",
                       kWrongUse);
  }
  return sets.front();
}

DataSetKind KindOf(const ClassAndCourseValue& choice) {
  return choice.ClassIndex > 0 ? DataSetKind::kClass : DataSetKind::kCourse;
}

void Fill(DataSet& set, const ClassAndCourseValue& choice) {
  if (choice.ClassIndex > 0) {
    set.AddClass(choice.ClassIndex);
  } else {
    set.AddCourse(choice.CourseNum);
  }
}

}  // namespace keltrun::cli
