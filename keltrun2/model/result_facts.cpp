#include "keltrun2/model/result_facts.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>

#include "keltrun2/model/class_data_internal.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/result_status.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

constexpr std::int64_t kZeroLap = 1;  // how a lap of 0 seconds is stored
// Laps may be rounded to seconds, each by up to half of one.
constexpr std::int64_t kRoundingOfLap = 500;

// What Japanese lists write beside the words that ResultStatusCode knows.
struct StatusWord {
  std::string_view text;
  RunnerStatus status;
};
constexpr StatusWord kStatusWords[] = {
    {"失格", RunnerStatus::kDisqualified}, {"途中棄権", RunnerStatus::kDidNotFinish},
    {"棄権", RunnerStatus::kDidNotFinish}, {"欠場", RunnerStatus::kDidNotStart},
    {"欠席", RunnerStatus::kDidNotStart},  {"不出走", RunnerStatus::kDidNotStart},
    {"未出走", RunnerStatus::kDidNotStart}};

std::int64_t LapOf(DateTime lap) {
  const std::int64_t time = ToMilliseconds(lap);
  return time == kZeroLap ? 0 : time;
}

// "h:mm:ss", the form in which results are stored; everything else is read by the general rules.
std::int64_t TimeOfResult(std::string_view result) {
  if (result.size() == 7 && result[1] == ':' && result[4] == ':') {
    constexpr std::pair<std::size_t, std::int64_t> kDigits[] = {
        {0, 3600}, {2, 600}, {3, 60}, {5, 10}, {6, 1}};
    std::int64_t seconds = 0;
    bool has_digits = true;
    for (const auto& [at, unit] : kDigits) {
      has_digits = has_digits && IsDigit(result[at]);
      seconds += (result[at] - '0') * unit;
    }
    if (has_digits) return 1000 * seconds;
  }
  const std::optional<DateTime> time = TotalTime(result);
  return ToMilliseconds(time ? *time : ReadableTime(result).value_or(0));
}

bool IsTimeStatus(RunnerStatus status) {
  return status == RunnerStatus::kOk || status == RunnerStatus::kFinished ||
         status == RunnerStatus::kNotCompeting;
}

// The sum of the laps, if the runner has one to the finish.
std::int64_t TimeOfLaps(const clsLapData& runner, std::int32_t controls) {
  if (!(LapDataInternal::Lap(runner, controls + 1) > 0)) return kNoMilliseconds;
  std::int64_t sum = 0;
  for (std::int32_t leg = 1; leg <= controls + 1; ++leg) {
    const DateTime lap = LapDataInternal::Lap(runner, leg);
    if (lap > 0) sum += LapOf(lap);
  }
  return sum;
}

// Without a result the laps tell.
RunnerStatus StatusOfLaps(const clsLapData& runner) {
  const std::int32_t legs = LapDataInternal::HeldLegs(runner);
  std::int32_t timed = 0;
  for (std::int32_t leg = 1; leg <= legs; ++leg) {
    if (LapDataInternal::Lap(runner, leg) > 0) ++timed;
  }
  if (timed == 0) return RunnerStatus::kDidNotStart;
  if (timed == legs) return RunnerStatus::kOk;
  return LapDataInternal::Lap(runner, legs) > 0 ? RunnerStatus::kMissingPunch
                                                : RunnerStatus::kDidNotFinish;
}

RunnerStatus StatusOfWord(std::string_view result) {
  for (const StatusWord& word : kStatusWords) {
    if (result == word.text) return word.status;
  }
  constexpr std::int32_t kMispunched = 50;
  constexpr std::int32_t kDidNotFinish = 90;
  constexpr std::int32_t kControlClosed = 91;
  constexpr std::int32_t kDidNotStart = 99;
  const std::int32_t code = ResultStatusCode(result);
  if (code <= kMispunched) return RunnerStatus::kMissingPunch;
  if (code == kDidNotFinish) return RunnerStatus::kDidNotFinish;
  if (code == kControlClosed) return RunnerStatus::kOverTime;
  if (code == kDidNotStart) return RunnerStatus::kDidNotStart;
  return RunnerStatus::kDisqualified;
}

// The official rank, if it is a number; 0 otherwise.
std::int32_t OfficialRank(std::string_view rank) {
  if (rank.size() <= 6 && IsDigits(rank)) {
    std::int32_t number = 0;
    for (const char c : rank) number = number * 10 + (c - '0');
    return number;
  }
  return std::max(NumericLong(rank), 0);
}

// An official rank that is not a number, such as "(3)" or a word, is that of a guest.
RunnerStatus StatusOfTime(const clsLapData& runner) {
  const bool is_guest =
      !runner.Rank.empty() && OfficialRank(runner.Rank) == 0 && !NumericValue(runner.Rank);
  return is_guest ? RunnerStatus::kNotCompeting : RunnerStatus::kOk;
}

// The order of a list: classified runners, guests, then the statuses.
std::int32_t GroupOf(const RunnerFacts& runner) {
  if (runner.time == kNoMilliseconds && runner.TimeCounts()) return 3;
  switch (runner.status) {
    case RunnerStatus::kOk:
    case RunnerStatus::kFinished:
      return 0;
    case RunnerStatus::kNotCompeting:
      return 1;
    case RunnerStatus::kOverTime:
      return 2;
    case RunnerStatus::kMissingPunch:
      return 4;
    case RunnerStatus::kDidNotFinish:
    case RunnerStatus::kSportingWithdrawal:
      return 5;
    case RunnerStatus::kDisqualified:
      return 6;
    default:
      return 7;
  }
}

std::int32_t MostLegs(const clsClassData& klass) {
  std::int32_t legs = 0;
  for (const auto& runner : ClassDataInternal::Runners(klass)) {
    legs = std::max(legs, LapDataInternal::HeldLegs(*runner));
  }
  return legs;
}

// The codes of `count` controls; `course` may be null.
void SetCodes(CourseFacts& facts, const clsCourseData* course, std::int32_t count) {
  count = std::clamp(count, 0, SplitTimes::kMostControls);
  for (std::int32_t i = 1; i <= count; ++i) {
    const bool is_known = course != nullptr && i <= course->ControlCount() &&
                          (course->ControlNum(i) != 0 || course->HasCodeText(i));
    facts.codes.push_back(is_known ? course->ControlCodeText(i) : std::to_string(i));
    facts.has_unknown_codes = facts.has_unknown_codes || !is_known;
  }
}

}  // namespace

std::int64_t ToMilliseconds(DateTime time) {
  if (!(time > 0 && time < kLongestTime)) return kNoMilliseconds;
  return std::llround(time * kMillisecondsPerDay);
}

RunnerStatus StatusOf(const clsLapData& runner) {
  const std::string& result = runner.Result();
  if (result.empty()) {
    return runner.Status != RunnerStatus::kUnknown ? runner.Status : StatusOfLaps(runner);
  }
  const bool has_time = TimeOfResult(result) > 0;
  if (runner.Status != RunnerStatus::kUnknown && IsTimeStatus(runner.Status) == has_time) {
    return runner.Status;
  }
  return has_time ? StatusOfTime(runner) : StatusOfWord(result);
}

std::int64_t BestTime(std::span<const RunnerFacts> runners) {
  std::int64_t best = kNoMilliseconds;
  for (const RunnerFacts& runner : runners) {
    if (runner.place == 0 || runner.time == kNoMilliseconds) continue;
    if (best == kNoMilliseconds || runner.time < best) best = runner.time;
  }
  return best;
}

void SplitTimes::Find(const RunnerFacts& runner) {
  const clsLapData& record = *runner.record;
  count_ = std::min(runner.course->ControlCount(), kMostControls);
  missing_ = 0;
  const bool has_started = runner.status != RunnerStatus::kDidNotStart;
  const std::int32_t legs = has_started ? LapDataInternal::HeldLegs(record) : 0;
  std::int64_t sum = 0;
  std::int32_t last_unknown = -1;
  for (std::int32_t i = 0; i < count_; ++i) {
    const DateTime lap = i < legs ? LapDataInternal::Lap(record, i + 1) : kTimeNoData;
    std::int64_t& at = at_[static_cast<std::size_t>(i)];
    if (lap > 0) {
      sum += LapOf(lap);
      at = sum;
      continue;
    }
    at = kNoMilliseconds;
    ++missing_;
    if (lap != kTimeSkip) last_unknown = i;
  }
  if (last_unknown < 0 || !runner.TimeCounts() || count_ + 1 > legs) return;
  const DateTime last = LapDataInternal::Lap(record, count_ + 1);
  if (!(last > 0)) return;
  const std::int64_t rest = runner.time - sum - LapOf(last);
  if (rest <= (count_ + 1) * kRoundingOfLap) return;
  for (std::int32_t i = last_unknown + 1; i < count_; ++i) {
    std::int64_t& at = at_[static_cast<std::size_t>(i)];
    if (at != kNoMilliseconds) at += rest;
  }
}

ResultFacts::ResultFacts(const EventModel& model) : model_(model) {
  for (const auto& klass : model.Classes()) {
    if (klass->CourseNum != 0) first_classes_.emplace(klass->CourseNum, klass.get());
  }
}

const CourseFacts& ResultFacts::CourseOf(const clsClassData& klass) {
  const auto [found, added] = courses_of_classes_.try_emplace(&klass);
  CourseFacts& facts = found->second;
  if (!added) return facts;
  const auto course = klass.CourseNum != 0 ? model_.CourseByNumber(klass.CourseNum) : nullptr;
  facts.number = klass.CourseNum;
  facts.length = std::max(klass.Length, 0);
  facts.climb = std::max(klass.Climb, 0);
  std::int32_t count = klass.ControlCount;
  if (count <= 0 && course) count = course->ControlCount();
  if (count <= 0) count = MostLegs(klass) - 1;
  SetCodes(facts, course.get(), count);
  return facts;
}

const CourseFacts& ResultFacts::OwnCourse(std::int32_t number, const CourseFacts& of_class) {
  const auto course = model_.CourseByNumber(number);
  if (!course) return of_class;
  const auto [found, added] = own_courses_.try_emplace(number);
  CourseFacts& facts = found->second;
  if (!added) return facts;
  facts.number = number;
  const auto first = first_classes_.find(number);
  if (first != first_classes_.end()) {
    facts.length = std::max(first->second->Length, 0);
    facts.climb = std::max(first->second->Climb, 0);
  }
  SetCodes(facts, course.get(), course->ControlCount());
  return facts;
}

RunnerFacts ResultFacts::Describe(const clsClassData& klass, const CourseFacts& course,
                                  const clsLapData& record) {
  RunnerFacts runner;
  runner.record = &record;
  const bool has_own = record.CourseNum != 0 && record.CourseNum != klass.CourseNum;
  runner.course = has_own ? &OwnCourse(record.CourseNum, course) : &course;
  runner.status = StatusOf(record);
  runner.start = ToMilliseconds(record.StartTime()->Value());
  if (runner.TimeCounts()) runner.time = TimeOfResult(record.Result());
  if (runner.status != RunnerStatus::kDidNotStart && runner.time <= 0) {
    runner.time = TimeOfLaps(record, runner.course->ControlCount());
  }
  return runner;
}

std::span<const RunnerFacts> ResultFacts::RunnersOf(const clsClassData& klass) {
  const CourseFacts& course = CourseOf(klass);
  runners_.clear();
  for (const auto& record : ClassDataInternal::Runners(klass)) {
    runners_.push_back(Describe(klass, course, *record));
  }
  const auto key = [&](const RunnerFacts& runner) {
    return std::tuple(runner.course != &course, GroupOf(runner),
                      runner.time == kNoMilliseconds ? std::int64_t{1} << 60 : runner.time);
  };
  const auto before = [&](const RunnerFacts& a, const RunnerFacts& b) { return key(a) < key(b); };
  if (!std::is_sorted(runners_.begin(), runners_.end(), before)) {
    std::stable_sort(runners_.begin(), runners_.end(), before);
  }
  SetPlaces();
  return runners_;
}

// The official rank if it is a number. Otherwise equal times share a place (1, 2, 2, 4) among all
// runners who are classified, on whatever course.
void ResultFacts::SetPlaces() {
  std::vector<RunnerFacts*> ranked;
  for (RunnerFacts& runner : runners_) {
    if (GroupOf(runner) == 0) ranked.push_back(&runner);
  }
  const auto faster = [](const auto* a, const auto* b) { return a->time < b->time; };
  if (!std::is_sorted(ranked.begin(), ranked.end(), faster)) {
    std::stable_sort(ranked.begin(), ranked.end(), faster);
  }
  std::int32_t place = 0;
  for (std::size_t i = 0; i < ranked.size(); ++i) {
    if (i == 0 || ranked[i]->time != ranked[i - 1]->time) place = static_cast<std::int32_t>(i) + 1;
    const std::int32_t official = OfficialRank(ranked[i]->record->Rank);
    ranked[i]->place = official > 0 ? official : place;
  }
}

}  // namespace keltrun
