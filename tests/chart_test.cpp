// Charts: scales and clipping are tested by their records, drawing by the calls to a picture.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <deque>
#include <map>
#include <set>

#include "keltrun2/analysis/analyzed_runner_data_internal.h"
#include "keltrun2/chart/axis_grid.h"
#include "keltrun2/chart/chart_builder.h"
#include "keltrun2/chart/chart_geometry.h"
#include "keltrun2/chart/chart_object_internal.h"
#include "keltrun2/chart/short_names.h"
#include "keltrun2/model/time_values_internal.h"
#include "keltrun2/print/print_book_internal.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using Figures = AnalyzedRunnerInternal;
using State = ChartObjectInternal::State;
struct Call {
  ChartBox box;  // for a line: its ends
  Color color;
  float width;  // 0 for a text
  std::string text;
  float halo = 0;
};

/// Records lines and texts; every byte of a text is half as wide as it is high.
class RecordingPicture : public PictureBox {
 public:
  std::vector<Call> calls;
  float width = 704, height = 400;
  std::int32_t setup = 0;  // scale mode and background

  void DrawLine(float x1, float y1, float x2, float y2, Color color, float w) override {
    calls.push_back({{x1, y1, x2, y2}, color, w, ""});
  }
  void DrawBox(float, float, float, float, Color, float, bool) override {}
  void DrawCircle(float, float, float, Color, float, bool) override {}
  void DrawText(std::string_view text, float x, float y, const TextStyle& style) override {
    const float w = style.Turned ? style.Size : TextWidth(text, style);
    const float h = style.Turned ? TextWidth(text, style) : style.Size;
    if (style.Turned) x -= w;
    calls.push_back({{x, y, x + w, y + h}, style.Color, 0, std::string(text), style.Halo});
  }
  float TextWidth(std::string_view text, const TextStyle& style) override {
    return static_cast<float>(text.size()) * style.Size / 2;
  }
  float TextHeight(const TextStyle& style) override { return style.Size; }
  void SetClip(float, float, float, float) override {}
  void ResetClip() override {}
  void SetScaleMode(std::int32_t mode) override { setup += mode << 24; }
  void SetBackColor(Color color) override { setup += color; }
  void Clear() override { calls.clear(); }
  float ScaleWidth() const override { return width; }
  float ScaleHeight() const override { return height; }
  float Width() const override { return 15 * width; }  // the outer unit is 1/15 pixel
  void SetWidth(float value) override { width = value / 15; }
};

// A data set on a course with two controls and reference laps of 100, 200 and 300 s, on a picture
// with a drawable area of 600 x 300.
struct Fixture {
  explicit Fixture(int runners = 2, Mode mode = Mode::kEnglishTexts) : root(NewRoot(mode)) {
    const auto klass = root->AddClass("A");
    klass->ControlCount = 2;
    for (int i = 0; i < runners; ++i) AddRunner(*klass, "Runner", "0:10:00", {100, 200, 300});
    analyzer->AddClass("A");
    analyzer->Execute();
    chart.SetPictureObject(picture);
  }
  void Splits(std::int32_t runner, const std::vector<double>& splits) {
    for (std::int32_t leg = 1; leg <= 3; ++leg) {
      analyzer->Item(runner)->SetModifiedSplitTime(leg, Seconds(splits[leg - 1UL]));
    }
  }
  void Ratios(std::int32_t runner, double cruise, double miss, double first, double second) {
    auto& item = *analyzer->Item(runner);
    AnalysisValue::Set(Figures::CruiseSpeed(item), cruise);
    AnalysisValue::Set(Figures::MissRate(item), miss);
    AnalysisValue::Set(Figures::FirstHalfCruiseSpeed(item), first);
    AnalysisValue::Set(Figures::SecondHalfCruiseSpeed(item), second);
  }
  const State& Build(std::int32_t mode, float rx = 1, float ry = 1, float px = 0, float py = 0) {
    BuildChart(analyzer, chart, static_cast<KrChartModeConst>(mode), rx, ry, px, py);
    return ChartObjectInternal::Get(chart);
  }
  std::shared_ptr<clsKeltrun2> root;
  std::shared_ptr<clsAnalyzer> analyzer = root->NewAnalyzer();
  std::shared_ptr<RecordingPicture> picture = std::make_shared<RecordingPicture>();
  clsChartObject chart;
};

// A runner's line, or mark, in whole units: "0,0 20,50".
std::string LineOf(const State& state, std::int32_t runner) {
  std::string points;
  const auto add = [&](float x, float y) {
    points += " " + std::to_string(std::lround(x)) + "," + std::to_string(std::lround(y));
  };
  for (const auto* records : {&state.runner_lines, &state.runner_points}) {
    for (const clsChartLine& record : *records) {
      if (record.RunnerIndex != runner) continue;
      if (points.empty() && records == &state.runner_lines) add(record.X1, record.Y1);
      add(record.X2, record.Y2);
    }
  }
  return points.empty() ? points : points.substr(1);
}

// The labels at the left edge, or those above the chart, in alphabetical order.
std::string Labels(const State& state, bool left) {
  std::vector<clsChartChar> texts = state.texts;
  std::ranges::sort(texts, {}, &clsChartChar::Text);
  std::string labels;
  for (const clsChartChar& text : texts) {
    if (left ? text.X == -5 : text.Y == -7) labels += text.Text + " ";
  }
  return labels;
}

TEST(ChartObject, KeepsSettingsAsLongAsTheSet) {
  Fixture f;
  EXPECT_EQ(f.picture->setup, 0x3FFFFFF);  // pixels on white
  f.chart.SetRunnerSetting(99, 1, 2, 3);   // no set yet
  f.Build(0);
  f.chart.SetRunnerSetting(2, 0xFF, 3, 4);
  f.chart.SetRunnerSetting2(2, 0xEE, 9);
  EXPECT_EQ(f.Build(5).settings[2].ForeColor, 0xFF);
  EXPECT_EQ(f.chart.GetRunnerSetting2(2).BackLineWidth, 9);
  EXPECT_THROW(f.chart.SetRunnerSetting(-1, 0, 0, 0), AutomationError);
  EXPECT_THROW(f.chart.GetRunnerSetting2(3), AutomationError);
  f.analyzer->SelectItem(f.analyzer->Item(1)->SerialNum());  // one more in the set
  EXPECT_EQ(f.Build(0).settings[2].ForeColor, 0);
  f.chart.SetRunnerSetting(3, 7, 0, 0);
  f.analyzer->SetDataSetName("another");
  EXPECT_EQ(f.Build(0).settings[3].ForeColor, 0);
}

// With a height of 300 units for 600 s, the controls are at 0, 50, 150 and 300.
TEST(LineCharts, FollowTheScales) {
  Fixture f(3);
  f.Splits(2, {120, 360, 660});
  f.Splits(3, {100, 0, 600});
  for (int i : {1, 2}) f.analyzer->Item(i)->OtherData()->StartTime()->SetValue(Seconds(36000 * i));
  const Rows<int, std::string, std::string> cases{
      {0, "0,0 20,50 60,150 120,300", "0,0 24,50 72,150 132,300"},  // 0.2 units a second
      // 0, 20, 60, 60 s slower; then 0, 10, 30, 0 slower than 1.1 times the reference, where the
      // first runner is 60 s ahead; then 0, 10, 30, 120 ahead of 1.3 times it, the first runner
      // 180. The smallest value has 10 units to its left.
      {2, "10,0 10,50 10,150 10,300", "10,0 14,50 22,150 22,300"},
      {3, "22,0 20,50 16,150 10,300", "22,0 24,50 28,150 22,300"},
      {4, "46,0 40,50 28,150 10,300", "46,0 44,50 40,150 22,300"},
  };
  for (const auto& [mode, first, second] : cases) {
    const auto& state = f.Build(mode);
    EXPECT_EQ(LineOf(state, 1), first) << mode;
    EXPECT_EQ(LineOf(state, 2), second);
    EXPECT_TRUE(LineOf(state, 3).ends_with(",50"));  // down to control 1
    EXPECT_EQ(Labels(state, true), "1 2 F S ");
  }
  const auto& clock = f.Build(1, 0.1F);  // drawn at 0.5: 0.1 units a second
  EXPECT_EQ(LineOf(clock, 1), "10,0 20,50 40,150 70,300");
  EXPECT_EQ(LineOf(clock, 3), "");  // no start time
  EXPECT_EQ(Labels(clock, false).substr(0, 11), "10:00 10:10");
  EXPECT_EQ(TimeLabel(-300, false) + " " + TimeLabel(86700, true), "-0:05 0:05");
  const Rows<double, double> time_steps{{0.1, 60}, {0.2, 30}, {1, 6}, {100, 6}, {0.005, 1800}};
  for (const auto& [scale, step] : time_steps) EXPECT_EQ(TimeStep(scale, 46), step) << scale;
}

TEST(LineCharts, ScrollAndEndAtTheEdge) {
  Fixture f;
  f.Splits(2, {120, 360, 660});
  // One unit a second: 660 and a margin of 10 for 600.
  EXPECT_EQ(LineOf(f.Build(0, 5), 2), "0,0 120,50 360,150 600,270");
  EXPECT_FLOAT_EQ(f.chart.WidthOccupied(), 600.0F / 670);
  // A position of 2 is 1: scrolled by 70.
  EXPECT_EQ(LineOf(f.Build(0, 5, 1, 2), 2), "0,29 50,50 290,150 590,300");
  const auto& lower = f.Build(0, 1, 2, 0, 1);  // controls at -300, -200, 0, 300
  EXPECT_EQ(LineOf(lower, 1), "60,0 60,0 120,300");
  EXPECT_EQ(Labels(lower, true), "2 F ");
  EXPECT_EQ(LineOf(f.Build(0, 1, 0.5F), 1), "0,0 20,50 60,150 120,300");  // a RatioY of 1
  EXPECT_NEAR(ChartRatioToFit(*f.analyzer, f.chart, KR_CHART_NORMAL), 590 / (660 * 0.2), 1e-4);
  f.chart.AutoSize = true;
  f.Build(0, 10);  // 2 units a second
  EXPECT_EQ(f.chart.Width(), 1330);
  f.Build(0, 1000);
  EXPECT_EQ(f.picture->width, 20000);
}

// The first runner has no time at control 1.
TEST(LineCharts, BridgeGapsWithDashes) {
  Fixture f;
  f.Splits(1, {0, 300, 600});
  f.Splits(2, {100, 300, 0});
  f.analyzer->Item(1)->SetSplitTime(1, 0);
  f.analyzer->Item(2)->SetSplitTime(3, 0);
  EXPECT_EQ(LineOf(f.Build(0, 5), 1), "");
  const std::string whole = LineOf(f.Build(0, 5), 2);
  f.chart.BridgeGaps = true;
  const State& state = f.Build(0, 5);
  EXPECT_EQ(LineOf(state, 2), whole);
  std::vector<clsChartLine> dashes;
  for (const clsChartLine& line : state.runner_lines) {
    if (line.RunnerIndex == 1 && line.Detail == 2) dashes.push_back(line);
  }
  ASSERT_GT(dashes.size(), 10U);
  EXPECT_EQ(dashes.front().X1, 0);
  EXPECT_EQ(dashes.back().X2, 300);
  EXPECT_EQ(dashes.back().Y2, 150);
  for (std::size_t i = 1; i < dashes.size(); ++i) EXPECT_GT(dashes[i].X1, dashes[i - 1].X2 + 2);
  EXPECT_TRUE(LineOf(state, 1).ends_with(" 300,150 600,300"));  // and on to the finish
}

TEST(LineCharts, PassUntimedLegs) {
  const auto root = NewRoot();
  const auto klass = root->AddClass("A");
  klass->ControlCount = 3;
  for (int i = 0; i < 3; ++i) AddRunner(*klass, "Runner", "0:10:00", {100, 0, 200, 300});
  const auto analyzer = root->NewAnalyzer();
  analyzer->AddClass("A");
  clsChartObject chart;
  chart.SetPictureObject(std::make_shared<RecordingPicture>());
  const auto line = [&] {
    analyzer->Execute();
    BuildChart(analyzer, chart, KR_CHART_NORMAL, 5, 1, 0, 0);
    return LineOf(ChartObjectInternal::Get(chart), 1);
  };
  EXPECT_EQ(line(), "0,0 100,50");
  analyzer->SetUntimedLegs("auto");
  EXPECT_EQ(line(), "0,0 100,50 100,50 300,150 600,300");
}

TEST(ScatterCharts, FollowTheScales) {
  Fixture f(3);
  f.Ratios(1, 0.9, 0.05, 1.0, 0.9);
  f.Ratios(2, 1.2, 0.11, 1.0, 1.3);
  f.Ratios(3, 0, 0.2, 0.1, 5.0);  // without a cruise speed: no mark, no range
  f.analyzer->Item(2)->SetVesmerX(50);
  f.analyzer->Item(2)->SetVesmerY(-20);
  // 88 to 123 percent at 10 units; 12 percent missed at the bottom, 25 units each.
  EXPECT_EQ(LineOf(f.Build(5), 1) + " " + LineOf(f.Build(5), 2), "20,125 320,275");
  EXPECT_EQ(LineOf(f.Build(5), 3), "");
  f.Ratios(3, 0.5, 0, 0, 0);  // nothing lost: no mark, no range of losses either
  EXPECT_EQ(LineOf(f.Build(5), 1) + " " + LineOf(f.Build(5), 2), "20,125 320,275");
  f.Ratios(3, 0, 0.2, 0.1, 5.0);
  // 88 to 132 percent downwards; 2 * 300 / 44.
  EXPECT_EQ(LineOf(f.Build(6), 1) + " " + LineOf(f.Build(6), 2), "20,14 320,286");
  EXPECT_EQ(ChartRatioToFit(*f.analyzer, f.chart, KR_CHART_VESMER), 7.5F);
  // 2 units across, the origin in the middle; 1.5 down.
  EXPECT_EQ(LineOf(f.Build(7, 10), 2), "400,120");
  for (int i = 1; i <= 3; ++i) f.Ratios(i, 1.0, 0.6, 1, 1);
  EXPECT_EQ(Labels(f.Build(5), true), "0% 1% 2% ");
}

TEST(Mouse, FindsWhatIsNearerThanSixUnits) {
  Fixture f;
  f.Splits(1, {0, 0, 0});
  f.Splits(2, {1000, 1000, 0});  // from (0, 0) to (200, 50), then upright to (200, 150)
  f.Build(0);
  const Rows<float, float, int> cases{{258, 150, 0}, {257.9F, 150, 2}, {252, 205.9F, 2},
                                      {252, 206, 0}, {-40, 51, 2},     {52, 20, 2}};
  for (const auto& [x, y, runner] : cases) EXPECT_EQ(f.chart.MousePointRunnerIndex(x, y), runner);
  f.chart.SetRunnerSetting(2, 0, 0, KR_CHART_FLAG_HIDE);
  EXPECT_EQ(f.chart.MousePointRunnerIndex(252, 150), 0);
  f.analyzer->Item(1)->SetVesmerX(50);
  f.Build(7, 10);
  EXPECT_EQ(f.chart.MousePointRunnerIndex(457.9F, 200), 1);
}

TEST(Drawing, ShowsSettingsNamesAndLegend) {
  Fixture f(20);
  f.Build(0);
  f.chart.DrawChart();
  const auto is_name = [](const Call& call) { return call.text == "Runner"; };
  const auto named = [&] { return std::ranges::count_if(f.picture->calls, is_name); };
  EXPECT_EQ(named(), 20);
  // All texts are inside the picture and none covers another.
  for (const Call& a : f.picture->calls) {
    if (a.width > 0) continue;
    EXPECT_TRUE(Overlap(a.box, {0, 0, 704, 400}) && a.box.Right <= 704 && a.box.Bottom <= 400);
    for (const Call& b : f.picture->calls) {
      const ChartBox box{b.box.Left + 0.01, b.box.Top + 0.01, b.box.Right, b.box.Bottom};
      EXPECT_FALSE(b.width == 0 && &a != &b && Overlap(a.box, box)) << a.text << ", " << b.text;
    }
  }
  f.chart.SetRunnerSetting(3, 0x0000FF, 4, KR_CHART_FLAG_LEGEND);
  f.chart.SetRunnerSetting2(3, 0xFFFF00, 9);
  f.chart.SetRunnerSetting(4, 0, 0, KR_CHART_FLAG_HIDE);
  f.chart.DrawChart();
  EXPECT_EQ(named(), 1);  // the legend only
  std::string order;      // back line, black lines, the runner's own line; three legs each
  for (const Call& call : f.picture->calls) {
    if (call.box.Right > 200) continue;
    if (call.color == 0xFFFF00 && call.width == 9) order += 'b';
    if (call.color == 0x0000FF && call.width == 4) order += 'o';
    if (call.color == 0 && call.width == 1) order += '-';
  }
  EXPECT_EQ(order, "bbb" + std::string(18 * 3UL, '-') + "ooo");
}

std::vector<Call> Drawn(Fixture& f, bool texts) {
  f.chart.DrawChart();
  std::vector<Call> calls = f.picture->calls;
  std::erase_if(calls, [&](const Call& call) { return (call.width == 0) != texts; });
  return calls;
}

// The texts that are drawn as high as this or higher, from top to bottom and left to right.
std::string TextsDownTo(Fixture& f, double bottom) {
  std::vector<Call> calls = Drawn(f, true);
  std::ranges::sort(calls, {}, [](const Call& c) { return std::pair(c.box.Top, c.box.Left); });
  std::string texts;
  for (const Call& call : calls) {
    if (call.box.Bottom <= bottom) texts += call.text + "|";
  }
  return texts;
}

TEST(Titles, AreAboveTheChartAndAtItsAxes) {
  for (const auto& [lang, expected] : Rows<Mode, std::string>{
           {Mode::kEnglishTexts, "A: Split times|Cup|Control|Time since the start (h:mm)|"},
           {Mode::kJapaneseTexts,
            "A: スプリットタイム|Cup|コントロール|"
            "スタートからのタイム（時:分）|"}}) {
    Fixture f(2, lang);
    f.root->EventData()->EventName = "Cup";
    f.chart.Titles = true;
    EXPECT_EQ(f.chart.Width(), 600) << "read when a target is set";
    f.picture->width = 1000;
    f.chart.SetPictureObject(f.picture);
    EXPECT_EQ(f.chart.Width(), 1000 - 152);
    EXPECT_EQ(f.chart.Height(), 400 - 156);
    f.Build(0);
    EXPECT_EQ(TextsDownTo(f, 51), expected);
    const auto course = std::make_shared<clsCourseData>();
    course->SetControlCount(2);
    course->SetControlNum(1, 231);
    f.analyzer->SetCourseData(course);
    EXPECT_EQ(Labels(f.Build(0), true), "1 (231) 2 (0) F S ");
    course->SetControlCount(3);  // of another course
    EXPECT_EQ(Labels(f.Build(0), true), "1 2 F S ");
    const auto& scatter = f.Build(6);
    EXPECT_EQ(std::ranges::count(scatter.texts, "／前巡行", &clsChartChar::Text), 0);
  }
}

TEST(Titles, AreCutToTheWidthOfThePicture) {
  Fixture f(2, Mode::kEnglishTexts);
  f.root->EventData()->EventName = std::string(300, 'e');
  f.analyzer->SetDataSetName(std::string(300, 's'));
  f.chart.Titles = true;
  f.chart.SetPictureObject(f.picture);
  for (int mode = 0; mode < 8; ++mode) {
    f.Build(mode);
    std::vector<Call> titles = Drawn(f, true);
    std::erase_if(titles, [](const Call& call) { return !call.text.ends_with("\u2026"); });
    ASSERT_EQ(titles.size(), 2U) << mode;
    EXPECT_GE(titles[0].box.Left, 0);
    EXPECT_LT(titles[0].box.Right + 10, titles[1].box.Left);
    EXPECT_LE(titles[1].box.Right, 704);
  }
}

TEST(AutoColors, ForTheFirstEightOrForThoseHighlighted) {
  Fixture f(11);
  f.Splits(1, {0, 0, 0});  // who has no line needs no color
  f.chart.AutoColors = true;
  f.Build(0);
  const auto colors = [&] {
    std::map<Color, int> lines;
    for (const Call& call : Drawn(f, false)) {
      if (call.box.Right < 200 && call.box.Bottom <= 350) ++lines[call.color];
    }
    return lines;
  };
  auto lines = colors();
  for (const Color color : kChartColors) EXPECT_EQ(lines[color], 3) << color;
  EXPECT_EQ(lines[0x909090], 2 * 3);
  EXPECT_EQ(lines[0], 0);
  f.chart.SetRunnerSetting(9, kChartColors[0], 3, 0);
  lines = colors();
  EXPECT_EQ(lines[kChartColors[0]], 3);
  EXPECT_EQ(lines[0x909090], 9 * 3);
  f.chart.AutoColors = false;
  EXPECT_EQ(colors()[0], 9 * 3);
}

// The line goes down 300 units and across 120. Its dashes take 10 of every 16 units, through the
// controls.
TEST(Drawing, DashesALineFromLegToLeg) {
  Fixture f(1);
  f.Build(0);
  f.chart.SetRunnerSetting(1, 0xFF, 3, KR_CHART_FLAG_DASH);
  double drawn = 0, whole = 0;
  std::size_t pieces = 0;
  for (const clsChartLine& line : ChartObjectInternal::Get(f.chart).runner_lines) {
    whole += std::hypot(line.X2 - line.X1, line.Y2 - line.Y1);
  }
  for (const Call& call : Drawn(f, false)) {
    if (call.color != 0xFF) continue;
    const double length =
        std::hypot(call.box.Right - call.box.Left, call.box.Bottom - call.box.Top);
    EXPECT_LE(length, 10.01);
    drawn += length;
    ++pieces;
  }
  EXPECT_NEAR(drawn / whole, 10.0 / 16, 0.02);
  EXPECT_LE(pieces, whole / 16 + 3) << "a dash that passes a control is in two pieces";
}

TEST(FitMost, LeavesOutATenthThatWouldTakeHalf) {
  struct Case {
    int runners;
    std::vector<double> slow;  // finishes of the last runners; the others need 600 s
    int width;                 // of the axis in seconds
  };
  for (const auto& [runners, slow, width] :
       std::vector<Case>{{10, {1199}, 1199},          // not quite half
                         {10, {1300}, 600},           //
                         {4, {1300}, 1300},           // a tenth of four is nobody
                         {10, {1300, 1300}, 1300},    // two are more than a tenth
                         {20, {700, 5000}, 700},      // no more lines than necessary
                         {20, {4000, 5000}, 600}}) {  //
    Fixture f(runners);
    for (std::size_t i = 0; i < slow.size(); ++i) {
      f.Splits(runners - static_cast<int>(i), {100, 300, slow[slow.size() - 1 - i]});
    }
    for (const bool fit : {false, true}) {
      f.chart.FitMost = fit;
      const double expected = fit ? width : slow.back();
      EXPECT_NEAR(ChartRatioToFit(*f.analyzer, f.chart, KR_CHART_NORMAL), 590 / (expected * 0.2),
                  0.01)
          << runners << ", " << slow.back();
    }
  }
}

// The last runner's line leaves the chart above the finish.
TEST(FitMost, NamesWhoLeavesAtTheEdge) {
  Fixture f(30);
  f.analyzer->Item(30)->OtherData()->RunnerName = "Lost";
  f.Splits(30, {100, 300, 6000});
  f.chart.FitMost = true;
  f.Build(0, ChartRatioToFit(*f.analyzer, f.chart, KR_CHART_NORMAL));
  std::vector<Call> names = Drawn(f, true);
  std::erase_if(names,
                [](const Call& call) { return call.text.find("Lost") == std::string::npos; });
  ASSERT_EQ(names.size(), 1U);
  EXPECT_EQ(names[0].text, "Lost \u2192");
  EXPECT_NEAR(names[0].box.Right, 52 + 600, 10);
  EXPECT_LT(names[0].box.Bottom, 350);
}

TEST(ClearNames, IdentifyInTwoRowsBeforeTheyAreTurned) {
  const auto names = [](int runners, bool clear) {
    Fixture f(runners);
    for (int i = 1; i <= runners; ++i) {
      f.analyzer->Item(i)->OtherData()->RunnerName =
          (i % 2 == 1 ? "Anna " : "Bert ") + ("Name" + std::to_string((i + 1) / 2));
      f.Splits(i, {100, 300, 600 + 150.0 * i});
    }
    f.chart.ClearNames = clear;
    f.Build(0, ChartRatioToFit(*f.analyzer, f.chart, KR_CHART_NORMAL));
    std::vector<Call> calls = Drawn(f, true);
    std::erase_if(calls, [](const Call& call) { return call.box.Top < 352; });
    return calls;
  };
  const Rows<int, bool, std::string, std::size_t> cases{{4, false, "Anna Name1", 1},
                                                        {8, false, "Anna", 1},  // turned
                                                        {8, true, "Anna Name1", 2},
                                                        {16, true, "Name1 A.", 2},
                                                        {20, true, "Name1 ", 1}};  // turned
  for (const auto& [runners, clear, first, rows] : cases) {
    const std::vector<Call> calls = names(runners, clear);
    std::set<double> tops;
    for (const Call& a : calls) {
      tops.insert(a.box.Top);
      EXPECT_EQ(a.halo > 0, clear);
      for (const Call& b : calls) {
        const ChartBox inner{b.box.Left + 0.01, b.box.Top + 0.01, b.box.Right, b.box.Bottom};
        EXPECT_FALSE(&a != &b && Overlap(a.box, inner)) << a.text << ", " << b.text;
      }
    }
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(calls.front().text, first) << runners;
    EXPECT_EQ(tops.size(), rows) << runners;
  }
}

TEST(ClearNames, AddWhatTellsRunnersApart) {
  std::deque<clsLapData> runners;
  std::vector<const clsLapData*> records;
  const auto add = [&](std::string name, std::string family = "", std::string given = "") {
    clsLapData& runner = runners.emplace_back();
    runner.RunnerName = std::move(name);
    runner.FamilyName = std::move(family);
    runner.GivenName = std::move(given);
  };
  for (const char* name : {"高田　聡", "高田 健一", " 林  勇人", "ﾜﾀﾅﾍﾞ ﾋﾛｼ", "Paul van Novak",
                           "Petra Novak", "NOVAK Zed", "Berger, Tom", "Anna  Lind", "Åsa Lind",
                           "Adam Lind", "Solo", "", "DE GROOT Jan"}) {
    add(name);
  }
  add("ignored", "García López", "Ana");
  for (const clsLapData& runner : runners) records.push_back(&runner);
  std::string names;
  for (const std::string& name : ShortNames(records)) names += name + "|";
  EXPECT_EQ(names,
            "高田 聡|高田 健|林|ﾜﾀﾅﾍﾞ|Novak Paul van|Novak Petra|NOVAK|Berger|Lind Anna|Lind Å.|"
            "Lind Adam|Solo||DE GROOT|García López|");
}

TEST(Drawing, OnAPrintBookIsAThirdOfTheSize) {
  Fixture f(1);
  const auto book = std::make_shared<clsPrintBook>();
  book->Init("none", KR_PAPER_A4, tpotPortrate, 10, 10, 10, 10, 1);
  book->SetVirtualSize(200, 100);
  f.chart.SetPrintBookObject(book);
  EXPECT_EQ(f.chart.Width(), 496);  // 200 * 3 - 104
  f.Build(0);                       // controls at 0, 33.3, 100, 200; x 0, 20, 60, 120
  f.chart.SetRunnerSetting(1, 0xFF, 3, 0);
  f.chart.DrawChart();
  f.chart.DrawChart();
  ASSERT_EQ(book->PageCount(), 2);
  clsPrintBookLine last;
  for (const clsPrintBookLine& line : PrintBookInternal::Pages(*book)[1]) {
    if (line.Color == 0xFF) last = line;
  }
  EXPECT_FLOAT_EQ(last.Left, (52 + 60) / 3.0F);
  EXPECT_FLOAT_EQ(last.Width, (120 - 60) / 3.0F);
  EXPECT_EQ(last.DrawWidth, 6);
}

TEST(Charts, SurviveWhateverTheyAreGiven) {
  clsChartObject without_target;
  without_target.DrawChart();
  for (const float odd : {NAN, HUGE_VALF, -HUGE_VALF, 1e30F, 0.0F}) {
    Fixture f;
    f.Splits(1, {odd, 1e9, 1e300});
    f.Ratios(1, odd, 0.1, odd, odd);
    f.analyzer->Item(1)->SetVesmerX(odd);
    for (std::int32_t mode = -1; mode <= 8; ++mode) {
      f.picture->width = mode % 2 == 0 ? 704 : odd;
      f.chart.SetPictureObject(f.picture);
      f.chart.AutoSize = mode == 2;
      f.chart.Titles = f.chart.AutoColors = f.chart.ClearNames = f.chart.FitMost = odd < 0;
      const bool is_empty = f.Build(mode, odd, odd, odd, odd).frame_lines.empty();
      EXPECT_EQ(is_empty, mode < 0 || mode > 7 || f.chart.Width() <= 0);
      f.analyzer->SelectNone();  // after the build
      f.chart.ClearRunnerSetting();
      f.chart.DrawChart();
      const float ratio =
          ChartRatioToFit(*f.analyzer, f.chart, static_cast<KrChartModeConst>(mode));
      EXPECT_TRUE(ratio >= 0.5F && ratio <= 10'000) << ratio;
      f.analyzer->SelectAll();
    }
  }
}

}  // namespace
}  // namespace keltrun::test
