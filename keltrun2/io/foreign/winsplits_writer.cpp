#include <algorithm>

#include "keltrun2/io/foreign/table_cells.h"
#include "keltrun2/io/foreign/table_writers.h"
#include "keltrun2/text/cells.h"

namespace keltrun {
namespace {

constexpr std::string_view kDatePattern = "yyyy-mm-dd";
constexpr std::string_view kMissed = "\t-";
constexpr std::string_view kNotRecorded = "\t0.00";  // no time, but not disqualified either

void AppendName(std::string& out, std::string_view text) {
  const std::size_t begin = out.size();
  AppendWithout(out, text, "");
  if (out.size() == begin) out += kNoName;
}

class Writer {
 public:
  Writer(std::string& out, const EventModel& model) : out_(out), model_(model), facts_(model) {}

  void WriteEvent() {
    AppendName(out_, model_.Event->EventName);
    out_ += '\t';
    out_ += model_.Event->EventDate()->ToString(kDatePattern);
    out_ += kCrLf;
    for (const auto& klass : model_.Classes()) WriteClass(*klass);
  }

 private:
  void WriteClass(const clsClassData& klass) {
    AppendName(out_, klass.ClassName());
    // The lengths of the legs are not known. Their number tells that of the controls.
    for (std::int32_t leg = 0; leg <= facts_.CourseOf(klass).ControlCount(); ++leg) out_ += "\t0";
    out_ += kCrLf;
    for (const RunnerFacts& runner : facts_.RunnersOf(klass)) WriteRunner(runner);
  }

  void WriteRunner(const RunnerFacts& runner) {
    AppendName(out_, runner.record->RunnerName);
    out_ += '\t';
    AppendWithout(out_, runner.record->ClubName, "");
    out_ += '\t';
    AppendClockCell(out_, RoundedSeconds(std::max<std::int64_t>(runner.start, 0)), '.', true);
    WriteLegs(runner);
    out_ += kCrLf;
  }

  void WriteLegs(const RunnerFacts& runner) {
    splits_.Find(runner);
    std::int64_t before = 0;
    for (std::int32_t i = 0; i < splits_.ControlCount(); ++i) {
      const bool is_missing = splits_[i] == kNoMilliseconds;
      const std::int64_t split = is_missing ? before : RoundedSeconds(splits_[i]);
      WriteLeg(split - before, is_missing && !runner.TimeCounts());
      before = split;
    }
    const std::int64_t last = FinishLeg(runner, splits_, before);
    WriteLeg(last, last == 0 && !runner.TimeCounts());
  }

  void WriteLeg(std::int64_t seconds, bool is_missed) {
    if (is_missed) {
      out_ += kMissed;
    } else if (seconds <= 0) {
      out_ += kNotRecorded;
    } else {
      out_ += '\t';
      AppendTimeCell(out_, seconds, '.', true);
    }
  }

  std::string& out_;
  const EventModel& model_;
  ResultFacts facts_;
  SplitTimes splits_;
};

}  // namespace

void AppendWinSplits(std::string& out, const EventModel& model) { Writer(out, model).WriteEvent(); }

}  // namespace keltrun
