// A runner's record.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "keltrun2/base/export.h"
#include "keltrun2/model/time_values.h"

namespace keltrun {

/// One runner's entry in one class: who ran, the official result and the time of every leg.
///
/// Legs are numbered from 1. Leg i is the time from control i - 1 to control i; the last leg ends
/// at the finish. A lap is a time in days or one of the markers of LapTimeConst. A record holds 50
/// legs at most.
///
///     auto runner = klass->AddLap();
///     runner->RunnerName = "Anna Berger";
///     runner->SetResult("1:02:03");
///     runner->SetLap(1, 83 / 86400.0);  // 1:23
class KELTRUN2_API clsLapData {
 public:
  /// The highest leg of a record.
  static constexpr std::int32_t kMostLegs = 50;

  /// An empty record, of no class.
  clsLapData() = default;
  clsLapData(const clsLapData&) = delete;
  clsLapData& operator=(const clsLapData&) = delete;

  std::string RunnerName;    ///< The whole name, surname and given name in any order.
  std::string ClubName;      ///< Name of the club; may be empty.
  std::string Rank;          ///< The official rank as the source gave it; may be any text.
  std::int32_t ID = 0;       ///< Competitor number of the source; 0 for none.
  std::int32_t Ecard = 0;    ///< Number of the electronic punch card; 0 for none.
  std::string RankFix;       ///< The rank as fixed by the organizer.
  std::string Seed;          ///< Seeding or start group.
  std::string Age;           ///< Age or age class.
  std::string Sex;           ///< Sex as the source has it.
  std::string CompetitorId;  ///< Identifier of the source system.

  /// Start time of day; never null, value 0 when unknown.
  const std::shared_ptr<clsTimeValue>& StartTime() const { return start_time_; }
  /// Stores the value itself, not a copy; null stores a new value 0.
  void SetStartTime(std::shared_ptr<clsTimeValue> Value);

  /// The number the runner got when added to a class, from 1 in the order of arrival; 0 before.
  std::int32_t SerialNum() const { return serial_num_; }

  /// Name of the class the runner runs in.
  const std::string& ClassName() const { return class_name_; }
  /// Changes the name only; the record stays in its class.
  void SetClassName(std::string_view ClassName) { class_name_ = ClassName; }

  /// The lap of a leg, 0 to 50 (0 is a slot without meaning). Reading a leg beyond LegCount raises
  /// LegCount to it. Raises subscript out of range (9) otherwise.
  DateTime Lap(std::int32_t Index);
  /// Stores the lap of a leg, raising LegCount to it when needed. A value that is not finite or
  /// longer than a million days is no time and stores KR_TIME_NODATA. Raises subscript out of range
  /// (9) outside 0 to 50.
  void SetLap(std::int32_t Index, DateTime Time);
  /// The lap as clsTimeValue::ToString shows it. Raises LegCount and errors as Lap does.
  std::string LapToString(std::int32_t Index, std::string_view FormatExpression = "hh:nn:ss",
                          bool Compact = false, std::string_view NoDataValue = kNoDataText,
                          std::string_view SkipValue = kSkipText,
                          std::string_view DisqValue = kDisqText);

  /// Number of legs in use.
  std::int32_t LegCount() const { return leg_count_; }
  /// Stores any value; lowering it hides laps, raising it shows them again.
  void SetLegCount(std::int32_t Count) { leg_count_ = Count; }

  /// The official result: a time as "h:mm:ss" (with a tenth of a second when the source gave a
  /// fraction), a status in upper case ("DNF", "MP"), or empty.
  const std::string& Result() const { return result_; }
  /// Takes a result in any notation of a time ("10203", "1:02:03.4", full-width digits) or a status
  /// word. A time of zero or below becomes "DISQ". Never fails.
  void SetResult(std::string_view Result);

 private:
  friend class LapDataInternal;

  std::string class_name_;
  std::string result_;
  std::int32_t leg_count_ = 0;
  std::int32_t serial_num_ = 0;
  std::array<DateTime, kMostLegs + 1> laps_{};
  std::shared_ptr<clsTimeValue> start_time_ = std::make_shared<clsTimeValue>();
};

}  // namespace keltrun
