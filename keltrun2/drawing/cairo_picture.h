// A picture that can be written to a PNG, SVG or PDF file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "keltrun2/base/export.h"
#include "keltrun2/drawing/picture.h"

namespace keltrun {

/// The file formats of a CairoPicture.
enum PictureFormatConst : std::int32_t {
  KR_PICTURE_PNG = 0,  ///< Portable Network Graphics, in pixels.
  KR_PICTURE_SVG = 1,  ///< Scalable Vector Graphics.
  KR_PICTURE_PDF = 2,  ///< Portable Document Format, one page.
};

/// A picture without a window. The unit is the pixel, which is 1/96 inch in SVG and PDF.
///
///     auto picture = std::make_shared<CairoPicture>(1000, 700);
///     chart->SetPictureObject(picture);
///     root->GraphicControl()->DrawChart(analyzer, chart, KR_CHART_NORMAL, 1, 1, 0, 0);
///     chart->DrawChart();
///     picture->Save("chart.png");
///
/// A picture is white at first. Its outer width is its width in pixels; scale modes other than
/// pixels are ignored. Setting the background color or the width erases it. Texts in SVG and PDF
/// pictures can be searched and copied. A shape with a coordinate that is not finite is not drawn;
/// coordinates are limited to a million in either direction.
class KELTRUN2_API CairoPicture : public PictureBox {
 public:
  /// Creates a white picture with a size in pixels. Raises invalid procedure call (5) unless both
  /// sizes are 1 to 20,000 and the picture has at most 100 million pixels.
  CairoPicture(std::int32_t Width, std::int32_t Height, PictureFormatConst Format = KR_PICTURE_PNG);
  ~CairoPicture() override;

  /// Does nothing: the unit is always the pixel.
  void SetScaleMode(std::int32_t ScaleMode) override;
  /// Sets the background color and erases everything drawn.
  void SetBackColor(Color BackColor) override;
  /// Erases everything drawn: the whole picture gets its background color.
  void Clear() override;
  /// Width of the picture in pixels.
  float ScaleWidth() const override;
  /// Height of the picture in pixels.
  float ScaleHeight() const override;
  /// Width of the picture in pixels, like ScaleWidth.
  float Width() const override;
  /// Changes the width in pixels and erases everything drawn. The width is rounded up to whole
  /// pixels and limited to what the constructor allows.
  void SetWidth(float Width) override;

  /// Draws a straight line from (X1, Y1) to (X2, Y2).
  void DrawLine(float X1, float Y1, float X2, float Y2, Color LineColor, float DrawWidth) override;
  /// Draws the outline of a rectangle, or fills it; DrawWidth is used only for the outline.
  void DrawBox(float Left, float Top, float Width, float Height, Color BoxColor, float DrawWidth,
               bool Fill) override;
  /// Draws the outline of a circle, or fills it; DrawWidth is used only for the outline.
  void DrawCircle(float X, float Y, float Radius, Color CircleColor, float DrawWidth,
                  bool Fill) override;
  /// Draws one line of text. (X, Y) is the upper left corner of its box; a turned text is turned
  /// about that corner.
  void DrawText(std::string_view Text, float X, float Y, const TextStyle& Style) override;
  /// Width of a text in pixels, before it is turned.
  float TextWidth(std::string_view Text, const TextStyle& Style) override;
  /// Height of a line of text in pixels, before it is turned.
  float TextHeight(const TextStyle& Style) override;
  /// Draws only inside this rectangle from now on.
  void SetClip(float Left, float Top, float Width, float Height) override;
  /// Draws everywhere again.
  void ResetClip() override;

  /// The bytes of a file with the picture. Drawing may continue afterwards (a PDF picture is empty
  /// again). Raises invalid procedure call (5) if there is not enough memory.
  [[nodiscard]] std::string Encode();
  /// Writes the result of `Encode` to a file. Raises invalid procedure call (5) with the reason if
  /// that fails.
  void Save(std::string_view Path);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// Whether the system has a font with Japanese characters. If not, they are drawn as boxes, and a
/// program that draws Japanese texts should warn its user.
KELTRUN2_API bool HasJapaneseFont();

}  // namespace keltrun
