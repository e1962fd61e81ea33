#include "keltrun2/chart/chart_scales.h"

#include <algorithm>
#include <cmath>
#include <numeric>

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

ValueRange Joined(const ValueRange& a, const ValueRange& b) {
  return {std::min(a.Lower, b.Lower), std::max(a.Upper, b.Upper)};
}

// The range of each runner's line.
std::vector<ValueRange> LineRanges(const clsAnalyzer& analyzer, KrChartModeConst mode,
                                   bool bridge) {
  const Course course = MeasureCourse(analyzer);
  std::vector<LineValue> values;
  std::vector<ValueRange> ranges;
  for (const auto& runner : AnalyzerInternal::Selected(analyzer)) {
    LineValues(*runner, course, mode, bridge, values);
    if (values.empty()) continue;
    ValueRange range{values.front().Value, values.front().Value};
    for (const auto& [control, value] : values) range = Joined(range, {value, value});
    ranges.push_back(range);
  }
  return ranges;
}

// The ranges of all lines, of all but the most extreme one, of all but the two most extreme ones,
// and so on. The most extreme line is the one without which the range is the shortest.
std::vector<ValueRange> RangesWithoutExtremes(const std::vector<ValueRange>& lines,
                                              std::size_t most) {
  std::vector<std::size_t> by_lower(lines.size());
  std::iota(by_lower.begin(), by_lower.end(), 0);
  std::vector<std::size_t> by_upper = by_lower;
  std::sort(by_lower.begin(), by_lower.end(),
            [&](auto a, auto b) { return lines[a].Lower < lines[b].Lower; });
  std::sort(by_upper.begin(), by_upper.end(),
            [&](auto a, auto b) { return lines[a].Upper > lines[b].Upper; });
  std::vector<bool> removed(lines.size());
  const auto first = [&](const std::vector<std::size_t>& order, std::size_t next) {
    while (removed[order[next]]) ++next;
    return next;
  };
  std::vector<ValueRange> ranges;
  std::size_t low = 0, high = 0;
  while (true) {
    low = first(by_lower, low);
    high = first(by_upper, high);
    const ValueRange range{lines[by_lower[low]].Lower, lines[by_upper[high]].Upper};
    ranges.push_back(range);
    if (ranges.size() > most) return ranges;
    const double without_low = lines[by_lower[first(by_lower, low + 1)]].Lower - range.Lower;
    const double without_high = range.Upper - lines[by_upper[first(by_upper, high + 1)]].Upper;
    removed[without_high >= without_low ? by_upper[high] : by_lower[low]] = true;
  }
}

// The range of the lines without the outliers: the fewest lines, up to a tenth, whose removal
// leaves a range that the other nine tenths fill to at least half.
ValueRange RangeOfMost(const std::vector<ValueRange>& lines) {
  constexpr double kOutliers = 0.1;
  constexpr double kLeastFilled = 0.5;
  const auto most =
      static_cast<std::size_t>(std::lround(static_cast<double>(lines.size()) * kOutliers));
  const std::vector<ValueRange> ranges = RangesWithoutExtremes(lines, most);
  return *std::find_if(ranges.begin(), ranges.end(), [&](const ValueRange& range) {
    return !(ranges.back().Span() < kLeastFilled * range.Span());
  });
}

ValueRange TimeRange(const clsAnalyzer& analyzer, KrChartModeConst mode, bool bridge,
                     bool fit_most) {
  const std::vector<ValueRange> lines = LineRanges(analyzer, mode, bridge);
  if (lines.empty()) return {};
  if (fit_most) return RangeOfMost(lines);
  return std::accumulate(lines.begin() + 1, lines.end(), lines.front(), Joined);
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

HorizontalPlan PlanHorizontal(const clsAnalyzer& analyzer, KrChartModeConst mode, bool bridge,
                              bool fit_most) {
  if (mode == KR_CHART_VESMER) {
    return {{-kMapSize, kMapSize}, kUnitsPerSecond, kLineMargin, kLineMargin, true};
  }
  if (IsScatterChart(mode)) return {CruiseRange(analyzer, mode), kUnitsPerPercent, 0, 0, false};
  // Every line of the ordinary chart starts at the time 0, which is the left edge itself.
  const double left = mode == KR_CHART_NORMAL ? 0 : kLineMargin;
  return {TimeRange(analyzer, mode, bridge, fit_most), kUnitsPerSecond, left, kLineMargin, false};
}

ValueRange VerticalRange(const clsAnalyzer& analyzer, KrChartModeConst mode) {
  if (mode == KR_CHART_CRUISE_MISSRATE) return MissRange(analyzer);
  if (mode == KR_CHART_CRUISE_HALFRATIO) return HalfRange(analyzer);
  return {-kMapSize, kMapSize};
}

}  // namespace keltrun
