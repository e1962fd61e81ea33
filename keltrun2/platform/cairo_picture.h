// A picture that becomes a PNG, SVG or PDF file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "keltrun2/platform/export.h"
#include "keltrun2/platform/picture.h"

namespace keltrun {

enum PictureFormatConst : std::int32_t {
  KR_PICTURE_PNG = 0,
  KR_PICTURE_SVG = 1,
  KR_PICTURE_PDF = 2,
};

/// A picture without a window, drawn in pixels (a pixel is 1/96 inch in SVG and PDF).
///
///     auto picture = std::make_shared<CairoPicture>(1000, 700);
///     chart->SetPictureObject(picture);
///     root->GraphicControl()->DrawChart(analyzer, chart, KR_CHART_NORMAL, 1, 1, 0, 0);
///     chart->DrawChart();
///     picture->Save("chart.png");
///
/// It starts white. Its outer width is its width in pixels; other scale modes than pixels are
/// ignored. Setting the background colour or the width erases it. The texts of SVG and PDF pictures
/// stay texts. What has a coordinate that is no finite number is not drawn; others are taken as at
/// most a million from the origin.
class KELTRUN2_API CairoPicture : public PictureBox {
 public:
  /// Raises invalid procedure call (5) unless both sizes are 1 to 20,000 and the picture has at
  /// most 100 million pixels.
  CairoPicture(std::int32_t Width, std::int32_t Height, PictureFormatConst Format = KR_PICTURE_PNG);
  ~CairoPicture() override;

  void SetScaleMode(std::int32_t ScaleMode) override;
  void SetBackColor(Color BackColor) override;
  void Clear() override;
  float ScaleWidth() const override;
  float ScaleHeight() const override;
  float Width() const override;
  /// Rounded up to whole pixels, and limited to what the constructor takes.
  void SetWidth(float Width) override;

  void DrawLine(float X1, float Y1, float X2, float Y2, Color LineColor, float DrawWidth) override;
  void DrawBox(float Left, float Top, float Width, float Height, Color BoxColor, float DrawWidth,
               bool Fill) override;
  void DrawCircle(float X, float Y, float Radius, Color CircleColor, float DrawWidth,
                  bool Fill) override;
  void DrawText(std::string_view Text, float X, float Y, const TextStyle& Style) override;
  float TextWidth(std::string_view Text, const TextStyle& Style) override;
  float TextHeight(const TextStyle& Style) override;
  void SetClip(float Left, float Top, float Width, float Height) override;
  void ResetClip() override;

  /// The picture as the bytes of a file of its format; drawing may go on afterwards (a PDF picture
  /// starts empty again). Raises invalid procedure call (5) when the memory does not suffice.
  std::string Encode();
  /// Writes `Encode` to a file. Raises invalid procedure call (5) with the reason when it cannot.
  void Save(std::string_view Path);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// False when no font of the system has Japanese letters: such texts then show as boxes, and a
/// program that draws them should say so.
KELTRUN2_API bool HasJapaneseFont();

}  // namespace keltrun
