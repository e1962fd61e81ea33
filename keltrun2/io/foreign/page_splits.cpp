#include "keltrun2/io/foreign/page_splits.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <optional>

namespace keltrun {
namespace {

using Times = std::vector<PageTime>;

constexpr Milliseconds kNoTotal = -1;

// The times of one row: below each label one, or two when the cells have two.
struct RowTimes {
  Times first, second;
};

std::int32_t Stride(const LabelRow& labels) {
  return labels.columns.size() > 1 ? labels.columns[1] - labels.columns[0] : labels.last_span;
}

// Whether a place follows each time in a cell of its own, although a label has one column only.
bool HasPlaceColumns(const PageRow& row, const LabelRow& labels, std::int32_t shift) {
  if (Stride(labels) != 1) return false;
  const std::int32_t first = labels.columns.front() + shift;
  bool found = false;
  for (const PageCell& cell : row.cells) {
    if (cell.column < first || cell.text.empty()) continue;
    const bool is_odd = (cell.column - first) % 2 == 1;
    if (is_odd != IsPlaceCell(cell.text)) return false;
    found |= is_odd;
  }
  return found;
}

bool IsTime(const PageCell& cell) { return !cell.italic && !TimesIn(cell.text, false).IsEmpty(); }

// Gives the times of a preformatted row the columns of the labels above them. The times are as many
// as labels, or fewer because the page leaves some blank; then the place in the line decides, on a
// page where other lines show that it can.
void AlignTimes(PageRow& row, const LabelRow& labels, std::int32_t shift, PageHabits& habits) {
  if (row.kind == RowKind::kTable) return;
  std::vector<PageCell*> times;
  const std::int32_t first = labels.columns.front() + shift;
  for (PageCell& cell : row.cells) {
    if (cell.column >= first && IsTime(cell)) times.push_back(&cell);
  }
  const std::size_t count = labels.labels.size();
  constexpr std::int32_t kNear = 1;
  if (times.size() >= count) {
    const auto is_near = [&](const PageCell* time, std::int32_t end) {
      return std::abs(time->end - end) <= kNear;
    };
    const bool aligned =
        std::equal(labels.ends.begin(), labels.ends.end(), times.begin(),
                   [&](std::int32_t end, const auto* t) { return is_near(t, end); });
    ++(aligned ? habits.aligned : habits.not_aligned);
    return;
  }
  if (habits.aligned <= habits.not_aligned) return;
  std::size_t label = 0;
  for (PageCell* const time : times) {
    const auto distance = [&](std::size_t i) { return std::abs(labels.ends[i] - time->end); };
    while (label + 1 < count && distance(label + 1) <= distance(label)) ++label;
    time->column = labels.columns[label] + shift;
    if (label + 1 < count) ++label;
  }
}

// The label to which a column belongs; nullopt for a column before or after them.
std::optional<std::size_t> LabelAt(const LabelRow& labels, std::int32_t column) {
  const auto after = std::upper_bound(labels.columns.begin(), labels.columns.end(), column);
  if (after == labels.columns.begin()) return std::nullopt;
  const auto label = static_cast<std::size_t>(after - labels.columns.begin()) - 1;
  if (after != labels.columns.end()) return label;
  const std::int32_t width = std::max(labels.last_span, Stride(labels));
  return column < labels.columns.back() + width ? std::optional(label) : std::nullopt;
}

RowTimes TimesOfRow(PageRow& row, const LabelRow& labels, std::int32_t shift, bool point_times,
                    PageHabits& habits) {
  RowTimes times{Times(labels.labels.size()), Times(labels.labels.size())};
  AlignTimes(row, labels, shift, habits);
  const bool has_places = HasPlaceColumns(row, labels, shift);
  std::vector<int> seen(labels.labels.size());
  for (const PageCell& cell : row.cells) {
    if (cell.italic) continue;
    const std::int32_t first = labels.columns.front();
    const std::int32_t column = cell.column - shift;
    if (column < first) continue;
    const auto label = LabelAt(labels, has_places ? first + (column - first) / 2 : column);
    if (!label) continue;
    for (const PageTime& time : TimesIn(cell.text, point_times)) {
      const int position = seen[*label]++;
      if (position < 2) (position == 0 ? times.first : times.second)[*label] = time;
    }
  }
  return times;
}

bool HasTime(const Times& times) {
  return std::any_of(times.begin(), times.end(),
                     [](const PageTime& time) { return time.has_value(); });
}

// How many of `laps` are the differences of `splits`. The first one says nothing: it is equal.
std::int32_t CountDifferences(const Times& splits, const Times& laps) {
  std::int32_t count = 0;
  for (std::size_t i = 1; i < std::min(splits.size(), laps.size()); ++i) {
    count += splits[i] && splits[i - 1] && laps[i] && *laps[i] == *splits[i] - *splits[i - 1];
  }
  return count;
}

// Whether the second row has other times for the same labels as the first one.
bool IsSecondOfPair(const Times& first, const Times& second) {
  if (!HasTime(second)) return false;
  return CountDifferences(first, second) + CountDifferences(second, first) > 0 ||
         (!first.empty() && !second.empty() && first[0] && first[0] == second[0]);
}

void Append(Times& all, const Times& part) { all.insert(all.end(), part.begin(), part.end()); }

// Splits from laps, from the start on, and from the finish back to a lap that is missing.
Times SplitsOfLaps(const Times& laps, Milliseconds total, PageHabits& habits) {
  Times splits(laps.size());
  Milliseconds sum = 0;
  std::size_t known = 0;
  for (; known < laps.size() && laps[known]; ++known) splits[known] = sum += *laps[known];
  std::size_t last = laps.size();
  if (total != kNoTotal && known < last) {
    Milliseconds split = total;
    for (; last > known && laps[last - 1]; --last) {
      splits[last - 1] = split;
      split -= *laps[last - 1];
    }
    if (last > known) splits[--last] = split;
  }
  for (std::size_t i = known; i < last; ++i) habits.lost_laps += laps[i] ? 1 : 0;
  return splits;
}

Times SplitsOfPair(const Times& first, const Times& second, Milliseconds total,
                   PageHabits& habits) {
  const std::int32_t splits_first = CountDifferences(first, second);
  const std::int32_t laps_first = CountDifferences(second, first);
  habits.splits_first += splits_first > laps_first ? 1 : 0;
  habits.laps_first += laps_first > splits_first ? 1 : 0;
  if (splits_first != laps_first) return splits_first > laps_first ? first : second;
  if (!HasTime(first) || !HasTime(second)) {
    const bool only_laps = HasTime(first) == (habits.laps_first > habits.splits_first);
    const Times& only = HasTime(first) ? first : second;
    return only_laps ? SplitsOfLaps(only, total, habits) : only;
  }
  return habits.laps_first > habits.splits_first ? second : first;
}

bool Decreases(const Times& times) {
  PageTime before;
  for (const PageTime& time : times) {
    if (time && before && *time < *before) return true;
    if (time) before = time;
  }
  return false;
}

Times SplitsOfOne(const Times& times, Milliseconds total, PageHabits& habits) {
  Milliseconds sum = 0;
  for (const PageTime& time : times) sum += time.value_or(0);
  const bool has_all = std::all_of(times.begin(), times.end(),
                                   [](const PageTime& time) { return time.has_value(); });
  const bool is_last = times.back() == total;
  const bool adds_up = has_all && sum == total && times.size() > 1;
  habits.only_splits += is_last && !adds_up ? 1 : 0;
  habits.only_laps += adds_up && !is_last ? 1 : 0;
  const bool undecided = !is_last && !adds_up;
  const bool laps = adds_up || (undecided && (habits.only_laps == habits.only_splits
                                                  ? Decreases(times)
                                                  : habits.only_laps > habits.only_splits));
  return laps ? SplitsOfLaps(times, total, habits) : times;
}

}  // namespace

bool HavePointTimes(std::span<const PageRow> rows) {
  for (const PageRow& row : rows) {
    for (const PageCell& cell : row.cells) {
      if (HasPointTime(cell.text)) return true;
    }
  }
  return false;
}

std::vector<PageTime> RunnerSplits(std::span<PageRow> rows, std::span<const LabelRow> labels,
                                   std::int32_t shift, PageTime total, bool point_times,
                                   PageHabits& habits) {
  const auto times_of = [&](std::size_t row, std::size_t label_row) {
    return TimesOfRow(rows[row], labels[label_row], shift, point_times, habits);
  };
  bool pairs = rows.size() > labels.size();
  if (!pairs && rows.size() > 1) pairs = IsSecondOfPair(times_of(0, 0).first, times_of(1, 0).first);
  Times first, second;
  for (std::size_t i = 0; i < labels.size(); ++i) {
    const std::size_t row = pairs ? 2 * i : i;
    const Times nothing(labels[i].labels.size());
    const RowTimes upper = row < rows.size() ? times_of(row, i) : RowTimes{nothing, nothing};
    const bool has_lower = pairs && row + 1 < rows.size();
    Append(first, upper.first);
    Append(second, has_lower ? times_of(row + 1, i).first : upper.second);
  }
  if (!HasTime(first) && !HasTime(second)) return Times(first.size());
  const bool has_finish = labels.back().labels.back().is_finish;
  const Milliseconds at_finish = has_finish ? total.value_or(kNoTotal) : kNoTotal;
  if (HasTime(second)) return SplitsOfPair(first, second, at_finish, habits);
  return SplitsOfOne(first, at_finish, habits);
}

}  // namespace keltrun
