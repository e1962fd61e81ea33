// The record of a runner.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/base/export.h"
#include "keltrun2/model/runner_status.h"
#include "keltrun2/model/time_values.h"

namespace keltrun {

/// One runner's entry in one class: who ran, the official result and the time of every leg.
///
/// Legs are numbered from 1. Leg i goes from control i - 1 to control i; the last leg ends at the
/// finish. A lap is a time in days or one of the markers in LapTimeConst. A record has at most 50
/// legs.
///
///     auto runner = klass->AddLap();
///     runner->RunnerName = "Anna Berger";
///     runner->SetResult("1:02:03");
///     runner->SetLap(1, 83 / 86400.0);  // 1:23
class KELTRUN2_API clsLapData {
 public:
  /// The highest number of a leg.
  static constexpr std::int32_t kMostLegs = 50;

  /// Creates an empty record that belongs to no class.
  clsLapData() = default;
  clsLapData(const clsLapData&) = delete;
  clsLapData& operator=(const clsLapData&) = delete;

  std::string RunnerName;    ///< The full name, with family and given name in any order.
  std::string ClubName;      ///< Name of the club; may be empty.
  std::string Rank;          ///< The official rank as the source gives it; may be any text.
  std::int32_t ID = 0;       ///< The competitor number in the source; 0 if there is none.
  std::int32_t Ecard = 0;    ///< Number of the electronic punch card; 0 if there is none.
  std::string RankFix;       ///< The rank as fixed by the organizer.
  std::string Seed;          ///< Seeding or start group.
  std::string Age;           ///< Age or age class.
  std::string Sex;           ///< Sex as the source gives it.
  std::string CompetitorId;  ///< Identifier in the source system.

  /// How the race ended, if the source says so beside the result. A time that does not count stays
  /// in the laps; Result then has the word for the status.
  RunnerStatus Status = RunnerStatus::kUnknown;
  std::string Bib;          ///< The number on the bib as the source gives it; ID if it is a number.
  std::string ControlCard;  ///< The punch card as the source gives it; Ecard if it is a number.
  std::string GivenName;    ///< The given name, if the source has it apart; RunnerName is shown.
  std::string FamilyName;   ///< The family name, if the source has it apart.
  std::string Nationality;  ///< The country the runner represents, usually a code of three letters.
  /// `clsCourseData::CourseIndex` of the runner's own course, if it is not that of the class, as
  /// with forks; 0 for the course of the class.
  std::int32_t CourseNum = 0;

  /// Start time of day. Never null; its value is 0 if the start time is unknown.
  const std::shared_ptr<clsTimeValue>& StartTime() const { return start_time_; }
  /// Stores the object itself, not a copy; null stores a new object with the value 0.
  void SetStartTime(std::shared_ptr<clsTimeValue> Value);

  /// The number given to the runner when the record was added to a class, counted from 1 in the
  /// order of adding; 0 before that.
  std::int32_t SerialNum() const { return serial_num_; }

  /// Name of the runner's class.
  const std::string& ClassName() const;
  /// Changes only the name; the record stays in its class.
  void SetClassName(std::string_view ClassName);

  /// The lap of a leg, 0 to 50 (0 is a place without meaning). Reading a leg above LegCount
  /// increases LegCount to it. Raises subscript out of range (9) for an index outside 0 to 50.
  DateTime Lap(std::int32_t Index);
  /// Stores the lap of a leg and increases LegCount to it if necessary. A value that is not finite
  /// or not below a million days is not a time; KR_TIME_NODATA is stored instead. Raises subscript
  /// out of range (9) for an index outside 0 to 50.
  void SetLap(std::int32_t Index, DateTime Time);
  /// The lap formatted as by clsTimeValue::ToString. Increases LegCount and raises errors like Lap.
  std::string LapToString(std::int32_t Index, std::string_view FormatExpression = "hh:nn:ss",
                          bool Compact = false, std::string_view NoDataValue = kNoDataText,
                          std::string_view SkipValue = kSkipText,
                          std::string_view DisqValue = kDisqText);

  /// Number of legs in use.
  std::int32_t LegCount() const { return leg_count_; }
  /// Stores any value. Decreasing it hides laps, increasing it shows them again.
  void SetLegCount(std::int32_t Count) { leg_count_ = Count; }

  /// The official result: a time as "h:mm:ss" (with tenths of a second if the source gave a
  /// fraction), a status in upper case ("DNF", "MP"), or empty.
  const std::string& Result() const { return result_; }
  /// Sets the result from a time in any notation ("10203", "1:02:03.4", full-width digits) or a
  /// status word. A time of zero or below becomes "DISQ". Never fails.
  void SetResult(std::string_view Result);

 private:
  friend class LapDataInternal;

  std::shared_ptr<const std::string> class_name_;  // all runners of a class share it; null: none
  std::string result_;
  std::int32_t leg_count_ = 0;
  std::int32_t serial_num_ = 0;
  void StoreLap(std::int32_t index, DateTime time);

  // By leg; the legs after its end have no data. Most records of a start list have none at all.
  std::vector<DateTime> laps_;
  std::shared_ptr<clsTimeValue> start_time_ = std::make_shared<clsTimeValue>();
};

}  // namespace keltrun
