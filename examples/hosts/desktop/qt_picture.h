// A picture for the component, drawn by Qt into an image.
#pragma once

#include <QImage>
#include <QPainter>
#include <memory>

#include "keltrun2/keltrun2.h"

class QtPicture : public keltrun::PictureBox {
 public:
  /// The size in the component's pixels; the screen may have several pixels for each of them.
  explicit QtPicture(QSize size, qreal device_pixels = 1) { Resize(size, device_pixels); }

  void Resize(QSize size, qreal device_pixels);
  /// Shows another part of the plane: this point of it becomes the upper left corner.
  void SetOrigin(QPoint origin) { origin_ = origin; }
  const QImage& Image() const { return image_; }

  void SetScaleMode(std::int32_t) override {}  // it is in pixels anyway
  void SetBackColor(keltrun::Color color) override;
  void Clear() override;
  float ScaleWidth() const override { return static_cast<float>(size_.width()); }
  float ScaleHeight() const override { return static_cast<float>(size_.height()); }
  float Width() const override { return ScaleWidth(); }
  void SetWidth(float width) override;

  void DrawLine(float x1, float y1, float x2, float y2, keltrun::Color color, float width) override;
  void DrawBox(float left, float top, float width, float height, keltrun::Color color,
               float draw_width, bool fill) override;
  void DrawCircle(float x, float y, float radius, keltrun::Color color, float draw_width,
                  bool fill) override;
  void DrawText(std::string_view text, float x, float y, const keltrun::TextStyle& style) override;
  float TextWidth(std::string_view text, const keltrun::TextStyle& style) override;
  float TextHeight(const keltrun::TextStyle& style) override;
  void SetClip(float left, float top, float width, float height) override;
  void ResetClip() override;

 private:
  void SetPen(keltrun::Color color, float width, bool fill, bool smooth);
  const QFont& FontOf(const keltrun::TextStyle& style);

  QSize size_;
  QPoint origin_;
  QImage image_;
  QColor back_ = Qt::white;
  std::unique_ptr<QPainter> painter_;
  // The font of the last text, because texts in the same font follow each other.
  keltrun::Font font_of_;
  float font_size_ = 0;
  QFont font_;
};

/// The component's color numbers are blue, green, red from the highest byte down.
QColor ToQt(keltrun::Color color);
QString ToQt(std::string_view text);
