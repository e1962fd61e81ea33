#include "preview_view.h"

#include <QPainter>
#include <QScrollBar>

namespace {

constexpr double kMarginShare = 0.04;  // around a previewed sheet, of the picture's smaller side

void Fit(QScrollBar& bar, double size, int visible) {
  bar.setPageStep(visible);
  bar.setSingleStep(visible / 20);
  bar.setRange(0, std::max(0, qRound(size) - visible));
}

}  // namespace

void PreviewView::SetBook(std::shared_ptr<keltrun::clsPrintBook> book) {
  book_ = std::move(book);
  page_ = 1;
  FitScrollBars();
  Draw();
}

void PreviewView::SetPage(int page) {
  page_ = page;
  verticalScrollBar()->setValue(0);
  Draw();
}

void PreviewView::SetZoom(double zoom) {
  zoom_ = zoom;
  FitScrollBars();
  Draw();
}

void PreviewView::FitScrollBars() {
  if (!book_) return;
  const keltrun::PaperMetrics paper = book_->PrinterObject()->Metrics();
  const QSize view = viewport()->size();
  const double margins = 2 * kMarginShare * std::min(view.width(), view.height());
  const double fit = std::min((view.width() - margins) / paper.PaperWidth,
                              (view.height() - margins) / paper.PaperHeight);
  Fit(*horizontalScrollBar(), paper.PaperWidth * fit * zoom_ + margins, view.width());
  Fit(*verticalScrollBar(), paper.PaperHeight * fit * zoom_ + margins, view.height());
}

// The preview is drawn as if there were only the view; scrolling moves the view over the plane.
void PreviewView::Draw() {
  if (!book_) return;
  if (QSize(viewport()->size() * devicePixelRatioF()) != picture_->Image().size()) {
    picture_->Resize(viewport()->size(), devicePixelRatioF());
  }
  picture_->SetOrigin({horizontalScrollBar()->value(), verticalScrollBar()->value()});
  book_->PreviewZoomRatio = static_cast<float>(zoom_);
  book_->ShowPreview(picture_, page_);
  viewport()->update();
}

void PreviewView::paintEvent(QPaintEvent*) {
  QPainter(viewport()).drawImage(0, 0, picture_->Image());
}

void PreviewView::resizeEvent(QResizeEvent*) {
  FitScrollBars();
  Draw();
}

void PreviewView::scrollContentsBy(int, int) { Draw(); }
