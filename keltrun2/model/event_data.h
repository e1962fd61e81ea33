// The header of an event.
#pragma once

#include <memory>
#include <string>

#include "keltrun2/base/export.h"
#include "keltrun2/model/time_values.h"

namespace keltrun {

/// The header of an event. The texts are those of the lap file, empty if unknown.
class KELTRUN2_API clsEventData {
 public:
  /// Creates a header with nothing known.
  clsEventData() = default;
  clsEventData(const clsEventData&) = delete;
  clsEventData& operator=(const clsEventData&) = delete;
  /// Moves the texts and the date object. The other header may only be assigned to or destroyed
  /// afterwards.
  clsEventData(clsEventData&&) = default;
  /// Takes over the values. This header keeps its own date object.
  clsEventData& operator=(clsEventData&& other) noexcept;

  std::string EventName;     ///< Name of the event, as given by the organizer.
  std::string Terrain;       ///< Name of the map or area.
  std::string Memo;          ///< Remarks for readers of the results.
  std::string FileName;      ///< Name of the lap file that the event was loaded from.
  std::string OfficialSite;  ///< Address of the event's web site.

  /// Date of the event. Never null; its value is 0 if the date is unknown.
  const std::shared_ptr<clsDateValue>& EventDate() const { return event_date_; }
  /// Stores the object itself, not a copy; null stores a new object with the value 0.
  void SetEventDate(std::shared_ptr<clsDateValue> Value);

  /// Name, terrain in brackets and date, as far as they are known. The date is formatted with the
  /// resource pattern RES_META_DATE_FORMAT.
  std::string ToString() const;

 private:
  std::shared_ptr<clsDateValue> event_date_ = std::make_shared<clsDateValue>();
};

}  // namespace keltrun
