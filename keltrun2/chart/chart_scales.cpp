#include "keltrun2/chart/chart_scales.h"

#include <algorithm>
#include <cmath>

#include "keltrun2/analysis/analyzed_runner_data_internal.h"
#include "keltrun2/analysis/analyzer_internal.h"
#include "keltrun2/analysis/loss_map.h"
#include "keltrun2/model/result_status.h"

namespace keltrun {
namespace {

constexpr double kUnitsPerSecond = 0.2;  // also per unit of the map
constexpr double kUnitsPerPercent = 10;
constexpr double kLineMargin = 10;     // units between the outermost lines and the edges
constexpr double kPercentMargin = 2;   // percent of cruise speed at either end
constexpr float kMostMissRate = 0.5F;  // runners who lost more do not affect the ranges
constexpr double kMostCruiseSpeed = 300;
constexpr double kMostMissPercent = 50;
constexpr double kMostHalfRatio = 150;

// For modes 0 to 4: how many times the reference lap is subtracted.
constexpr double kReferenceFactors[] = {0, 0, 1.0, 1.1, 1.3};

bool IsTime(DateTime value) { return value > 0 && value < kLongestTime; }

// Percentages are computed in single precision, in which the ratios are stored: 0.29 is 29 percent,
// not a hair less.
double Percent(float ratio) { return static_cast<double>(ratio * 100.0F); }
double WholePercent(float ratio) { return std::floor(Percent(ratio)); }

float HalfRatio(const clsAnalyzedRunnerData& runner) {
  return runner.SecondHalfCruiseSpeed()->Value() / runner.FirstHalfCruiseSpeed()->Value();
}

bool HasHalves(const clsAnalyzedRunnerData& runner) {
  return runner.CruiseSpeed()->Value() != 0 && runner.FirstHalfCruiseSpeed()->Value() != 0 &&
         runner.SecondHalfCruiseSpeed()->Value() != 0;
}

// The smallest and largest ratio, 1 included.
struct RatioRange {
  float smallest = 1, largest = 1;
  void Include(float ratio) {
    if (ratio < smallest) smallest = ratio;
    if (ratio > largest) largest = ratio;
  }
};

// Runners without a loss rate, whom the chart of loss rates does not draw, do not widen its axis.
ValueRange CruiseRange(const clsAnalyzer& analyzer, KrChartModeConst mode) {
  RatioRange ratios;
  for (const auto& runner : AnalyzerInternal::Selected(analyzer)) {
    if (mode == KR_CHART_CRUISE_MISSRATE && !MarkValues(*runner, mode)) continue;
    const float speed = runner->CruiseSpeed()->Value();
    if (speed != 0 && runner->MissRate()->Value() < kMostMissRate) ratios.Include(speed);
  }
  const double upper = std::min(WholePercent(ratios.largest) + 1, kMostCruiseSpeed);
  return {WholePercent(ratios.smallest) - kPercentMargin, upper + kPercentMargin};
}

ValueRange TimeRange(const clsAnalyzer& analyzer, KrChartModeConst mode, bool bridge) {
  const Course course = MeasureCourse(analyzer);
  std::vector<LineValue> values;
  std::optional<ValueRange> range;
  for (const auto& runner : AnalyzerInternal::Selected(analyzer)) {
    LineValues(*runner, course, mode, bridge, values);
    for (const auto& [control, value] : values) {
      if (!range) range = {value, value};
      range->Lower = std::min(range->Lower, value);
      range->Upper = std::max(range->Upper, value);
    }
  }
  return range.value_or(ValueRange{});
}

ValueRange MissRange(const clsAnalyzer& analyzer) {
  float largest = 0.01F;
  for (const auto& runner : AnalyzerInternal::Selected(analyzer)) {
    const float rate = runner->MissRate()->Value();
    if (runner->CruiseSpeed()->Value() != 0 && rate < kMostMissRate)
      largest = std::max(largest, rate);
  }
  return {0, std::min(WholePercent(largest) + 1, kMostMissPercent)};
}

ValueRange HalfRange(const clsAnalyzer& analyzer) {
  RatioRange ratios;
  for (const auto& runner : AnalyzerInternal::Selected(analyzer)) {
    if (HasHalves(*runner)) ratios.Include(HalfRatio(*runner));
  }
  return {WholePercent(ratios.smallest) - 2,
          std::min(WholePercent(ratios.largest) + 2, kMostHalfRatio)};
}

}  // namespace

Course MeasureCourse(const clsAnalyzer& analyzer) {
  const clsAnalyzedGeneralData& general = *analyzer.GeneralData();
  const auto whole = [](DateTime time) {
    return IsTime(time) ? static_cast<double>(WholeSeconds(time)) : 0;
  };
  Course course{{0}, whole(general.UpperLapTotal()), {false}};
  DateTime so_far = 0;
  for (std::int32_t leg = 1; leg <= AnalyzerInternal::LegCount(analyzer); ++leg) {
    const DateTime lap = general.UpperLapAverage(leg);
    if (IsTime(lap)) so_far += lap;
    course.Position.push_back(so_far * kSecondsPerDay);
    course.Timed.push_back(general.IsTimed(leg));
  }
  return course;
}

void LineValues(const clsAnalyzedRunnerData& runner, const Course& course, KrChartModeConst mode,
                bool bridge, std::vector<LineValue>& values) {
  values.clear();
  double start = 0;
  if (mode == KR_CHART_REALTIME) {
    if (!IsTime(runner.StartTime())) return;
    start = runner.StartTime() * kSecondsPerDay;
  }
  const double factor = kReferenceFactors[mode];
  values.push_back({0, start});
  for (std::size_t leg = 1; leg < course.Position.size(); ++leg) {
    const auto& figures = AnalyzedRunnerInternal::Leg(runner, static_cast<std::int32_t>(leg));
    DateTime split = figures.modified_split_time;
    // After a gap the split lacks the time of a leg, if that was not recorded, and has no modified
    // split.
    if (bridge && !IsTime(split)) split = figures.split_time;
    if (IsTime(split)) {
      values.push_back({leg, start + split * kSecondsPerDay - factor * course.Position[leg]});
    } else if (!course.Timed[leg] && values.back().Control == leg - 1) {
      values.push_back({leg, values.back().Value});  // no time went by, and the leg has no height
    } else if (!bridge) {
      return;
    }
  }
}

std::optional<ChartPoint> MarkValues(const clsAnalyzedRunnerData& runner, KrChartModeConst mode) {
  const float speed = runner.CruiseSpeed()->Value();
  switch (mode) {
    case KR_CHART_CRUISE_MISSRATE:
      if (runner.MissRate()->Value() == 0 || speed == 0) return std::nullopt;
      return ChartPoint{Percent(speed), Percent(runner.MissRate()->Value())};
    case KR_CHART_CRUISE_HALFRATIO:
      if (!HasHalves(runner)) return std::nullopt;
      return ChartPoint{Percent(speed), Percent(HalfRatio(runner))};
    default:
      if (!IsFinished(runner.Result())) return std::nullopt;
      return ChartPoint{runner.VesmerX(), runner.VesmerY()};
  }
}

HorizontalPlan PlanHorizontal(const clsAnalyzer& analyzer, KrChartModeConst mode, bool bridge) {
  if (mode == KR_CHART_VESMER) {
    return {{-kMapSize, kMapSize}, kUnitsPerSecond, kLineMargin, kLineMargin, true};
  }
  if (IsScatterChart(mode)) return {CruiseRange(analyzer, mode), kUnitsPerPercent, 0, 0, false};
  // Every line of the ordinary chart starts at the time 0, which is the left edge itself.
  const double left = mode == KR_CHART_NORMAL ? 0 : kLineMargin;
  return {TimeRange(analyzer, mode, bridge), kUnitsPerSecond, left, kLineMargin, false};
}

ValueRange VerticalRange(const clsAnalyzer& analyzer, KrChartModeConst mode) {
  if (mode == KR_CHART_CRUISE_MISSRATE) return MissRange(analyzer);
  if (mode == KR_CHART_CRUISE_HALFRATIO) return HalfRange(analyzer);
  return {-kMapSize, kMapSize};
}

}  // namespace keltrun
