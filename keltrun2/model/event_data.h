// The header of an event.
#pragma once

#include <memory>
#include <string>

#include "keltrun2/model/time_values.h"

namespace keltrun {

class clsEventData {
 public:
  clsEventData() = default;
  clsEventData(const clsEventData&) = delete;
  clsEventData& operator=(const clsEventData&) = delete;
  clsEventData(clsEventData&&) = default;
  /// Takes over the values; the date object stays this event's own.
  clsEventData& operator=(clsEventData&& other) noexcept;

  std::string EventName;
  std::string Terrain;  // name of the map or area
  std::string Memo;
  std::string FileName;      // the lap file the event came from
  std::string OfficialSite;  // address of the event's web site

  /// Never null; value 0 when unknown. Setting null stores a new value 0.
  const std::shared_ptr<clsDateValue>& EventDate() const { return event_date_; }
  void SetEventDate(std::shared_ptr<clsDateValue> Value);

  /// Name, terrain in brackets and date (by the resource pattern RES_META_DATE_FORMAT), as far as
  /// known.
  std::string ToString() const;

 private:
  std::shared_ptr<clsDateValue> event_date_ = std::make_shared<clsDateValue>();
};

}  // namespace keltrun
