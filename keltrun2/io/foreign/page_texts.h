// What the texts on a result page mean: times, statuses, labels of controls, titles of columns,
// classes and dates.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "keltrun2/io/foreign/foreign_event.h"
#include "keltrun2/model/runner_status.h"
#include "keltrun2/text/datetime.h"

namespace keltrun {

/// A text without blanks, points, hyphens and slashes, in lower case: what words are compared by.
std::string PageWord(std::string_view text);

/// A time, or nullopt for a control that was missed, such as "-----".
using PageTime = std::optional<Milliseconds>;

/// The first two times of a cell.
struct CellTimes {
  std::array<PageTime, 2> times;
  std::size_t count = 0;

  bool IsEmpty() const { return count == 0; }
  const PageTime* begin() const { return times.data(); }
  const PageTime* end() const { return times.data() + count; }
};

/// The times in a cell, without places in brackets, times behind others ("+0:15") and whatever else
/// it has. `point_times`: "1:02.25" is 1 h 2 min 25 s, as "4.32" is 4 min 32 s, not 62.25 s.
CellTimes TimesIn(std::string_view cell, bool point_times);

/// Whether a text is a time like "4.32" of 4 min 32 s.
bool HasPointTime(std::string_view cell);

/// Whether a text is a place beside a time: a number, perhaps in brackets.
bool IsPlaceCell(std::string_view cell);

/// The status that a word of some language stands for.
std::optional<RunnerStatus> StatusOfPageWord(std::string_view text);

/// The label of a control at the head of a column.
struct ControlLabel {
  std::int32_t number = 0;  // on the course, from 1; 0 when there is none
  std::string code;         // empty when there is none
  bool is_finish = false;
  bool is_leg = false;  // "3-4", of a leg: `number` is 4, which could also be a code
};

/// Reads "1(100)", "1 [100]", "1-100", "1/100", "S-1 (100)" and names of the finish.
std::optional<ControlLabel> ReadControlLabel(std::string_view text);

/// What the title of a column says.
enum class ColumnTitle : std::int32_t {
  kNone,
  kPlace,
  kBib,
  kName,
  kClub,
  kClass,
  kClubOrClass,
  kTime,
  kCard,
  kNationality,
  kSex,
  kAge,
  kStart,
  kBehind,  // follows from the times
  kUnused,  // tells something that is not read
};

ColumnTitle ColumnTitleOf(std::string_view text);

/// A class, as in "M21 (16)   4.4 km   85 m   17 C".
struct ClassLine {
  std::string name;
  std::int32_t length = 0, climb = 0;  // in meters; 0 when there is none
  bool has_numbers = false;            // length, climb, or a number of runners
};

ClassLine ReadClassLine(std::string_view text);

/// The first date in a text: "2022-06-04", "4.6.2022", "04/06/2022", "4 June 2022", "June 4, 2022".
/// The day is before the month unless that makes no date.
std::optional<DateTime> DateIn(std::string_view text);

}  // namespace keltrun
