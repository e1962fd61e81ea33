// Drawing with cairo: the surface of PNG and PDF pictures and of printed sheets.
#pragma once

#include <cairo.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "keltrun2/drawing/cairo_fonts.h"
#include "keltrun2/drawing/drawing_limits.h"
#include "keltrun2/drawing/picture.h"

namespace keltrun {

/// Without a context it draws nothing and still measures texts.
class CairoSurface final : public DrawingSurface {
 public:
  enum class Target {
    kPixels,   // horizontal and vertical lines and boxes keep to the pixel grid and stay crisp
    kVectors,  // everything where it is
  };

  /// Draws with this context from now on, in its user space, whose unit is `points_per_unit` points
  /// (only the thinnest line depends on it). The context stays the caller's; null ends the drawing.
  void SetContext(cairo_t* context, Target target = Target::kPixels, double points_per_unit = 1);

  /// Draws what is still held back. Call it before the picture is read or the page ends.
  void Flush();

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
  // The line drawn last, to which one of the same pen may be joined: neater corners, half the time.
  struct Polyline {
    Color LineColor;
    double Width;
    double EndX, EndY;
    std::size_t Count;
  };

  // A stretch of text that one font shows, ready for cairo: glyphs, and which bytes each stands
  // for, so that the text can be found in a PDF.
  struct Run {
    FontFile* File = nullptr;
    std::string Text;
    std::vector<cairo_glyph_t> Glyphs;
    std::vector<cairo_text_cluster_t> Clusters;
  };

  void SetSource(Color color);
  double LineWidth(float width) const;
  void DrawSlantedLine(double x1, double y1, double x2, double y2, Color color, double width);
  void StrokeOutline(const Rectangle& box, double width);
  void DrawGlyphs(std::string_view text, double x, double baseline, TextScale scale,
                  TypeFace& face);
  void ShowRun(TextScale scale);
  void DrawUnderline(double x, double baseline, double width, double height, const TypeFace& face);

  cairo_t* context_ = nullptr;
  Target target_ = Target::kPixels;
  double thinnest_ = 1;
  std::optional<Polyline> line_;
  Run run_;                    // kept for its memory, as are these
  std::vector<Glyph> glyphs_;  // of the text being drawn
};

}  // namespace keltrun
