// A segment set: a run of controls that several courses share.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "keltrun2/model/segment_set.h"

namespace keltrun {

/// One segment set of the event, as it was when it was read from the root object.
class clsSegmentData {
 public:
  explicit clsSegmentData(SegmentSet segment) : segment_(std::move(segment)) {}

  /// Controls strictly inside the run; the run has ControlCount + 1 legs.
  std::int32_t ControlCount() const { return segment_.ControlCount; }
  /// The codes joined by "-", the start as "S" and the finish as "F".
  const std::string& SegmentName() const { return segment_.SegmentName; }

 private:
  SegmentSet segment_;
};

}  // namespace keltrun
