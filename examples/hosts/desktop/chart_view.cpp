#include "chart_view.h"

#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QToolTip>
#include <QWheelEvent>
#include <array>
#include <cmath>

namespace {

constexpr int kScrollSteps = 1000;
constexpr double kWheelZoom = 1.25;
constexpr double kWheelStep = 120;
constexpr int kChosenWidth = 3;
constexpr int kHoverWidth = 7;
constexpr keltrun::Color kHoverColor = 0x60E0FF;
// Color numbers are blue, green, red from the highest byte down.
constexpr std::array<keltrun::Color, 8> kColors = {0x2020D0, 0xD06000, 0x208020, 0xA02090,
                                                   0x0080E0, 0xA0A000, 0x404080, 0x8000FF};

// A scroll bar as long as the chart, of which a share is visible, at a position from 0 to 1.
void Fit(QScrollBar& bar, float visible_share, float position) {
  const QSignalBlocker quiet(bar);
  bar.setPageStep(qRound(kScrollSteps * visible_share));
  bar.setSingleStep(std::max(1, bar.pageStep() / 20));
  bar.setMaximum(kScrollSteps - bar.pageStep());
  bar.setValue(qRound(static_cast<float>(bar.maximum()) * position));
}

float Position(const QScrollBar& bar) {
  return bar.maximum() == 0 ? 0
                            : static_cast<float>(bar.value()) / static_cast<float>(bar.maximum());
}

}  // namespace

ChartView::ChartView(std::shared_ptr<keltrun::clsGraphicControl> graphics)
    : graphics_(std::move(graphics)) {
  viewport()->setMouseTracking(true);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
}

void ChartView::SetAnalyzer(std::shared_ptr<keltrun::clsAnalyzer> analyzer) {
  Hover(0);
  analyzer_ = std::move(analyzer);
  Build();
}

void ChartView::SetMode(keltrun::KrChartModeConst mode) {
  mode_ = mode;
  Build();
}

void ChartView::SetZoom(double x, double y) {
  zoom_x_ = x;
  zoom_y_ = y;
  Build();
}

void ChartView::ClearColors() {
  chart_->ClearRunnerSetting();
  chosen_ = 0;
  hovered_ = 0;
  Draw();
}

void ChartView::Build() {
  if (!analyzer_) return;
  if (QSize(viewport()->size() * devicePixelRatioF()) != picture_->Image().size()) {
    picture_->Resize(viewport()->size(), devicePixelRatioF());
  }
  chart_->SetPictureObject(picture_);
  const float fit = keltrun::ChartRatioToFit(*analyzer_, *chart_, mode_);
  graphics_->DrawChart(analyzer_, chart_, mode_, fit * static_cast<float>(zoom_x_),
                       static_cast<float>(zoom_y_), Position(*horizontalScrollBar()),
                       Position(*verticalScrollBar()));
  Fit(*horizontalScrollBar(), chart_->WidthOccupied(), chart_->PositionX());
  Fit(*verticalScrollBar(), chart_->HeightOccupied(), chart_->PositionY());
  Draw();
}

void ChartView::Draw() {
  chart_->DrawChart();
  viewport()->update();
}

void ChartView::Hover(int runner) {
  if (runner == hovered_) return;
  if (hovered_ > 0) chart_->SetRunnerSetting2(hovered_, 0, 0);
  if (runner > 0) chart_->SetRunnerSetting2(runner, kHoverColor, kHoverWidth);
  hovered_ = runner;
  Draw();
  emit RunnerHovered(runner);
}

void ChartView::ShowName(QPoint global_position) {
  const auto runner = hovered_ > 0 ? analyzer_->Item(hovered_) : nullptr;
  QToolTip::showText(global_position,
                     runner ? ToQt(runner->Rank() + " " + runner->RunnerName()) : QString(), this);
}

int ChartView::RunnerAt(QPointF point) const {
  if (!analyzer_) return 0;
  return chart_->MousePointRunnerIndex(static_cast<float>(point.x()),
                                       static_cast<float>(point.y()));
}

void ChartView::paintEvent(QPaintEvent*) {
  QPainter(viewport()).drawImage(0, 0, picture_->Image());
}

void ChartView::resizeEvent(QResizeEvent*) { Build(); }

void ChartView::scrollContentsBy(int, int) { Build(); }

void ChartView::mouseMoveEvent(QMouseEvent* event) {
  Hover(RunnerAt(event->position()));
  ShowName(event->globalPosition().toPoint());
}

void ChartView::mousePressEvent(QMouseEvent* event) {
  const int runner = RunnerAt(event->position());
  if (runner == 0) return;
  if (chart_->GetRunnerSetting(runner).DrawWidth > 0) {
    chart_->SetRunnerSetting(runner, 0, 0, 0);
  } else {
    chart_->SetRunnerSetting(runner, kColors[chosen_++ % kColors.size()], kChosenWidth,
                             keltrun::KR_CHART_FLAG_NAME | keltrun::KR_CHART_FLAG_LEGEND);
  }
  Draw();
}

void ChartView::wheelEvent(QWheelEvent* event) {
  if ((event->modifiers() & Qt::ControlModifier) == 0) {
    QAbstractScrollArea::wheelEvent(event);
    return;
  }
  emit ZoomWanted(std::pow(kWheelZoom, event->angleDelta().y() / kWheelStep));
}

bool ChartView::viewportEvent(QEvent* event) {
  if (event->type() == QEvent::Leave) Hover(0);
  return QAbstractScrollArea::viewportEvent(event);
}
