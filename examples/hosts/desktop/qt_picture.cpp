#include "qt_picture.h"

#include <QFontDatabase>
#include <QFontMetricsF>

namespace {

// At 72 dots per inch a font's size in points is its size in pixels, which Qt takes as whole
// numbers only.
constexpr int kDotsPerMeter = 2835;

// Faces with the letters of Japanese names, listed so that no Chinese face is used instead.
const QStringList& JapaneseFaces() {
  static const QStringList faces = QFontDatabase::families(QFontDatabase::Japanese);
  return faces;
}

}  // namespace

QColor ToQt(keltrun::Color color) {
  return QColor(color & 0xFF, color >> 8 & 0xFF, color >> 16 & 0xFF);
}

QString ToQt(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

void QtPicture::Resize(QSize size, qreal device_pixels) {
  painter_.reset();
  size_ = size.expandedTo({1, 1});
  image_ = QImage(size_ * device_pixels, QImage::Format_RGB32);
  image_.setDevicePixelRatio(device_pixels);
  image_.setDotsPerMeterX(kDotsPerMeter);
  image_.setDotsPerMeterY(kDotsPerMeter);
  font_size_ = 0;
  Clear();
}

void QtPicture::SetBackColor(keltrun::Color color) {
  back_ = ToQt(color);
  Clear();
}

void QtPicture::Clear() {
  painter_.reset();
  image_.fill(back_);
  painter_ = std::make_unique<QPainter>(&image_);
  painter_->translate(-origin_);
}

void QtPicture::SetWidth(float width) {
  Resize({qRound(width), size_.height()}, image_.devicePixelRatio());
}

void QtPicture::SetPen(keltrun::Color color, float width, bool fill, bool smooth) {
  painter_->setRenderHint(QPainter::Antialiasing, smooth);
  painter_->setPen(fill ? QPen(Qt::NoPen) : QPen(ToQt(color), width));
  painter_->setBrush(fill ? QBrush(ToQt(color)) : QBrush(Qt::NoBrush));
}

// Only slanted lines need smoothing, which would blur the others.
void QtPicture::DrawLine(float x1, float y1, float x2, float y2, keltrun::Color color,
                         float width) {
  SetPen(color, width, false, x1 != x2 && y1 != y2);
  painter_->drawLine(QPointF(x1, y1), QPointF(x2, y2));
}

void QtPicture::DrawBox(float left, float top, float width, float height, keltrun::Color color,
                        float draw_width, bool fill) {
  SetPen(color, draw_width, fill, false);
  painter_->drawRect(QRectF(left, top, width, height));
}

void QtPicture::DrawCircle(float x, float y, float radius, keltrun::Color color, float draw_width,
                           bool fill) {
  SetPen(color, draw_width, fill, true);
  painter_->drawEllipse(QPointF(x, y), radius, radius);
}

const QFont& QtPicture::FontOf(const keltrun::TextStyle& style) {
  if (style.Size == font_size_ && style.Font == font_of_) return font_;
  font_size_ = style.Size;
  font_of_ = style.Font;
  QFont font;
  font.setFamilies(QStringList(ToQt(style.Font.Face())) + JapaneseFaces());
  font.setPointSizeF(std::max(1.0F, style.Size));
  font.setBold(style.Font.Bold);
  font.setItalic(style.Font.Italic);
  font.setUnderline(style.Font.Underline);
  font.setHintingPreference(QFont::PreferNoHinting);  // widths grow evenly with the zoom
  font_ = QFont(font, &image_);
  return font_;
}

void QtPicture::DrawText(std::string_view text, float x, float y, const keltrun::TextStyle& style) {
  const QFont& font = FontOf(style);
  painter_->save();
  painter_->setPen(ToQt(style.Color));
  painter_->setFont(font);
  painter_->translate(x, y);
  if (style.Turned) painter_->rotate(90);
  painter_->scale(1, style.HeightRatio);
  painter_->drawText(QPointF(0, QFontMetricsF(font).ascent()), ToQt(text));
  painter_->restore();
}

float QtPicture::TextWidth(std::string_view text, const keltrun::TextStyle& style) {
  return static_cast<float>(QFontMetricsF(FontOf(style)).horizontalAdvance(ToQt(text)));
}

float QtPicture::TextHeight(const keltrun::TextStyle& style) {
  return static_cast<float>(QFontMetricsF(FontOf(style)).height()) * style.HeightRatio;
}

void QtPicture::SetClip(float left, float top, float width, float height) {
  painter_->setClipRect(QRectF(left, top, width, height));
}

void QtPicture::ResetClip() { painter_->setClipping(false); }
