#include "keltrun2/drawing/cairo_surface.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "keltrun2/codec/utf8.h"

namespace keltrun {
namespace {

constexpr double kThinnestLine = 0.25;       // in points, on paper
constexpr double kSlant = 0.2;               // for fonts that have no slanted letters
constexpr std::size_t kJoinedLines = 64;     // in one path
constexpr std::size_t kGlyphsAtOnce = 1000;  // bounds the memory for a huge text

// The first pixel of a line that is a whole number of pixels wide and has its middle at `middle`.
double FirstPixel(double middle, double width) { return std::floor(middle - width / 2 + 0.5); }

double WholePixels(double width) { return std::max(1.0, std::round(width)); }

}  // namespace

void CairoSurface::SetContext(cairo_t* context, Target target, double points_per_unit) {
  context_ = context;
  target_ = target;
  thinnest_ = target == Target::kPixels ? 1 : kThinnestLine / points_per_unit;
  line_.reset();
  clip_.reset();
  texts_.reset();
  run_ = {};
}

void CairoSurface::SetSource(Color color) {
  cairo_set_source_rgb(context_, Red(color) / 255.0, Green(color) / 255.0, Blue(color) / 255.0);
}

// --- lines, boxes, circles ---

// A width of 0 gives the thinnest line. In a picture every line is at least one pixel wide.
double CairoSurface::LineWidth(float width) const {
  if (!(width > 0)) return thinnest_;
  const double limited = std::min<double>(width, kLargestLineWidth);
  return target_ == Target::kPixels ? std::max(limited, thinnest_) : limited;
}

void CairoSurface::Flush() {
  FlushLine();
  FlushTexts();
}

void CairoSurface::FlushLine() {
  if (!line_) return;
  if (target_ == Target::kVectors) {
    SetSource(line_->LineColor);
    cairo_set_line_width(context_, line_->Width);
    cairo_set_line_cap(context_, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(context_, CAIRO_LINE_JOIN_ROUND);
    cairo_stroke(context_);
  }
  line_.reset();
}

bool CairoSurface::Continues(const LineSegment& line, Color color, double width) const {
  return line_ && line_->LineColor == color && line_->Width == width && line_->Last.X2 == line.X1 &&
         line_->Last.Y2 == line.Y1;
}

// Most of a chart are slanted lines, and cairo takes several times as long for them.
void CairoSurface::DrawOnPixels(const LineSegment& line, Color color, double width) {
  const bool continues = Continues(line, color, width);
  if (!continues) Flush();
  cairo_surface_t* const surface = cairo_get_target(context_);
  if (cairo_status(context_) != CAIRO_STATUS_SUCCESS) return;
  cairo_surface_flush(surface);
  PixelPlane plane = {reinterpret_cast<std::uint32_t*>(cairo_image_surface_get_data(surface)),
                      cairo_image_surface_get_stride(surface) / 4,
                      0,
                      0,
                      cairo_image_surface_get_width(surface),
                      cairo_image_surface_get_height(surface)};
  if (clip_) {
    const auto within = [](double edge, std::int32_t size) {
      return static_cast<std::int32_t>(std::clamp<double>(edge, 0, size));
    };
    plane.Left = within(clip_->Left, plane.Right);
    plane.Top = within(clip_->Top, plane.Bottom);
    plane.Right = within(clip_->Right, plane.Right);
    plane.Bottom = within(clip_->Bottom, plane.Bottom);
  }
  const auto rgb = static_cast<std::uint32_t>(Red(color) << 16 | Green(color) << 8 | Blue(color));
  DrawLinePixels(plane, line, width, rgb, continues ? std::optional(line_->Last) : std::nullopt);
  cairo_surface_mark_dirty(surface);
  line_ = Polyline{color, width, line, 0};
}

void CairoSurface::AddToPath(const LineSegment& line, Color color, double width) {
  if (!Continues(line, color, width) || line_->Count >= kJoinedLines) {
    Flush();
    line_ = Polyline{color, width, line, 0};
    cairo_move_to(context_, line.X1, line.Y1);
  }
  cairo_line_to(context_, line.X2, line.Y2);
  line_->Last = line;
  ++line_->Count;
}

void CairoSurface::DrawLine(float X1, float Y1, float X2, float Y2, Color LineColor,
                            float DrawWidth) {
  if (context_ == nullptr || !AllFinite(X1, Y1, X2, Y2)) return;
  const double x1 = LimitedCoordinate(X1);
  const double y1 = LimitedCoordinate(Y1);
  const double x2 = LimitedCoordinate(X2);
  const double y2 = LimitedCoordinate(Y2);
  double width = LineWidth(DrawWidth);
  if (target_ == Target::kVectors) return AddToPath({x1, y1, x2, y2}, LineColor, width);
  if (x1 != x2 && y1 != y2) return DrawOnPixels({x1, y1, x2, y2}, LineColor, width);
  Flush();
  SetSource(LineColor);
  width = WholePixels(width);
  const double left = FirstPixel(std::min(x1, x2), width);
  const double top = FirstPixel(std::min(y1, y2), width);
  cairo_rectangle(context_, left, top, FirstPixel(std::max(x1, x2), width) + width - left,
                  FirstPixel(std::max(y1, y2), width) + width - top);
  cairo_fill(context_);
}

void CairoSurface::StrokeOutline(const Rectangle& box, double width) {
  cairo_set_line_width(context_, width);
  cairo_set_line_join(context_, CAIRO_LINE_JOIN_MITER);
  cairo_rectangle(context_, box.Left, box.Top, box.Right - box.Left, box.Bottom - box.Top);
  cairo_stroke(context_);
}

void CairoSurface::DrawBox(float Left, float Top, float Width, float Height, Color BoxColor,
                           float DrawWidth, bool Fill) {
  if (context_ == nullptr || !AllFinite(Left, Top, Width, Height)) return;
  Flush();
  SetSource(BoxColor);
  Rectangle box = LimitedRectangle(Left, Top, Width, Height);
  const bool pixels = target_ == Target::kPixels;
  if (!Fill) {
    const double width = pixels ? WholePixels(LineWidth(DrawWidth)) : LineWidth(DrawWidth);
    if (pixels) {
      for (double* edge : {&box.Left, &box.Top, &box.Right, &box.Bottom}) {
        *edge = FirstPixel(*edge, width) + width / 2;
      }
    }
    return StrokeOutline(box, width);
  }
  if (box.Left == box.Right || box.Top == box.Bottom) return;
  if (pixels) {
    box = {std::round(box.Left), std::round(box.Top), std::round(box.Right),
           std::round(box.Bottom)};
    box.Right = std::max(box.Right, box.Left + 1);
    box.Bottom = std::max(box.Bottom, box.Top + 1);
  }
  cairo_rectangle(context_, box.Left, box.Top, box.Right - box.Left, box.Bottom - box.Top);
  cairo_fill(context_);
}

void CairoSurface::DrawCircle(float X, float Y, float Radius, Color CircleColor, float DrawWidth,
                              bool Fill) {
  if (context_ == nullptr || !AllFinite(X, Y, Radius) || Radius <= 0) return;
  Flush();
  SetSource(CircleColor);
  cairo_new_path(context_);
  cairo_arc(context_, LimitedCoordinate(X), LimitedCoordinate(Y), LimitedCoordinate(Radius), 0,
            2 * std::numbers::pi);
  cairo_close_path(context_);
  if (Fill) {
    cairo_fill(context_);
  } else {
    cairo_set_line_width(context_, LineWidth(DrawWidth));
    cairo_stroke(context_);
  }
}

void CairoSurface::SetClip(float Left, float Top, float Width, float Height) {
  ResetClip();
  if (context_ == nullptr || !AllFinite(Left, Top, Width, Height)) return;
  Rectangle box = LimitedRectangle(Left, Top, Width, Height);
  if (target_ == Target::kPixels) {
    box = {std::floor(box.Left), std::floor(box.Top), std::ceil(box.Right), std::ceil(box.Bottom)};
    clip_ = box;
  }
  cairo_rectangle(context_, box.Left, box.Top, box.Right - box.Left, box.Bottom - box.Top);
  cairo_clip(context_);
}

void CairoSurface::ResetClip() {
  Flush();
  clip_.reset();
  if (context_ != nullptr) cairo_reset_clip(context_);
}

// --- texts ---

float CairoSurface::TextWidth(std::string_view Text, const TextStyle& Style) {
  const TextScale scale = LimitedTextScale(Style);
  if (scale.Size == 0) return 0;
  return static_cast<float>(FindTypeFace(Style.Font)->Width(Text) * scale.Size);
}

float CairoSurface::TextHeight(const TextStyle& Style) {
  return static_cast<float>(FindTypeFace(Style.Font)->Height() * LimitedTextScale(Style).Height);
}

void CairoSurface::DrawText(std::string_view Text, float X, float Y, const TextStyle& Style) {
  const TextScale scale = LimitedTextScale(Style);
  if (context_ == nullptr || scale.Size == 0 || !AllFinite(X, Y)) return;
  const std::shared_ptr<TypeFace> kept = FindTypeFace(Style.Font);
  TypeFace& face = *kept;
  double x = LimitedCoordinate(X);
  double y = LimitedCoordinate(Y);
  const bool is_plain = !Style.Turned && !Style.Font.Underline && !(LimitedHalo(Style) > 0);
  if (target_ == Target::kVectors && is_plain) {
    BeginTexts(Style, scale, kept);
    DrawGlyphs(Text, x, y + face.Measures().Ascent * scale.Height, scale, face);
    return;
  }
  Flush();
  cairo_matrix_t before;
  cairo_get_matrix(context_, &before);
  if (Style.Turned) {
    cairo_translate(context_, x, y);
    cairo_rotate(context_, std::numbers::pi / 2);
    x = y = 0;
  }
  const double baseline = y + face.Measures().Ascent * scale.Height;
  // The rim of all letters first, so that none covers its neighbor.
  halo_ = LimitedHalo(Style);
  if (halo_ > 0) {
    SetSource(kWhite);
    DrawGlyphs(Text, x, baseline, scale, face);
    ShowRun(scale);
    halo_ = 0;
  }
  SetSource(Style.Color);
  DrawGlyphs(Text, x, baseline, scale, face);
  ShowRun(scale);
  if (Style.Font.Underline) {
    DrawUnderline(x, baseline, face.Width(Text) * scale.Size, scale.Height, face);
  }
  cairo_set_matrix(context_, &before);
}

// Draws what is pending unless these are texts of the same style.
void CairoSurface::BeginTexts(const TextStyle& style, TextScale scale,
                              const std::shared_ptr<TypeFace>& face) {
  FlushLine();
  const bool is_same = texts_ && texts_->Face == face && texts_->TextColor == style.Color &&
                       texts_->Scale.Size == scale.Size && texts_->Scale.Height == scale.Height;
  if (is_same) return;
  FlushTexts();
  texts_ = PendingTexts{style.Color, scale, face};
  SetSource(style.Color);
}

void CairoSurface::FlushTexts() {
  if (!texts_) return;
  ShowRun(texts_->Scale);
  texts_.reset();
}

// Adds glyphs to the run. A run that is full or of another font is shown.
void CairoSurface::DrawGlyphs(std::string_view text, double x, double baseline, TextScale scale,
                              TypeFace& face) {
  std::size_t next_glyph = 0;
  glyphs_.clear();
  for (std::size_t pos = 0, found = 0; pos < text.size() && x < kLargestCoordinate;) {
    if (next_glyph == glyphs_.size()) {
      glyphs_.clear();
      next_glyph = 0;
      face.FindGlyphs(text, found, kGlyphsAtOnce, glyphs_);
    }
    const char32_t c = NextCodePoint(text, pos);
    const Glyph& glyph = glyphs_[next_glyph++];
    if (glyph.File == nullptr) {
      x += glyph.Advance * scale.Size;
      continue;
    }
    if (glyph.File != run_.File || run_.Glyphs.size() >= kGlyphsAtOnce) {
      ShowRun(scale);
      run_.File = glyph.File;
    }
    const std::size_t before = run_.Text.size();
    AppendUtf8(run_.Text, c == U'\t' ? U' ' : c);
    run_.Glyphs.push_back({glyph.Index, x, baseline});
    run_.Clusters.push_back({static_cast<int>(run_.Text.size() - before), 1});
    x += glyph.Advance * scale.Size;
  }
}

void CairoSurface::ShowRun(TextScale scale) {
  if (run_.Glyphs.empty()) return;
  cairo_font_face_t* face = run_.File->Face();
  if (face != nullptr) {
    const auto lock = LockFonts();
    cairo_matrix_t letters;
    cairo_matrix_init(&letters, scale.Size, 0, run_.File->NeedsSlant() ? -kSlant * scale.Size : 0,
                      scale.Height, 0, 0);
    cairo_set_font_face(context_, face);
    cairo_set_font_matrix(context_, &letters);
    const auto glyphs = static_cast<int>(run_.Glyphs.size());
    if (halo_ > 0) {
      cairo_glyph_path(context_, run_.Glyphs.data(), glyphs);
      cairo_set_line_width(context_, 2 * halo_);
      cairo_set_line_join(context_, CAIRO_LINE_JOIN_ROUND);
      cairo_stroke(context_);
    } else {
      cairo_show_text_glyphs(context_, run_.Text.data(), static_cast<int>(run_.Text.size()),
                             run_.Glyphs.data(), glyphs, run_.Clusters.data(),
                             static_cast<int>(run_.Clusters.size()), {});
    }
  }
  run_.File = nullptr;
  run_.Text.clear();
  run_.Glyphs.clear();
  run_.Clusters.clear();
}

void CairoSurface::DrawUnderline(double x, double baseline, double width, double height,
                                 const TypeFace& face) {
  double top = baseline + face.Measures().UnderlineTop * height;
  double thickness = face.Measures().UnderlineThickness * height;
  if (target_ == Target::kPixels) {
    top = std::round(top);
    thickness = WholePixels(thickness);
  }
  cairo_rectangle(context_, x, top, std::min(width, kLargestCoordinate), thickness);
  cairo_fill(context_);
}

}  // namespace keltrun
