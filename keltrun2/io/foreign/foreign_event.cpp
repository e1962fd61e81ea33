#include "keltrun2/io/foreign/foreign_event.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <type_traits>

#include "keltrun2/io/foreign/clock_faults.h"
#include "keltrun2/io/foreign/course_lists.h"
#include "keltrun2/io/foreign/end_controls.h"
#include "keltrun2/io/foreign/refusal.h"
#include "keltrun2/io/foreign/runner_laps.h"
#include "keltrun2/io/limits.h"
#include "keltrun2/model/lap_data_internal.h"
#include "keltrun2/model/time_values.h"
#include "keltrun2/text/letters.h"

namespace keltrun {
namespace {

static_assert(std::is_nothrow_move_constructible_v<ForeignClass>);

constexpr std::int32_t kHighestNumber = kFirstTextCode - 1;
constexpr std::size_t kMostIdDigits = 9;

// What programs call the finish and the start where a control code is expected.
// Digits can follow, when there are several.
constexpr std::array<std::string_view, 13> kFinishNames = {
    "f",   "fin",   "finish",  "z",       "ziel", "mål",   "mal",
    "cil", "maali", "arrivee", "arrivée", "cíl",  "target"};
constexpr std::array<std::string_view, 3> kStartNames = {"s", "sta", "start"};

template <std::size_t N>
bool IsOneOf(std::string_view text, const std::array<std::string_view, N>& names) {
  return std::find(names.begin(), names.end(), text) != names.end();
}

// Removes one digit at the end, as in "F1" and "Finish 2". More of them are those of a control.
std::string_view WithoutNumber(std::string_view name) {
  if (name.empty() || !IsDigit(name.back())) return name;
  return TrimSpaces(name.substr(0, name.size() - 1));
}

// The number of a code that is one; 0 for other texts.
std::int32_t CodeNumber(std::string_view text) {
  std::int32_t number = 0;
  for (const char c : text) {
    if (!IsDigit(c)) return 0;
    number = number * 10 + (c - '0');
    if (number > kHighestNumber) return 0;
  }
  return number;
}

std::int32_t NumberOrZero(std::string_view text) {
  const bool is_number = !text.empty() && text.size() <= kMostIdDigits && IsDigits(text);
  std::int32_t number = 0;
  for (const char c : is_number ? text : std::string_view()) number = number * 10 + (c - '0');
  return number;
}

DateTime Days(Milliseconds time) {
  return Canonical(static_cast<double>(time) / kMillisecondsPerDay);
}

// "1 runner", "25 runners".
std::string Counted(std::size_t count, std::string_view thing) {
  return std::to_string(count) + " " + std::string(thing) + (count == 1 ? "" : "s");
}

// `one` for 1, otherwise the count with `many` after it.
std::string Chosen(std::size_t count, std::string_view one, std::string_view many) {
  return count == 1 ? std::string(one) : std::to_string(count) + std::string(many);
}

// The word for a status in the result; empty for a status with a time, or without a result.
std::string_view ResultWord(RunnerStatus status) {
  switch (status) {
    case RunnerStatus::kMissingPunch:
      return "MP";
    case RunnerStatus::kDisqualified:
      return "DISQ";
    case RunnerStatus::kDidNotFinish:
    case RunnerStatus::kSportingWithdrawal:
      return "DNF";
    case RunnerStatus::kOverTime:
      return "OCL";
    case RunnerStatus::kDidNotStart:
    case RunnerStatus::kDidNotEnter:
    case RunnerStatus::kMoved:
    case RunnerStatus::kMovedUp:
    case RunnerStatus::kCancelled:
      return "DNS";
    case RunnerStatus::kUnknown:
    case RunnerStatus::kOk:
    case RunnerStatus::kFinished:
    case RunnerStatus::kActive:
    case RunnerStatus::kInactive:
    case RunnerStatus::kNotCompeting:
      break;
  }
  return "";
}

bool HasResultTime(RunnerStatus status) {
  return status == RunnerStatus::kOk || status == RunnerStatus::kFinished ||
         status == RunnerStatus::kNotCompeting;
}

// Whether a status is that of a runner who never set out.
bool DidNotStart(RunnerStatus status) { return ResultWord(status) == "DNS"; }

// Whether a status is that of a runner who had not finished when the file was written.
bool HadNotFinished(RunnerStatus status) {
  return status == RunnerStatus::kActive || status == RunnerStatus::kInactive;
}

// Whether a status that the file may not say is that of a runner who punched all controls.
bool TimeCounts(const std::optional<RunnerStatus>& status) {
  return !status || HasResultTime(*status) || *status == RunnerStatus::kOverTime;
}

bool HasPunchTime(const ForeignRunner& runner) {
  return std::any_of(runner.punches.begin(), runner.punches.end(),
                     [](const Punch& punch) { return punch.time.has_value(); });
}

// The finish can be the last punch. It gives the total time when the file has none.
void TakeFinish(ForeignRunner& runner, std::int32_t controls) {
  auto& punches = runner.punches;
  if (punches.empty()) return;
  const Punch last = punches.back();
  const bool is_number = last.code == ForeignEvent::kFinishNumber &&
                         (last.time == runner.time || !runner.time ||
                          (controls > 0 && punches.size() > static_cast<std::size_t>(controls)));
  if (last.code != ForeignEvent::kFinishCode && !is_number) return;
  if (!runner.time) runner.time = last.time;
  punches.pop_back();
}

// Removes starts, other finishes, and punches of the same control one after the other, of which the
// first one counts. Returns how many repeated punches were removed.
std::size_t RemoveNoControls(std::vector<Punch>& punches, bool has_codes) {
  if (!has_codes) return 0;
  std::erase_if(punches, [](const Punch& punch) {
    return punch.code == ForeignEvent::kFinishCode || punch.code == ForeignEvent::kStartCode;
  });
  const auto is_repeated = [](const Punch& a, const Punch& b) {
    return a.code == b.code && a.code != 0 && a.time && b.time;
  };
  const auto end = std::unique(punches.begin(), punches.end(), is_repeated);
  const auto removed = static_cast<std::size_t>(punches.end() - end);
  punches.erase(end, punches.end());
  return removed;
}

// Nobody is at a control when they start, unless it is the first one: 0 stands for controls that
// were missed. At the first ones it does if the runner did not punch all controls.
void DropZeroSplits(ForeignRunner& runner) {
  bool may_be_zero = TimeCounts(runner.status);
  for (Punch& punch : runner.punches) {
    if (punch.time == 0 && !may_be_zero) punch.time.reset();
    may_be_zero &= punch.time == 0;
  }
}

// The total time of a runner without one, from the clock.
void DeduceTotal(ForeignRunner& runner) {
  if (runner.time || !runner.start || !runner.finish) return;
  const Milliseconds difference = *runner.finish - *runner.start;
  runner.time = difference < 0 ? difference + kMillisecondsOfDay : difference;
}

void DropCodesOfNothing(ForeignClass& klass) {
  const auto has_code = [](const ForeignRunner& runner) {
    return std::any_of(runner.punches.begin(), runner.punches.end(),
                       [](const Punch& punch) { return punch.code != 0; });
  };
  const bool any = std::any_of(klass.runners.begin(), klass.runners.end(), has_code);
  const bool has_punches = std::any_of(klass.runners.begin(), klass.runners.end(),
                                       [](const auto& r) { return !r.punches.empty(); });
  if (has_punches && !any) klass.has_codes = false;
}

// Makes the records of one class after the other, and counts what the remarks tell.
class RecordMaker {
 public:
  RecordMaker(std::size_t classes, RemarkList& remarks)
      : remarks_(remarks), other_courses_left_(kMostCourses - std::min(classes, kMostCourses)) {}

  ClassRecords Make(ForeignClass& klass) {
    class_ = &klass;
    zero_legs_.clear();
    for (ForeignRunner& runner : klass.runners) {
      TakeFinish(runner, runner.control_count > 0 ? runner.control_count : klass.control_count);
      DeduceTotal(runner);
    }
    DropCodesOfNothing(klass);
    for (ForeignRunner& runner : klass.runners) {
      unused_punches_ += RemoveNoControls(runner.punches, klass.has_codes);
    }
    CourseLists courses = FindCourseLists(klass, 1 + other_courses_left_);
    other_courses_left_ -= courses.lists.size() - 1;
    ClassRecords records = Describe(courses);
    records.runners.reserve(klass.runners.size());
    for (AlignedRunner& aligned : courses.runners) {
      records.runners.push_back(MakeRunner(klass.runners.front(), aligned, courses));
      klass.runners.pop_front();
      aligned.times = {};
    }
    RemarkClass(courses, records);
    return records;
  }

  // The remarks about all classes.
  void RemarkAll() {
    if (unused_punches_ > 0) {
      Note("punches",
           Chosen(unused_punches_,
                  "1 is not on the course of its runner, or was made twice, and not used",
                  " are not on the courses of their runners, or were made twice, and not "
                  "used"));
    }
    if (told_from_times_ > 0) {
      Note("status", Counted(told_from_times_, "runner") +
                         " without one in the file: it is told from the times");
    }
    if (no_time_ > 0) {
      Warn("result", Chosen(no_time_, "1 runner of status OK has no time and so no result",
                            " runners of status OK have no time and so no result"));
    }
    if (not_finished_ > 0) {
      Note("status", Counted(not_finished_, "runner") +
                         " had not finished when the file was written: they have no result");
    }
    if (started_after_all_ > 0) {
      Warn("status", Counted(started_after_all_, "runner") +
                         " with split times, but a status of those who did not start: the splits "
                         "are kept");
    }
    RemarkCutResults(cut_results_, remarks_);
  }

 private:
  void Note(std::string_view subject, const std::string& text) {
    remarks_.Add(RemarkSeverity::kNote, 0, 0, subject, "", text);
  }
  void Warn(std::string_view subject, const std::string& text) {
    remarks_.Add(RemarkSeverity::kWarning, 0, 0, subject, "", text);
  }
  // The course of the class and the other courses of its runners.
  ClassRecords Describe(const CourseLists& courses) const {
    ClassRecords records;
    records.name = class_->name;
    if (class_->length > 0) records.length = class_->length;
    if (class_->climb > 0) records.climb = class_->climb;
    records.codes = HeldCodes(courses.lists.front());
    const std::size_t controls = ControlCount(courses);
    if (controls > 0) records.control_count = static_cast<std::int32_t>(controls);
    for (std::size_t i = 1; i < courses.lists.size(); ++i) {
      records.other_codes.push_back(HeldCodes(courses.lists[i]));
    }
    return records;
  }

  static CodeList HeldCodes(CodeList codes) {
    codes.resize(std::min<std::size_t>(codes.size(), kMostClassControls));
    return codes;
  }

  // The number of controls of the class: of its codes; otherwise as the file says, or as many as
  // some runner has.
  std::size_t ControlCount(const CourseLists& courses) const {
    std::size_t controls = courses.lists.front().size();
    if (controls == 0) {
      controls = static_cast<std::size_t>(std::max(class_->control_count, 0));
      for (const AlignedRunner& runner : courses.runners) {
        if (class_->control_count <= 0) controls = std::max(controls, runner.times.size());
      }
    }
    return std::min<std::size_t>(controls, kMostClassControls);
  }

  std::shared_ptr<clsLapData> MakeRunner(ForeignRunner& read, const AlignedRunner& aligned,
                                         const CourseLists& courses) {
    auto runner = std::make_shared<clsLapData>();
    MoveTexts(read, *runner);
    unused_punches_ += aligned.unused;
    runner->Status = StatusOf(read, aligned);
    if (read.start) runner->StartTime()->SetValue(Days(*read.start));
    const bool started = !DidNotStart(runner->Status) || HasPunchTime(read);
    started_after_all_ += started && DidNotStart(runner->Status) ? 1 : 0;
    if (started) SetRunnerLaps(read, aligned, courses, *runner);
    SetRunnerResult(read, *runner);
    return runner;
  }

  static void MoveTexts(ForeignRunner& read, clsLapData& runner) {
    runner.RunnerName =
        read.name.empty() ? ShownName(read.given_name, read.family_name) : std::move(read.name);
    runner.GivenName = std::move(read.given_name);
    runner.FamilyName = std::move(read.family_name);
    runner.ClubName = std::move(read.club);
    runner.ID = NumberOrZero(read.bib);
    runner.Bib = std::move(read.bib);
    runner.Ecard = NumberOrZero(read.card);
    runner.ControlCard = std::move(read.card);
    runner.Sex = NormalSex(read.sex);
    runner.Nationality = std::move(read.nationality);
    runner.Age = std::move(read.age);
    runner.CompetitorId = std::move(read.competitor_id);
    if (read.rank != "0") runner.Rank = std::move(read.rank);
  }

  // A status that the file does not say: with a time and all controls OK, with a time and a missed
  // control a missing punch, with punches only not finished, with nothing not started.
  RunnerStatus StatusOf(const ForeignRunner& read, const AlignedRunner& aligned) {
    if (read.status) return *read.status;
    ++told_from_times_;
    if (!read.time) {
      return HasPunchTime(read) ? RunnerStatus::kDidNotFinish : RunnerStatus::kDidNotStart;
    }
    const bool missed =
        !read.punches.empty() && std::any_of(aligned.times.begin(), aligned.times.end(),
                                             [](const auto& time) { return !time.has_value(); });
    return missed ? RunnerStatus::kMissingPunch : RunnerStatus::kOk;
  }

  void SetRunnerLaps(const ForeignRunner& read, const AlignedRunner& aligned,
                     const CourseLists& courses, clsLapData& runner) {
    if (!read.time && !HasPunchTime(read)) return;
    auto times = aligned.times;
    times.resize(
        std::max(times.size(), courses.lists[aligned.list].empty()
                                   ? static_cast<std::size_t>(std::max(class_->control_count, 0))
                                   : 0));
    joined_ += times.size() > static_cast<std::size_t>(kMostClassControls) ? 1 : 0;
    const LapFaults faults = SetLaps(runner, std::move(times), read.time);
    if (faults.backward > 0) {
      remarks_.Add(RemarkSeverity::kWarning, read.line, 0, "runner", runner.RunnerName,
                   Counted(faults.backward, "split") +
                       " out of order: a leg has no data, the next lap covers it");
    }
    if (faults.total_contradicts) {
      remarks_.Add(RemarkSeverity::kWarning, read.line, 0, "runner", runner.RunnerName,
                   "the total time is smaller than most splits: the leg to the finish has no data");
    }
    for (const std::size_t leg : faults.zero_legs) {
      if (zero_legs_.size() < leg) zero_legs_.resize(leg);
      ++zero_legs_[leg - 1];
    }
  }

  void SetRunnerResult(const ForeignRunner& read, clsLapData& runner) {
    if (runner.Status == RunnerStatus::kNotCompeting) runner.Rank.clear();
    if (!HasResultTime(runner.Status)) {
      LapDataInternal::SetResultText(runner, ResultWord(runner.Status));
      not_finished_ += HadNotFinished(runner.Status) ? 1 : 0;
    } else if (read.time && *read.time > 0) {
      const DateTime time = Days(*read.time);
      LapDataInternal::SetResultText(runner,
                                     ResultText(time, *read.time % kMillisecondsPerSecond != 0));
      cut_results_ += CutsResult(time) ? 1 : 0;
    } else {
      ++no_time_;
    }
  }

  void RemarkClass(const CourseLists& courses, ClassRecords& records) {
    if (courses.lists.size() > 1) {
      std::size_t others = 0;
      for (const AlignedRunner& runner : courses.runners) {
        records.list_of_runner.push_back(runner.list);
        others += runner.list > 0 ? 1 : 0;
      }
      remarks_.Add(RemarkSeverity::kNote, 0, 0, "class", class_->name,
                   "its runners had " + std::to_string(courses.lists.size()) +
                       " courses; its analysis leaves out " + Counted(others, "runner") +
                       " on another course than that of the class");
    }
    if (courses.left_out > 0) {
      remarks_.Add(RemarkSeverity::kWarning, 0, 0, "class", class_->name,
                   "its runners had " + std::to_string(courses.left_out) +
                       " more courses than an event can have: they are compared with those of "
                       "other runners");
    }
    const std::size_t controls = ControlCount(courses);
    for (std::size_t leg = 0; leg < zero_legs_.size(); ++leg) {
      if (zero_legs_[leg] == 0) continue;
      remarks_.Add(RemarkSeverity::kNote, 0, 0, "class", class_->name,
                   (leg < controls ? "control " + std::to_string(leg + 1) : "finish") + ": " +
                       Counted(zero_legs_[leg], "runner") +
                       " with a lap of 0 seconds, which is stored as a millisecond");
    }
    if (joined_ > 0) {
      remarks_.Add(RemarkSeverity::kWarning, 0, 0, "class", class_->name,
                   "has more than " + std::to_string(kMostClassControls) +
                       " controls: the legs after them are joined into the last one");
    }
    joined_ = 0;
  }

  RemarkList& remarks_;
  std::size_t other_courses_left_;  // that the event can have
  ForeignClass* class_ = nullptr;
  std::vector<std::size_t> zero_legs_;  // of the class: runners for each leg
  std::size_t joined_ = 0;              // of the class: runners with too many controls
  std::size_t unused_punches_ = 0;
  std::size_t told_from_times_ = 0;
  std::size_t no_time_ = 0;
  std::size_t not_finished_ = 0;
  std::size_t started_after_all_ = 0;  // with a status of those who did not start
  std::size_t cut_results_ = 0;
};

}  // namespace

ForeignClass& ForeignEvent::ClassNamed(std::string_view name) {
  const auto [found, added] = class_of_name_.emplace(name, classes_.size());
  if (added) classes_.emplace_back().name = name;
  return classes_[found->second];
}

std::size_t ForeignEvent::RunnerCount() const {
  std::size_t count = 0;
  for (const ForeignClass& klass : classes_) count += klass.runners.size();
  return count;
}

std::int32_t ForeignEvent::Code(std::string_view text) {
  text = TrimSpaces(text);
  if (const std::int32_t number = CodeNumber(text)) return number;
  if (text.empty()) return 0;
  const std::string folded = LowerAscii(text);
  const std::string_view name = WithoutNumber(folded);
  if (IsOneOf(name, kFinishNames)) return kFinishCode;
  if (IsOneOf(name, kStartNames)) return kStartCode;
  const auto [found, added] = number_of_text_.emplace(
      text, kFirstTextCode + static_cast<std::int32_t>(number_of_text_.size()));
  if (added) header_.code_texts.emplace_back(text);
  return found->second;
}

LapRecords ForeignEvent::Take() && {
  for (ForeignClass& klass : classes_) {
    for (ForeignRunner& runner : klass.runners) DropZeroSplits(runner);
  }
  MendClocks(classes_, remarks_);
  MarkEndControls(classes_, remarks_);
  RecordMaker maker(classes_.size(), remarks_);
  for (ForeignClass& klass : classes_) {
    header_.classes.push_back(maker.Make(klass));
  }
  maker.RemarkAll();
  return std::move(header_);
}

ReadResult FinishReading(ForeignEvent&& event, RemarkList& remarks, std::string format,
                         std::optional<ReadError> error) {
  ReadResult result;
  result.format = std::move(format);
  result.error = std::move(error);
  const bool too_many_classes = event.Classes().size() > kMostClasses;
  const bool too_many_runners = event.RunnerCount() > kMostRunners;
  if (too_many_classes || too_many_runners) {
    result.error = ReadError{0, std::string(too_many_classes ? kTooManyClasses : kTooManyRunners)};
  } else if (event.RunnerCount() > 0) {
    result.records = std::move(event).Take();
  } else if (!result.error) {
    result.error = ReadError{0, RefusalText(Refusal::kNoResults, result.format)};
  }
  result.remarks = remarks.Take();
  return result;
}

}  // namespace keltrun
