// A chart of an analysis and its runner settings.
#pragma once

#include <cstdint>
#include <memory>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/platform/export.h"
#include "keltrun2/platform/picture.h"
#include "keltrun2/print/print_book.h"

namespace keltrun {

/// What a chart shows. Modes 0 to 4 draw a line a runner down the course, from the start at the top
/// to the finish at the bottom, slower to the right; the controls lie at distances proportional to
/// the reference laps. Modes 5 to 7 draw a mark a runner.
enum KrChartModeConst : std::int32_t {
  KR_CHART_NORMAL = 0,            // time since the start
  KR_CHART_REALTIME = 1,          // clock time; only runners with a start time
  KR_CHART_RELATIVE = 2,          // time behind the sum of the reference laps
  KR_CHART_RELATIVE_110 = 3,      // time behind 1.1 times that sum
  KR_CHART_RELATIVE_130 = 4,      // time behind 1.3 times that sum
  KR_CHART_CRUISE_MISSRATE = 5,   // cruise speed to the right, miss rate downwards
  KR_CHART_CRUISE_HALFRATIO = 6,  // cruise speed; second half over first half downwards
  KR_CHART_VESMER = 7,            // the map of loss profiles; its axes cross at "no loss"
};

/// Bits of `ChartRunnerSetting::Flag`.
enum ChartRunnerFlagConst : std::int32_t {
  KR_CHART_FLAG_NAME = 1,    // write the runner's name at the end of his line or at his mark
  KR_CHART_FLAG_LEGEND = 2,  // list him in the legend
  KR_CHART_FLAG_HIDE = 4,    // draw nothing of him; the mouse does not find him either
};

/// While nobody has a flag, the names of so many runners at most are written.
inline constexpr std::int32_t kMostNamesUnasked = 20;

/// How a runner is drawn. While nobody has a flag, the names of few runners (kMostNamesUnasked) are
/// written. Names that would cover each other are moved a little; where that is not enough some are
/// left out, those of runners with a colour or a width of their own last.
struct ChartRunnerSetting {
  Color ForeColor = 0;         // 0 is black
  std::int32_t DrawWidth = 0;  // in units of the chart; 0 is 1. A runner with a colour or a width
                               // is drawn above those without
  std::int32_t Flag = 0;       // of ChartRunnerFlagConst
};

/// A broader line behind a runner's own, or a larger disc behind his mark; width 0 is none.
struct ChartRunnerSetting2 {
  Color BackLineColor = 0;         // 0 is black
  std::int32_t BackLineWidth = 0;  // in units of the chart; 0 is none
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
/// Units are pixels on a picture; on a print book three units are one of the book's. The chart
/// proper keeps a margin of 52 units at the left and right and 50 at the top and bottom.
class KELTRUN2_API clsChartObject {
 public:
  clsChartObject();
  ~clsChartObject();
  clsChartObject(const clsChartObject&) = delete;
  clsChartObject& operator=(const clsChartObject&) = delete;

  /// Lets the next build widen a picture until the whole chart fits, up to 20,000 units; a picture
  /// is never narrowed and a print book never resized.
  bool AutoSize = false;

  /// Mode, zoom and scroll position of the last build, as used there: the ratios within
  /// 0.5 (across) or 1 (down) and 10,000, the positions within 0 to 1. A new chart has mode 0,
  /// ratios 1, positions 0.
  float RatioX() const;
  float RatioY() const;
  float PositionX() const;
  float PositionY() const;
  KrChartModeConst ChartMode() const;

  /// Runner settings belong to the set the chart was last built for and are addressed by the
  /// runner's position in its selected set, from 1. A build for a set of the same name and size
  /// keeps them, any other clears them. They take effect at the next DrawChart. Before the first
  /// build nothing is stored and zeros are read; after it an index outside 0 to the size of the set
  /// raises subscript out of range (9).
  void ClearRunnerSetting();
  void SetRunnerSetting(std::int32_t RunnerIndex, Color ForeColor, std::int32_t DrawWidth,
                        std::int32_t Flag);
  ChartRunnerSetting GetRunnerSetting(std::int32_t RunnerIndex) const;
  void SetRunnerSetting2(std::int32_t RunnerIndex, Color BackLineColor, std::int32_t BackLineWidth);
  ChartRunnerSetting2 GetRunnerSetting2(std::int32_t RunnerIndex) const;

  /// Makes a picture or a print book the target, in place of the one before. A picture's unit
  /// becomes pixels and its background white. The target's size is read here: when it changes, set
  /// it again and build. Null raises object not set (91).
  void SetPictureObject(std::shared_ptr<PictureBox> PictureObject);
  void SetPrintBookObject(std::shared_ptr<clsPrintBook> PrintBookObject);

  /// Size of the drawable area: that of the target without the margins; 0 without a target, and 0
  /// or less on one that is too small, on which nothing is built.
  float Width() const;
  float Height() const;

  /// The share of the chart that the last build shows: 1 when all of it is visible. With it a host
  /// sizes its scroll bars.
  float WidthOccupied() const;
  float HeightOccupied() const;

  /// The runner whose line or mark is nearest to a point of the target and less than 6 units away,
  /// or 0. A point in the margin counts as the nearest one of the drawable area.
  std::int32_t MousePointRunnerIndex(float X, float Y) const;

  /// Draws what was built: on an erased picture, or on the current page of a print book, which it
  /// ends. From bottom to top: frame, back lines, lines and marks (those of runners with a colour
  /// or a width of their own last), labels, names, legend. May be repeated; without a target it
  /// does nothing.
  void DrawChart();

 private:
  friend class ChartObjectInternal;
  struct State;
  std::shared_ptr<State> state_;
};

/// The RatioX with which the whole width of the chart just fits the drawable area, 0.5 to
/// 10,000; for the map (mode 7) the one that gives both axes the same scale. 1 when there is
/// nothing to go by.
KELTRUN2_API float ChartRatioToFit(const clsAnalyzer& Analyzer, const clsChartObject& Chart,
                                   KrChartModeConst ChartMode);

}  // namespace keltrun
