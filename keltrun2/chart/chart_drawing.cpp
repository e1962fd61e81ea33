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
constexpr double kBelowEdge = 2;      // between the names below and the edge of the target
constexpr double kThinnedStretch = 90;
constexpr float kRowLeader = 7;  // height of the lines from the ends to the names below
constexpr float kTurnedLeader = 11;
constexpr int kMostRowsDown = 8;
constexpr double kLeaderSpace = 4;  // kept free for a leader between the names of the first row
constexpr float kHalo = 2;

// With automatic colors.
constexpr Color kOtherGray = 0x909090;
constexpr Color kOtherName = 0x606060;
constexpr std::int32_t kChosenWidth = 2;

constexpr double kDash = 10, kGap = 6;  // of a dashed line

constexpr float kTitleEdge = 8;       // between a title and the edge of the target
constexpr float kTitleRatio = 1.4F;   // size of the letters, compared with other texts
constexpr float kAxisTitleAt = 26;    // between the titles of the axes and the drawable area
constexpr double kTitleSpace = 20;    // smallest space between two titles of a line
constexpr double kLeastEvent = 0.25;  // of the line, kept for the event when the title is long

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
  if (state_.has_titles) DrawTitles();
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
    look.leaves = runner < state_.leaves.size() && state_.leaves[runner];
    look.has_name = names_unasked || look.leaves;
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
    look.is_dashed = (setting.Flag & KR_CHART_FLAG_DASH) != 0;
  }
  if (state_.auto_colors) ChooseColors();
}

void ChartDrawing::ChooseColors() {
  const bool highlights =
      std::any_of(looks_.begin(), looks_.end(), [](const Look& look) { return look.is_own; });
  std::vector<bool> is_drawn(looks_.size());
  for (const auto* records : {&state_.runner_lines, &state_.runner_points}) {
    for (const clsChartLine& record : *records) {
      is_drawn[static_cast<std::size_t>(record.RunnerIndex)] = true;
    }
  }
  std::size_t used = 0;
  for (std::size_t runner = 1; runner < looks_.size(); ++runner) {
    Look& look = looks_[runner];
    if (look.is_own || look.is_hidden || !is_drawn[runner]) continue;
    look.color = kOtherGray;
    if (highlights || used == kChartColors.size()) continue;
    look.color = kChartColors[used++];
    look.width = kChosenWidth;
    look.is_own = true;
    look.in_legend |= !look.has_name;
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
  Dashing dashing;
  std::int32_t dashed = 0;
  for (const clsChartLine& line : state_.runner_lines) {
    const Look& look = LookOf(line.RunnerIndex);
    if (look.is_own != own || look.is_hidden) continue;
    if (!look.is_dashed) {
      Line(line.X1, line.Y1, line.X2, line.Y2, look.color, look.width);
      continue;
    }
    if (std::exchange(dashed, line.RunnerIndex) != line.RunnerIndex) dashing = {};
    DrawDashes(line, look, dashing);
  }
  for (const clsChartLine& mark : state_.runner_points) {
    const Look& look = LookOf(mark.RunnerIndex);
    if (look.is_own == own && !look.is_hidden) DrawMark(mark, look);
  }
}

// The dashes go on from leg to leg. A piece that does not, such as a dash over a gap, begins with
// one.
void ChartDrawing::DrawDashes(const clsChartLine& line, const Look& look, Dashing& dashing) {
  if (dashing.x != line.X1 || dashing.y != line.Y1) dashing.length = 0;
  const double length = std::hypot(line.X2 - line.X1, line.Y2 - line.Y1);
  const double period = kDash + kGap;
  const auto at = [&](double along) {
    const double part = length > 0 ? along / length : 0;
    return ChartPoint{std::lerp(double{line.X1}, double{line.X2}, part),
                      std::lerp(double{line.Y1}, double{line.Y2}, part)};
  };
  const double first = -std::fmod(dashing.length, period);
  const auto dashes = static_cast<int>(std::ceil((length - first) / period));
  for (int i = 0; i < dashes; ++i) {
    const double along = first + i * period;
    if (along + kDash <= 0) continue;
    const ChartPoint from = at(std::max(along, 0.0));
    const ChartPoint to = at(std::min(along + kDash, length));
    Line(static_cast<float>(from.X), static_cast<float>(from.Y), static_cast<float>(to.X),
         static_cast<float>(to.Y), look.color, look.width);
  }
  dashing = {line.X2, line.Y2, dashing.length + length};
}

// A dashed mark stands upright, or is open.
void ChartDrawing::DrawMark(const clsChartLine& mark, const Look& look) {
  const float size = look.is_own ? kOwnMarkSize : kMarkSize;
  const float x = mark.X1;
  const float y = mark.Y1;
  if (mark.Detail == kMarkDot) {
    Disc(x, y, size, look.color);
    if (look.is_dashed) Disc(x, y, size / 2, kWhite);
    return;
  }
  if (look.is_dashed) {
    Line(x - size, y, x + size, y, look.color, look.width);
    Line(x, y - size, x, y + size, look.color, look.width);
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
    if (name.drop > 0) {
      Line(name.to_x, name.to_y, name.to_x, name.to_y + name.drop, kLeaderGray, 1);
    }
    const Look& look = LookOf(name.runner);
    const Color color = look.is_own ? look.color : kOtherName;
    pen_.Halo = HasClearNames() ? kHalo : 0;
    Text(name.text, name.box, name.turned, state_.auto_colors ? color : kBlack);
    pen_.Halo = 0;
  }
}

void ChartDrawing::DrawTitles() {
  DrawTitleLine();
  const ChartTitles& titles = state_.titles;
  const double left = kTitleEdge - state_.Margins().X;
  const double top = -kAxisTitleAt - pen_.TextHeight();
  const double right = state_.width - left;
  const auto draw = [&](const std::string& title, double from) {
    const std::string text = Shortened(title, right - from);
    if (text.empty()) return from;
    const double end = from + pen_.TextWidth(text);
    Text(text, {from, top, end, top + pen_.TextHeight()}, false);
    return end;
  };
  const double free = draw(titles.AxisY, left) + kTitleSpace;
  const double centered = (state_.width - pen_.TextWidth(titles.AxisX)) / 2;
  draw(titles.AxisX, std::max(free, centered));
}

// The set and the mode at the left, the event at the right.
void ChartDrawing::DrawTitleLine() {
  const ChartTitles& titles = state_.titles;
  const double left = kTitleEdge - state_.Margins().X;
  const double right = state_.width - left;
  const double top = kTitleEdge - state_.Margins().Top;
  pen_.Bold = true;
  pen_.TextRatio = kTitleRatio;
  const double event_room = titles.Event.empty() ? 0 : (right - left) * kLeastEvent + kTitleSpace;
  const std::string set = Shortened(titles.Set, right - left - event_room);
  const double end = left + pen_.TextWidth(set);
  const double height = pen_.TextHeight();
  if (!set.empty()) Text(set, {left, top, end, top + height}, false);
  pen_.Bold = false;
  pen_.TextRatio = 1;
  const std::string event = Shortened(titles.Event, right - end - kTitleSpace);
  const double event_top = top + (height - pen_.TextHeight()) / 2;
  if (event.empty()) return;
  Text(event, {right - pen_.TextWidth(event), event_top, right, event_top + pen_.TextHeight()},
       false);
}

// The text, cut and with an ellipsis if it is wider than that; "" if nothing of it fits.
std::string ChartDrawing::Shortened(const std::string& text, double width) const {
  constexpr std::string_view kEllipsis = "\u2026";
  if (pen_.TextWidth(text) <= width) return text;
  const std::string_view cut = CutToWidth(pen_, text, width - pen_.TextWidth(kEllipsis));
  return cut.empty() ? "" : std::string(cut).append(kEllipsis);
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
  const bool placed = PlaceInRows(ends, state_.names, 1) ||
                      (HasClearNames() && (PlaceInRows(ends, state_.names, 2) ||
                                           PlaceInRows(ends, state_.short_names, 1) ||
                                           PlaceInRows(ends, state_.short_names, 2)));
  if (!placed) PlaceTurned(std::move(ends));
  names_below_ = !names_.empty();
}

// Names side by side, in one row or in turn in two; false when one of them would be far from its
// line. The leaders of the second row pass between the names of the first one.
bool ChartDrawing::PlaceInRows(const std::vector<End>& ends, const std::vector<std::string>& names,
                               int rows) {
  const double edge = state_.Margins().X - kBelowEdge;
  const auto name_of = [&](std::size_t i) -> const std::string& {
    return names[static_cast<std::size_t>(ends[i].runner)];
  };
  const auto is_lower = [&](std::size_t i) { return rows == 2 && i % 2 == 1; };
  const auto spread = [&](std::vector<RowLabel>& labels) {
    return SpreadLabels(-edge, state_.width + edge, labels);
  };
  std::vector<RowLabel> upper, lower;
  for (std::size_t i = 0; i < ends.size(); ++i) {
    const RowLabel label{ends[i].x, pen_.TextWidth(name_of(i)) + kNameSpace};
    upper.push_back(is_lower(i) ? RowLabel{ends[i].x, kLeaderSpace} : label);
    if (is_lower(i)) lower.push_back(label);
  }
  if (!spread(upper) || !spread(lower)) return false;
  const double height = pen_.TextHeight();
  std::vector<PlacedName> placed;
  for (std::size_t i = 0; i < ends.size(); ++i) {
    const RowLabel& label = is_lower(i) ? lower[i / 2] : upper[i];
    if (std::fabs(label.Center - ends[i].x) > kFarthestName) return false;
    const double top = state_.height + kRowLeader + 1 + (is_lower(i) ? height : 0);
    const double half = (label.Width - kNameSpace) / 2;
    const double slot = upper[i].Center;
    // A leader between names of the first row must also meet its own name.
    if (std::fabs(slot - ends[i].x) > kFarthestName) return false;
    if (is_lower(i) && std::fabs(slot - label.Center) > half) return false;
    placed.push_back({.text = name_of(i),
                      .runner = ends[i].runner,
                      .box = {label.Center - half, top, label.Center + half, top + height},
                      .has_leader = true,
                      .from_x = ends[i].x,
                      .from_y = ends[i].y,
                      .to_x = static_cast<float>(slot),
                      .to_y = state_.height + kRowLeader,
                      .drop = static_cast<float>(is_lower(i) ? height : 0)});
  }
  names_.insert(names_.end(), placed.begin(), placed.end());
  return true;
}

// Short names turned by 90 degrees. When many lines end close to each other, the names that come
// first are kept, so that no name is far from its line.
void ChartDrawing::PlaceTurned(std::vector<End> ends) {
  const double pitch = pen_.TextHeight() + kTurnedSpace;
  const double edge = state_.Margins().X - kBelowEdge;
  const double room = state_.width + 2 * edge;
  if (ends.size() > kFewNames || pitch * static_cast<double>(ends.size()) > room) {
    ThinOut(pitch, ends);
  }
  std::vector<RowLabel> labels;
  labels.reserve(ends.size());
  for (const End& end : ends) labels.push_back({end.x, pitch});
  if (!SpreadLabels(-edge, state_.width + edge, labels)) return;
  const double top = state_.height + kTurnedLeader + 1;
  const double length = state_.Margins().Bottom - kTurnedLeader - 1;
  for (std::size_t i = 0; i < ends.size(); ++i) {
    const auto runner = static_cast<std::size_t>(ends[i].runner);
    const std::string_view name =
        HasClearNames() ? state_.short_names[runner] : FirstWord(state_.names[runner]);
    const double half = (pitch - kTurnedSpace) / 2;
    const double center = labels[i].Center;
    names_.push_back({.text = std::string(CutToWidth(pen_, name, length)),
                      .runner = ends[i].runner,
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
    const bool has_to_be = are_few || LookOf(end.runner).is_own || LookOf(end.runner).leaves;
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

// What may be written at the end of a line or at a mark, the best text first. An arrow shows that
// the line goes on beyond the edge.
std::vector<std::string> ChartDrawing::TextsBeside(const End& end) const {
  const auto runner = static_cast<std::size_t>(end.runner);
  std::vector<std::string> texts{state_.names[runner]};
  if (HasClearNames()) texts.push_back(state_.short_names[runner]);
  const bool is_at_edge = end.x <= 0 || end.x >= state_.width;
  if (!LookOf(end.runner).leaves || !is_at_edge) return texts;
  for (std::string& text : texts) {
    end.x > 0 ? text.append(" \u2192") : text.insert(0, "\u2190 ");
  }
  return texts;
}

// `runners` is the space not to be covered, or null.
bool ChartDrawing::PlaceBeside(const End& end, int rows_down, TakenSpace& names,
                               const TakenSpace* runners) {
  const std::vector<std::string> texts = TextsBeside(end);
  return std::any_of(texts.begin(), texts.end(), [&](const std::string& text) {
    return PlaceBeside(end, text, rows_down, names, runners);
  });
}

bool ChartDrawing::PlaceBeside(const End& end, const std::string& text, int rows_down,
                               TakenSpace& names, const TakenSpace* runners) {
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
                        .runner = end.runner,
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
  pen_.DrawBox(left + state_.Margins().X, top + state_.Margins().Top,
               static_cast<float>(box.Right) + state_.Margins().X,
               static_cast<float>(box.Bottom) + state_.Margins().Top);
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
  Look sample = look;
  sample.width = std::min(look.width, most);
  const clsChartLine line{x, y, x + kLegendSample, y, 0, 0, 0};
  Dashing dashing;
  if (look.is_dashed) {
    DrawDashes(line, sample, dashing);
  } else {
    Line(line.X1, line.Y1, line.X2, line.Y2, sample.color, sample.width);
  }
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
  pen_.DrawLine(x1 + state_.Margins().X, y1 + state_.Margins().Top, x2 + state_.Margins().X,
                y2 + state_.Margins().Top);
}

void ChartDrawing::Disc(float x, float y, float radius, Color color) {
  pen_.FillColor = color;
  pen_.FillStyle = clsChartWrapper::kSolid;
  pen_.DrawCircle(x + state_.Margins().X, y + state_.Margins().Top, radius);
}

void ChartDrawing::Text(std::string_view text, const ChartBox& box, bool turned, Color color) {
  pen_.ForeColor = color;
  pen_.Turned = turned;
  // A text is turned about its upper left corner and then extends to the left of it.
  pen_.CurrentX = static_cast<float>(turned ? box.Right : box.Left) + state_.Margins().X;
  pen_.CurrentY = static_cast<float>(box.Top) + state_.Margins().Top;
  pen_.PrintText(text);
}

}  // namespace keltrun
