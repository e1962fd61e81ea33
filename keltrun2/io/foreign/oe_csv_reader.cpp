#include "keltrun2/io/foreign/oe_csv_reader.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "keltrun2/io/foreign/csv_rows.h"
#include "keltrun2/io/foreign/refusal.h"
#include "keltrun2/io/foreign/sport_columns.h"
#include "keltrun2/io/foreign/sport_rows.h"
#include "keltrun2/io/limits.h"

namespace keltrun {
namespace {

using enum SportField;

// What a list is whose columns cannot have results.
std::optional<Refusal> RefusalOf(const SportColumns& columns) {
  if (columns.is_score) return Refusal::kScoreResults;
  if (!columns.Has(kSurname) && !columns.Has(kName)) {
    return columns.Has(kLength) ? Refusal::kCourseData : Refusal::kClubList;
  }
  if (columns.Has(kTime) || columns.controls) return std::nullopt;
  if (columns.Has(kStart)) return Refusal::kStartList;
  return columns.Has(kNotCompeting) ? Refusal::kEntryList : Refusal::kCompetitorList;
}

// What a list is that has columns for results and no result.
Refusal RefusalOf(const SportRows& rows) {
  if (rows.HasStartTimes()) return Refusal::kStartList;
  return rows.RunnerCount() > 0 ? Refusal::kEntryList : Refusal::kNoResults;
}

// The first race in which somebody has a time.
std::int32_t FirstRaceWithResults(std::string_view text, const SportColumns& columns) {
  std::vector<SportColumns> races;
  for (std::int32_t race = 1; race <= columns.races; ++race) {
    races.push_back(FindSportColumns(text, race).value_or(columns));
  }
  RemarkList remarks;
  CsvRows rows(text, columns.separator, remarks);
  for (std::size_t row = 0; row <= columns.rows_above; ++row) rows.Next();
  auto first = races.size();
  while (first > 0 && rows.Next()) {
    const auto has_time = [&rows](const SportColumns& race) {
      return SportTime(SportCell(rows.Cells(), race, kTime)).has_value();
    };
    const auto end = races.begin() + static_cast<std::ptrdiff_t>(first);
    const auto found = std::find_if(races.begin(), end, has_time);
    if (found != end) first = static_cast<std::size_t>(found - races.begin());
  }
  return first < races.size() ? static_cast<std::int32_t>(first) + 1 : 1;
}

// The columns of the race that is read; nullopt when there is no such race.
std::optional<SportColumns> ColumnsOfRace(std::string_view text, std::int32_t race,
                                          RemarkList& remarks) {
  auto columns = FindSportColumns(text);
  if (!columns || race > columns->races) return std::nullopt;
  if (columns->races == 1) return columns;
  if (race <= 0) race = FirstRaceWithResults(text, *columns);
  remarks.Add(RemarkSeverity::kNote, 0, 0, "races", "",
              "the list has the results of " + std::to_string(columns->races) + " races; race " +
                  std::to_string(race) + " is read");
  return FindSportColumns(text, race);
}

// The club is in the column of the city: programs write its name there, and an abbreviation or a
// number in the column before.
std::string_view ClubOf(const SportRows& rows) {
  for (const SportField field : {kClub, kClubShort, kTeam}) {
    if (const std::string_view club = rows.Cell(field); !club.empty()) return club;
  }
  return "";
}

// Remarks on lists that do not have the split times of all controls.
void RemarkSplits(const SportRows& rows, const SportColumns& columns, RemarkList& remarks) {
  if (!rows.HasPunches()) {
    remarks.Add(RemarkSeverity::kWarning, 0, 0, "split times", "",
                "the list has none. Export the split times instead of the results");
  } else if (columns.controls->width == 4) {
    remarks.Add(RemarkSeverity::kNote, 0, 0, "controls", "",
                "the list has only the radio controls; a leg joins all between two of them");
  }
}

ReadResult ReadRunners(std::string_view text, const SportColumns& columns, RemarkList& remarks) {
  ForeignEvent event(remarks);
  SportRows rows(text, columns, event, remarks);
  const std::string format = SportFormatName(columns);
  std::optional<ReadError> error;
  while (rows.Next()) {
    if (rows.RunnerCount() == kMostRunners) {
      error = ReadError{rows.Line(), std::string(kTooManyRunners)};
      break;
    }
    rows.AddRunner(rows.ClassName(), ClubOf(rows));
  }
  rows.Finish();
  if (!rows.HasResults()) return RefusedList(RefusalOf(rows), format, remarks);
  RemarkSplits(rows, columns, remarks);
  return FinishReading(std::move(event), remarks, format, std::move(error));
}

}  // namespace

bool LooksLikeOeCsv(std::string_view text) {
  const auto columns = FindSportColumns(text);
  return columns && !columns->is_relay;
}

ReadResult ReadOeCsv(std::string_view text, const ForeignOptions& options) {
  RemarkList remarks;
  const auto columns = ColumnsOfRace(text, options.race, remarks);
  if (!columns) {
    return RefusedList(options.race > 1 ? Refusal::kNoSuchRace : Refusal::kNoResults, "OE CSV",
                       remarks);
  }
  if (const auto refusal = RefusalOf(*columns)) {
    return RefusedList(*refusal, SportFormatName(*columns), remarks);
  }
  return ReadRunners(text, *columns, remarks);
}

}  // namespace keltrun
