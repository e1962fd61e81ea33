#include "keltrun2/chart/chart_drawing.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "keltrun2/chart/chart_geometry.h"
#include "keltrun2/chart/chart_scales.h"

namespace keltrun {
namespace {

// Up to this many names are all written somewhere.
constexpr std::size_t kFewNames = kMostNamesUnasked;
constexpr std::int32_t kWidestLine = 50;
constexpr Color kColorBits = 0xFFFFFF;
constexpr Color kBlack = 0;
constexpr Color kWhite = 0xFFFFFF;
constexpr Color kLeaderGray = 0xA0A0A0;
constexpr Color kLegendGray = 0xC0C0C0;

constexpr float kMarkSize = 3;     // half the size of a mark, in units
constexpr float kOwnMarkSize = 4;  // of a runner with a color or width of their own
constexpr float kNameGap = 5;      // between a line's end or a mark and the name
constexpr double kNameSpace = 6;   // between two names in a row
constexpr double kTurnedSpace = 1;
constexpr double kFarthestName = 30;  // names below that would be farther off are turned
constexpr double kBelowFrom = -kChartMarginX + 2;
constexpr double kThinnedStretch = 90;
constexpr float kRowLeader = 7;  // height of the lines from the ends to the names below
constexpr float kTurnedLeader = 11;
constexpr int kMostRowsDown = 8;

constexpr float kLegendPadding = 5;
constexpr float kLegendSample = 22;  // length of the piece of line
constexpr float kLegendDistance = 8;

}  // namespace

ChartDrawing::ChartDrawing(const State& state) : state_(state), pen_(state.picture, state.book) {}

void ChartDrawing::Draw() {
  if (!state_.picture && !state_.book) return;
  pen_.BeginDraw();
  ReadLooks();
  PlaceNames();
  DrawFrame();
  DrawBackLines();
  DrawRunners(false);
  DrawRunners(true);
  DrawLabels();
  DrawNames();
  DrawLegend();
  pen_.EndDraw();
}

void ChartDrawing::ReadLooks() {
  const auto is_set = [](const ChartRunnerSetting& setting) { return setting.Flag != 0; };
  const bool names_unasked = std::none_of(state_.settings.begin(), state_.settings.end(), is_set) &&
                             state_.names.size() <= kMostNamesUnasked + 1;
  looks_.resize(state_.names.size());
  // The set may have been changed and its settings cleared since the build.
  const std::size_t known = std::min(looks_.size(), state_.settings.size());
  for (std::size_t runner = 1; runner < looks_.size(); ++runner) {
    Look& look = looks_[runner];
    look.has_name = names_unasked;
    if (runner >= known) continue;
    const ChartRunnerSetting& setting = state_.settings[runner];
    const ChartRunnerSetting2& back = state_.back_settings[runner];
    look.color = setting.ForeColor & kColorBits;
    look.width = std::clamp(setting.DrawWidth, 1, kWidestLine);
    look.back_color = back.BackLineColor & kColorBits;
    look.back_width = std::clamp(back.BackLineWidth, 0, kWidestLine);
    look.is_own = setting.ForeColor != 0 || setting.DrawWidth != 0;
    look.is_hidden = (setting.Flag & KR_CHART_FLAG_HIDE) != 0;
    if ((setting.Flag & KR_CHART_FLAG_NAME) != 0) look.has_name = true;
    look.in_legend = (setting.Flag & KR_CHART_FLAG_LEGEND) != 0 && !look.is_hidden;
  }
}

const ChartDrawing::Look& ChartDrawing::LookOf(std::int32_t runner) const {
  return looks_[static_cast<std::size_t>(runner)];
}

void ChartDrawing::DrawFrame() {
  for (const clsChartLine& line : state_.frame_lines) {
    Line(line.X1, line.Y1, line.X2, line.Y2, line.LineColor, line.Detail);
  }
}

void ChartDrawing::DrawBackLines() {
  for (const clsChartLine& line : state_.runner_lines) {
    const Look& look = LookOf(line.RunnerIndex);
    if (look.back_width == 0 || look.is_hidden) continue;
    Line(line.X1, line.Y1, line.X2, line.Y2, look.back_color, look.back_width);
  }
  for (const clsChartLine& mark : state_.runner_points) {
    const Look& look = LookOf(mark.RunnerIndex);
    if (look.back_width == 0 || look.is_hidden) continue;
    Disc(mark.X1, mark.Y1, kOwnMarkSize + static_cast<float>(look.back_width) / 2, look.back_color);
  }
}

void ChartDrawing::DrawRunners(bool own) {
  for (const clsChartLine& line : state_.runner_lines) {
    const Look& look = LookOf(line.RunnerIndex);
    if (look.is_own != own || look.is_hidden) continue;
    Line(line.X1, line.Y1, line.X2, line.Y2, look.color, look.width);
  }
  for (const clsChartLine& mark : state_.runner_points) {
    const Look& look = LookOf(mark.RunnerIndex);
    if (look.is_own == own && !look.is_hidden) DrawMark(mark, look);
  }
}

void ChartDrawing::DrawMark(const clsChartLine& mark, const Look& look) {
  const float size = look.is_own ? kOwnMarkSize : kMarkSize;
  const float x = mark.X1;
  const float y = mark.Y1;
  if (mark.Detail == kMarkDot) {
    Disc(x, y, size, look.color);
    return;
  }
  Line(x - size, y - size, x + size, y + size, look.color, look.width);
  Line(x - size, y + size, x + size, y - size, look.color, look.width);
}

void ChartDrawing::DrawLabels() {
  const float height = pen_.TextHeight();
  for (const clsChartChar& label : state_.texts) {
    // Names take the place of the time labels below the finish; the labels above the start remain.
    if (names_below_ && label.Y > state_.height) continue;
    const float width = pen_.TextWidth(label.Text);
    const auto start = [&](float at, float size, std::int32_t ends, std::int32_t begins) {
      if ((label.Align & ends) != 0) return at - size;
      return (label.Align & begins) != 0 ? at : at - size / 2;
    };
    const double left = start(label.X, width, kEndsAtX, kBeginsAtX);
    const double top = start(label.Y, height, kEndsAtY, kBeginsAtY);
    Text(label.Text, {left, top, left + width, top + height}, false);
  }
}

void ChartDrawing::DrawNames() {
  for (const PlacedName& name : names_) {
    if (name.has_leader) {
      Line(name.from_x, name.from_y, name.to_x, name.to_y, kLeaderGray, 1);
    }
    Text(name.text, name.box, name.turned);
  }
}

void ChartDrawing::PlaceNames() {
  std::vector<End> below;
  std::vector<End> inside;
  for (const End& end : NamedEnds()) {
    const bool at_bottom = IsLineChart(state_.mode) && end.y >= state_.finish;
    (at_bottom ? below : inside).push_back(end);
  }
  if (!below.empty()) PlaceBelow(std::move(below));
  if (!inside.empty()) PlaceInside(std::move(inside));
}

std::vector<ChartDrawing::End> ChartDrawing::NamedEnds() const {
  std::vector<End> ends;
  for (const auto* records : {&state_.runner_lines, &state_.runner_points}) {
    for (const clsChartLine& record : *records) {
      const std::int32_t runner = record.RunnerIndex;
      if (!LookOf(runner).has_name || LookOf(runner).is_hidden) continue;
      // A runner's last record is the end of the line.
      if (ends.empty() || ends.back().runner != runner) ends.push_back({runner, 0, 0});
      ends.back().x = record.X2;
      ends.back().y = record.Y2;
    }
  }
  return ends;
}

void ChartDrawing::PlaceBelow(std::vector<End> ends) {
  std::stable_sort(ends.begin(), ends.end(), [](const End& a, const End& b) { return a.x < b.x; });
  if (!PlaceInRow(ends)) PlaceTurned(std::move(ends));
  names_below_ = !names_.empty();
}

// Whole names side by side; false when one of them would be far from its line.
bool ChartDrawing::PlaceInRow(const std::vector<End>& ends) {
  std::vector<RowLabel> labels;
  labels.reserve(ends.size());
  for (const End& end : ends) {
    const std::string& name = state_.names[static_cast<std::size_t>(end.runner)];
    labels.push_back({end.x, pen_.TextWidth(name) + kNameSpace});
  }
  if (!SpreadLabels(kBelowFrom, state_.width - kBelowFrom, labels)) return false;
  for (std::size_t i = 0; i < ends.size(); ++i) {
    if (std::fabs(labels[i].Center - ends[i].x) > kFarthestName) return false;
  }
  const double top = state_.height + kRowLeader + 1;
  const double height = pen_.TextHeight();
  for (std::size_t i = 0; i < ends.size(); ++i) {
    const double half = (labels[i].Width - kNameSpace) / 2;
    const double center = labels[i].Center;
    names_.push_back({.text = state_.names[static_cast<std::size_t>(ends[i].runner)],
                      .box = {center - half, top, center + half, top + height},
                      .has_leader = true,
                      .from_x = ends[i].x,
                      .from_y = ends[i].y,
                      .to_x = static_cast<float>(center),
                      .to_y = state_.height + kRowLeader});
  }
  return true;
}

// Short names turned by 90 degrees. When many lines end close to each other, the names that come
// first are kept, so that no name is far from its line.
void ChartDrawing::PlaceTurned(std::vector<End> ends) {
  const double pitch = pen_.TextHeight() + kTurnedSpace;
  const double room = state_.width - 2 * kBelowFrom;
  if (ends.size() > kFewNames || pitch * static_cast<double>(ends.size()) > room) {
    ThinOut(pitch, ends);
  }
  std::vector<RowLabel> labels;
  labels.reserve(ends.size());
  for (const End& end : ends) labels.push_back({end.x, pitch});
  if (!SpreadLabels(kBelowFrom, state_.width - kBelowFrom, labels)) return;
  const double top = state_.height + kTurnedLeader + 1;
  const double length = kChartMarginY - kTurnedLeader - 1;
  for (std::size_t i = 0; i < ends.size(); ++i) {
    const std::string_view text =
        CutToWidth(pen_, FirstWord(state_.names[static_cast<std::size_t>(ends[i].runner)]), length);
    const double half = (pitch - kTurnedSpace) / 2;
    const double center = labels[i].Center;
    names_.push_back({.text = text,
                      .box = {center - half, top, center + half, top + length},
                      .turned = true,
                      .has_leader = true,
                      .from_x = ends[i].x,
                      .from_y = ends[i].y,
                      .to_x = static_cast<float>(center),
                      .to_y = state_.height + kTurnedLeader});
  }
}

// Keeps as many ends in each stretch of the edge as it has room for names at that pitch.
void ChartDrawing::ThinOut(double pitch, std::vector<End>& ends) const {
  const auto by_rank = [&](const End& a, const End& b) { return ComesFirst(a, b); };
  const auto by_place = [](const End& a, const End& b) { return a.x < b.x; };
  const auto most = static_cast<int>(kThinnedStretch / pitch);
  std::map<int, int> kept;
  std::sort(ends.begin(), ends.end(), by_rank);
  std::erase_if(ends, [&](const End& end) {
    return ++kept[static_cast<int>(end.x / kThinnedStretch)] > most;
  });
  std::stable_sort(ends.begin(), ends.end(), by_place);
}

// Places names beside marks and beside lines that end on the chart, where they cover neither names
// nor runners. When there are only a few, and for runners with a look of their own, they may also
// cover runners.
void ChartDrawing::PlaceInside(std::vector<End> ends) {
  TakenSpace names;
  const TakenSpace runners = SpaceOfRunners(ends);
  const bool are_few = ends.size() <= kFewNames;
  std::sort(ends.begin(), ends.end(), [&](const End& a, const End& b) { return ComesFirst(a, b); });
  for (const End& end : ends) {
    const bool has_to_be = are_few || LookOf(end.runner).is_own;
    const int rows_down = has_to_be ? kMostRowsDown : 1;
    if (PlaceBeside(end, rows_down, names, &runners) || !has_to_be) continue;
    PlaceBeside(end, rows_down, names, nullptr);
  }
}

// Runners with a color or width of their own, then the others, in the order of the set.
bool ChartDrawing::ComesFirst(const End& a, const End& b) const {
  const bool a_is_own = LookOf(a.runner).is_own;
  return a_is_own != LookOf(b.runner).is_own ? a_is_own : a.runner < b.runner;
}

// The space that marks and lines take up at the heights of the names.
TakenSpace ChartDrawing::SpaceOfRunners(const std::vector<End>& ends) const {
  const auto [highest, lowest] = std::minmax_element(
      ends.begin(), ends.end(), [](const End& a, const End& b) { return a.y < b.y; });
  const float reach = pen_.TextHeight() * (kMostRowsDown + 1);
  TakenSpace space;
  for (const clsChartLine& line : state_.runner_lines) {
    const auto [top, bottom] = std::minmax(line.Y1, line.Y2);
    if (LookOf(line.RunnerIndex).is_hidden || bottom < highest->y - reach ||
        top > lowest->y + reach) {
      continue;
    }
    space.TakeLine({line.X1, line.Y1}, {line.X2, line.Y2});
  }
  for (const clsChartLine& mark : state_.runner_points) {
    if (LookOf(mark.RunnerIndex).is_hidden) continue;
    space.Take(
        {mark.X1 - kMarkSize, mark.Y1 - kMarkSize, mark.X1 + kMarkSize, mark.Y1 + kMarkSize});
  }
  return space;
}

// `runners` is the space not to be covered, or null.
bool ChartDrawing::PlaceBeside(const End& end, int rows_down, TakenSpace& names,
                               const TakenSpace* runners) {
  const std::string& text = state_.names[static_cast<std::size_t>(end.runner)];
  const double width = pen_.TextWidth(text);
  const double height = pen_.TextHeight();
  // At the height of the end, then a row up, then rows down; right before left.
  for (int place = -1; place <= rows_down; ++place) {
    const int row = place <= 0 ? -(place + 1) : place;
    for (const bool to_right : {true, false}) {
      const double left = to_right ? end.x + kNameGap : end.x - kNameGap - width;
      const double top = end.y - height / 2 + row * height;
      const ChartBox box{left, top, left + width, top + height};
      if (box.Left < 0 || box.Right > state_.width || box.Top < -height / 2 ||
          box.Bottom > state_.height + height / 2) {
        continue;
      }
      if (!names.IsFree(box) || (runners != nullptr && !runners->IsFree(box))) continue;
      names.Take(box);
      names_.push_back({.text = text,
                        .box = box,
                        .has_leader = std::abs(row) > 1,
                        .from_x = end.x,
                        .from_y = end.y,
                        .to_x = static_cast<float>(to_right ? box.Left : box.Right),
                        .to_y = static_cast<float>((box.Top + box.Bottom) / 2)});
      return true;
    }
  }
  return false;
}

void ChartDrawing::DrawLegend() {
  const float row = pen_.TextHeight() + 2;
  const auto room = static_cast<std::size_t>(
      std::max(0.0F, (state_.height - 2 * kLegendDistance - 2 * kLegendPadding) / row));
  std::vector<std::size_t> runners;
  float widest = 0;
  for (std::size_t runner = 1; runner < looks_.size() && runners.size() < room; ++runner) {
    if (!looks_[runner].in_legend) continue;
    runners.push_back(runner);
    widest = std::max(widest, pen_.TextWidth(state_.names[runner]));
  }
  if (runners.empty()) return;
  DrawLegendBox(runners, widest, row);
}

void ChartDrawing::DrawLegendBox(const std::vector<std::size_t>& runners, float widest, float row) {
  const float text_left = 2 * kLegendPadding + kLegendSample;
  const ChartBox box = LegendBox(text_left + widest + kLegendPadding,
                                 row * static_cast<float>(runners.size()) + 2 * kLegendPadding);
  const auto left = static_cast<float>(box.Left);
  auto top = static_cast<float>(box.Top);
  pen_.DrawWidth = 1;
  pen_.ForeColor = kLegendGray;
  pen_.FillColor = kWhite;
  pen_.FillStyle = clsChartWrapper::kSolid;
  pen_.DrawBox(left + kChartMarginX, top + kChartMarginY,
               static_cast<float>(box.Right) + kChartMarginX,
               static_cast<float>(box.Bottom) + kChartMarginY);
  top += kLegendPadding;
  for (const std::size_t runner : runners) {
    DrawLegendSample(looks_[runner], left + kLegendPadding, top + row / 2, row);
    const double text_x = left + text_left;
    Text(state_.names[runner], {text_x, top + 1.0, text_x + widest, top + row}, false);
    top += row;
  }
}

void ChartDrawing::DrawLegendSample(const Look& look, float x, float y, float row) {
  const auto most = static_cast<std::int32_t>(row) - 2;
  if (look.back_width > 0) {
    Line(x, y, x + kLegendSample, y, look.back_color, std::min(look.back_width, most));
  }
  Line(x, y, x + kLegendSample, y, look.color, std::min(look.width, most));
}

// The corner of the drawable area in which a box of that size covers the least.
ChartBox ChartDrawing::LegendBox(float width, float height) const {
  const double right = std::max(kLegendDistance, state_.width - kLegendDistance - width);
  const double bottom = std::max(kLegendDistance, state_.height - kLegendDistance - height);
  const ChartPoint corners[] = {{right, kLegendDistance},
                                {kLegendDistance, bottom},
                                {right, bottom},
                                {kLegendDistance, kLegendDistance}};
  ChartBox best;
  std::size_t least = 0;
  for (const ChartPoint& corner : corners) {
    const ChartBox box{corner.X, corner.Y, corner.X + width, corner.Y + height};
    std::size_t covered = 0;
    for (const auto* records : {&state_.runner_lines, &state_.runner_points}) {
      for (const clsChartLine& record : *records) {
        ChartPoint from{record.X1, record.Y1};
        ChartPoint to{record.X2, record.Y2};
        if (CutToBox(box, from, to)) ++covered;
      }
    }
    for (const PlacedName& name : names_) {
      if (Overlap(box, name.box)) ++covered;
    }
    if (&corner == corners || covered < least) {
      least = covered;
      best = box;
    }
  }
  return best;
}

void ChartDrawing::Line(float x1, float y1, float x2, float y2, Color color, std::int32_t width) {
  pen_.ForeColor = color;
  pen_.DrawWidth = width;
  pen_.DrawLine(x1 + kChartMarginX, y1 + kChartMarginY, x2 + kChartMarginX, y2 + kChartMarginY);
}

void ChartDrawing::Disc(float x, float y, float radius, Color color) {
  pen_.FillColor = color;
  pen_.FillStyle = clsChartWrapper::kSolid;
  pen_.DrawCircle(x + kChartMarginX, y + kChartMarginY, radius);
}

void ChartDrawing::Text(std::string_view text, const ChartBox& box, bool turned) {
  pen_.ForeColor = kBlack;
  pen_.Turned = turned;
  // A text is turned about its upper left corner and then extends to the left of it.
  pen_.CurrentX = static_cast<float>(turned ? box.Right : box.Left) + kChartMarginX;
  pen_.CurrentY = static_cast<float>(box.Top) + kChartMarginY;
  pen_.PrintText(text);
}

}  // namespace keltrun
