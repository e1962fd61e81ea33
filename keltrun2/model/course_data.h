// A course: the sequence of controls it visits.
#pragma once

#include <array>
#include <cstdint>

#include "keltrun2/base/export.h"

namespace keltrun {

/// A course. Several classes may run it: clsClassData::CourseNum names the CourseIndex.
class KELTRUN2_API clsCourseData {
 public:
  /// The highest control of a course.
  static constexpr std::int32_t kMostControls = 50;
  /// What ControlNum gives for the start.
  static constexpr std::int32_t kStartCode = 0;
  /// What ControlNum gives for the finish.
  static constexpr std::int32_t kFinishCode = 9999;

  /// The course number.
  std::int32_t CourseIndex() const { return course_index_; }
  /// Renumbers the course; the CourseNum of classes that run it is not changed.
  void SetCourseIndex(std::int32_t Index) { course_index_ = Index; }

  /// Number of controls, start and finish not counted.
  std::int32_t ControlCount() const { return control_count_; }
  /// Sets the number of controls and stores no codes.
  void SetControlCount(std::int32_t Count) { control_count_ = Count; }

  /// The code of a control: 0 for the start (index 0), the stored code for 1 to ControlCount, 9999
  /// beyond (the finish). Raises subscript out of range (9) below 0, and above 50 within
  /// ControlCount.
  std::int32_t ControlNum(std::int32_t Index) const;
  /// Stores a code, index 0 to 50; ControlCount is not changed. Raises subscript out of range (9)
  /// otherwise.
  void SetControlNum(std::int32_t Index, std::int32_t Code);

 private:
  std::int32_t course_index_ = 0;
  std::int32_t control_count_ = 0;
  std::array<std::int32_t, kMostControls + 1> codes_{};
};

}  // namespace keltrun
