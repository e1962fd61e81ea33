#include "keltrun2/report/mail_text.h"

#include <vector>

#include "keltrun2/analysis/analyzer_internal.h"
#include "keltrun2/base/version.h"
#include "keltrun2/config/page_texts.h"
#include "keltrun2/model/result_status.h"
#include "keltrun2/model/time_text.h"
#include "keltrun2/text/cells.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

using Runner = clsAnalyzedRunnerData;

constexpr int kColumnsPerBlock = 12;
constexpr std::size_t kColumnWidth = 6;
constexpr std::string_view kReferenceHeading = "  Ave3";

constexpr std::string_view kRate = "#0";
constexpr std::string_view kFineRate = "#0.0";

// The labels in front of the columns of a block, one for each line; the line of headings is the
// first.
using LineLabels = std::vector<std::string>;

// The columns of a section, written in blocks.
class Blocks {
 public:
  Blocks(std::string& out, const LineLabels& labels) : out_(out), labels_(labels) {}

  // A column: its heading, and a value for each further line.
  template <typename ValueOf>
  void Add(std::string_view heading, ValueOf value_of) {
    if (columns_ == 0) lines_ = labels_;
    lines_[0] += heading;
    for (std::size_t line = 1; line < lines_.size(); ++line) {
      lines_[line] += Field(value_of(static_cast<std::int32_t>(line)));
    }
    if (++columns_ == kColumnsPerBlock) Write();
  }

  template <typename ValueOf>
  void AddRunner(const Runner& runner, ValueOf value_of) {
    Add(Field(InLine(runner.RunnerName())),
        [&](std::int32_t line) { return value_of(runner, line); });
  }

  // After the last column.
  void Finish() {
    if (columns_ > 0) Write();
  }

 private:
  static std::string Field(std::string_view text) {
    return PadByWidth(text, kColumnWidth, true, true);
  }

  void Write() {
    for (const std::string& line : lines_) out_.append(line).append(kCrLf);
    out_ += kCrLf;
    columns_ = 0;
  }

  std::string& out_;
  const LineLabels& labels_;
  LineLabels lines_;
  int columns_ = 0;
};

class MailText {
 public:
  MailText(std::string& out, const clsAnalyzer& analyzer)
      : out_(out),
        general_(*analyzer.GeneralData()),
        runners_(AnalyzerInternal::Selected(analyzer)),
        legs_(AnalyzerInternal::LegCount(analyzer)) {}

  void MakeLapSection() {
    MakeTitle("RES_TITLE_MAIL_LAPS", "■ ラップタイム (mmmss)");
    out_ += kCrLf;
    MakeColumns(
        LegLabels(true),
        [this](const Runner& runner, std::int32_t line) {
          return IsTotal(line) ? PlaneResult(runner)
                               : runner.LapTimeToString(line, kPlanePattern, false, kNoDataText);
        },
        [this](std::int32_t line) {
          return PlaneTime(
              IsTotal(line) ? general_.UpperLapTotal() : general_.UpperLapAverage(line), 2);
        });
  }

  void MakeSplitSection() {
    MakeTitle("RES_TITLE_MAIL_SPLITS", "■積算タイム (mmmss)");
    out_ += kCrLf;
    DateTime reference = 0;
    MakeColumns(
        LegLabels(false),
        [](const Runner& runner, std::int32_t line) {
          return runner.SplitTimeToString(line, kPlanePattern, false, kNoDataText);
        },
        [&](std::int32_t line) {
          reference += general_.UpperLapAverage(line);
          return PlaneTime(reference, 1);
        });
  }

  void MakeRelativeSection() {
    MakeTitle("RES_TITLE_MAIL_RELATIVE", "■相対値 (%)");
    out_ += kCrLf;
    MakeColumns(LegLabels(true), [this](const Runner& runner, std::int32_t line) {
      return (IsTotal(line) ? runner.TotalTimeRelative() : runner.LapRelative(line))
          ->ToString(kRate, kNoDataText);
    });
  }

  void MakeCruiseSection() {
    MakeTitle("RES_TITLE_MAIL_CRUISE_SPEED", "■巡航速度 (%)");
    MakeColumns(OneLine(), [](const Runner& runner, std::int32_t /*line*/) {
      return runner.CruiseSpeed()->ToString(kRate, kNoDataText);
    });
  }

  void MakeMissRateSection() {
    MakeTitle("RES_TITLE_MAIL_MISTAKE_RATE", "■ミス率 (%)");
    MakeColumns(OneLine(), [](const Runner& runner, std::int32_t /*line*/) {
      return runner.MissRate()->ToString(kFineRate, kNoDataText);
    });
  }

  void MakeMissTimeSection() {
    MakeTitle("RES_TITLE_MAIL_LOSSES", "■ミスタイム (mmmss)");
    MakeColumns(LegLabels(true), [this](const Runner& runner, std::int32_t line) {
      return (IsTotal(line) ? runner.MissTimeTotal() : runner.MissTime(line))
          ->ToString(kPlanePattern, false, kNoDataText);
    });
  }

 private:
  void MakeTitle(std::string_view key, std::string_view japanese) {
    out_.append(PageText(key, japanese)).append(kCrLf);
  }

  static LineLabels OneLine() { return {"  ", "  "}; }

  LineLabels LegLabels(bool with_total) const {
    LineLabels labels = {"  "};
    for (std::int32_t leg = 1; leg < legs_; ++leg) {
      labels.push_back(PadByWidth(std::to_string(leg), 2, true, false));
    }
    labels.push_back(" F");
    if (with_total) labels.push_back("TT");
    return labels;
  }

  bool IsTotal(std::int32_t line) const { return line == legs_ + 1; }

  template <typename ValueOf>
  void MakeColumns(const LineLabels& labels, ValueOf value_of) {
    Blocks blocks(out_, labels);
    for (const auto& runner : runners_) blocks.AddRunner(*runner, value_of);
    blocks.Finish();
  }

  // With the column of the reference laps after the runners, if there are any.
  template <typename ValueOf, typename ReferenceOf>
  void MakeColumns(const LineLabels& labels, ValueOf value_of, ReferenceOf reference_of) {
    Blocks blocks(out_, labels);
    for (const auto& runner : runners_) blocks.AddRunner(*runner, value_of);
    if (!runners_.empty()) blocks.Add(kReferenceHeading, reference_of);
    blocks.Finish();
  }

  // Minutes and seconds; below a minute at least `digits` digits.
  static std::string PlaneTime(DateTime time, std::size_t digits) {
    std::string out;
    AppendPlaneTime(out, time);
    return out.size() < digits ? "0" + out : out;
  }

  static std::string PlaneResult(const Runner& runner) {
    const std::string result = runner.Result();
    const auto time = FinishTime(result);
    return time ? PlaneTime(*time, 1) : InLine(result);
  }

  std::string& out_;
  const clsAnalyzedGeneralData& general_;
  const AnalyzerInternal::Runners& runners_;
  const std::int32_t legs_;
};

void MakeHeading(std::string& out, const EventModel& model, const clsAnalyzer& analyzer) {
  out += "◎ " + InLine(analyzer.DataSetName()) + " " + analyzer.ClassInfo() + "\r\n";
  out += "    - " + InLine(model.Event->ToString()) + "\r\n\r\n";
}

}  // namespace

void AppendMailText(std::string& out, const EventModel& model, const clsAnalyzer& analyzer) {
  MakeHeading(out, model, analyzer);
  MailText text(out, analyzer);
  text.MakeLapSection();
  text.MakeSplitSection();
  text.MakeRelativeSection();
  text.MakeCruiseSection();
  text.MakeMissRateSection();
  text.MakeMissTimeSection();
  out += "Made with Keltrun Ver." + VersionText(false) + "\r\n";
}

}  // namespace keltrun
