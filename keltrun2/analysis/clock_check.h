// Control stations whose clock went wrong during the day.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "keltrun2/analysis/course_groups.h"
#include "keltrun2/analysis/lap_estimate.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

/// What is odd about the clock of a control. A clock that is ahead makes the lap to the control too
/// long and the lap from it too short, by the same time.
struct ClockFinding {
  std::int32_t code = 0;
  bool jumps = false;        // at `last`; otherwise it drifts from `first` to `last`
  double seconds = 0;        // how far it gets ahead; negative if it falls behind
  double first = 0;          // seconds since midnight: the first punch that was used
  double last = 0;           // the last punch, or the time of the jump
  double deviations = 0;     // how far `seconds` is from 0, in standard errors
  std::int32_t runners = 0;  // whose punches were used

  /// "the clock of control 45 seems to drift by +42 s from 10:05 to 12:40 (84 runners, 7.3 standard
  /// errors)"
  std::string Remark() const;
};

/// One punch at a control.
struct ClockPunch {
  std::int32_t code;
  std::size_t klass;
  double time;                       // of day, in seconds
  double before, after;              // losses on the legs to and from the control, in seconds
  double before_error, after_error;  // their standard deviations
};

/// The clocks that drift or jump by 30 s or more, judged by the punches of 60 runners or more. An
/// error that is the same for everybody, or that of a single runner's card, cannot be told from the
/// legs and the runners themselves, and is not looked for.
std::vector<ClockFinding> FindClocks(std::vector<ClockPunch> punches);

/// The same for the groups of an event with their estimates; runners without a start time tell
/// nothing.
std::vector<ClockFinding> FindClocks(const std::vector<CourseGroup>& groups,
                                     const std::vector<ClassEstimate>& estimates);

/// Adds a time to every punch at a control: the laps to it become longer by it and the laps from it
/// shorter. A runner for whom a lap would not be above 0 stays as they are. Returns the number of
/// runners who changed, and adds a sentence to the corrections of the event.
std::int32_t ShiftClock(EventModel& model, std::int32_t code, double seconds);

}  // namespace keltrun
