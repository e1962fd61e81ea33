#include "keltrun2/report/result_csv.h"

#include <algorithm>

#include "keltrun2/model/result_facts.h"
#include "keltrun2/text/cells.h"
#include "keltrun2/text/csv_cells.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

constexpr std::string_view kTitles[] = {"class", "place",  "bib",    "name",   "club",  "card",
                                        "start", "result", "behind", "status", "course"};

// "h:mm:ss", with two digits for the hours of a clock, and decimals if there are any.
void AppendTime(std::string& out, std::int64_t milliseconds, bool is_clock) {
  const std::int64_t seconds = milliseconds / 1000;
  if (is_clock && seconds < 36'000) out += '0';
  AppendInteger(out, seconds / 3600);
  out += ':';
  AppendTwoDigits(out, static_cast<int>(seconds / 60 % 60));
  out += ':';
  AppendTwoDigits(out, static_cast<int>(seconds % 60));
  std::int64_t rest = milliseconds % 1000;
  if (rest != 0) out += '.';
  for (std::int64_t place = 100; rest != 0; place /= 10) {
    out += static_cast<char>('0' + rest / place);
    rest %= place;
  }
}

class Writer {
 public:
  Writer(std::string& out, const EventModel& model, const ResultCsvOptions& options)
      : out_(out), model_(model), options_(options), facts_(model) {}

  void WriteTable() {
    if (options_.splits) controls_ = MostControls();
    WriteTitles();
    for (const auto& klass : model_.Classes()) {
      if (IsWanted(*klass)) WriteClass(*klass);
    }
  }

 private:
  bool IsWanted(const clsClassData& klass) const {
    return options_.class_name.empty() ||
           FoldCase(klass.ClassName()) == FoldCase(options_.class_name);
  }
  bool IsWanted(const RunnerFacts& runner) const {
    return options_.course_num == 0 || runner.course->number == options_.course_num;
  }

  // The columns for controls: as many as some runner of the table has.
  std::int32_t MostControls() {
    std::int32_t most = 0;
    for (const auto& klass : model_.Classes()) {
      if (!IsWanted(*klass)) continue;
      for (const RunnerFacts& runner : facts_.RunnersOf(*klass)) {
        if (IsWanted(runner)) most = std::max(most, runner.course->ControlCount());
      }
    }
    return most;
  }

  void WriteTitles() {
    for (const std::string_view title : kTitles) {
      if (title != kTitles[0]) out_ += options_.delimiter;
      out_ += title;
    }
    if (options_.splits) {
      for (std::int32_t control = 1; control <= controls_; ++control) {
        out_ += options_.delimiter;
        out_ += "split";
        AppendInteger(out_, control);
      }
      out_ += options_.delimiter;
      out_ += "finish";
    }
    out_ += kCrLf;
  }

  void WriteClass(const clsClassData& klass) {
    const auto runners = facts_.RunnersOf(klass);
    const std::int64_t best = BestTime(runners);
    for (const RunnerFacts& runner : runners) {
      if (IsWanted(runner)) WriteRunner(klass, runner, best);
    }
  }

  void WriteRunner(const clsClassData& klass, const RunnerFacts& runner, std::int64_t best) {
    const clsLapData& record = *runner.record;
    AppendCsvText(out_, klass.ClassName(), options_.delimiter);
    Next();
    if (runner.place > 0) AppendInteger(out_, runner.place);
    NumberOrText(record.ID, record.Bib);
    Text(record.RunnerName);
    Text(record.ClubName);
    NumberOrText(record.Ecard, record.ControlCard);
    Time(runner.start, true);
    if (record.Result().empty() && runner.TimeCounts()) {
      Time(runner.time, false);
    } else {
      Text(record.Result());
    }
    const bool has_place = runner.place > 0 && runner.time != kNoMilliseconds;
    Time(has_place ? std::max<std::int64_t>(runner.time - best, 0) : kNoMilliseconds, false);
    Text(RunnerStatusName(runner.status));
    Next();
    if (runner.course->number != 0) AppendInteger(out_, runner.course->number);
    if (options_.splits) WriteSplits(runner);
    out_ += kCrLf;
  }

  void WriteSplits(const RunnerFacts& runner) {
    splits_.Find(runner);
    for (std::int32_t i = 0; i < controls_; ++i) {
      Time(i < splits_.ControlCount() ? splits_[i] : kNoMilliseconds, false);
    }
    Time(runner.time, false);
  }

  void Next() { out_ += options_.delimiter; }
  void Text(std::string_view text) {
    Next();
    AppendCsvText(out_, text, options_.delimiter);
  }
  void NumberOrText(std::int32_t number, std::string_view text) {
    if (!text.empty()) return Text(text);
    Next();
    if (number != 0) AppendInteger(out_, number);
  }
  void Time(std::int64_t milliseconds, bool is_clock) {
    Next();
    if (milliseconds != kNoMilliseconds) AppendTime(out_, milliseconds, is_clock);
  }

  std::string& out_;
  const EventModel& model_;
  const ResultCsvOptions& options_;
  ResultFacts facts_;
  SplitTimes splits_;
  std::int32_t controls_ = 0;
};

}  // namespace

void AppendResultCsv(std::string& out, const EventModel& model, const ResultCsvOptions& options) {
  Writer(out, model, options).WriteTable();
}

}  // namespace keltrun
