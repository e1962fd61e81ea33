// A chart of an analysis and its runner settings.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/base/export.h"
#include "keltrun2/drawing/picture.h"
#include "keltrun2/model/chart_mode.h"
#include "keltrun2/print/print_book.h"

namespace keltrun {

/// Bits of `ChartRunnerSetting::Flag`.
enum ChartRunnerFlagConst : std::int32_t {
  KR_CHART_FLAG_NAME = 1,    ///< Writes the runner's name at the end of the line or at the mark.
  KR_CHART_FLAG_LEGEND = 2,  ///< Lists the runner in the legend.
  KR_CHART_FLAG_HIDE = 4,    ///< Hides the runner, from the mouse as well.
  KR_CHART_FLAG_DASH = 8,    ///< Draws the line dashed, or the mark open or upright.
};

/// Colors of lines that can be told apart on white, even by most color-blind people.
inline constexpr std::array<Color, 8> kChartColors = {0x2020D0, 0xD06000, 0x208020, 0xA02090,
                                                      0x0070D8, 0x908800, 0x404080, 0x205868};

/// While no runner has a flag, names are written for sets of at most this many runners.
inline constexpr std::int32_t kMostNamesUnasked = 20;

/// How a runner is drawn. While no runner has a flag, the names of a small set (kMostNamesUnasked)
/// are written. Names that would cover each other are moved a little; if that is not enough, some
/// are left out, those of runners with a color or width of their own last.
struct ChartRunnerSetting {
  /// Color of the line or mark; 0 is black.
  Color ForeColor = 0;
  /// Width of the line in units of the chart; 0 means 1. A runner with a color or a width is drawn
  /// above those without.
  std::int32_t DrawWidth = 0;
  /// Values of ChartRunnerFlagConst, added up.
  std::int32_t Flag = 0;
};

/// A broader line behind a runner's own, or a larger disc behind the runner's mark.
struct ChartRunnerSetting2 {
  Color BackLineColor = 0;         ///< Color of the line or disc; 0 is black.
  std::int32_t BackLineWidth = 0;  ///< Width of the line in units of the chart; 0 draws none.
};

/// One chart: where it is drawn, what was built into it, and how each runner is drawn.
///
///     auto chart = std::make_shared<clsChartObject>();
///     chart->SetPictureObject(picture);
///     root->GraphicControl()->DrawChart(analyzer, chart, KR_CHART_NORMAL, 1, 1, 0, 0);  // builds
///     chart->SetRunnerSetting(3, 0x0000FF, 3, KR_CHART_FLAG_NAME | KR_CHART_FLAG_LEGEND);
///     chart->DrawChart();                                                               // draws
///     const auto runner = analyzer->Item(chart->MousePointRunnerIndex(x, y));
///
/// Units are pixels on a picture; on a print book, three units are one unit of the book. The chart
/// itself keeps a margin of 52 units at the left and right and 50 at the top and bottom; with
/// Titles it is 76 units, and 80 at the bottom.
class KELTRUN2_API clsChartObject {
 public:
  /// A chart without a target, into which nothing is built.
  clsChartObject();
  ~clsChartObject();
  clsChartObject(const clsChartObject&) = delete;
  clsChartObject& operator=(const clsChartObject&) = delete;

  /// Lets the next build widen a picture until the whole chart fits, up to 20,000 units; a picture
  /// is never narrowed and a print book never resized.
  bool AutoSize = false;

  /// Lets the next build draw the lines of runners through controls without a time, dashed, to the
  /// next one with a time. Without it a line ends at the first such control. Legs that
  /// clsAnalyzer::UntimedLegs leaves out have no height and interrupt no line.
  bool BridgeGaps = false;

  /// Writes the set, the mode and the event above the chart, titles at its axes, and control codes
  /// after the numbers of the controls when the analyzer has a CourseData of the same length. Read
  /// when a target is set, because the titles need broader margins.
  bool Titles = false;

  /// Lets the next DrawChart choose colors: while a runner has a color or width of their own, the
  /// others are gray; otherwise the first eight runners get the colors of kChartColors, and a
  /// legend if no names are written.
  bool AutoColors = false;

  /// Lets the next build write names that identify: where the whole names have no room below a line
  /// chart, in one row or in two, the family names are written, with the initial of the given name
  /// if it is needed, and turned only if two rows do not suffice either. Names get a white rim.
  bool ClearNames = false;

  /// Lets the next build of a line chart leave out of its time axis the lines of up to a tenth of
  /// the runners when they alone would take more than half of it. These lines end at the edge, with
  /// the runner's name and an arrow.
  bool FitMost = false;

  /// The horizontal zoom that the last build used, 0.5 to 10,000; 1 at first.
  float RatioX() const;
  /// The vertical zoom that the last build used, 1 to 10,000; 1 at first.
  float RatioY() const;
  /// The horizontal scroll position that the last build used, 0 to 1; 0 at first.
  float PositionX() const;
  /// The vertical scroll position that the last build used, 0 to 1; 0 at first.
  float PositionY() const;
  /// The mode of the last build; KR_CHART_NORMAL at first.
  KrChartModeConst ChartMode() const;

  /// Resets the settings of every runner, including those of the back line, to those of a new
  /// chart.
  void ClearRunnerSetting();
  /// Sets how a runner is drawn, from the next DrawChart on; see ChartRunnerSetting. RunnerIndex is
  /// the position in the selected set of the last build, from 1. A build for a set of the same name
  /// and size keeps the setting; any other build clears it. Before the first build nothing is
  /// stored; after it, an index outside 0 to the size of the set raises subscript out of range (9).
  void SetRunnerSetting(std::int32_t RunnerIndex, Color ForeColor, std::int32_t DrawWidth,
                        std::int32_t Flag);
  /// What SetRunnerSetting stored for the runner, or zeros. Raises the same errors.
  ChartRunnerSetting GetRunnerSetting(std::int32_t RunnerIndex) const;
  /// Sets the line or disc behind a runner's own, from the next DrawChart on; see
  /// ChartRunnerSetting2. RunnerIndex, lifetime and errors are as for SetRunnerSetting.
  void SetRunnerSetting2(std::int32_t RunnerIndex, Color BackLineColor, std::int32_t BackLineWidth);
  /// What SetRunnerSetting2 stored for the runner, or zeros. Raises the same errors.
  ChartRunnerSetting2 GetRunnerSetting2(std::int32_t RunnerIndex) const;

  /// Makes a picture the target, in place of the previous target. Sets its unit to pixels and its
  /// background to white. Its size is read here: when it changes, set the picture again and rebuild
  /// the chart. Null raises object not set (91).
  void SetPictureObject(std::shared_ptr<PictureBox> PictureObject);
  /// Makes a print book the target, in place of the previous target. The size of its virtual area
  /// is read here: when it changes, set the book again and rebuild the chart. Null raises object
  /// not set (91).
  void SetPrintBookObject(std::shared_ptr<clsPrintBook> PrintBookObject);

  /// Width of the drawable area, which is the target without the margins. 0 without a target; 0 or
  /// less for a target that is too small, on which nothing is built.
  float Width() const;
  /// Height of the drawable area, which is the target without the margins. 0 without a target; 0 or
  /// less for a target that is too small, on which nothing is built.
  float Height() const;

  /// The fraction of the chart's width that the last build shows: 1 when all of it is visible. A
  /// host sizes its horizontal scroll bar by it.
  float WidthOccupied() const;
  /// The fraction of the chart's height that the last build shows: 1 when all of it is visible. A
  /// host sizes its vertical scroll bar by it.
  float HeightOccupied() const;

  /// The runner whose line or mark is nearest to a point of the target and less than 6 units away,
  /// or 0. A point in the margin is taken as the nearest point of the drawable area.
  std::int32_t MousePointRunnerIndex(float X, float Y) const;

  /// Draws what was built: on the picture, which it erases first, or on the current page of the
  /// print book, which it then ends. From bottom to top it draws the frame, back lines, lines and
  /// marks (those of runners with a color or width of their own last), labels, names and legend. It
  /// may be called again; without a target it does nothing.
  void DrawChart();

 private:
  friend class ChartObjectInternal;
  struct State;
  std::shared_ptr<State> state_;
};

/// The RatioX with which the whole width of the chart just fits the drawable area, 0.5 to 10,000;
/// for the map (mode 7) the one that gives both axes the same scale. 1 when there is nothing to
/// compute it from.
[[nodiscard]] KELTRUN2_API float ChartRatioToFit(const clsAnalyzer& Analyzer,
                                                 const clsChartObject& Chart,
                                                 KrChartModeConst ChartMode);

}  // namespace keltrun
