#include "keltrun2/model/course_data.h"

#include "keltrun2/base/automation_error.h"

namespace keltrun {

std::int32_t clsCourseData::ControlNum(std::int32_t Index) const {
  if (Index == 0) return kStartCode;
  if (Index > control_count_ && Index > 0) return kFinishCode;
  CheckIndex(Index, 0, kMostControls, "clsCourseData.ControlNum");
  return codes_[static_cast<std::size_t>(Index)];
}

void clsCourseData::SetControlNum(std::int32_t Index, std::int32_t Code) {
  CheckIndex(Index, 0, kMostControls, "clsCourseData.ControlNum");
  codes_[static_cast<std::size_t>(Index)] = Code;
}

}  // namespace keltrun
