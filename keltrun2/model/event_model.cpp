#include "keltrun2/model/event_model.h"

#include <algorithm>
#include <map>
#include <unordered_map>

#include "keltrun2/base/automation_error.h"
#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"
#include "keltrun2/text/split.h"
#include "keltrun2/text/utf16.h"

namespace keltrun {
namespace {

std::string CourseKey(std::int32_t course_number) { return std::to_string(course_number); }

std::string NumberOrEmpty(std::int32_t value) { return value == 0 ? "" : std::to_string(value); }

// Collects the classes of each course. The courses are ordered by their last class.
class CourseChoices {
 public:
  // Counts the runners of a class for each of the courses that they had.
  void Join(const clsClassData& klass, std::int32_t position) {
    for (const auto& [course, runners] : ClassDataInternal::RunnersOfCourses(klass)) {
      if (course == 0) continue;
      Entry& entry = entries_[course];
      entry.last_class = position;
      entry.classes.push_back(&klass);
      entry.runners += runners;
    }
  }

  void AppendShared(std::vector<ClassAndCourseChoice>& choices) const {
    std::map<std::pair<std::int32_t, std::int32_t>, const Entry*> shared;
    for (const auto& [course, entry] : entries_) {
      if (entry.classes.size() >= 2) shared.emplace(std::pair(entry.last_class, course), &entry);
    }
    for (const auto& [key, entry] : shared) choices.push_back(MakeChoice(key.second, *entry));
  }

 private:
  struct Entry {
    std::vector<const clsClassData*> classes;
    std::int32_t runners = 0;
    std::int32_t last_class = 0;
  };

  static ClassAndCourseChoice MakeChoice(std::int32_t course, const Entry& entry) {
    ClassAndCourseChoice choice;
    choice.CourseNum = course;
    choice.RunnerCount = entry.runners;
    for (const clsClassData* const klass : entry.classes) {
      const bool is_first = klass == entry.classes.front();
      choice.ValueName.append(is_first ? "" : "/").append(InList(klass->ClassName()));
      choice.FileName.append(is_first ? "" : "_").append(InList(klass->FileName()));
    }
    return choice;
  }

  // A name can be as long as a file, and its class can have thousands of courses.
  static std::string_view InList(std::string_view name) {
    constexpr std::size_t kMostUnits = 200;
    return Utf16Prefix(name, kMostUnits);
  }

  std::unordered_map<std::int32_t, Entry> entries_;  // by course number
};

}  // namespace

std::string ToString(const ClassAndCourseChoice& choice) {
  return NumberOrEmpty(choice.ClassIndex) + "," + NumberOrEmpty(choice.CourseNum) + "," +
         choice.ValueName + "," + choice.FileName + "," + std::to_string(choice.RunnerCount);
}

void EventModel::Clear() {
  ResetSerialNumbers();
  classes_.Clear();
  courses_.Clear();
  Segments.clear();
  SegmentRemark.clear();
  Corrections.clear();
  Event = std::make_shared<clsEventData>();
  Meta = std::make_shared<clsMetaData>();
  FileName.clear();
  FileDate = 0;
  FileFormat.clear();
}

std::shared_ptr<clsClassData> EventModel::ClassByName(std::string_view name) const {
  return classes_.Find(FoldCase(name));
}

std::shared_ptr<clsClassData> EventModel::AddClass(std::string_view name) {
  if (auto existing = ClassByName(name)) return existing;
  auto klass = std::make_shared<clsClassData>();
  ClassDataInternal::SetClassName(*klass, name);
  AddClassObject(klass);
  return klass;
}

bool EventModel::AddClassObject(const std::shared_ptr<clsClassData>& klass) {
  return classes_.Add(FoldCase(klass->ClassName()), klass);
}

void EventModel::RemoveClass(std::string_view name) { classes_.Remove(FoldCase(name)); }

void EventModel::RenameClass(std::string_view old_name, std::string_view new_name) {
  const auto found = std::find_if(Classes().begin(), Classes().end(), [&](const auto& klass) {
    return klass->ClassName() == old_name;
  });
  if (found == Classes().end()) return;
  const std::shared_ptr<clsClassData>& klass = *found;
  const auto holder = ClassByName(new_name);
  if (holder && holder != klass) {
    throw AutomationError(KR_ERROR_DUPLICATE_KEY,
                          "clsKeltrun2.RenameClass: the class \"" + holder->ClassName() +
                              "\" already exists (letter case is ignored); choose another name");
  }
  const std::string old_key = FoldCase(klass->ClassName());
  ClassDataInternal::SetClassName(*klass, std::string(new_name));
  classes_.Rekey(old_key, FoldCase(klass->ClassName()));
  for (const auto& runner : ClassDataInternal::Runners(*klass)) {
    ClassDataInternal::GiveClassName(*klass, *runner);
  }
}

void EventModel::SortClass(std::string_view order) {
  std::vector<std::shared_ptr<clsClassData>> reordered;
  std::vector<bool> placed(Classes().size(), false);
  const auto place = [&](std::size_t index) {
    if (placed[index]) return;
    placed[index] = true;
    reordered.push_back(Classes()[index]);
  };
  const CclsSplit fields(",", order);
  for (std::int32_t i = 0; i <= fields.Bound(); ++i) {
    const std::int32_t position = NumericLong(fields.Value(i));
    if (position <= 0) continue;
    CheckIndex(position, 1, ClassCount(), "clsKeltrun2.SortClass");
    place(static_cast<std::size_t>(position) - 1);
  }
  for (std::size_t index = 0; index < placed.size(); ++index) place(index);
  classes_.Reorder(std::move(reordered));
}

std::shared_ptr<clsCourseData> EventModel::CourseByKey(std::string_view key) const {
  return courses_.Find(std::string(key));
}

std::shared_ptr<clsCourseData> EventModel::CourseByNumber(std::int32_t course_number) const {
  return courses_.Find(CourseKey(course_number));
}

std::shared_ptr<clsCourseData> EventModel::AddCourse(std::int32_t course_number) {
  if (auto existing = CourseByNumber(course_number)) return existing;
  auto course = std::make_shared<clsCourseData>();
  course->SetCourseIndex(course_number);
  AddCourseObject(course);
  return course;
}

bool EventModel::AddCourseObject(const std::shared_ptr<clsCourseData>& course) {
  return courses_.Add(CourseKey(course->CourseIndex()), course);
}

void EventModel::RemoveCourse(std::int32_t course_number) {
  courses_.Remove(CourseKey(course_number));
}

void EventModel::ClearCourse() {
  courses_.Clear();
  Segments.clear();
  SegmentRemark.clear();
}

void EventModel::SortLap() {
  for (const auto& klass : Classes()) klass->SortLap();
}

std::vector<ClassAndCourseChoice> EventModel::Choices() const {
  std::vector<ClassAndCourseChoice> choices;
  CourseChoices courses;
  std::int32_t position = 0;
  for (const auto& klass : Classes()) {
    choices.push_back({++position, 0, klass->ClassName(), klass->FileName(), klass->LapCount()});
    courses.Join(*klass, position);
  }
  courses.AppendShared(choices);
  return choices;
}

}  // namespace keltrun
