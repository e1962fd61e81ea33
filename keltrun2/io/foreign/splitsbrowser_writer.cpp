#include <algorithm>
#include <vector>

#include "keltrun2/io/foreign/table_cells.h"
#include "keltrun2/io/foreign/table_writers.h"
#include "keltrun2/model/person_name.h"
#include "keltrun2/text/cells.h"
#include "keltrun2/text/datetime.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

// Nothing is quoted. Older versions part the class line at colons too.
constexpr std::string_view kSeparators = ",:";
// An empty cell would vanish in older versions.
constexpr std::string_view kNoText = "-";
constexpr std::string_view kMissing = ",0:00";

void AppendText(std::string& out, std::string_view text, std::string_view substitute) {
  const std::size_t begin = out.size();
  AppendWithout(out, text, kSeparators);
  if (out.find_first_not_of(' ', begin) != std::string::npos) return;
  out.resize(begin);
  out += substitute;
}

void AppendLeg(std::string& out, std::int64_t seconds) {
  out += ',';
  AppendInteger(out, seconds / 60);
  out += ':';
  AppendTwoDigits(out, static_cast<int>(seconds % 60));
}

class Writer {
 public:
  Writer(std::string& out, const EventModel& model) : out_(out), model_(model), facts_(model) {}

  void WriteClasses() {
    for (const auto& klass : model_.Classes()) {
      const auto runners = facts_.RunnersOf(*klass);
      const CourseFacts& course = facts_.CourseOf(*klass);
      const auto fits = [&](const RunnerFacts& runner) {
        return runner.course->ControlCount() == course.ControlCount();
      };
      WriteClass(klass->ClassName(), course.ControlCount(), runners, fits);
      WriteOtherCourses(*klass, runners, fits);
    }
  }

 private:
  using Runners = std::span<const RunnerFacts>;

  template <typename Fits>
  void WriteOtherCourses(const clsClassData& klass, Runners runners, Fits fits) {
    std::vector<const CourseFacts*> written;
    for (const RunnerFacts& runner : runners) {
      const CourseFacts* const course = runner.course;
      if (fits(runner) || std::find(written.begin(), written.end(), course) != written.end()) {
        continue;
      }
      written.push_back(course);
      WriteClass(klass.ClassName() + " (" + std::to_string(course->number) + ")",
                 course->ControlCount(), runners,
                 [&](const RunnerFacts& other) { return other.course == course; });
    }
  }

  template <typename IsIn>
  void WriteClass(std::string_view name, std::int32_t controls, Runners runners, IsIn is_in) {
    const std::size_t begin = out_.size();
    if (has_class_) out_.append(kCrLf).append(kCrLf);
    AppendText(out_, name, kNoName);
    out_ += ',';
    AppendInteger(out_, controls);
    bool has_time = false;
    for (const RunnerFacts& runner : runners) {
      if (is_in(runner)) has_time = WriteRunner(runner) || has_time;
    }
    has_class_ = has_class_ || has_time;
    if (!has_time) out_.resize(begin);
  }

  // Returns whether the runner has a time.
  bool WriteRunner(const RunnerFacts& runner) {
    out_ += kCrLf;
    WriteName(*runner.record);
    out_ += ',';
    AppendText(out_, runner.record->ClubName, kNoText);
    out_ += ',';
    AppendClockCell(out_, std::max<std::int64_t>(runner.start, 0) / 1000, ':', false);
    return WriteLegs(runner);
  }

  void WriteName(const clsLapData& record) {
    const PersonName name = NameParts(record);
    const bool has_both = !name.given.empty();
    AppendText(out_, has_both ? name.given : name.family, kNoName);
    out_ += ',';
    AppendText(out_, has_both ? name.family : std::string_view(), kNoText);
  }

  // A leg of less than a second takes one from the next leg, because 0:00 is a missing one.
  bool WriteLegs(const RunnerFacts& runner) {
    splits_.Find(runner);
    std::int64_t before = 0;
    bool has_time = false;
    for (std::int32_t i = 0; i < splits_.ControlCount(); ++i) {
      if (splits_[i] == kNoMilliseconds) {
        out_ += kMissing;
        continue;
      }
      const std::int64_t leg = std::max<std::int64_t>(RoundedSeconds(splits_[i]) - before, 1);
      before += leg;
      AppendLeg(out_, leg);
      has_time = true;
    }
    const std::int64_t last = FinishLeg(runner, splits_, before);
    AppendLeg(out_, last);
    return has_time || last > 0;
  }

  std::string& out_;
  const EventModel& model_;
  ResultFacts facts_;
  SplitTimes splits_;
  bool has_class_ = false;
};

}  // namespace

void AppendSplitsBrowserEvent(std::string& out, const EventModel& model) {
  Writer(out, model).WriteClasses();
}

}  // namespace keltrun
