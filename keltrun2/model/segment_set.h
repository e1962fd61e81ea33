// A run of controls that several courses share.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace keltrun {

/// A segment, and the courses and classes that have it.
struct SegmentSet {
  /// The courses: course number, TAB, position of the first control of the segment in the course.
  std::vector<std::string> TargetCourseTable;
  /// The classes: class name, ";", position of the first control of the segment in their course.
  std::vector<std::string> TargetClassList;
  /// Number of controls between the first and the last one of the segment.
  std::int32_t ControlCount = 0;
  /// The control codes joined by "-", with "S" for the start and "F" for the finish.
  std::string SegmentName;
  /// Four digits for each control code, with "0000" for the start and "9999" for the finish.
  std::string SegmentBinaryName;
};

}  // namespace keltrun
