#include "keltrun2/io/split_columns.h"

#include <cmath>
#include <string>

#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/model/time_values.h"
#include "keltrun2/text/letters.h"

namespace keltrun {
namespace {

// A result can have tenths of a second where the splits have whole seconds.
bool IsSameTime(DateTime a, DateTime b) { return std::fabs(a - b) * kSecondsPerDay < 1; }

enum class Meaning { kUnknown, kLaps, kSplits };

// The sum of the laps never exceeds the result. That decides the rows without a time at the finish.
Meaning MeaningOf(const clsLapData& runner) {
  // A stored time begins with a digit; it is parsed only for the few rows that need it.
  if (runner.Result().empty() || !IsDigit(runner.Result().front())) return Meaning::kUnknown;
  int times = 0;
  bool ascend = true;
  DateTime last = 0;
  DateTime sum = 0;
  for (std::int32_t leg = 1; leg <= LapDataInternal::HeldLegs(runner); ++leg) {
    const DateTime time = LapDataInternal::Lap(runner, leg);
    if (!(time > 0)) continue;
    ++times;
    ascend = ascend && time >= last;
    last = time;
    sum += time;
  }
  if (times < 2) return Meaning::kUnknown;
  if (!ascend) return Meaning::kLaps;
  const DateTime result = ParseTime(runner.Result(), 0);
  if (IsSameTime(last, result)) return Meaning::kSplits;
  if (IsSameTime(sum, result)) return Meaning::kLaps;
  return last < result && sum > result ? Meaning::kSplits : Meaning::kUnknown;
}

// A leg after one without a time gets the time of both.
void TurnRow(const ListRow& row, RemarkList& remarks) {
  DateTime before = 0;
  for (std::int32_t leg = 1; leg <= LapDataInternal::HeldLegs(*row.runner); ++leg) {
    const DateTime split = LapDataInternal::Lap(*row.runner, leg);
    if (!(split > 0)) continue;
    if (split < before) {
      remarks.Add(RemarkSeverity::kWarning, row.line, 0, "split", CompactTime(split),
                  "smaller than the one before, leg " + std::to_string(leg) + " has no data");
      row.runner->SetLap(leg, kTimeNoData);
      continue;
    }
    row.runner->SetLap(leg, Canonical(split - before));
    before = split;
  }
}

}  // namespace

void TurnSplitsIntoLaps(const std::vector<ListRow>& rows, RemarkList& remarks) {
  std::size_t all = 0;
  std::size_t splits = 0;
  for (const ListRow& row : rows) {
    const Meaning meaning = MeaningOf(*row.runner);
    all += meaning == Meaning::kUnknown ? 0 : 1;
    splits += meaning == Meaning::kSplits ? 1 : 0;
  }
  if (splits * 2 <= all) return;
  for (const ListRow& row : rows) TurnRow(row, remarks);
  remarks.AddFirst(0, 0, "leg columns", "",
                   "read as splits, since the times ascend to the result in " +
                       std::to_string(splits) + " of the " + std::to_string(all) +
                       " rows that show what they are; the laps are their differences");
}

}  // namespace keltrun
