// A chart that scrolls and zooms. The runner under the mouse lights up; a click gives the runner a
// color or takes it back.
#pragma once

#include <QAbstractScrollArea>
#include <memory>

#include "keltrun2/keltrun2.h"
#include "qt_picture.h"

class ChartView : public QAbstractScrollArea {
  Q_OBJECT

 public:
  explicit ChartView(std::shared_ptr<keltrun::clsGraphicControl> graphics);

  void SetAnalyzer(std::shared_ptr<keltrun::clsAnalyzer> analyzer);
  void SetMode(keltrun::KrChartModeConst mode);
  /// 1 shows the whole chart.
  void SetZoom(double x, double y);
  void ClearColors();
  const QImage& Image() const { return picture_->Image(); }

 signals:
  /// Position of the runner under the mouse, 0 for none.
  void RunnerHovered(int index);
  /// The wheel was turned with the control key held down; `factor` is the zoom to apply.
  void ZoomWanted(double factor);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  bool viewportEvent(QEvent* event) override;

 private:
  void Build();
  void Draw();
  void Hover(int runner);
  void ShowName(QPoint global_position);
  int RunnerAt(QPointF point) const;

  std::shared_ptr<keltrun::clsGraphicControl> graphics_;
  std::shared_ptr<keltrun::clsAnalyzer> analyzer_;
  std::shared_ptr<QtPicture> picture_ = std::make_shared<QtPicture>(QSize(1, 1));
  std::shared_ptr<keltrun::clsChartObject> chart_ = std::make_shared<keltrun::clsChartObject>();
  keltrun::KrChartModeConst mode_ = keltrun::KR_CHART_NORMAL;
  double zoom_x_ = 1;
  double zoom_y_ = 1;
  std::size_t chosen_ = 0;  // how many runners were given a color
  int hovered_ = 0;         // the runner that is lit up
};
