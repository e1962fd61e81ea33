#include "keltrun2/io/foreign/os_csv_reader.h"

#include <algorithm>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "keltrun2/io/foreign/refusal.h"
#include "keltrun2/io/foreign/sport_columns.h"
#include "keltrun2/io/foreign/sport_rows.h"
#include "keltrun2/io/limits.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

using enum SportField;

// A runner of a leg that is not the first one.
struct LaterLeg {
  std::pair<std::size_t, std::size_t> runner;  // class and runner
  std::string team;
  std::optional<Milliseconds> since_team_start;  // what the team needed up to the leg's end
};

// Makes the punch times of legs count from the start of the leg.
class LegStarts {
 public:
  void Add(const SportRows& rows, ForeignEvent& event, std::int32_t leg) {
    const auto runner = rows.Last();
    const auto& start = event.Classes()[runner.first].runners[runner.second].start;
    std::string team = std::string(rows.ClassName()) + '\n' + std::string(rows.Cell(kStartNumber));
    if (leg > 1) {
      later_.push_back({runner, std::move(team), SportTime(rows.Cell(kOverallTime))});
    } else if (start) {
      team_starts_.emplace(std::move(team), *start);
    }
  }

  // Punch times count from the start of the team where most legs have their first punch only after
  // the teams before them have finished; else they count from the start of the leg already.
  void Apply(ForeignEvent& event, RemarkList& remarks) const {
    std::ptrdiff_t from_team = 0;
    for (const LaterLeg& leg : later_) {
      const auto offset = Offset(leg, Runner(event, leg));
      const auto first = FirstPunch(Runner(event, leg));
      if (offset && *offset > 0 && first) from_team += *first >= *offset ? 1 : -1;
    }
    if (from_team <= 0) return;
    std::size_t unknown = 0;
    for (const LaterLeg& leg : later_) {
      if (!Move(Runner(event, leg), Offset(leg, Runner(event, leg)))) ++unknown;
    }
    if (unknown == 0) return;
    remarks.Add(RemarkSeverity::kWarning, 0, 0, "legs without a start time", "",
                std::to_string(unknown) +
                    " whose split times are dropped, because they count from "
                    "the start of the team");
  }

 private:
  static ForeignRunner& Runner(ForeignEvent& event, const LaterLeg& leg) {
    return event.Classes()[leg.runner.first].runners[leg.runner.second];
  }

  static std::optional<Milliseconds> FirstPunch(const ForeignRunner& runner) {
    for (const Punch& punch : runner.punches) {
      if (punch.time) return punch.time;
    }
    return std::nullopt;
  }

  // The time from the start of the team to the start of the leg.
  std::optional<Milliseconds> Offset(const LaterLeg& leg, const ForeignRunner& runner) const {
    const auto start = team_starts_.find(leg.team);
    if (runner.start && start != team_starts_.end()) {
      const Milliseconds since = *runner.start - start->second;
      return since < 0 ? since + kMillisecondsOfDay : since;  // past midnight
    }
    if (leg.since_team_start && runner.time) return *leg.since_team_start - *runner.time;
    return std::nullopt;
  }

  // False when the runner loses split times.
  static bool Move(ForeignRunner& runner, std::optional<Milliseconds> offset) {
    bool is_known = true;
    for (Punch& punch : runner.punches) {
      if (!punch.time) continue;
      is_known = is_known && offset.has_value();
      if (offset) {
        *punch.time -= *offset;
      } else {
        punch.time.reset();
      }
    }
    return is_known;
  }

  std::vector<LaterLeg> later_;
  std::unordered_map<std::string, Milliseconds> team_starts_;
};

// The leg of a row, from 1; 1 when it is missing.
std::int32_t LegOf(const SportRows& rows) {
  const std::string_view leg = rows.Cell(kLeg);
  return IsDigits(leg) && leg.size() <= 3 ? std::max(NumericLong(leg), 1) : 1;
}

std::string_view TeamOf(const SportRows& rows) {
  for (const SportField field : {kTeam, kClub, kClubShort}) {
    if (const std::string_view team = rows.Cell(field); !team.empty()) return team;
  }
  return "";
}

ReadResult ReadLegs(std::string_view text, const SportColumns& columns, RemarkList& remarks) {
  ForeignEvent event(remarks);
  SportRows rows(text, columns, event, remarks);
  const std::string format = SportFormatName(columns);
  LegStarts starts;
  std::optional<ReadError> error;
  while (rows.Next()) {
    if (rows.RunnerCount() == kMostRunners) {
      error = ReadError{rows.Line(), std::string(kTooManyRunners)};
      break;
    }
    const std::int32_t leg = LegOf(rows);
    const std::string class_name = std::string(rows.ClassName()) + "-" + std::to_string(leg);
    if (rows.AddRunner(class_name, TeamOf(rows))) starts.Add(rows, event, leg);
  }
  rows.Finish();
  if (!rows.HasResults()) {
    return RefusedList(rows.HasStartTimes() ? Refusal::kStartList : Refusal::kNoResults, format,
                       remarks);
  }
  starts.Apply(event, remarks);
  remarks.Add(RemarkSeverity::kNote, 0, 0, "teams", "",
              "each leg is a class of its own; the results of the teams are not read");
  return FinishReading(std::move(event), remarks, format, std::move(error));
}

// What a list is whose columns are not those of the legs' results.
std::optional<Refusal> RefusalOf(const SportColumns& columns) {
  if (columns.is_score) return Refusal::kScoreResults;
  if (!columns.Has(kLeg)) return columns.Has(kStart) ? Refusal::kNoSplits : Refusal::kEntryList;
  if (!columns.Has(kTime)) return Refusal::kStartList;
  return std::nullopt;
}

}  // namespace

bool LooksLikeOsCsv(std::string_view text) {
  const auto columns = FindSportColumns(text);
  return columns && columns->is_relay;
}

ReadResult ReadOsCsv(std::string_view text, const ForeignOptions& options) {
  RemarkList remarks;
  const auto columns = FindSportColumns(text);
  if (!columns) return RefusedList(Refusal::kNoResults, "OS CSV", remarks);
  const std::string format = SportFormatName(*columns);
  if (options.race > 1) return RefusedList(Refusal::kNoSuchRace, format, remarks);
  if (const auto refusal = RefusalOf(*columns)) return RefusedList(*refusal, format, remarks);
  return ReadLegs(text, *columns, remarks);
}

}  // namespace keltrun
