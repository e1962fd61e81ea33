#include "keltrun2/io/split_columns.h"

#include <algorithm>
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

// What the times of a row are. When the last one is the result, they cannot be laps. A row without
// a time at the finish shows what it is only if its times do not ascend or add up to the result.
Meaning MeaningOf(const clsLapData& runner, std::int32_t finish_leg) {
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
  const DateTime result = ParseTime(runner.Result(), 0);
  if (IsSameTime(last, result)) return ascend ? Meaning::kSplits : Meaning::kUnknown;
  const bool has_finish = LapDataInternal::Lap(runner, finish_leg) > 0;
  return has_finish || !ascend || IsSameTime(sum, result) ? Meaning::kLaps : Meaning::kUnknown;
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

void TurnBlock(const ListBlock& block, RemarkList& remarks) {
  std::vector<Meaning> meanings;
  meanings.reserve(block.rows.size());
  for (const ListRow& row : block.rows) {
    meanings.push_back(MeaningOf(*row.runner, block.finish_leg));
  }
  const auto splits = std::count(meanings.begin(), meanings.end(), Meaning::kSplits);
  const auto laps = std::count(meanings.begin(), meanings.end(), Meaning::kLaps);
  if (splits <= laps) return;
  for (std::size_t i = 0; i < block.rows.size(); ++i) {
    const ListRow& row = block.rows[i];
    if (meanings[i] != Meaning::kLaps) {
      TurnRow(row, remarks);
      continue;
    }
    remarks.Add(RemarkSeverity::kWarning, row.line, 0, "times of the legs", row.runner->RunnerName,
                "are not splits that end with the result, kept as laps");
  }
  remarks.AddFirst(block.line, 0, "leg columns", "",
                   "read as splits, since the times ascend to the result in " +
                       std::to_string(splits) + " of the " + std::to_string(splits + laps) +
                       " rows that show what they are; the laps are their differences");
}

}  // namespace

// The notes on the blocks go before the other remarks, so the last block is the first one.
void TurnSplitsIntoLaps(const std::vector<ListBlock>& blocks, RemarkList& remarks) {
  for (auto block = blocks.rbegin(); block != blocks.rend(); ++block) TurnBlock(*block, remarks);
}

}  // namespace keltrun
