// A page of a print book as it will be printed, with scroll bars when it is larger than the view.
#pragma once

#include <QAbstractScrollArea>
#include <memory>

#include "keltrun2/keltrun2.h"
#include "qt_picture.h"

class PreviewView : public QAbstractScrollArea {
  Q_OBJECT

 public:
  void SetBook(std::shared_ptr<keltrun::clsPrintBook> book);
  /// From 1.
  void SetPage(int page);
  /// 1 shows the whole page.
  void SetZoom(double zoom);
  const QImage& Image() const { return picture_->Image(); }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;

 private:
  void FitScrollBars();
  void Draw();

  std::shared_ptr<keltrun::clsPrintBook> book_;
  std::shared_ptr<QtPicture> picture_ = std::make_shared<QtPicture>(QSize(1, 1));
  int page_ = 1;
  double zoom_ = 1;
};
