// Drawing with cairo: the surface of PNG pictures, PDF pictures and printed sheets.
#pragma once

#include <cairo.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "keltrun2/drawing/cairo_fonts.h"
#include "keltrun2/drawing/drawing_limits.h"
#include "keltrun2/drawing/line_pixels.h"
#include "keltrun2/drawing/picture.h"

namespace keltrun {

/// A surface that draws with a cairo context. Without one it draws nothing but still measures
/// texts.
class CairoSurface final : public DrawingSurface {
 public:
  enum class Target {
    kPixels,   // horizontal and vertical lines and boxes are aligned to pixels, so they are crisp
    kVectors,  // everything is drawn exactly where it is
  };

  /// Draws with this context from now on, in its user space. The unit there is `points_per_unit`
  /// points; only the width of the thinnest line depends on it. The caller keeps ownership of the
  /// context; null ends the drawing.
  void SetContext(cairo_t* context, Target target = Target::kPixels, double points_per_unit = 1);

  /// Draws the pending line or texts. Must be called before the picture is read or the page ends.
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
  // The line drawn last; in a document, the pending one. The next line is joined to it if color and
  // width are the same and it starts where this one ends.
  struct Polyline {
    Color LineColor;
    double Width;
    LineSegment Last;
    std::size_t Count;
  };

  // A stretch of text in one font, ready for cairo: the glyphs and the bytes that each stands for,
  // so that the text can be searched in a PDF.
  struct Run {
    FontFile* File = nullptr;
    std::string Text;
    std::vector<cairo_glyph_t> Glyphs;
    std::vector<cairo_text_cluster_t> Clusters;
  };

  // The style of the texts that wait to be drawn. In a document, where cairo takes far longer for a
  // call than for a glyph, texts of one style that follow each other are drawn by one call.
  struct PendingTexts {
    Color TextColor;
    TextScale Scale;
    std::shared_ptr<TypeFace> Face;  // keeps the font of the run
  };

  void SetSource(Color color);
  void FlushLine();
  void FlushTexts();
  void BeginTexts(const TextStyle& style, TextScale scale, const std::shared_ptr<TypeFace>& face);
  double LineWidth(float width) const;
  bool Continues(const LineSegment& line, Color color, double width) const;
  void DrawOnPixels(const LineSegment& line, Color color, double width);
  void AddToPath(const LineSegment& line, Color color, double width);
  void StrokeOutline(const Rectangle& box, double width);
  void DrawGlyphs(std::string_view text, double x, double baseline, TextScale scale,
                  TypeFace& face);
  void ShowRun(TextScale scale);
  void DrawUnderline(double x, double baseline, double width, double height, const TypeFace& face);

  cairo_t* context_ = nullptr;
  Target target_ = Target::kPixels;
  double thinnest_ = 1;
  double halo_ = 0;  // above 0 while the rim of a text is drawn, not its letters
  std::optional<Polyline> line_;
  std::optional<Rectangle> clip_;  // in a picture, whole pixels
  std::optional<PendingTexts> texts_;
  // The text being drawn, or the pending ones. Members only so that their memory is reused.
  Run run_;
  std::vector<Glyph> glyphs_;
};

}  // namespace keltrun
