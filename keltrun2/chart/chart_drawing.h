// Draws a chart's records on its target.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/chart/chart_object_internal.h"
#include "keltrun2/chart/chart_wrapper.h"
#include "keltrun2/chart/name_placement.h"

namespace keltrun {

/// One drawing of a chart, with the settings of the runners as they are now.
class ChartDrawing {
 public:
  using State = ChartObjectInternal::State;
  explicit ChartDrawing(const State& state);

  void Draw();

 private:
  // How a runner is drawn.
  struct Look {
    Color color = 0;
    std::int32_t width = 1;
    Color back_color = 0;
    std::int32_t back_width = 0;  // 0 is none
    bool is_own = false;          // has a color or a width of its own
    bool is_hidden = false, has_name = false, in_legend = false;
    bool is_dashed = false;
    bool leaves = false;  // goes beyond the range of the time axis
  };
  // The end of a runner's line, or a runner's mark.
  struct End {
    std::int32_t runner;
    float x, y;
  };
  struct PlacedName {
    std::string text;
    std::int32_t runner = 0;
    ChartBox box;
    bool turned = false;
    bool has_leader = false;
    float from_x = 0, from_y = 0, to_x = 0, to_y = 0;  // of the leader
    float drop = 0;                                    // how far the leader then goes straight down
  };
  // A dashed line while it is drawn: where it ended and how much of it was drawn.
  struct Dashing {
    float x = 0, y = 0;
    double length = 0;
  };

  void ReadLooks();
  void ChooseColors();
  const Look& LookOf(std::int32_t runner) const;
  bool HasClearNames() const { return !state_.short_names.empty(); }

  void DrawFrame();
  void DrawBackLines();
  void DrawRunners(bool own);
  void DrawDashes(const clsChartLine& line, const Look& look, Dashing& dashing);
  void DrawMark(const clsChartLine& mark, const Look& look);
  void DrawLabels();
  void DrawTitles();
  void DrawTitleLine();
  void DrawNames();

  void PlaceNames();
  std::vector<End> NamedEnds() const;
  void PlaceBelow(std::vector<End> ends);
  bool PlaceInRows(const std::vector<End>& ends, const std::vector<std::string>& names, int rows);
  void PlaceTurned(std::vector<End> ends);
  void ThinOut(double pitch, std::vector<End>& ends) const;
  void PlaceInside(std::vector<End> ends);
  bool ComesFirst(const End& a, const End& b) const;
  TakenSpace SpaceOfRunners(const std::vector<End>& ends) const;
  std::vector<std::string> TextsBeside(const End& end) const;
  bool PlaceBeside(const End& end, int rows_down, TakenSpace& names, const TakenSpace* runners);
  bool PlaceBeside(const End& end, const std::string& text, int rows_down, TakenSpace& names,
                   const TakenSpace* runners);

  void DrawLegend();
  void DrawLegendBox(const std::vector<std::size_t>& runners, float widest, float row);
  void DrawLegendSample(const Look& look, float x, float y, float row);
  ChartBox LegendBox(float width, float height) const;

  void Line(float x1, float y1, float x2, float y2, Color color, std::int32_t width);
  void Disc(float x, float y, float radius, Color color);
  void Text(std::string_view text, const ChartBox& box, bool turned, Color color = 0);
  std::string Shortened(const std::string& text, double width) const;

  const State state_;  // a copy: the host of the picture may rebuild the chart in the meantime
  clsChartWrapper pen_;
  std::vector<Look> looks_;  // from index 1
  std::vector<PlacedName> names_;
  bool names_below_ = false;  // the lower margin is full of names
};

}  // namespace keltrun
