// Charts, printing and grids.
#pragma once

#include <memory>
#include <utility>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/analysis/results_holder.h"
#include "keltrun2/base/export.h"
#include "keltrun2/chart/chart_object.h"
#include "keltrun2/config/config_control.h"
#include "keltrun2/print/grid_object.h"
#include "keltrun2/print/print_analysis.h"
#include "keltrun2/print/print_book.h"

namespace keltrun {

/// The service that draws charts, prints lists and fills grids. A null object raises object not set
/// (91) and changes nothing.
class KELTRUN2_API clsGraphicControl {
 public:
  /// The colors of printed analyses come from Settings; when it is null, they are the defaults.
  explicit clsGraphicControl(std::shared_ptr<clsConfigControl> Settings = nullptr)
      : settings_(std::move(Settings)) {}

  /// Lets PrintResult make lists to hang up: each page has the event, its date and "page n of m";
  /// each class has its course and the titles of the columns, again with "(continued)" on further
  /// pages; a column shows the time after the best; a class that fits on a page is not split; long
  /// names become smaller before they are cut. PrintAnalysis then names the reference laps in full,
  /// shrinks names likewise and spreads the legs evenly over its lines.
  bool PrintHeads = false;

  /// Builds the chart of an executed analysis into ChartObject, which then draws it. The chart
  /// shows the runners of the selected set. RatioX (0.5 to 10,000) and RatioY (1 to 10,000) zoom,
  /// PositionX and PositionY scroll a zoomed chart from 0 (start) to 1 (end). Mode 6 shows the
  /// figures of `clsAnalyzer::ExtraAnalyze`, mode 7 those of `clsAnalyzer::Vesmer`.
  void DrawChart(const std::shared_ptr<clsAnalyzer>& AnalyzerObject,
                 const std::shared_ptr<clsChartObject>& ChartObject, KrChartModeConst ChartMode,
                 float RatioX, float RatioY, float PositionX, float PositionY);

  /// Lays out a result list on a print book, below what is already on the current page: a title
  /// band, one line for each runner, and a border after the cut-off rank. A LineInterval below 1
  /// means 1. The book gets a virtual width of 141, plus 5 with PrintAge and 17 with PrintID, or
  /// one of 160 with PrintHeads. Its PrintedAreaHeight is then where the next list starts; a host
  /// that passes PrintNewPage sets it to 0 to start at the top.
  void PrintResult(const std::shared_ptr<clsResultsHolder>& ResultsHolderObject,
                   const std::shared_ptr<clsPrintBook>& PrintBookObject, float LineInterval = 1.5f,
                   bool PrintNewPage = false, bool PrintID = false, bool PrintAge = false);

  /// Lays out the selected runners of an executed analysis on pages of their own in a print book,
  /// in the book's virtual area whatever its size. With a CourseData the labels show its control
  /// codes; a mix shows the ranks in the data set. Laps of rank 1 to 3 are shaded in the colors of
  /// the settings PRINT_COLOR_RANK1 to PRINT_COLOR_RANK3 ("&HCCCCCC").
  void PrintAnalysis(const std::shared_ptr<clsAnalyzer>& AnalyzerObject,
                     const std::shared_ptr<clsPrintBook>& PrintBookObject,
                     KrPrintAnalysisModeConst Mode = KR_PRINT_ANALYSIS_LAP);

  /// Fills the host's grid with an executed analysis: one column for each runner, one row for each
  /// figure.
  void DrawGrid(const std::shared_ptr<clsAnalyzer>& AnalyzerObject,
                const std::shared_ptr<clsGridObject>& GridObject);

 private:
  std::shared_ptr<clsConfigControl> settings_;
};

}  // namespace keltrun
