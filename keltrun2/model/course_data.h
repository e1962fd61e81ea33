// A course: a sequence of controls.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/base/export.h"

namespace keltrun {

/// A course. Several classes can share it: their clsClassData::CourseNum is its CourseIndex.
class KELTRUN2_API clsCourseData {
 public:
  /// The highest index of a control.
  static constexpr std::int32_t kMostControls = 50;
  /// The code that ControlNum returns for the start.
  static constexpr std::int32_t kStartCode = 0;
  /// The code that ControlNum returns for the finish.
  static constexpr std::int32_t kFinishCode = 9999;

  /// The course number.
  std::int32_t CourseIndex() const { return course_index_; }
  /// Changes the number of the course. The CourseNum of its classes is not changed.
  void SetCourseIndex(std::int32_t Index) { course_index_ = Index; }

  /// Number of controls, not counting start and finish.
  std::int32_t ControlCount() const { return control_count_; }
  /// Sets the number of controls without changing any codes.
  void SetControlCount(std::int32_t Count) { control_count_ = Count; }

  /// The code of a control: 0 for index 0 (the start), the stored code for 1 to ControlCount, 9999
  /// above ControlCount (the finish). Raises subscript out of range (9) for an index below 0, and
  /// for one above 50 that is not above ControlCount.
  std::int32_t ControlNum(std::int32_t Index) const;
  /// Stores the code of a control; ControlCount is not changed. Raises subscript out of range (9)
  /// for an index outside 0 to 50.
  void SetControlNum(std::int32_t Index, std::int32_t Code);

  /// The code of a control as it is shown: the text that was set for it, else ControlNum as a
  /// number. Programs give some controls names that are no numbers, such as "F1". Empty for the
  /// start and the finish. Raises errors like ControlNum.
  std::string ControlCodeText(std::int32_t Index) const;
  /// Sets the text of a code that is not a number; empty for none. ControlNum is not changed.
  /// Raises subscript out of range (9) for an index outside 1 to 50.
  void SetControlCodeText(std::int32_t Index, std::string_view Text);
  /// Whether the control has a text of its own, set by SetControlCodeText.
  bool HasCodeText(std::int32_t Index) const { return code_texts_.contains(Index); }

 private:
  std::int32_t course_index_ = 0;
  std::int32_t control_count_ = 0;
  std::vector<std::int32_t> codes_;                 // by index; those after the end are 0
  std::map<std::int32_t, std::string> code_texts_;  // by index
};

}  // namespace keltrun
