#include "keltrun2/io/foreign/runner_laps.h"

#include <algorithm>

#include "keltrun2/model/time_values.h"

namespace keltrun {
namespace {

using Times = std::vector<std::optional<Milliseconds>>;

constexpr auto kMostLegs = static_cast<std::size_t>(clsLapData::kMostLegs);
constexpr Milliseconds kShortestLap = 1;

DateTime Days(Milliseconds time) {
  return Canonical(static_cast<double>(time) / kMillisecondsPerDay);
}

// Which of the times belong to the longest ascending sequence; of several, the one that leaves out
// later times. Its length is at most that of a record, so that comparing all pairs is cheap.
std::vector<bool> InLongestAscent(const std::vector<Milliseconds>& times) {
  const std::size_t count = times.size();
  std::vector<std::size_t> length(count, 1);  // of the longest sequence that begins here
  for (std::size_t i = count; i-- > 0;) {
    for (std::size_t j = i + 1; j < count; ++j) {
      if (times[j] >= times[i]) length[i] = std::max(length[i], length[j] + 1);
    }
  }
  std::vector<bool> chosen(count, false);
  std::size_t wanted = count == 0 ? 0 : *std::max_element(length.begin(), length.end());
  std::optional<Milliseconds> last;
  for (std::size_t i = 0; i < count && wanted > 0; ++i) {
    if (length[i] != wanted || (last && times[i] < *last)) continue;
    chosen[i] = true;
    last = times[i];
    --wanted;
  }
  return chosen;
}

// The times in question when the total is taken as right or ignored.
struct KnownTimes {
  std::vector<std::size_t> controls;
  std::vector<bool> kept;

  KnownTimes(const Times& times, std::optional<Milliseconds> total) {
    std::vector<Milliseconds> known;
    for (std::size_t control = 0; control < times.size(); ++control) {
      if (!times[control] || *times[control] < 0 || (total && *times[control] > *total)) continue;
      controls.push_back(control);
      known.push_back(*times[control]);
    }
    kept = std::is_sorted(known.begin(), known.end()) ? std::vector<bool>(known.size(), true)
                                                      : InLongestAscent(known);
  }

  std::size_t KeptCount() const {
    return static_cast<std::size_t>(std::count(kept.begin(), kept.end(), true));
  }
};

// Whether the times ascend from 0 to the total, as nearly all do, so that none is to be removed.
bool AreInOrder(const Times& times, std::optional<Milliseconds> total) {
  Milliseconds before = 0;
  for (const auto& time : times) {
    if (!time) continue;
    if (*time < before) return false;
    before = *time;
  }
  return !total || before <= *total;
}

// Removes the times that contradict most of the others, and the total when it does. Returns for
// each control whether its time was removed.
std::vector<bool> RemoveBackward(Times& times, std::optional<Milliseconds>& total) {
  if (AreInOrder(times, total)) return std::vector<bool>(times.size());
  KnownTimes known(times, total);
  if (total && known.KeptCount() < times.size()) {
    const KnownTimes alone(times, std::nullopt);
    if (alone.KeptCount() > known.KeptCount() + 1) {
      total.reset();
      known = alone;
    }
  }
  std::vector<bool> removed(times.size());
  for (std::size_t i = 0; i < times.size(); ++i) removed[i] = times[i].has_value();
  for (std::size_t i = 0; i < known.controls.size(); ++i) {
    if (known.kept[i]) removed[known.controls[i]] = false;
  }
  for (std::size_t i = 0; i < times.size(); ++i) {
    if (removed[i]) times[i].reset();
  }
  return removed;
}

}  // namespace

LapFaults SetLaps(clsLapData& runner, Times times, std::optional<Milliseconds> total) {
  LapFaults faults;
  times.resize(std::min(times.size(), kMostLegs - 1));
  const bool had_total = total.has_value();
  const std::vector<bool> backward = RemoveBackward(times, total);
  faults.backward = static_cast<std::size_t>(std::count(backward.begin(), backward.end(), true));
  faults.total_contradicts = had_total && !total;
  times.push_back(total);
  std::size_t last = times.size();
  while (last > 0 && !times[last - 1]) --last;
  Milliseconds before = 0;
  for (std::size_t i = 0; i < last; ++i) {
    const auto leg = static_cast<std::int32_t>(i + 1);
    if (!times[i]) {
      runner.SetLap(leg, backward[i] ? kTimeNoData : kTimeSkip);
      continue;
    }
    const Milliseconds lap = *times[i] - before;
    if (lap == 0) faults.zero_legs.push_back(i + 1);
    runner.SetLap(leg, Days(std::max(lap, kShortestLap)));
    before = *times[i];
  }
  return faults;
}

}  // namespace keltrun
