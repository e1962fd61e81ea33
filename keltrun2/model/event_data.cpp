#include "keltrun2/model/event_data.h"

#include <utility>

#include "keltrun2/config/settings.h"

namespace keltrun {

clsEventData& clsEventData::operator=(clsEventData&& other) noexcept {
  EventName = std::move(other.EventName);
  Terrain = std::move(other.Terrain);
  Memo = std::move(other.Memo);
  FileName = std::move(other.FileName);
  OfficialSite = std::move(other.OfficialSite);
  event_date_->SetValue(other.event_date_->Value());
  return *this;
}

void clsEventData::SetEventDate(std::shared_ptr<clsDateValue> Value) {
  event_date_ = Value ? std::move(Value) : std::make_shared<clsDateValue>();
}

std::string clsEventData::ToString() const {
  std::string out = EventName;
  if (!Terrain.empty()) out += " [" + Terrain + "] ";
  if (event_date_->Value() > 0) {
    out += " " + event_date_->ToString(ResourceText("RES_META_DATE_FORMAT"));
  }
  return out;
}

}  // namespace keltrun
