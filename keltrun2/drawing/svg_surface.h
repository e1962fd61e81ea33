// A drawing that becomes an SVG document. It is written without a library, so that texts remain
// texts, which can be searched, copied and edited.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "keltrun2/drawing/picture.h"

namespace keltrun {

class SvgSurface final : public DrawingSurface {
 public:
  /// Starts an empty picture with a size in pixels.
  void Start(std::int32_t width, std::int32_t height, Color back_color);
  /// The whole document. Drawing may continue afterwards.
  std::string Document();

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

 private:
  // The end of the open polyline, to which the next line may be joined.
  struct Line {
    Color LineColor;
    float Width;
    float EndX, EndY;
  };

  void EndLine();
  void AppendStroke(Color color, float width);
  void AppendPaint(Color color, float width, bool fill);
  void AppendPlace(double x, double baseline, const TextStyle& style, double height_ratio);

  std::int32_t width_ = 0;
  std::int32_t height_ = 0;
  std::string body_;
  std::int32_t clips_ = 0;  // the number of clip paths, used in their names
  bool is_clipped_ = false;
  std::optional<Line> line_;
};

}  // namespace keltrun
