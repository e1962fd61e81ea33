// A run of controls that several courses share.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace keltrun {

/// The plain data of a segment set.
struct SegmentSet {
  std::vector<std::string> TargetCourseTable;  // course number, TAB, position of the first control
  std::vector<std::string> TargetClassList;    // class name, ";", position of the first control
  std::int32_t ControlCount = 0;               // controls strictly inside the run
  std::string SegmentName;                     // codes joined by "-", "S" start, "F" finish
  std::string SegmentBinaryName;               // four digits a code
};

}  // namespace keltrun
