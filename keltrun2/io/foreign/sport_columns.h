// The columns of the lists that OE2003, OE2010 and OE12 (individual events), OS2003, OS2010 and
// OS12 (relays) and programs with the same interface write as separated texts.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/io/foreign/foreign_event.h"
#include "keltrun2/model/runner_status.h"

namespace keltrun {

/// The columns that are read. A title can stand for several of them, such as "Nom" for the family
/// name and for the name of the club; the first one in this order that has no column yet gets it.
enum class SportField : std::int32_t {
  kOther,
  kStartNumber,
  kBib,  // the text on the bib, where it is not the number
  kCard,
  kCompetitorId,
  kSurname,
  kFirstName,
  kName,  // the whole name, in lists without a column for first names
  kBirthYear,
  kSex,
  kNotCompeting,
  kStart,
  kFinish,
  kTime,
  kClassifier,
  kCredit,
  kPenalty,
  kTeam,
  kClubShort,
  kClub,
  kNation,
  kClassShort,
  kClassLong,
  kCourse,
  kLength,
  kClimb,
  kControlCount,
  kPlace,
  kStartPunch,
  kFinishPunch,
  kOverallTime,  // of a relay team so far
  kLeg,
  kCombination,
};
inline constexpr std::size_t kSportFieldCount =
    static_cast<std::size_t>(SportField::kCombination) + 1;

/// Where the controls of a row stand.
struct ControlColumns {
  std::size_t begin = 0;  // of the first control
  std::size_t width = 2;  // code, time; or 4: number on the course, code, time, place
};

/// What the first lines of a list say about its columns.
struct SportColumns {
  char separator = ';';
  std::string tag;  // "OE0016" and the like; "OE" for its form without a head; empty for 2003
  std::size_t rows_above = 0;  // before the head, such as a title; they are not blank
  bool is_relay = false;       // one row for each leg
  bool has_head = true;        // false: the first row is a runner
  bool is_score = false;       // controls in any order
  std::int32_t races = 1;      // of a list with the results of several races
  std::array<std::int32_t, kSportFieldCount> column{};  // -1 where there is none
  std::optional<ControlColumns> controls;
  std::int32_t shift = 0;  // columns that the rows have before the controls and the head has not

  std::int32_t At(SportField field) const { return column[static_cast<std::size_t>(field)]; }
  bool Has(SportField field) const { return At(field) >= 0; }
};

/// The columns of a list; nullopt when it is none of these programs. `race` is the race whose
/// columns are wanted, from 1.
std::optional<SportColumns> FindSportColumns(std::string_view text, std::int32_t race = 1);

/// The name of the format, such as "OE2010 CSV (OE0016)".
std::string SportFormatName(const SportColumns& columns);

/// The cell of a field; empty when the row or the list does not have it.
inline std::string_view SportCell(const std::vector<std::string_view>& cells,
                                  const SportColumns& columns, SportField field) {
  const std::int32_t column = columns.At(field);
  return column >= 0 && static_cast<std::size_t>(column) < cells.size()
             ? cells[static_cast<std::size_t>(column)]
             : std::string_view();
}

/// Whether a cell has the sign between hours, minutes and seconds: a colon, or in some countries a
/// point ("1.02.03", "62.03").
bool HasTimeSign(std::string_view cell);

/// A time with colons for points; other texts as they are, and `buffer` is not used.
std::string_view WithColons(std::string_view cell, std::string& buffer);

/// A split or total time. nullopt for a control without a punch and for any text that is no time.
std::optional<Milliseconds> SportTime(std::string_view cell);

/// The status of a classifier: 0 for OK, 1 for a runner who did not start, and so on, or a word
/// such as "DNF". nullopt when it is empty or unknown.
std::optional<RunnerStatus> SportStatus(std::string_view text);

/// Whether the cell of runners outside the competition is set.
bool IsMarked(std::string_view cell);

}  // namespace keltrun
