// Charts of an analysis: scales, frame, labels, and the runners' lines and marks.
#pragma once

#include <memory>

#include "keltrun2/analysis/analyzer.h"
#include "keltrun2/chart/chart_object.h"

namespace keltrun {

/// Fills the chart object, which must have a target, with the records of a chart of the selected
/// set. Ratios below their minimum (0.5 and 1) are raised to it, positions are limited to 0 to 1,
/// and NaN is replaced by the minimum. An unknown mode gives an empty chart. Never fails: runners
/// without the figures that a mode needs are left out.
void BuildChart(const std::shared_ptr<clsAnalyzer>& analyzer, clsChartObject& chart,
                KrChartModeConst mode, float ratio_x, float ratio_y, float position_x,
                float position_y);

}  // namespace keltrun
