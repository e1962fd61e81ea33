// The kinds of charts.
#pragma once

#include <cstdint>

namespace keltrun {

/// What a chart shows. Modes 0 to 4 draw a line for each runner down the course, from the start at
/// the top to the finish at the bottom, slower to the right; the controls lie at distances
/// proportional to the reference laps. Modes 5 to 7 draw a mark for each runner.
enum KrChartModeConst : std::int32_t {
  KR_CHART_NORMAL = 0,            ///< Time since the start.
  KR_CHART_REALTIME = 1,          ///< Clock time; only runners with a start time are drawn.
  KR_CHART_RELATIVE = 2,          ///< Time behind the sum of the reference laps.
  KR_CHART_RELATIVE_110 = 3,      ///< Time behind 1.1 times the sum of the reference laps.
  KR_CHART_RELATIVE_130 = 4,      ///< Time behind 1.3 times the sum of the reference laps.
  KR_CHART_CRUISE_MISSRATE = 5,   ///< Cruise speed to the right, loss rate downwards.
  KR_CHART_CRUISE_HALFRATIO = 6,  ///< Cruise speed to the right, second over first half downwards.
  KR_CHART_VESMER = 7,            ///< The map of loss profiles; its axes cross at "no loss".
};

}  // namespace keltrun
