#include "keltrun2/report/csv_export.h"

#include "keltrun2/analysis/analyzer_internal.h"
#include "keltrun2/config/leg_labels.h"
#include "keltrun2/model/result_status.h"
#include "keltrun2/text/cells.h"

namespace keltrun {
namespace {

// What the viewer reads as "unknown".
constexpr std::string_view kNoStart = "9:00:00";
constexpr std::string_view kNoSplit = "0:00";

template <typename AppendLine>
void AppendFinished(std::string& out, const clsAnalyzer& analyzer, AppendLine append_line) {
  for (const auto& runner : AnalyzerInternal::Selected(analyzer)) {
    if (!FinishTime(runner->Result())) continue;
    append_line(*runner);
    out += kCrLf;
  }
}

}  // namespace

void AppendQuillonMacroCsv(std::string& out, const clsAnalyzer& analyzer) {
  const std::int32_t legs = AnalyzerInternal::LegCount(analyzer);
  out += "クラス,氏名,所属,順位,記録,スタート時刻";
  for (std::int32_t leg = 1; leg <= legs; ++leg) out += "," + LegLabel(legs - 1, false, leg);
  out += kCrLf;
  AppendFinished(out, analyzer, [&](const clsAnalyzedRunnerData& runner) {
    const clsLapData& record = *runner.OtherData();
    for (const std::string& text : {record.ClassName(), runner.RunnerName(), runner.ClubName(),
                                    runner.Rank(), runner.Result()}) {
      AppendCell(out, text);
      out += ',';
    }
    out += record.StartTime()->ToString();
    for (std::int32_t leg = 1; leg <= legs; ++leg) {
      out += "," + runner.ModifiedSplitTimeToString(leg);
    }
  });
}

void AppendSplitsBrowserCsv(std::string& out, const clsAnalyzer& analyzer) {
  const std::int32_t legs = AnalyzerInternal::LegCount(analyzer);
  AppendCell(out, analyzer.DataSetName());
  out += "," + std::to_string(legs - 1);
  out += kCrLf;
  AppendFinished(out, analyzer, [&](const clsAnalyzedRunnerData& runner) {
    for (const std::string& text : {runner.RunnerName(), runner.ClubName()}) {
      AppendCell(out, text);
      out += ',';
    }
    out +=
        runner.OtherData()->StartTime()->ToString("h:nn:ss", false, kNoStart, kNoStart, kNoStart);
    for (std::int32_t leg = 1; leg <= legs; ++leg) {
      out +=
          "," + runner.ModifiedLapTimeToString(leg, "hh:nn:ss", true, kNoSplit, kNoSplit, kNoSplit);
    }
  });
}

}  // namespace keltrun
