// What a chart shows of each runner, and the ranges and scales of its axes.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/chart/chart_geometry.h"
#include "keltrun2/chart/chart_object.h"

namespace keltrun {

/// From the smallest to the largest value on an axis.
struct ValueRange {
  double Lower = 0, Upper = 0;
  double Span() const { return Upper - Lower; }
};

/// Values to positions: units of the chart from the left or upper edge of the drawable area.
struct ChartAxis {
  double Zero = 0;   // position of the value 0
  double Scale = 1;  // units per one
  double At(double value) const { return Zero + value * Scale; }
  double ValueAt(double position) const { return (position - Zero) / Scale; }
};

/// What the horizontal axis has to show.
struct HorizontalPlan {
  ValueRange Range;
  double UnitsPerOne = 1;                  // at a RatioX of 1
  double LeftMargin = 0, RightMargin = 0;  // units that stay free
  bool Centered = false;  // a chart narrower than the area is in its middle, else at the left

  double WidthAt(double ratio_x) const {
    return Range.Span() * UnitsPerOne * ratio_x + LeftMargin + RightMargin;
  }
};

inline bool IsLineChart(KrChartModeConst mode) {
  return mode >= KR_CHART_NORMAL && mode <= KR_CHART_RELATIVE_130;
}
inline bool IsScatterChart(KrChartModeConst mode) {
  return mode >= KR_CHART_CRUISE_MISSRATE && mode <= KR_CHART_VESMER;
}

/// The course as reference times in seconds.
struct Course {
  std::vector<double> Position;  // total at each control; index 0 is the start, the last the finish
  double Total = 0;              // in whole seconds
  std::vector<bool> Timed;  // per control, whether the leg to it was timed; false for the start
};
Course MeasureCourse(const clsAnalyzer& analyzer);

/// A control at which a line chart shows a time of a runner, in seconds.
struct LineValue {
  std::size_t Control;  // 0 is the start
  double Value;
};

/// The values that a line chart shows of a runner, in the order of the controls, from the start to
/// the first control without a time, or with `bridge` to the last one with a time; empty for a
/// runner who is not drawn. `values` is overwritten.
void LineValues(const clsAnalyzedRunnerData& runner, const Course& course, KrChartModeConst mode,
                bool bridge, std::vector<LineValue>& values);

/// The place of a runner's mark on a scatter chart, in the units of its axes; nullopt when a figure
/// is missing.
std::optional<ChartPoint> MarkValues(const clsAnalyzedRunnerData& runner, KrChartModeConst mode);

/// `bridge` as in LineValues. With `fit_most` the range of a line chart leaves out up to a tenth of
/// the lines when they alone would take more than half of it; no more of them than necessary.
HorizontalPlan PlanHorizontal(const clsAnalyzer& analyzer, KrChartModeConst mode, bool bridge,
                              bool fit_most);

/// The vertical range of a scatter chart.
ValueRange VerticalRange(const clsAnalyzer& analyzer, KrChartModeConst mode);

}  // namespace keltrun
