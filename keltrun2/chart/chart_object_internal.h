// The records of a chart, and what builds and draws them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "keltrun2/chart/chart_object.h"

namespace keltrun {

/// Space around the drawable area, in units of the chart.
struct ChartMargins {
  float X, Top, Bottom;  // X at the left and at the right
};
inline constexpr ChartMargins kPlainMargins{52, 50, 50};
inline constexpr ChartMargins kTitledMargins{76, 76, 80};

/// A line or mark, in units of the chart from the upper left corner of the drawable area. A mark is
/// a line of length 0.
struct clsChartLine {
  float X1 = 0, Y1 = 0, X2 = 0, Y2 = 0;
  std::int32_t RunnerIndex = 0;  // position in the selected set, 0 for the frame
  Color LineColor = 0;           // of the frame; a runner's is set when it is drawn
  std::int32_t Detail = 0;       // frame: width; runner's line: leg; mark: a ChartMark
};
static_assert(sizeof(clsChartLine) == 28, "seven four-byte fields");

enum ChartMark : std::int32_t { kMarkCross = 0, kMarkDot = 1 };

/// Where a text is placed relative to its point; with neither flag of a pair it is centered there.
enum ChartAlign : std::int32_t {
  kEndsAtX = 1,    // left of the point
  kBeginsAtX = 2,  // right of it
  kEndsAtY = 4,    // above it
  kBeginsAtY = 8,  // below it
};

/// A text; its point may lie in the margins.
struct clsChartChar {
  std::string Text;
  float X = 0, Y = 0;
  std::int32_t Align = 0;  // of ChartAlign
};

/// The titles of a chart; "" for none.
struct ChartTitles {
  std::string Set, Event, AxisX, AxisY;
};

struct clsChartObject::State {
  std::shared_ptr<PictureBox> picture;  // at most one of the two targets is set
  std::shared_ptr<clsPrintBook> book;
  float width = 0, height = 0;
  bool has_titles = false;
  const ChartMargins& Margins() const { return has_titles ? kTitledMargins : kPlainMargins; }

  std::shared_ptr<clsAnalyzer> analyzer;
  std::string set_name;  // of the analyzer when it was attached, and its size
  std::int32_t set_count = 0;
  std::vector<ChartRunnerSetting> settings;  // from index 0 to set_count
  std::vector<ChartRunnerSetting2> back_settings;

  // Both in ascending order of the runner index, a runner's lines in the order of the legs.
  std::vector<clsChartLine> runner_lines, runner_points;
  std::vector<clsChartLine> frame_lines;
  std::vector<clsChartChar> texts;
  // Names as they were at the build, from index 1: the set may change before the chart is drawn.
  std::vector<std::string> names;
  std::vector<std::string> short_names;  // with ClearNames, otherwise empty
  std::vector<bool>
      leaves;  // from index 1, whether the line goes beyond the range of the time axis
  ChartTitles titles;
  bool auto_colors = false;  // of the drawing

  KrChartModeConst mode = KR_CHART_NORMAL;
  float ratio_x = 1, ratio_y = 1, position_x = 0, position_y = 0;
  float width_occupied = 0, height_occupied = 0;
  float finish = 0;  // where a line chart has its finish, at most at the lower edge
  bool is_being_built = false;
};

/// What the chart builder and the drawing may do with a chart and a host may not.
class ChartObjectInternal {
 public:
  using State = clsChartObject::State;
  static State& Get(clsChartObject& chart) { return *chart.state_; }
  static const State& Get(const clsChartObject& chart) { return *chart.state_; }

  /// Held while a chart is built. In the meantime the host's picture may call anything except
  /// another build of the same chart, which raises invalid procedure call (5).
  class Build {
   public:
    explicit Build(clsChartObject& chart);
    ~Build();
    Build(const Build&) = delete;
    Build& operator=(const Build&) = delete;

   private:
    State& state_;
  };

  /// Empties the records; mode 0, ratios 1, positions 0.
  static void Initialize(clsChartObject& chart);
  static void StoreView(clsChartObject& chart, KrChartModeConst mode, float ratio_x, float ratio_y,
                        float position_x, float position_y);
  /// Keeps the runner settings when the set has the name and size of the previous one.
  static void AttachAnalyzer(clsChartObject& chart, std::shared_ptr<clsAnalyzer> analyzer);
  /// Gives the drawable area of a picture that width; a print book is not resized.
  static void WidenPicture(clsChartObject& chart, float width);

  /// Lines and marks that lie outside the drawable area, wholly or in part, are dropped.
  static void AddFrameLine(clsChartObject& chart, float X1, float Y1, float X2, float Y2,
                           Color color, std::int32_t width = 1);
  static void AddRunnerLine(clsChartObject& chart, const clsChartLine& line);
  static void AddRunnerPoint(clsChartObject& chart, float X, float Y, std::int32_t runner,
                             ChartMark mark);
  static void AddText(clsChartObject& chart, std::string text, float X, float Y,
                      std::int32_t align);
};

}  // namespace keltrun
