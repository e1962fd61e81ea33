// What a data set was made from.
#pragma once

#include <cstdint>

namespace keltrun {

/// What a data set was made from.
enum class DataSetKind : std::int32_t {
  kClass,    ///< One class.
  kCourse,   ///< All classes of a course.
  kSegment,  ///< A run of controls that several courses share.
};

}  // namespace keltrun
