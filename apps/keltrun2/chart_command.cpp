#include <charconv>
#include <memory>
#include <optional>
#include <string>

#include "apps/keltrun2/chart_modes.h"
#include "apps/keltrun2/command_error.h"
#include "apps/keltrun2/commands.h"
#include "apps/keltrun2/data_sets.h"
#include "apps/keltrun2/event_input.h"
#include "apps/keltrun2/files.h"
#include "apps/keltrun2/words.h"

namespace keltrun::cli {
namespace {

constexpr std::int32_t kHighlightWidth = 3;

PictureFormatConst Format(const std::string& file) {
  const std::string name = LowerCase(file);
  if (name.ends_with(".svg")) return KR_PICTURE_SVG;
  if (name.ends_with(".pdf")) return KR_PICTURE_PDF;
  return KR_PICTURE_PNG;
}

std::string WithoutBlanks(const std::string& word) {
  const std::size_t begin = word.find_first_not_of(' ');
  if (begin == std::string::npos) throw CommandError("--highlight has an empty name", kWrongUse);
  return word.substr(begin, word.find_last_not_of(' ') - begin + 1);
}

std::optional<std::int32_t> Position(const std::string& text) {
  std::int32_t number = 0;
  const char* end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  if (read.ec != std::errc() || read.ptr != end) return std::nullopt;
  return number;
}

// The runners that a word of --highlight means: a position in the analysis or a part of the name.
std::vector<std::int32_t> RunnersOf(const clsAnalyzer& analyzer, const std::string& given) {
  const std::string word = WithoutBlanks(given);
  std::vector<std::int32_t> found;
  const std::optional<std::int32_t> position = Position(word);
  for (std::int32_t i = 1; i <= analyzer.Count(); ++i) {
    if (position ? i == *position
                 : analyzer.Item(i)->RunnerName().find(word) != std::string::npos) {
      found.push_back(i);
    }
  }
  if (!found.empty()) return found;
  throw CommandError(position ? "there is no runner " + word + ": the analysis has " +
                                    std::to_string(analyzer.Count())
                              : "no runner's name contains \"" + word + "\"");
}

void Highlight(const clsAnalyzer& analyzer, clsChartObject& chart, const ChartOptions& options) {
  std::size_t used = 0;
  for (const std::string& word : options.highlight) {
    for (const std::int32_t runner : RunnersOf(analyzer, word)) {
      // The colors come round again with dashed lines.
      const std::int32_t dash = used < kChartColors.size() ? 0 : KR_CHART_FLAG_DASH;
      chart.SetRunnerSetting(runner, kChartColors[used++ % kChartColors.size()], kHighlightWidth,
                             KR_CHART_FLAG_NAME | KR_CHART_FLAG_LEGEND | dash);
    }
  }
  // Highlighting must not hide the names of other runners.
  const bool highlighted = !options.highlight.empty();
  if (!options.names && (!highlighted || analyzer.Count() > kMostNamesUnasked)) return;
  for (std::int32_t i = 1; i <= analyzer.Count(); ++i) {
    const ChartRunnerSetting set = chart.GetRunnerSetting(i);
    chart.SetRunnerSetting(i, set.ForeColor, set.DrawWidth, set.Flag | KR_CHART_FLAG_NAME);
  }
}

void Prepare(clsAnalyzer& analyzer, KrChartModeConst mode) {
  if (mode == KR_CHART_CRUISE_HALFRATIO) analyzer.ExtraAnalyze();
  if (mode != KR_CHART_VESMER) return;
  if (analyzer.FinisherCount() > kMostOnMap) {
    throw CommandError("there is no map of " + std::to_string(analyzer.FinisherCount()) +
                       " finishers: it takes at most " + std::to_string(kMostOnMap) +
                       "; choose another --mode or a smaller set");
  }
  analyzer.Vesmer();
}

}  // namespace

void DrawChart(clsKeltrun2& root, const Options& options) {
  CheckReport(options);
  LoadEvent(root, options);
  WarnWithoutJapaneseFont(options);
  const ChartOptions& wanted = options.chart;
  const KrChartModeConst mode = ChartMode(wanted.mode);
  const ChosenSet choice = OneSet(root, options);
  const auto analyzer = Analysis(root, choice, options);
  AddControlCodes(*analyzer, CourseOf(root, choice));
  Prepare(*analyzer, mode);
  const auto picture =
      std::make_shared<CairoPicture>(wanted.width, wanted.height, Format(options.output));
  const auto chart = std::make_shared<clsChartObject>();
  chart->BridgeGaps = true;
  chart->Titles = true;
  chart->AutoColors = true;
  chart->ClearNames = true;
  chart->FitMost = true;
  chart->SetPictureObject(picture);
  const float ratio_x = ChartRatioToFit(*analyzer, *chart, mode) * wanted.zoom_x;
  root.GraphicControl()->DrawChart(analyzer, chart, mode, ratio_x, wanted.zoom_y, wanted.scroll_x,
                                   wanted.scroll_y);
  Highlight(*analyzer, *chart, wanted);
  chart->DrawChart();
  WriteOutput(options.output, picture->Encode());
}

}  // namespace keltrun::cli
