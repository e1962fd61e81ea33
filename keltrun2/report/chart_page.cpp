#include "keltrun2/report/chart_page.h"

#include <algorithm>
#include <array>

#include "keltrun2/analysis/analyzer_internal.h"
#include "keltrun2/config/page_texts.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/model/chart_mode.h"
#include "keltrun2/report/html_parts.h"
#include "keltrun2/text/html.h"
#include "keltrun2/text/numbers.h"
#include "keltrun2/text/split.h"

namespace keltrun {
namespace {

constexpr std::int32_t kLastMode = KR_CHART_VESMER;

// By mode. The last mode, the map, has no picture on the page.
constexpr std::array<std::string_view, kLastMode> kHeadings = {"標準",
                                                               "リアルタイム",
                                                               "上位平均相対",
                                                               "上位平均110％相対",
                                                               "上位平均130％相対",
                                                               "巡航速度－ミス率",
                                                               "巡航速度－前後半比"};
constexpr std::string_view kMapHeading = "ミスの地図";

std::string Heading(std::int32_t mode) {
  const std::string_view japanese =
      mode == kLastMode ? kMapHeading : kHeadings[static_cast<std::size_t>(mode)];
  return EscapeHtml(PageText("RES_CHART_MODE_" + std::to_string(mode), japanese));
}

void MakePicture(std::string& out, std::int32_t mode, std::string_view chart_name) {
  out.append("<h3>◎ ").append(Heading(mode));
  out += "</h3><img src=\"";
  out += CclsSplit("?", chart_name).Expression(std::to_string(mode));
  out += "\"><br><hr>";
}

// Explains to a reader who looks for the map why there is no picture of it.
void MakeMapNote(std::string& out, const clsAnalyzer& analyzer) {
  const std::int32_t finishers = analyzer.FinisherCount();
  if (finishers <= kMostOnMap) return;
  std::string note = ResourceText("RES_MESSAGE_NO_MAP");
  note = CclsSplit("%1", note).Expression(std::to_string(finishers));
  note = CclsSplit("%2", note).Expression(std::to_string(kMostOnMap));
  out.append("<h3>◎ ").append(Heading(kLastMode)).append("</h3>");
  AppendEscaped(out, note);
  out += "<br><hr>";
}

}  // namespace

std::vector<std::int32_t> ChartModes(std::string_view chart_option) {
  std::vector<std::int32_t> modes;
  const CclsSplit entries(",", chart_option);
  for (std::int32_t i = 0; i <= entries.Bound(); ++i) {
    const auto value = NumericValue(entries.Value(i));
    if (!value || *value < 0 || *value > kLastMode) continue;
    const std::int32_t mode = RoundToLong(*value);
    if (*value == mode) modes.push_back(mode);
  }
  return modes;
}

bool HasStartTimes(const clsAnalyzer& analyzer) {
  const auto& runners = AnalyzerInternal::Selected(analyzer);
  return std::any_of(runners.begin(), runners.end(),
                     [](const auto& runner) { return runner->StartTime() != 0; });
}

void AppendChartPage(std::string& out, const EventModel& model, const clsAnalyzer& analyzer,
                     std::string_view chart_name, std::string_view chart_option,
                     std::string_view charset) {
  const HeadOptions head = {.UseStyle = true, .TdStyle = TableFontStyle(), .Charset = charset};
  MakeAnalyzerPage(out, model, analyzer, head, [&] {
    for (const std::int32_t mode : ChartModes(chart_option)) {
      if (mode == kLastMode) {
        MakeMapNote(out, analyzer);
      } else if (mode != KR_CHART_REALTIME || HasStartTimes(analyzer)) {
        MakePicture(out, mode, chart_name);
      }
    }
  });
}

}  // namespace keltrun
