// One event as data: what readers fill, analysis reads and outputs describe.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/model/class_data.h"
#include "keltrun2/model/course_data.h"
#include "keltrun2/model/event_data.h"
#include "keltrun2/model/meta_data.h"
#include "keltrun2/model/registry.h"
#include "keltrun2/model/segment_set.h"

namespace keltrun {

/// One choice for a host's selection box: a class, or all classes that run one course.
struct ClassAndCourseChoice {
  std::int32_t ClassIndex = 0;  // position of the class, 0 for a course
  std::int32_t CourseNum = 0;   // course number, 0 for a class
  std::string ValueName;        // class names joined by "/"
  std::string FileName;         // file base names joined by "_"
  std::int32_t RunnerCount = 0;
};

/// The five fields of a choice as one text, separated by commas; a 0 in the first two is empty.
std::string ToString(const ClassAndCourseChoice& choice);

/// The model of one event: classes, courses, segment sets, header and metadata, without services.
class EventModel {
 public:
  std::string FileName;
  DateTime FileDate = 0;

  std::shared_ptr<clsEventData> Event = std::make_shared<clsEventData>();
  std::shared_ptr<clsMetaData> Meta = std::make_shared<clsMetaData>();
  std::vector<std::shared_ptr<SegmentSet>> Segments;
  std::string SegmentRemark;  // what the segment sets leave out, "" when nothing

  /// Empties everything and starts the runner numbers again.
  void Clear();

  const std::vector<std::shared_ptr<clsClassData>>& Classes() const { return classes_.Items(); }
  std::int32_t ClassCount() const { return classes_.Count(); }
  /// Names are compared without regard to letter case. Null when there is none.
  std::shared_ptr<clsClassData> ClassByName(std::string_view name) const;
  /// Position from 1. Null when there is none.
  std::shared_ptr<clsClassData> ClassAt(std::int32_t position) const {
    return classes_.At(position);
  }
  /// The class of that name, made when there is none.
  std::shared_ptr<clsClassData> AddClass(std::string_view name);
  /// Registers a prepared class under its name; false when the name is taken.
  bool AddClassObject(const std::shared_ptr<clsClassData>& klass);
  void RemoveClass(std::string_view name);
  /// Renames the first class whose name is exactly `old_name`, and its runners' class name; nothing
  /// when there is none. Raises duplicate key (457) when another class has the new name.
  void RenameClass(std::string_view old_name, std::string_view new_name);
  /// Puts the classes at the listed positions (from 1, separated by commas) first, the others
  /// behind in their old order. A position listed twice counts once, entries that are no positive
  /// number are skipped. Raises subscript out of range (9) for a position beyond the last class.
  void SortClass(std::string_view order);

  const std::vector<std::shared_ptr<clsCourseData>>& Courses() const { return courses_.Items(); }
  std::int32_t CourseCount() const { return courses_.Count(); }
  std::shared_ptr<clsCourseData> CourseByKey(std::string_view key) const;
  std::shared_ptr<clsCourseData> CourseByNumber(std::int32_t course_number) const;
  std::shared_ptr<clsCourseData> CourseAt(std::int32_t position) const {
    return courses_.At(position);
  }
  std::shared_ptr<clsCourseData> AddCourse(std::int32_t course_number);
  bool AddCourseObject(const std::shared_ptr<clsCourseData>& course);
  void RemoveCourse(std::int32_t course_number);
  /// Empties courses and segment sets.
  void ClearCourse();

  /// Sorts the runners of every class by result.
  void SortLap();

  /// All classes in order, then every course that at least two classes run, in the order in which
  /// the last of its classes comes.
  std::vector<ClassAndCourseChoice> Choices() const;

 private:
  Registry<clsClassData> classes_;   // key: class name with letter case folded
  Registry<clsCourseData> courses_;  // key: decimal course number
};

/// The component's version: "2.27 ( Build 242 )", or "2.27".
std::string VersionText(bool with_build);

}  // namespace keltrun
