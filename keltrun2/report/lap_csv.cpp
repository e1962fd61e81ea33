#include "keltrun2/report/lap_csv.h"

#include <cmath>
#include <string_view>
#include <vector>

#include "keltrun2/analysis/analyzer_internal.h"
#include "keltrun2/model/result_facts.h"
#include "keltrun2/model/result_status.h"
#include "keltrun2/model/time_values_internal.h"
#include "keltrun2/report/set_course.h"
#include "keltrun2/text/cells.h"
#include "keltrun2/text/csv_cells.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

constexpr std::string_view kTitles[] = {
    "event",   "date",     "set",        "class",       "runner",   "bib",    "name",  "club",
    "status",  "result_s", "place",      "leg",         "legs",     "from",   "to",    "lap_s",
    "split_s", "lap_rank", "split_rank", "reference_s", "relative", "loss_s", "marker"};

constexpr double kMillionths = 1e6;

std::string_view MarkerOf(DateTime lap) {
  if (lap == kTimeNoData) return "nodata";
  if (lap == kTimeSkip) return "skip";
  if (lap == kTimeDisq) return "disq";
  return "";
}

class Writer {
 public:
  Writer(std::string& out, const EventModel& model, const clsAnalyzer& analyzer, DataSetKind kind,
         char delimiter)
      : out_(out),
        analyzer_(analyzer),
        legs_(AnalyzerInternal::LegCount(analyzer)),
        delimiter_(delimiter) {
    AppendCsvText(set_texts_, model.Event->EventName, delimiter_);
    set_texts_ += delimiter_;
    set_texts_ += model.Event->EventDate()->ToString("yyyy-mm-dd");
    set_texts_ += delimiter_;
    AppendCsvText(set_texts_, analyzer.DataSetName(), delimiter_);
    SetEnds(CourseOfSet(model, analyzer, kind).get());
    SetReferences();
  }

  void WriteRunners() {
    for (const auto& runner : AnalyzerInternal::Selected(analyzer_)) WriteRunner(*runner);
  }

 private:
  // What stands at the start, the controls and the finish.
  void SetEnds(const clsCourseData* course) {
    for (std::int32_t i = 0; i <= legs_; ++i) {
      std::string& cell = ends_.emplace_back(1, delimiter_);
      const bool is_known = course != nullptr && i <= course->ControlCount();
      const std::string control = is_known ? course->ControlCodeText(i) : std::to_string(i);
      AppendCsvText(cell, i == 0 ? "S" : i == legs_ ? "F" : control, delimiter_);
    }
  }

  void SetReferences() {
    for (std::int32_t leg = 1; leg <= legs_; ++leg) {
      std::string& cell = references_.emplace_back(1, delimiter_);
      const DateTime reference = analyzer_.GeneralData()->UpperLapAverage(leg);
      if (reference != 0) AppendSeconds(cell, reference);
    }
  }

  void WriteRunner(const clsAnalyzedRunnerData& runner) {
    const clsLapData& record = *runner.OtherData();
    runner_texts_ = set_texts_;
    AddText(record.ClassName());
    AddInteger(record.SerialNum());
    if (record.Bib.empty() && record.ID != 0) {
      AddInteger(record.ID);
    } else {
      AddText(record.Bib);
    }
    AddText(record.RunnerName);
    AddText(record.ClubName);
    AddText(RunnerStatusName(StatusOf(record)));
    runner_texts_ += delimiter_;
    const DateTime total = TotalOf(runner);
    if (total > 0) AppendSeconds(runner_texts_, total);
    AddText(runner.Rank());
    for (std::int32_t leg = 1; leg <= legs_; ++leg) WriteLeg(runner, leg);
  }

  // The result in days if it is a time; 0 otherwise.
  static DateTime TotalOf(const clsAnalyzedRunnerData& runner) {
    return TotalTime(runner.Result()).value_or(0);
  }

  void WriteLeg(const clsAnalyzedRunnerData& runner, std::int32_t leg) {
    out_ += runner_texts_;
    Integer(leg);
    Integer(legs_);
    out_ += ends_[static_cast<std::size_t>(leg) - 1];
    out_ += ends_[static_cast<std::size_t>(leg)];
    const DateTime lap = runner.LapTime(leg);
    Time(lap);
    Time(runner.SplitTime(leg));
    Rank(runner.LapRank(leg));
    Rank(runner.SplitRank(leg));
    out_ += references_[static_cast<std::size_t>(leg) - 1];
    WriteComparison(runner, leg);
    out_ += delimiter_;
    out_ += MarkerOf(lap);
    out_ += kCrLf;
  }

  void WriteComparison(const clsAnalyzedRunnerData& runner, std::int32_t leg) {
    const double relative = runner.LapRelative(leg)->Value();
    out_ += delimiter_;
    if (relative != 0 && std::isfinite(relative)) {
      AppendMillionths(out_, relative * kMillionths);
    }
    const clsMissTimeValue& miss = *runner.MissTime(leg);
    out_ += delimiter_;
    if (AnalysisValue::IsSet(miss) && miss.Value() != kTimeSkip && std::isfinite(miss.Value())) {
      AppendSeconds(out_, miss.Value());
    }
  }

  static void AppendSeconds(std::string& out, DateTime time) {
    AppendThousandths(out, time * kMillisecondsPerDay);
  }

  void Time(DateTime time) {
    out_ += delimiter_;
    if (MarkerOf(time).empty() && std::isfinite(time)) AppendSeconds(out_, time);
  }
  void Rank(std::int32_t rank) {
    out_ += delimiter_;
    if (rank > 0) AppendInteger(out_, rank);
  }
  void Integer(std::int32_t number) {
    out_ += delimiter_;
    AppendInteger(out_, number);
  }
  void AddText(std::string_view text) {
    runner_texts_ += delimiter_;
    AppendCsvText(runner_texts_, text, delimiter_);
  }
  void AddInteger(std::int32_t number) {
    runner_texts_ += delimiter_;
    AppendInteger(runner_texts_, number);
  }

  std::string& out_;
  const clsAnalyzer& analyzer_;
  const std::int32_t legs_;
  const char delimiter_;
  std::string set_texts_;     // the cells that all rows of the set have in common
  std::string runner_texts_;  // the cells that all rows of the runner have in common
  std::vector<std::string> ends_;
  std::vector<std::string> references_;
};

}  // namespace

void AppendLapCsvTitles(std::string& out, char delimiter) {
  for (const std::string_view title : kTitles) {
    if (title != kTitles[0]) out += delimiter;
    out += title;
  }
  out += kCrLf;
}

void AppendLapCsv(std::string& out, const EventModel& model, const clsAnalyzer& analyzer,
                  DataSetKind kind, char delimiter) {
  Writer(out, model, analyzer, kind, delimiter).WriteRunners();
}

}  // namespace keltrun
