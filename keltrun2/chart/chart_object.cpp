#include "keltrun2/chart/chart_object.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "keltrun2/base/automation_error.h"
#include "keltrun2/chart/chart_drawing.h"
#include "keltrun2/chart/chart_geometry.h"
#include "keltrun2/chart/chart_object_internal.h"
#include "keltrun2/chart/chart_wrapper.h"

namespace keltrun {
namespace {

using State = ChartObjectInternal::State;

constexpr double kMouseReach = 6;  // runners this far away are no longer found
constexpr float kLargestTarget = 1e6F;
constexpr Color kWhite = 0xFFFFFF;

// What is left of a target's size between the margins; 0 for sizes that no target can have.
float WithoutMargins(float size, float margins) {
  return std::isfinite(size) ? std::min(size, kLargestTarget) - margins : 0;
}

struct AreaSize {
  float width, height;
};

// The drawable area of a target of that size.
AreaSize DrawableArea(const ChartMargins& margins, float width, float height) {
  return {WithoutMargins(width, 2 * margins.X),
          WithoutMargins(height, margins.Top + margins.Bottom)};
}

AreaSize DrawableArea(const ChartMargins& margins, const PictureBox& picture) {
  return DrawableArea(margins, picture.ScaleWidth(), picture.ScaleHeight());
}

void MakeTarget(State& state, std::shared_ptr<PictureBox> picture,
                std::shared_ptr<clsPrintBook> book, const AreaSize& area) {
  state.picture = std::move(picture);
  state.book = std::move(book);
  state.width = area.width;
  state.height = area.height;
}

void NewSettings(State& state, std::int32_t count) {
  state.set_count = count;
  const std::size_t size = static_cast<std::size_t>(count) + 1;
  state.settings.assign(size, {});
  state.back_settings.assign(size, {});
}

// The setting of a runner for reading or writing; null before a set is attached.
template <typename Settings>
auto* SettingOf(const State& state, Settings& settings, std::int32_t runner, const char* member) {
  if (!state.analyzer) return static_cast<decltype(settings.data())>(nullptr);
  CheckIndex(runner, 0, static_cast<std::int32_t>(settings.size()) - 1, member);
  return &settings[static_cast<std::size_t>(runner)];
}

bool IsHidden(const State& state, std::int32_t runner) {
  const auto index = static_cast<std::size_t>(runner);
  return index < state.settings.size() && (state.settings[index].Flag & KR_CHART_FLAG_HIDE) != 0;
}

// The runner of the nearest record, if it is nearer than `best` (a squared distance); otherwise
// `found`.
std::int32_t Nearest(const State& state, const std::vector<clsChartLine>& records, ChartPoint point,
                     double& best, std::int32_t found) {
  for (const clsChartLine& record : records) {
    const double distance = SquaredDistance(point, {record.X1, record.Y1}, {record.X2, record.Y2});
    if (distance < best && !IsHidden(state, record.RunnerIndex)) {
      best = distance;
      found = record.RunnerIndex;
    }
  }
  return found;
}

bool IsInside(const State& state, const clsChartLine& line) {
  const float limit_x = state.width;
  const float limit_y = state.height;
  return line.X1 >= 0 && line.Y1 >= 0 && line.X2 >= 0 && line.Y2 >= 0 && line.X1 <= limit_x &&
         line.Y1 <= limit_y && line.X2 <= limit_x && line.Y2 <= limit_y;
}

void AddInside(const State& state, std::vector<clsChartLine>& records, const clsChartLine& line) {
  if (IsInside(state, line)) records.push_back(line);
}

}  // namespace

clsChartObject::clsChartObject() : state_(std::make_shared<State>()) {}
clsChartObject::~clsChartObject() = default;

float clsChartObject::RatioX() const { return state_->ratio_x; }
float clsChartObject::RatioY() const { return state_->ratio_y; }
float clsChartObject::PositionX() const { return state_->position_x; }
float clsChartObject::PositionY() const { return state_->position_y; }
KrChartModeConst clsChartObject::ChartMode() const { return state_->mode; }
float clsChartObject::Width() const { return state_->width; }
float clsChartObject::Height() const { return state_->height; }
float clsChartObject::WidthOccupied() const { return state_->width_occupied; }
float clsChartObject::HeightOccupied() const { return state_->height_occupied; }

void clsChartObject::ClearRunnerSetting() {
  if (state_->analyzer) NewSettings(*state_, state_->analyzer->Count());
}

void clsChartObject::SetRunnerSetting(std::int32_t RunnerIndex, Color ForeColor,
                                      std::int32_t DrawWidth, std::int32_t Flag) {
  auto* setting =
      SettingOf(*state_, state_->settings, RunnerIndex, "clsChartObject.SetRunnerSetting");
  if (setting != nullptr) *setting = {ForeColor, DrawWidth, Flag};
}

ChartRunnerSetting clsChartObject::GetRunnerSetting(std::int32_t RunnerIndex) const {
  const auto* setting =
      SettingOf(*state_, state_->settings, RunnerIndex, "clsChartObject.GetRunnerSetting");
  return setting != nullptr ? *setting : ChartRunnerSetting{};
}

void clsChartObject::SetRunnerSetting2(std::int32_t RunnerIndex, Color BackLineColor,
                                       std::int32_t BackLineWidth) {
  auto* setting =
      SettingOf(*state_, state_->back_settings, RunnerIndex, "clsChartObject.SetRunnerSetting2");
  if (setting != nullptr) *setting = {BackLineColor, BackLineWidth};
}

ChartRunnerSetting2 clsChartObject::GetRunnerSetting2(std::int32_t RunnerIndex) const {
  const auto* setting =
      SettingOf(*state_, state_->back_settings, RunnerIndex, "clsChartObject.GetRunnerSetting2");
  return setting != nullptr ? *setting : ChartRunnerSetting2{};
}

void clsChartObject::SetPictureObject(std::shared_ptr<PictureBox> PictureObject) {
  CheckObject(PictureObject, "clsChartObject.PictureObject");
  const std::shared_ptr<State> state = state_;  // the picture's host may release the chart
  const bool has_titles = Titles;
  PictureObject->SetScaleMode(PictureBox::kScalePixels);
  PictureObject->SetBackColor(kWhite);
  state->has_titles = has_titles;
  const AreaSize area = DrawableArea(state->Margins(), *PictureObject);
  MakeTarget(*state, std::move(PictureObject), nullptr, area);
}

void clsChartObject::SetPrintBookObject(std::shared_ptr<clsPrintBook> PrintBookObject) {
  CheckObject(PrintBookObject, "clsChartObject.PrintBookObject");
  state_->has_titles = Titles;
  const AreaSize area =
      DrawableArea(state_->Margins(), PrintBookObject->Width() * kChartUnitsPerBookUnit,
                   PrintBookObject->Height() * kChartUnitsPerBookUnit);
  MakeTarget(*state_, nullptr, std::move(PrintBookObject), area);
}

std::int32_t clsChartObject::MousePointRunnerIndex(float X, float Y) const {
  const State& state = *state_;
  const ChartPoint point{std::max(0.0F, std::min(X - state.Margins().X, state.width)),
                         std::max(0.0F, std::min(Y - state.Margins().Top, state.height))};
  double best = kMouseReach * kMouseReach;
  const std::int32_t found = Nearest(state, state.runner_lines, point, best, 0);
  return Nearest(state, state.runner_points, point, best, found);
}

void clsChartObject::DrawChart() {
  state_->auto_colors = AutoColors;
  ChartDrawing(*state_).Draw();
}

ChartObjectInternal::Build::Build(clsChartObject& chart) : state_(Get(chart)) {
  if (state_.is_being_built) {
    throw AutomationError(KR_ERROR_INVALID_CALL,
                          "clsGraphicControl.DrawChart: this chart is being built; its picture "
                          "cannot build it meanwhile");
  }
  state_.is_being_built = true;
}

ChartObjectInternal::Build::~Build() { state_.is_being_built = false; }

void ChartObjectInternal::Initialize(clsChartObject& chart) {
  State& state = Get(chart);
  state.runner_lines.clear();
  state.runner_points.clear();
  state.frame_lines.clear();
  state.texts.clear();
  state.names.clear();
  state.short_names.clear();
  state.leaves.clear();
  state.titles = {};
  state.mode = KR_CHART_NORMAL;
  state.ratio_x = state.ratio_y = 1;
  state.position_x = state.position_y = 0;
  state.width_occupied = state.height_occupied = state.finish = 0;
}

void ChartObjectInternal::StoreView(clsChartObject& chart, KrChartModeConst mode, float ratio_x,
                                    float ratio_y, float position_x, float position_y) {
  State& state = Get(chart);
  state.mode = mode;
  state.ratio_x = ratio_x;
  state.ratio_y = ratio_y;
  state.position_x = position_x;
  state.position_y = position_y;
}

void ChartObjectInternal::AttachAnalyzer(clsChartObject& chart,
                                         std::shared_ptr<clsAnalyzer> analyzer) {
  State& state = Get(chart);
  const bool is_known = state.analyzer && state.set_name == analyzer->DataSetName() &&
                        state.set_count == analyzer->Count();
  state.analyzer = std::move(analyzer);
  if (is_known) return;
  state.set_name = state.analyzer->DataSetName();
  NewSettings(state, state.analyzer->Count());
}

void ChartObjectInternal::WidenPicture(clsChartObject& chart, float width) {
  State& state = Get(chart);
  const std::shared_ptr<PictureBox> picture = state.picture;
  if (!picture) return;
  const float scale = picture->Width() / picture->ScaleWidth();
  if (!std::isfinite(scale) || scale <= 0) return;
  picture->SetWidth(scale * (width + 2 * state.Margins().X));
  const AreaSize area = DrawableArea(state.Margins(), *picture);
  if (state.picture == picture) MakeTarget(state, picture, nullptr, area);
}

void ChartObjectInternal::AddFrameLine(clsChartObject& chart, float X1, float Y1, float X2,
                                       float Y2, Color color, std::int32_t width) {
  State& state = Get(chart);
  AddInside(state, state.frame_lines, {X1, Y1, X2, Y2, 0, color, width});
}

void ChartObjectInternal::AddRunnerLine(clsChartObject& chart, const clsChartLine& line) {
  State& state = Get(chart);
  AddInside(state, state.runner_lines, line);
}

void ChartObjectInternal::AddRunnerPoint(clsChartObject& chart, float X, float Y,
                                         std::int32_t runner, ChartMark mark) {
  State& state = Get(chart);
  AddInside(state, state.runner_points, {X, Y, X, Y, runner, 0, mark});
}

void ChartObjectInternal::AddText(clsChartObject& chart, std::string text, float X, float Y,
                                  std::int32_t align) {
  Get(chart).texts.push_back({std::move(text), X, Y, align});
}

}  // namespace keltrun
