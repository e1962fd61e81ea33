// What result files of other programs say about classes and runners, in the values in which they
// say it: how a race ended, times in milliseconds, places, the controls of a course.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "keltrun2/model/event_model.h"
#include "keltrun2/model/runner_status.h"

namespace keltrun {

/// The value of a time that is not known.
inline constexpr std::int64_t kNoMilliseconds = -1;

/// A course as runners had it.
struct CourseFacts {
  std::int32_t number = 0;  // 0 when the class has no course
  std::int32_t length = 0;  // meters, 0 when unknown
  std::int32_t climb = 0;   // meters
  /// The codes of the controls. Where a code is not known, it is the number of the control: 1, 2.
  std::vector<std::string> codes;
  bool has_unknown_codes = false;

  std::int32_t ControlCount() const { return static_cast<std::int32_t>(codes.size()); }
};

struct RunnerFacts {
  const clsLapData* record = nullptr;
  const CourseFacts* course = nullptr;  // the runner's own or that of the class, never null
  RunnerStatus status = RunnerStatus::kUnknown;
  std::int64_t time = kNoMilliseconds;   // total, also one that does not count
  std::int64_t start = kNoMilliseconds;  // since midnight, 24 hours and more are the next day
  std::int32_t place = 0;                // 0 for none

  /// Whether the time counts, so that the runner has a place or runs outside the competition.
  bool TimeCounts() const {
    return status == RunnerStatus::kOk || status == RunnerStatus::kFinished ||
           status == RunnerStatus::kNotCompeting;
  }
};

/// The times since the start at the controls of a runner's course.
class SplitTimes {
 public:
  static constexpr std::int32_t kMostControls = 50;

  /// From the laps. A skipped control has no time, and the next lap goes on from the control before
  /// it. A leg without data or with a disqualification has none either; the times after the last
  /// such leg count back from the total time when the result says more than the laps add up to, and
  /// otherwise they are the sum of the laps. A lap of one millisecond is one of 0 seconds. Who
  /// did not start has no times.
  void Find(const RunnerFacts& runner);

  std::int32_t ControlCount() const { return count_; }
  /// The time at a control, from 0 to ControlCount() - 1; kNoMilliseconds when it was missed.
  std::int64_t operator[](std::int32_t control) const {
    return at_[static_cast<std::size_t>(control)];
  }
  /// Whether some control has no time.
  bool HasMissing() const { return missing_ > 0; }
  bool HasAny() const { return missing_ < count_; }

 private:
  std::array<std::int64_t, kMostControls> at_;
  std::int32_t count_ = 0;
  std::int32_t missing_ = 0;
};

/// The classes of an event, one after the other. The event must not change meanwhile.
///
///     ResultFacts facts(model);
///     for (const auto& klass : model.Classes()) {
///       for (const RunnerFacts& runner : facts.RunnersOf(*klass)) ...
///     }
class ResultFacts {
 public:
  explicit ResultFacts(const EventModel& model);

  /// The runners of a class as files list them: those on the course of the class before those on
  /// courses of their own, and each of these by place, then those whose time counts without a
  /// place, then the others by status. Valid until the next call.
  std::span<const RunnerFacts> RunnersOf(const clsClassData& klass);

  /// The course of a class. It has as many controls as the class, and if that is not known, as many
  /// as its runners have legs before the last one.
  const CourseFacts& CourseOf(const clsClassData& klass);

 private:
  RunnerFacts Describe(const clsClassData& klass, const CourseFacts& course,
                       const clsLapData& record);
  const CourseFacts& OwnCourse(std::int32_t number, const CourseFacts& of_class);
  void SetPlaces();

  const EventModel& model_;
  std::unordered_map<const clsClassData*, CourseFacts> courses_of_classes_;
  std::unordered_map<std::int32_t, CourseFacts> own_courses_;
  std::unordered_map<std::int32_t, const clsClassData*> first_classes_;  // of each course
  std::vector<RunnerFacts> runners_;
};

/// The status of a runner: what the record says beside the result, if the two agree, otherwise what
/// the result says, and without a result what the laps say.
RunnerStatus StatusOf(const clsLapData& runner);

/// The best time among the runners with a place; kNoMilliseconds without one.
std::int64_t BestTime(std::span<const RunnerFacts> runners);

/// A lap, time or clock time above zero in whole milliseconds; kNoMilliseconds for other values.
std::int64_t ToMilliseconds(DateTime time);

}  // namespace keltrun
