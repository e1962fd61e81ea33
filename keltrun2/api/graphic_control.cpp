#include "keltrun2/api/graphic_control.h"

#include <array>
#include <charconv>
#include <string_view>
#include <system_error>

#include "keltrun2/base/automation_error.h"
#include "keltrun2/chart/chart_builder.h"
#include "keltrun2/model/event_model.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/print/analysis_pages.h"
#include "keltrun2/print/grid.h"
#include "keltrun2/print/headed_list.h"
#include "keltrun2/print/result_list.h"

namespace keltrun {
namespace {

constexpr std::array<std::string_view, 3> kRankColorItems = {
    "PRINT_COLOR_RANK1", "PRINT_COLOR_RANK2", "PRINT_COLOR_RANK3"};

// A color written as "&H" and up to six hexadecimal digits; anything else gives the fallback.
Color ParseColor(std::string_view text, Color fallback) {
  const bool is_literal = text.starts_with("&H") || text.starts_with("&h");
  if (!is_literal || text.size() > 8) return fallback;
  Color color = fallback;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data() + 2, end, color, 16);
  return error == std::errc() && rest == end && color >= 0 ? color : fallback;
}

}  // namespace

// Pictures, printers and grids belong to the host: while one of them is called, the host may clear
// or release everything that it passed. Therefore each member works on a copy of the analyzer,
// which shares the runners, and keeps the other objects alive.

void clsGraphicControl::DrawChart(const std::shared_ptr<clsAnalyzer>& AnalyzerObject,
                                  const std::shared_ptr<clsChartObject>& ChartObject,
                                  KrChartModeConst ChartMode, float RatioX, float RatioY,
                                  float PositionX, float PositionY) {
  CheckObject(AnalyzerObject, "clsGraphicControl.DrawChart");
  CheckObject(ChartObject, "clsGraphicControl.DrawChart");
  const std::shared_ptr<clsChartObject> chart = ChartObject;
  BuildChart(AnalyzerObject, *chart, ChartMode, RatioX, RatioY, PositionX, PositionY);
}

void clsGraphicControl::PrintResult(const std::shared_ptr<clsResultsHolder>& ResultsHolderObject,
                                    const std::shared_ptr<clsPrintBook>& PrintBookObject,
                                    float LineInterval, bool PrintNewPage, bool PrintID,
                                    bool PrintAge) {
  CheckObject(ResultsHolderObject, "clsGraphicControl.PrintResult");
  CheckObject(PrintBookObject, "clsGraphicControl.PrintResult");
  const ResultListOptions options{LineInterval, PrintNewPage, PrintID, PrintAge};
  if (!PrintHeads) return PrintResultList(*ResultsHolderObject, *PrintBookObject, options);
  const std::shared_ptr<clsEventData> event = CurrentModel("clsGraphicControl.PrintResult")->Event;
  const std::shared_ptr<clsPrintBook> book = PrintBookObject;
  PrintHeadedList(*ResultsHolderObject, *event, *book, options);
}

void clsGraphicControl::PrintAnalysis(const std::shared_ptr<clsAnalyzer>& AnalyzerObject,
                                      const std::shared_ptr<clsPrintBook>& PrintBookObject,
                                      KrPrintAnalysisModeConst Mode) {
  CheckObject(AnalyzerObject, "clsGraphicControl.PrintAnalysis");
  CheckObject(PrintBookObject, "clsGraphicControl.PrintAnalysis");
  AnalysisPagesOptions options;
  options.Mode = Mode;
  options.Heads = PrintHeads;
  for (std::size_t i = 0; settings_ && i < kRankColorItems.size(); ++i) {
    Color& color = options.RankColors[i];
    color = ParseColor(settings_->Value(KR_CONFIG_FOLDER_DATA, kRankColorItems[i]), color);
  }
  const clsAnalyzer analyzer = *AnalyzerObject;
  const std::shared_ptr<clsEventData> event =
      CurrentModel("clsGraphicControl.PrintAnalysis")->Event;
  const std::shared_ptr<clsPrintBook> book = PrintBookObject;
  PrintAnalysisPages(analyzer, *event, *book, options);
}

void clsGraphicControl::DrawGrid(const std::shared_ptr<clsAnalyzer>& AnalyzerObject,
                                 const std::shared_ptr<clsGridObject>& GridObject) {
  CheckObject(AnalyzerObject, "clsGraphicControl.DrawGrid");
  CheckObject(GridObject, "clsGraphicControl.DrawGrid");
  const clsAnalyzer analyzer = *AnalyzerObject;
  const std::shared_ptr<clsGridObject> grid = GridObject;
  FillGrid(analyzer, *grid);
}

}  // namespace keltrun
