#include "keltrun2/chart/chart_builder.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "keltrun2/analysis/analyzer_internal.h"
#include "keltrun2/chart/axis_grid.h"
#include "keltrun2/chart/chart_geometry.h"
#include "keltrun2/chart/chart_object_internal.h"
#include "keltrun2/chart/chart_scales.h"
#include "keltrun2/chart/chart_wrapper.h"
#include "keltrun2/chart/short_names.h"
#include "keltrun2/config/page_texts.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/model/event_model.h"
#include "keltrun2/model/process_state.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

constexpr float kLeastRatioX = 0.5F;
constexpr float kLeastRatioY = 1;
constexpr float kMostRatio = 1e4F;
constexpr double kWidestPicture = 20000;

constexpr Color kBlack = 0;
constexpr Color kStrongGray = 0xA0A0A0;
constexpr Color kGray = 0xC0C0C0;
constexpr Color kLightGray = 0xD0D0D0;
constexpr Color kFaintGray = 0xE0E0E0;

constexpr float kLabelGapX = 5;     // between a label and the drawable area
constexpr double kLabelSpace = 10;  // smallest space between two labels of an axis
constexpr float kTitleX = -47;      // left end of the title of the vertical axis
constexpr float kLabelGapY = 7;
constexpr float kTitleGap = 21;  // between a title and the drawable area, for the labels
constexpr double kGridRoom = 9;  // smallest distance between two grid lines
constexpr double kMapGrid = 20;  // map units between two grid lines
constexpr double kLeastPercentGrid = 0.1;
constexpr double kDashDistance = 9;   // units from one dash of a line over a gap to the next
constexpr double kGapPerDash = 0.75;  // space between two dashes, compared with their length
constexpr double kMostDashes = 1000;

// The value limited to a range. NaN becomes the lower end.
float Within(float value, float lower, float upper) {
  return value > lower ? std::min(value, upper) : lower;
}

float ToFloat(double value) { return static_cast<float>(value); }

class ChartBuilder {
 public:
  ChartBuilder(const clsAnalyzer& analyzer, clsChartObject& chart)
      : analyzer_(analyzer),
        runners_(AnalyzerInternal::Selected(analyzer)),
        chart_(chart),
        state_(ChartObjectInternal::Get(chart)),
        pen_(state_.picture, state_.book) {}

  void Build() {
    CopyNames();
    if (state_.has_titles) SetTitles();
    if (!(state_.width > 0) || !(state_.height > 0)) return;
    state_.height_occupied = 1 / state_.ratio_y;
    if (!IsLineChart(state_.mode) && !IsScatterChart(state_.mode)) return;
    plan_ = PlanHorizontal(analyzer_, state_.mode, chart_.BridgeGaps, chart_.FitMost);
    SetHorizontalAxis(plan_);
    if (!(state_.width > 0)) return;  // the host's picture may have any size after it was widened
    if (IsLineChart(state_.mode)) {
      BuildLineChart();
    } else {
      BuildScatterChart();
    }
  }

 private:
  void CopyNames() {
    state_.names.resize(runners_.size() + 1);
    for (std::size_t i = 0; i < runners_.size(); ++i) {
      state_.names[i + 1] = runners_[i]->RunnerName();
    }
    if (!chart_.ClearNames) return;
    const clsLapData nobody;
    std::vector<const clsLapData*> records{&nobody};
    for (const auto& runner : runners_) records.push_back(runner->OtherData().get());
    state_.short_names = ShortNames(records);
  }

  // The texts of a mode have its number at the end of their keys.
  void SetTitles() {
    const std::string mode = std::to_string(state_.mode);
    const std::string of_mode = ResourceText("RES_CHART_MODE_" + mode);
    const std::string& set = analyzer_.DataSetName();
    state_.titles.Set = set + (set.empty() || of_mode.empty() ? "" : ": ") + of_mode;
    if (const auto model = FindCurrentModel()) state_.titles.Event = model->Event->ToString();
    state_.titles.AxisX = ResourceText("RES_CHART_AXIS_X_" + mode);
    const char* control = HasCodes() ? "RES_CHART_AXIS_CODE" : "RES_CHART_AXIS_CONTROL";
    state_.titles.AxisY =
        ResourceText(IsLineChart(state_.mode) ? control : "RES_CHART_AXIS_Y_" + mode);
  }

  bool HasCodes() const {
    const auto& course = analyzer_.CourseData();
    return state_.has_titles && course && course->ControlCount() == analyzer_.ControlCount;
  }

  void SetHorizontalAxis(const HorizontalPlan& plan) {
    const double needed = plan.WidthAt(state_.ratio_x);
    if (chart_.AutoSize && needed > state_.width) {
      const double widest = kWidestPicture - 2.0 * state_.Margins().X;
      ChartObjectInternal::WidenPicture(chart_, ToFloat(std::ceil(std::min(needed, widest))));
    }
    const double spare = state_.width - needed;
    double left = plan.LeftMargin;
    if (spare < 0) left += spare * state_.position_x;
    if (spare > 0 && plan.Centered) left += spare / 2;
    x_.Scale = plan.UnitsPerOne * state_.ratio_x;
    x_.Zero = left - plan.Range.Lower * x_.Scale;
    state_.width_occupied = ToFloat(std::min(1.0, state_.width / needed));
  }

  // The whole range fills the height at a RatioY of 1.
  void SetVerticalAxis(const ValueRange& range) {
    const double offset = state_.height * (state_.ratio_y - 1.0) * state_.position_y;
    y_.Scale = state_.height / range.Span() * state_.ratio_y;
    y_.Zero = -range.Lower * y_.Scale - offset;
  }

  // Line charts.

  void BuildLineChart() {
    const Course course = MeasureCourse(analyzer_);
    constexpr double kHour = 3600;
    SetVerticalAxis({0, course.Total > 0 ? course.Total : kHour});
    // The sum of the reference laps may be half a second more than its whole seconds; the limit
    // keeps the finish on the chart.
    std::vector<double> controls;
    for (const double position : course.Position) {
      controls.push_back(y_.At(std::min(position, course.Total)));
    }
    state_.finish = ToFloat(std::clamp(controls.back(), 0.0, double{state_.height}));
    AddTimeGrid();
    AddControls(controls);
    AddRunnerLines(course, controls);
  }

  void AddTimeGrid() {
    const bool is_clock = state_.mode == KR_CHART_REALTIME;
    const double step = TimeStep(x_.Scale, pen_.TextWidth("-00:00") + kLabelSpace);
    const auto first = static_cast<std::int64_t>(std::ceil(x_.ValueAt(0) / step));
    const auto last = static_cast<std::int64_t>(std::floor(x_.ValueAt(state_.width) / step));
    for (const bool labeled : {false, true}) {
      for (std::int64_t i = first; i <= last; ++i) {
        if ((i % kLinesPerLabel == 0) != labeled) continue;
        const double seconds = static_cast<double>(i) * step;
        const float x = AddVerticalLine(seconds, labeled ? kStrongGray : kLightGray);
        if (labeled) AddLabelsAboveAndBelow(TimeLabel(seconds, is_clock), x);
      }
    }
  }

  void AddControls(const std::vector<double>& controls) {
    for (const double y : controls) {
      ChartObjectInternal::AddFrameLine(chart_, 0, ToFloat(y), state_.width, ToFloat(y), kGray);
    }
    // From the finish upward, so that the labels of the last controls make room for that of the
    // finish.
    const double room = std::max(1.0F, pen_.TextHeight());
    const std::size_t finish = controls.size() - 1;
    double below = std::numeric_limits<double>::infinity();  // nothing is below the finish
    for (std::size_t control = finish; control > 0; --control) {
      const double y = controls[control];
      if (below - y < room || y - controls[0] < room) continue;
      AddLabelsAtBothSides(control == finish ? "F" : ControlLabel(control), y);
      below = y;
    }
    AddLabelsAtBothSides("S", controls[0]);
  }

  std::string ControlLabel(std::size_t control) const {
    std::string label = std::to_string(control);
    if (!HasCodes()) return label;
    const auto index = static_cast<std::int32_t>(control);
    return label + " (" + std::to_string(analyzer_.CourseData()->ControlNum(index)) + ")";
  }

  void AddRunnerLines(const Course& course, const std::vector<double>& controls) {
    const ChartBox area{0, 0, state_.width, state_.height};
    std::vector<LineValue> values;
    state_.leaves.resize(runners_.size() + 1);
    for (std::size_t runner = 0; runner < runners_.size(); ++runner) {
      LineValues(*runners_[runner], course, state_.mode, chart_.BridgeGaps, values);
      state_.leaves[runner + 1] = std::any_of(
          values.begin(), values.end(), [&](const LineValue& at) { return IsOffAxis(at.Value); });
      for (std::size_t i = 1; i < values.size(); ++i) {
        ChartPoint from{x_.At(values[i - 1].Value), controls[values[i - 1].Control]};
        ChartPoint to{x_.At(values[i].Value), controls[values[i].Control]};
        if (!CutToBox(area, from, to)) continue;
        const bool bridge = values[i].Control != values[i - 1].Control + 1;
        AddRunnerLine(from, to, bridge ? DashCount(from, to) : 1, runner + 1, values[i].Control);
      }
    }
  }

  bool IsOffAxis(double value) const {
    return value < plan_.Range.Lower || value > plan_.Range.Upper;
  }

  // The number of dashes of a line over a gap.
  static int DashCount(const ChartPoint& from, const ChartPoint& to) {
    const double length = std::hypot(to.X - from.X, to.Y - from.Y);
    return static_cast<int>(std::clamp(length / kDashDistance, 1.0, kMostDashes)) + 1;
  }

  // A line of dashes, the first and last of which are at its ends.
  void AddRunnerLine(const ChartPoint& from, const ChartPoint& to, int dashes, std::size_t runner,
                     std::size_t leg) {
    const double dash = 1 / (dashes + (dashes - 1) * kGapPerDash);
    for (int i = 0; i < dashes; ++i) {
      const double begin = i * (1 + kGapPerDash) * dash;
      const double end = i == dashes - 1 ? 1 : begin + dash;
      const auto x = [&](double part) { return ToFloat(std::lerp(from.X, to.X, part)); };
      const auto y = [&](double part) { return ToFloat(std::lerp(from.Y, to.Y, part)); };
      ChartObjectInternal::AddRunnerLine(
          chart_, {x(begin), y(begin), x(end), y(end), static_cast<std::int32_t>(runner), 0,
                   static_cast<std::int32_t>(leg)});
    }
  }

  // Scatter charts.

  void BuildScatterChart() {
    SetVerticalAxis(VerticalRange(analyzer_, state_.mode));
    AddValueGrids();
    AddTitles();
    AddMarks();
  }

  struct GridSteps {
    double line, label;
  };

  GridSteps Steps(double scale, double label_room) const {
    if (state_.mode == KR_CHART_VESMER) {
      const double line = GridStep(scale, kGridRoom, kMapGrid);
      return {line, GridStep(scale, label_room, line)};
    }
    const double line = GridStep(scale, kGridRoom, kLeastPercentGrid);
    // Labels are whole numbers.
    return {line, GridStep(scale, label_room, std::max(line, 1.0))};
  }

  struct GridLine {
    bool vertical;
    double value;
    Color color;
    bool labeled;
  };

  void AddValueGrids() {
    std::vector<GridLine> lines;
    const GridSteps across = Steps(x_.Scale, pen_.TextWidth("-100%") + kLabelSpace);
    const GridSteps down = Steps(y_.Scale, pen_.TextHeight() + kLabelSpace / 2);
    CollectLines(true, x_, state_.width, across, lines);
    CollectLines(false, y_, state_.height, down, lines);
    // Lighter lines first, so that they do not cut the stronger ones where lines cross.
    std::stable_sort(lines.begin(), lines.end(),
                     [](const GridLine& a, const GridLine& b) { return a.color > b.color; });
    for (const GridLine& line : lines) AddGridLine(line);
    AddBorderAndAxes();
  }

  static void CollectLines(bool vertical, const ChartAxis& axis, double end, const GridSteps& steps,
                           std::vector<GridLine>& lines) {
    const auto first = static_cast<std::int64_t>(std::ceil(axis.ValueAt(0) / steps.line));
    const auto last = static_cast<std::int64_t>(std::floor(axis.ValueAt(end) / steps.line));
    for (std::int64_t i = first; i <= last; ++i) {
      const double value = static_cast<double>(i) * steps.line;
      lines.push_back({vertical, value, GridColor(value, steps), IsMultiple(value, steps.label)});
    }
  }

  static bool IsMultiple(double value, double step) {
    return std::fabs(std::remainder(value, step)) < 1e-6 * step;
  }

  static Color GridColor(double value, const GridSteps& steps) {
    if (IsMultiple(value, steps.label)) {
      constexpr double kTen = 10;
      return steps.line < kTen && IsMultiple(value, kTen) ? kStrongGray : kGray;
    }
    return IsMultiple(value, 1) ? kLightGray : kFaintGray;
  }

  void AddGridLine(const GridLine& line) {
    std::string label = line.labeled ? FormatNumber(line.value, "#0") : "";
    if (state_.mode == KR_CHART_CRUISE_MISSRATE && line.labeled) label += '%';
    if (line.vertical) {
      const float x = AddVerticalLine(line.value, line.color);
      if (line.labeled) AddLabelsAboveAndBelow(std::move(label), x);
    } else {
      AddHorizontalLine(line.value, line.color);
      if (line.labeled) AddLabelsAtBothSides(std::move(label), y_.At(line.value));
    }
  }

  // The vertical black axis is at the speed of the reference laps, the horizontal one at no loss or
  // at equal halves. On the map they cross at the place of a runner without losses.
  void AddBorderAndAxes() {
    const float right = state_.width;
    const float bottom = state_.height;
    ChartObjectInternal::AddFrameLine(chart_, 0, 0, right, 0, kGray);
    ChartObjectInternal::AddFrameLine(chart_, 0, bottom, right, bottom, kGray);
    ChartObjectInternal::AddFrameLine(chart_, 0, 0, 0, bottom, kGray);
    ChartObjectInternal::AddFrameLine(chart_, right, 0, right, bottom, kGray);
    constexpr double kReference = 100;
    AddVerticalLine(state_.mode == KR_CHART_VESMER ? 0 : kReference, kBlack);
    AddHorizontalLine(state_.mode == KR_CHART_CRUISE_HALFRATIO ? kReference : 0, kBlack);
  }

  void AddTitles() {
    if (state_.mode == KR_CHART_VESMER || state_.has_titles) return;
    AddText(ResourceText("RES_META_CRUISE_SPEED"), state_.width / 2, state_.height + kTitleGap,
            kBeginsAtY);
    if (state_.mode == KR_CHART_CRUISE_MISSRATE) {
      AddText(ResourceText("RES_META_MISTAKE_RATE"), kTitleX, -kTitleGap, kBeginsAtX | kEndsAtY);
    } else {
      // In one piece it would be too wide for the margin.
      AddText(PageText("RES_TITLE_SECOND_HALF", "後巡行　"), kTitleX,
              -kTitleGap - pen_.TextHeight(), kBeginsAtX | kEndsAtY);
      AddText(PageText("RES_TITLE_FIRST_HALF", "／前巡行"), kTitleX, -kTitleGap,
              kBeginsAtX | kEndsAtY);
    }
  }

  void AddMarks() {
    const ChartMark mark = state_.mode == KR_CHART_VESMER ? kMarkDot : kMarkCross;
    for (std::size_t runner = 0; runner < runners_.size(); ++runner) {
      const auto values = MarkValues(*runners_[runner], state_.mode);
      if (!values) continue;
      ChartObjectInternal::AddRunnerPoint(chart_, ToFloat(x_.At(values->X)),
                                          ToFloat(y_.At(values->Y)),
                                          static_cast<std::int32_t>(runner) + 1, mark);
    }
  }

  // Both.

  float AddVerticalLine(double value, Color color) {
    const float x = ToFloat(x_.At(value));
    ChartObjectInternal::AddFrameLine(chart_, x, 0, x, state_.height, color);
    return x;
  }

  void AddHorizontalLine(double value, Color color) {
    const float y = ToFloat(y_.At(value));
    ChartObjectInternal::AddFrameLine(chart_, 0, y, state_.width, y, color);
  }

  void AddLabelsAboveAndBelow(std::string label, float x) {
    AddText(label, x, -kLabelGapY, kEndsAtY);
    AddText(std::move(label), x, state_.height + kLabelGapY, kBeginsAtY);
  }

  void AddLabelsAtBothSides(std::string label, double position) {
    if (position < 0 || position > state_.height) return;
    const float y = ToFloat(position);
    AddText(label, -kLabelGapX, y, kEndsAtX);
    AddText(std::move(label), state_.width + kLabelGapX, y, kBeginsAtX);
  }

  void AddText(std::string text, float x, float y, std::int32_t align) {
    ChartObjectInternal::AddText(chart_, std::move(text), x, y, align);
  }

  const clsAnalyzer& analyzer_;
  const AnalyzerInternal::Runners& runners_;
  clsChartObject& chart_;
  ChartObjectInternal::State& state_;
  clsChartWrapper pen_;
  HorizontalPlan plan_;
  ChartAxis x_, y_;
};

}  // namespace

void BuildChart(const std::shared_ptr<clsAnalyzer>& analyzer, clsChartObject& chart,
                KrChartModeConst mode, float ratio_x, float ratio_y, float position_x,
                float position_y) {
  const ChartObjectInternal::Build build(chart);
  const clsAnalyzer held = *analyzer;  // the host of the picture may clear its own
  ChartObjectInternal::Initialize(chart);
  ChartObjectInternal::AttachAnalyzer(chart, analyzer);
  ChartObjectInternal::StoreView(chart, mode, Within(ratio_x, kLeastRatioX, kMostRatio),
                                 Within(ratio_y, kLeastRatioY, kMostRatio),
                                 Within(position_x, 0, 1), Within(position_y, 0, 1));
  ChartBuilder(held, chart).Build();
}

float ChartRatioToFit(const clsAnalyzer& Analyzer, const clsChartObject& Chart,
                      KrChartModeConst ChartMode) {
  if (!(Chart.Width() > 0) || !(Chart.Height() > 0)) return 1;
  if (!IsLineChart(ChartMode) && !IsScatterChart(ChartMode)) return 1;
  const HorizontalPlan plan = PlanHorizontal(Analyzer, ChartMode, Chart.BridgeGaps, Chart.FitMost);
  const bool is_map = ChartMode == KR_CHART_VESMER;
  const double width = is_map ? Chart.Height() : Chart.Width() - plan.LeftMargin - plan.RightMargin;
  const double width_at_one = plan.Range.Span() * plan.UnitsPerOne;
  if (!(width_at_one > 0)) return 1;
  // Rounded down a little, so that single precision never makes the chart wider than the area.
  const double down = is_map ? 1 : 1 - 1e-6;
  return Within(ToFloat(width / width_at_one * down), kLeastRatioX, kMostRatio);
}

}  // namespace keltrun
