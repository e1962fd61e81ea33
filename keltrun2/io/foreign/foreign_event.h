// What the readers of other programs' files find, and how it becomes the records of an event.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "keltrun2/io/lap_records.h"
#include "keltrun2/io/text_reading.h"
#include "keltrun2/model/runner_status.h"

namespace keltrun {

/// What a host asks of a reader of other programs' files.
struct ForeignOptions {
  /// The race or day to read, from 1; 0 means the first one with results.
  std::int32_t race = 0;
};

/// Times of these readers are whole milliseconds.
using Milliseconds = std::int64_t;

inline constexpr Milliseconds kMillisecondsPerSecond = 1000;
inline constexpr Milliseconds kMillisecondsOfDay = kMillisecondsPerSecond * 24 * 3600;

/// A punch, or a control that was missed.
struct Punch {
  std::int32_t code = 0;             // as ForeignEvent::Code gives it; 0 when the file has no codes
  std::optional<Milliseconds> time;  // since the start; nullopt when the control was missed
};

/// A runner as a file has them. What the file does not say stays empty.
struct ForeignRunner {
  std::string given_name, family_name;
  std::string name;  // when the file has one text for the whole name
  std::string club, bib, card, sex, nationality, age, competitor_id, rank;
  std::optional<RunnerStatus> status;  // nullopt: to be told from the times
  std::optional<Milliseconds> start;   // time of day
  std::optional<Milliseconds> finish;  // time of day
  std::optional<Milliseconds> time;    // total time, also when it does not count
  /// The controls in the order of the file, the missed ones too when the file lists them. The
  /// finish may be the last one (see ForeignEvent::FinishCode).
  std::vector<Punch> punches;
  std::int32_t control_count = 0;  // of the runner's own course, when it is not that of the class
  std::int32_t line = 0;           // where the runner stands, for remarks; 0 for no line
};

/// A class as a file has it.
struct ForeignClass {
  ForeignClass() = default;
  // Without noexcept a list of classes that grows would copy all runners.
  ForeignClass(ForeignClass&& other) noexcept = default;
  ForeignClass& operator=(ForeignClass&& other) noexcept = default;

  std::string name;
  std::int32_t length = 0;            // meters
  std::int32_t climb = 0;             // meters
  std::int32_t control_count = 0;     // without start and finish; 0 when the file does not say
  bool has_codes = true;              // false: punches stand for controls 1, 2, ... in this order
  std::deque<ForeignRunner> runners;  // a deque frees each one as soon as its record is made
};

/// Collects what a reader finds and makes the records of the event: the courses of each class, laps
/// from the punches, results from statuses and times, and the remarks about what was assumed.
///
///     ForeignEvent event(remarks);
///     event.Header().event_name = ...;
///     ForeignClass& klass = event.ClassNamed("M21A");
///     klass.runners.push_back(...);
///     LapRecords records = std::move(event).Take();
class ForeignEvent {
 public:
  /// The remarks must outlive the object.
  explicit ForeignEvent(RemarkList& remarks) : remarks_(remarks) {}

  /// Event name, date, site and creating program. Classes are added by Take.
  LapRecords& Header() { return header_; }

  /// The class with this name, which is added at its end if it is new. The reference is valid until
  /// the next call.
  ForeignClass& ClassNamed(std::string_view name);
  std::vector<ForeignClass>& Classes() { return classes_; }
  std::size_t RunnerCount() const;

  /// The number of a control code: its own, or from kFirstTextCode up for texts that are not
  /// numbers of 1 to 10,000. Equal texts have equal numbers; 0 for an empty one. kFinishCode for
  /// the names that programs give to the finish ("F", "F1", "Finish", "Ziel", ...); a last punch
  /// with the number kFinishNumber is also taken as the finish when its time says so.
  std::int32_t Code(std::string_view text);

  static constexpr std::int32_t kFinishCode = -1;
  static constexpr std::int32_t kFinishNumber = 999;  // that some programs write for the finish
  static constexpr std::int32_t kStartCode = -2;      // for the names of the start

  /// The records. Call it once, at the end.
  LapRecords Take() &&;

 private:
  RemarkList& remarks_;
  LapRecords header_;
  std::vector<ForeignClass> classes_;
  std::unordered_map<std::string, std::size_t> class_of_name_;
  std::unordered_map<std::string, std::int32_t> number_of_text_;
};

/// The result of a reader: the records of the event and the remarks. An error when there is no
/// runner, or too many; with `error`, what was read before it is kept.
ReadResult FinishReading(ForeignEvent&& event, RemarkList& remarks, std::string format,
                         std::optional<ReadError> error = std::nullopt);

/// A whole name as it is shown: "Given Family", but "Family Given" in Japanese, Chinese or Korean
/// script.
std::string ShownName(std::string_view given, std::string_view family);

/// "M" or "F" for what programs write for the sexes in their languages; another text as it is.
std::string NormalSex(std::string_view text);

/// An elapsed time: "h:mm:ss", "mm:ss" with any number of minutes, "ss", each with decimals after a
/// point or comma; with a minus sign it is negative. nullopt for "-----", "--:--:--", an empty text
/// and any other one.
std::optional<Milliseconds> ForeignTime(std::string_view text);

/// A time of day, "h:mm", "h:mm:ss" or with decimals. nullopt for any other text.
std::optional<Milliseconds> ForeignClock(std::string_view text);

/// Meters of a length: "4.4", "4,4" and "4400" with their unit "km", "m" or "ft". 0 when it is not
/// a number or out of range.
std::int32_t Meters(std::string_view number, std::string_view unit);

}  // namespace keltrun
