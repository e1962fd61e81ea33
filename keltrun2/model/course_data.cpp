#include "keltrun2/model/course_data.h"

#include "keltrun2/base/automation_error.h"

namespace keltrun {

std::int32_t clsCourseData::ControlNum(std::int32_t Index) const {
  if (Index == 0) return kStartCode;
  if (Index > control_count_ && Index > 0) return kFinishCode;
  CheckIndex(Index, 0, kMostControls, "clsCourseData.ControlNum");
  const auto at = static_cast<std::size_t>(Index);
  return at < codes_.size() ? codes_[at] : 0;
}

void clsCourseData::SetControlNum(std::int32_t Index, std::int32_t Code) {
  CheckIndex(Index, 0, kMostControls, "clsCourseData.ControlNum");
  const auto at = static_cast<std::size_t>(Index);
  if (at >= codes_.size()) codes_.resize(at + 1);
  codes_[at] = Code;
}

std::string clsCourseData::ControlCodeText(std::int32_t Index) const {
  const std::int32_t code = ControlNum(Index);
  const auto text = code_texts_.find(Index);
  if (text != code_texts_.end()) return text->second;
  return Index == 0 || Index > control_count_ ? "" : std::to_string(code);
}

void clsCourseData::SetControlCodeText(std::int32_t Index, std::string_view Text) {
  CheckIndex(Index, 1, kMostControls, "clsCourseData.SetControlCodeText");
  if (Text.empty()) {
    code_texts_.erase(Index);
  } else {
    code_texts_[Index] = Text;
  }
}

}  // namespace keltrun
