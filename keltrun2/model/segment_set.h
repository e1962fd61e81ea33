// A run of controls that several courses share.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace keltrun {

/// The plain data of a segment set.
struct SegmentSet {
  /// Where the run occurs: course number, TAB, position of the run's first control in the course.
  std::vector<std::string> TargetCourseTable;
  /// Who ran it: class name, ";", position of the run's first control in the class's course.
  std::vector<std::string> TargetClassList;
  /// Number of controls strictly inside the run.
  std::int32_t ControlCount = 0;
  /// The codes joined by "-", the start as "S" and the finish as "F".
  std::string SegmentName;
  /// Four digits for each code, the start as "0000" and the finish as "9999".
  std::string SegmentBinaryName;
};

}  // namespace keltrun
