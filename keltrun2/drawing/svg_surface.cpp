#include "keltrun2/drawing/svg_surface.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "keltrun2/codec/utf8.h"
#include "keltrun2/drawing/cairo_fonts.h"
#include "keltrun2/drawing/drawing_limits.h"

namespace keltrun {
namespace {

constexpr float kThinnestLine = 0.5F;  // in pixels, for a width of 0

// Appends a number with at most two decimals, which is finer than any display.
void AppendNumber(std::string& out, double value) {
  char text[32];
  const double rounded = std::round(value * 100) / 100;
  const auto end = std::to_chars(text, text + sizeof text, rounded == 0 ? 0 : rounded);
  out.append(text, end.ptr);
}

void AppendAttribute(std::string& out, std::string_view name, double value) {
  out.append(" ").append(name).append("=\"");
  AppendNumber(out, value);
  out += '"';
}

void AppendColor(std::string& out, std::string_view name, Color color) {
  constexpr char kDigits[] = "0123456789abcdef";
  out.append(" ").append(name).append("=\"#");
  for (const std::int32_t part : {Red(color), Green(color), Blue(color)}) {
    out += kDigits[part >> 4];
    out += kDigits[part & 15];
  }
  out += '"';
}

void AppendBox(std::string& out, const Rectangle& box) {
  out += "<rect";
  AppendAttribute(out, "x", box.Left);
  AppendAttribute(out, "y", box.Top);
  AppendAttribute(out, "width", box.Right - box.Left);
  AppendAttribute(out, "height", box.Bottom - box.Top);
}

// Invisible characters have no width and are left out; among them are all that XML 1.0 does not
// allow.
void AppendEscaped(std::string& out, std::string_view text) {
  for (std::size_t pos = 0; pos < text.size();) {
    const char32_t c = NextCodePoint(text, pos);
    switch (c) {
      case '\t':
        out += ' ';
        break;
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      default:
        if (!IsInvisible(c)) AppendUtf8(out, c);
    }
  }
}

void AppendFamily(std::string& out, std::string_view family) {
  out += '\'';
  std::string name(family);
  std::erase_if(name, [](char c) { return c == '\'' || c == '\\'; });
  AppendEscaped(out, name);
  out += "',";
}

// The requested face, the one whose measures were used, and a generic family. The name of a generic
// family is not quoted.
void AppendFamilies(std::string& out, const Font& font) {
  constexpr std::string_view kKinds[] = {"serif", "monospace", "sans-serif"};
  const auto* const kind = std::find(std::begin(kKinds), std::end(kKinds) - 1, font.Face());
  const auto face = FindTypeFace(font);
  const std::string& matched = face->Family();
  out += " font-family=\"";
  if (*kind != font.Face()) AppendFamily(out, font.Face());
  if (!matched.empty() && matched != font.Face()) AppendFamily(out, matched);
  out.append(*kind).append("\"");
}

}  // namespace

void SvgSurface::Start(std::int32_t width, std::int32_t height, Color back_color) {
  width_ = width;
  height_ = height;
  body_.clear();
  clips_ = 0;
  is_clipped_ = false;
  line_.reset();
  body_ += "<rect width=\"100%\" height=\"100%\"";
  AppendColor(body_, "fill", back_color);
  body_ += "/>\n";
}

std::string SvgSurface::Document() {
  EndLine();
  std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"";
  out += "http://www.w3.org/2000/svg\" version=\"1.1\"";
  AppendAttribute(out, "width", width_);
  AppendAttribute(out, "height", height_);
  out.append(" viewBox=\"0 0 ").append(std::to_string(width_)).append(" ");
  out.append(std::to_string(height_)).append("\">\n");
  out += "<g stroke-linecap=\"round\" stroke-linejoin=\"round\" xml:space=\"preserve\"";
  out += " xml:lang=\"ja\">\n";  // so that viewers use the Japanese forms of characters
  out += body_;
  out += is_clipped_ ? "</g>\n</g>\n</svg>\n" : "</g>\n</svg>\n";
  return out;
}

// --- lines, boxes, circles ---

void SvgSurface::AppendStroke(Color color, float width) {
  AppendColor(body_, "stroke", color);
  AppendAttribute(body_, "stroke-width",
                  width > 0 ? std::min<double>(width, kLargestLineWidth) : kThinnestLine);
}

void SvgSurface::AppendPaint(Color color, float width, bool fill) {
  if (fill) {
    AppendColor(body_, "fill", color);
  } else {
    body_ += " fill=\"none\"";
    AppendStroke(color, width);
  }
  body_ += "/>\n";
}

void SvgSurface::EndLine() {
  if (!line_) return;
  body_ += "\" fill=\"none\"";
  AppendStroke(line_->LineColor, line_->Width);
  body_ += "/>\n";
  line_.reset();
}

void SvgSurface::DrawLine(float X1, float Y1, float X2, float Y2, Color LineColor,
                          float DrawWidth) {
  if (!AllFinite(X1, Y1, X2, Y2, DrawWidth)) return;
  const bool continues = line_ && line_->LineColor == LineColor && line_->Width == DrawWidth &&
                         line_->EndX == X1 && line_->EndY == Y1;
  if (!continues) {
    EndLine();
    body_ += "<path d=\"M";
    AppendNumber(body_, LimitedCoordinate(X1));
    body_ += ' ';
    AppendNumber(body_, LimitedCoordinate(Y1));
  }
  body_ += 'L';
  AppendNumber(body_, LimitedCoordinate(X2));
  body_ += ' ';
  AppendNumber(body_, LimitedCoordinate(Y2));
  line_ = Line{LineColor, DrawWidth, X2, Y2};
}

void SvgSurface::DrawBox(float Left, float Top, float Width, float Height, Color BoxColor,
                         float DrawWidth, bool Fill) {
  if (!AllFinite(Left, Top, Width, Height)) return;
  EndLine();
  AppendBox(body_, LimitedRectangle(Left, Top, Width, Height));
  if (!Fill) body_ += " stroke-linejoin=\"miter\"";
  AppendPaint(BoxColor, DrawWidth, Fill);
}

void SvgSurface::DrawCircle(float X, float Y, float Radius, Color CircleColor, float DrawWidth,
                            bool Fill) {
  if (!AllFinite(X, Y, Radius) || Radius <= 0) return;
  EndLine();
  body_ += "<circle";
  AppendAttribute(body_, "cx", LimitedCoordinate(X));
  AppendAttribute(body_, "cy", LimitedCoordinate(Y));
  AppendAttribute(body_, "r", LimitedCoordinate(Radius));
  AppendPaint(CircleColor, DrawWidth, Fill);
}

void SvgSurface::SetClip(float Left, float Top, float Width, float Height) {
  ResetClip();
  if (!AllFinite(Left, Top, Width, Height)) return;
  const std::string name = "clip" + std::to_string(++clips_);
  body_.append("<clipPath id=\"").append(name).append("\">");
  AppendBox(body_, LimitedRectangle(Left, Top, Width, Height));
  body_.append("/></clipPath>\n<g clip-path=\"url(#").append(name).append(")\">\n");
  is_clipped_ = true;
}

void SvgSurface::ResetClip() {
  EndLine();
  if (is_clipped_) body_ += "</g>\n";
  is_clipped_ = false;
}

// --- texts ---

float SvgSurface::TextWidth(std::string_view Text, const TextStyle& Style) {
  return static_cast<float>(FindTypeFace(Style.Font)->Width(Text) * LimitedTextScale(Style).Size);
}

float SvgSurface::TextHeight(const TextStyle& Style) {
  return static_cast<float>(FindTypeFace(Style.Font)->Height() * LimitedTextScale(Style).Height);
}

void SvgSurface::AppendPlace(double x, double baseline, const TextStyle& style,
                             double height_ratio) {
  const bool is_plain = !style.Turned && height_ratio == 1;
  if (is_plain) {
    AppendAttribute(body_, "x", x);
    AppendAttribute(body_, "y", baseline);
  } else {
    body_.append(" transform=\"translate(");
    AppendNumber(body_, x);
    body_ += ' ';
    AppendNumber(body_, baseline);
    body_.append(style.Turned ? ") rotate(90) scale(1 " : ") scale(1 ");
    AppendNumber(body_, height_ratio);
    body_.append(")\"");
  }
}

// The measured width is given to the viewer, which may use a different font.
void SvgSurface::DrawText(std::string_view Text, float X, float Y, const TextStyle& Style) {
  const TextScale scale = LimitedTextScale(Style);
  const float width = TextWidth(Text, Style);
  if (width == 0 || !AllFinite(X, Y, width)) return;
  EndLine();
  const double ascent = FindTypeFace(Style.Font)->Measures().Ascent * scale.Height;
  const double x = LimitedCoordinate(X);
  const double y = LimitedCoordinate(Y);
  body_ += "<text";
  // The baseline of a turned text is to the left of the corner about which it is turned.
  AppendPlace(Style.Turned ? x - ascent : x, Style.Turned ? y : y + ascent, Style,
              scale.Height / scale.Size);
  AppendFamilies(body_, Style.Font);
  AppendAttribute(body_, "font-size", scale.Size);
  if (Style.Font.Bold) body_ += " font-weight=\"bold\"";
  if (Style.Font.Italic) body_ += " font-style=\"italic\"";
  if (Style.Font.Underline) body_ += " text-decoration=\"underline\"";
  AppendColor(body_, "fill", Style.Color);
  if (Style.Halo > 0) {
    AppendColor(body_, "stroke", kWhite);
    AppendAttribute(body_, "stroke-width", 2 * LimitedHalo(Style));
    body_ += " paint-order=\"stroke\"";
  }
  AppendAttribute(body_, "textLength", width);
  body_ += " lengthAdjust=\"spacingAndGlyphs\">";
  AppendEscaped(body_, Text);
  body_ += "</text>\n";
}

}  // namespace keltrun
