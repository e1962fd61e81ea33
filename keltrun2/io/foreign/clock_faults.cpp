#include "keltrun2/io/foreign/clock_faults.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

namespace keltrun {
namespace {

constexpr Milliseconds kHour = 3600 * kMillisecondsPerSecond;
constexpr Milliseconds kTwelveHours = 12 * kHour;
constexpr Milliseconds kTolerance = 60 * kMillisecondsPerSecond;

// Fewer runners do not show that it was the clock of the event.
constexpr std::size_t kFewestRunners = 3;

constexpr std::array<Milliseconds, 4> kShifts = {kHour, -kHour, kTwelveHours, -kTwelveHours};

std::string HoursText(Milliseconds shift) {
  return std::abs(shift) == kHour ? "one hour" : "twelve hours";
}

template <typename Visit>
void ForEachRunner(std::vector<ForeignClass>& classes, Visit visit) {
  for (ForeignClass& klass : classes) {
    for (ForeignRunner& runner : klass.runners) visit(runner);
  }
}

// Whether all runners for whom `can_show` holds show a fault, and there are enough of them.
template <typename CanShow, typename Shows>
bool AllShow(std::vector<ForeignClass>& classes, CanShow can_show, Shows shows) {
  std::size_t able = 0;
  bool all = true;
  ForEachRunner(classes, [&](const ForeignRunner& runner) {
    if (!all || !can_show(runner)) return;
    ++able;
    all = shows(runner);
  });
  return all && able >= kFewestRunners;
}

bool HasSplitsAndTime(const ForeignRunner& runner) {
  const auto timed = std::count_if(runner.punches.begin(), runner.punches.end(),
                                   [](const Punch& punch) { return punch.time.has_value(); });
  return runner.time && timed >= 2;
}

// Whether all splits, seen through `mend`, lie between start and finish.
template <typename Mend>
bool FitsWith(const ForeignRunner& runner, Mend mend) {
  return std::all_of(runner.punches.begin(), runner.punches.end(), [&](const Punch& punch) {
    if (!punch.time) return true;
    const Milliseconds time = mend(*punch.time);
    return time >= 0 && time <= *runner.time;
  });
}

// Whether no split lies between start and finish as it is.
bool FitsNowhere(const ForeignRunner& runner) {
  return std::none_of(runner.punches.begin(), runner.punches.end(), [&](const Punch& punch) {
    return punch.time && *punch.time >= 0 && *punch.time <= *runner.time;
  });
}

template <typename Mend>
void MendSplits(std::vector<ForeignClass>& classes, Mend mend) {
  ForEachRunner(classes, [&](ForeignRunner& runner) {
    for (Punch& punch : runner.punches) {
      if (punch.time) punch.time = mend(*punch.time);
    }
  });
}

// All splits are too late or too early by the same hours.
void MendZeroTime(std::vector<ForeignClass>& classes, RemarkList& remarks) {
  for (const Milliseconds shift : kShifts) {
    const auto mend = [&](Milliseconds time) { return time - shift; };
    const auto shows = [&](const ForeignRunner& runner) {
      return FitsNowhere(runner) && FitsWith(runner, mend);
    };
    if (!AllShow(classes, HasSplitsAndTime, shows)) continue;
    MendSplits(classes, mend);
    remarks.Add(RemarkSeverity::kNote, 0, 0, "splits", "",
                "all of them are " + HoursText(shift) + (shift > 0 ? " too late" : " too early") +
                    " for the total times; they are moved by that");
    return;
  }
}

// Cards that count twelve hours begin again at noon.
void MendTwelveHourCards(std::vector<ForeignClass>& classes, RemarkList& remarks) {
  const auto mend = [](Milliseconds time) { return time < 0 ? time + kTwelveHours : time; };
  const auto shows = [&](const ForeignRunner& runner) {
    const bool wraps = std::any_of(runner.punches.begin(), runner.punches.end(),
                                   [](const Punch& p) { return p.time && *p.time < 0; });
    return wraps && FitsWith(runner, mend);
  };
  if (!AllShow(classes, HasSplitsAndTime, shows)) return;
  MendSplits(classes, mend);
  remarks.Add(RemarkSeverity::kNote, 0, 0, "splits", "",
              "the cards count twelve hours; the splits after they began again are moved by that");
}

Milliseconds ClockDifference(const ForeignRunner& runner) {
  const Milliseconds difference = *runner.finish - *runner.start;
  return difference < 0 ? difference + kMillisecondsOfDay : difference;
}

// The start is one or twelve hours away from what the finish and the total time say.
void MendStartTimes(std::vector<ForeignClass>& classes, RemarkList& remarks) {
  const auto has_clock = [](const ForeignRunner& runner) {
    return runner.start && runner.finish && runner.time;
  };
  for (const Milliseconds shift : kShifts) {
    const auto shows = [&](const ForeignRunner& runner) {
      Milliseconds off = (ClockDifference(runner) - *runner.time - shift) % kMillisecondsOfDay;
      if (off < -kTwelveHours) off += kMillisecondsOfDay;
      if (off > kTwelveHours) off -= kMillisecondsOfDay;
      return std::abs(off) <= kTolerance;
    };
    if (!AllShow(classes, has_clock, shows)) continue;
    ForEachRunner(classes, [&](ForeignRunner& runner) {
      if (!runner.start) return;
      runner.start = (*runner.start + shift + kMillisecondsOfDay) % kMillisecondsOfDay;
    });
    remarks.Add(RemarkSeverity::kNote, 0, 0, "start times", "",
                "all of them are " + HoursText(shift) + (shift > 0 ? " too early" : " too late") +
                    " for the finish and total times; they are moved by that");
    return;
  }
}

// Without total times, the clocks of start and finish give them; a finish clock of twelve hours
// makes every one of them twelve hours too long.
void MendFinishTimes(std::vector<ForeignClass>& classes, RemarkList& remarks) {
  const auto has_no_total = [](const ForeignRunner& runner) {
    return runner.start && runner.finish && !runner.time;
  };
  const auto shows = [](const ForeignRunner& runner) {
    return ClockDifference(runner) > kTwelveHours;
  };
  if (!AllShow(classes, has_no_total, shows)) return;
  ForEachRunner(classes, [&](ForeignRunner& runner) {
    if (has_no_total(runner)) runner.finish = (*runner.finish + kTwelveHours) % kMillisecondsOfDay;
  });
  remarks.Add(RemarkSeverity::kNote, 0, 0, "finish times", "",
              "all of them are twelve hours too early for the start times; they are moved by that");
}

}  // namespace

void MendClocks(std::vector<ForeignClass>& classes, RemarkList& remarks) {
  MendFinishTimes(classes, remarks);
  MendStartTimes(classes, remarks);
  MendZeroTime(classes, remarks);
  MendTwelveHourCards(classes, remarks);
}

}  // namespace keltrun
