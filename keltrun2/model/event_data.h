// The header of an event.
#pragma once

#include <memory>
#include <string>

#include "keltrun2/base/export.h"
#include "keltrun2/model/time_values.h"

namespace keltrun {

/// The head of an event, the texts as the lap file has them; empty when unknown.
class KELTRUN2_API clsEventData {
 public:
  /// An event of which nothing is known.
  clsEventData() = default;
  clsEventData(const clsEventData&) = delete;
  clsEventData& operator=(const clsEventData&) = delete;
  /// The date object goes along; what is left behind is only to be assigned to or destroyed.
  clsEventData(clsEventData&&) = default;
  /// Takes over the values; the date object stays this event's own.
  clsEventData& operator=(clsEventData&& other) noexcept;

  std::string EventName;     ///< Name of the event as the organizer gives it.
  std::string Terrain;       ///< Name of the map or area.
  std::string Memo;          ///< Remarks for readers of the results.
  std::string FileName;      ///< Name of the lap file the event came from.
  std::string OfficialSite;  ///< Address of the event's web site.

  /// Date of the event; never null, value 0 when unknown.
  const std::shared_ptr<clsDateValue>& EventDate() const { return event_date_; }
  /// Stores the value itself, not a copy; null stores a new value 0.
  void SetEventDate(std::shared_ptr<clsDateValue> Value);

  /// Name, terrain in brackets and date (by the resource pattern RES_META_DATE_FORMAT), as far as
  /// known.
  std::string ToString() const;

 private:
  std::shared_ptr<clsDateValue> event_date_ = std::make_shared<clsDateValue>();
};

}  // namespace keltrun
