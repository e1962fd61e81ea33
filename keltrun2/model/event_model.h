// The data of one event. Readers fill it; the analysis and the outputs read it.
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
  std::int32_t ClassIndex = 0;  // position of the class; 0 for a course
  std::int32_t CourseNum = 0;   // course number; 0 for a class
  std::string ValueName;        // class names joined by "/"
  std::string FileName;         // file base names joined by "_"
  std::int32_t RunnerCount = 0;
};

/// The five fields of a choice, separated by commas; 0 in the first two is left empty.
std::string ToString(const ClassAndCourseChoice& choice);

/// The model of one event: classes, courses, segment sets, header and metadata.
class EventModel {
 public:
  std::string FileName;
  DateTime FileDate = 0;
  std::string FileFormat;  // the name of the format of the file, "" when none was loaded

  std::shared_ptr<clsEventData> Event = std::make_shared<clsEventData>();
  std::shared_ptr<clsMetaData> Meta = std::make_shared<clsMetaData>();
  std::vector<std::shared_ptr<SegmentSet>> Segments;
  std::string SegmentRemark;             // what the segment sets leave out, "" if nothing
  std::vector<std::string> Corrections;  // what was changed in the times after loading

  /// Removes everything and starts numbering runners from 1 again.
  void Clear();

  const std::vector<std::shared_ptr<clsClassData>>& Classes() const { return classes_.Items(); }
  std::int32_t ClassCount() const { return classes_.Count(); }
  /// The class with this name, ignoring letter case, or null.
  std::shared_ptr<clsClassData> ClassByName(std::string_view name) const;
  /// The class at a position, from 1, or null.
  std::shared_ptr<clsClassData> ClassAt(std::int32_t position) const {
    return classes_.At(position);
  }
  /// The class with this name. It is created if there is none.
  std::shared_ptr<clsClassData> AddClass(std::string_view name);
  /// Adds an existing class object under its name; false if the name is taken.
  bool AddClassObject(const std::shared_ptr<clsClassData>& klass);
  void RemoveClass(std::string_view name);
  /// Renames the class whose name is exactly `old_name`, also in the records of its runners. Does
  /// nothing if there is none. Raises duplicate key (457) if another class has the new name.
  void RenameClass(std::string_view old_name, std::string_view new_name);
  /// Moves the classes at the listed positions (from 1, separated by commas) to the front; the
  /// others follow in their old order. Repeated positions and entries that are not a positive
  /// number are ignored. Raises subscript out of range (9) for a position after the last class.
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
  /// Removes all courses and segment sets.
  void ClearCourse();

  /// Sorts the runners of every class by result.
  void SortLap();

  /// All classes in order, then every course that at least two classes share, in the order of the
  /// last class of each.
  std::vector<ClassAndCourseChoice> Choices() const;

 private:
  Registry<clsClassData> classes_;   // key: class name with letter case folded
  Registry<clsCourseData> courses_;  // key: decimal course number
};

}  // namespace keltrun
