// What a data set was made from.
#pragma once

#include <cstdint>

namespace keltrun {

/// A class, all classes of a course, or a segment that several courses share.
enum class DataSetKind : std::int32_t { kClass, kCourse, kSegment };

}  // namespace keltrun
