// The surfaces that pictures and printed pages are drawn on.
#pragma once

#include <cstdint>
#include <string_view>

#include "keltrun2/base/export.h"
#include "keltrun2/drawing/font.h"

namespace keltrun {

/// A color number: blue * 65536 + green * 256 + red, each 0 to 255.
using Color = std::int32_t;

/// How a text is drawn.
struct TextStyle {
  /// Face, bold, italic and underline. The size in points is not used.
  keltrun::Font Font;
  /// Height of the letters' em square, in units of the surface.
  float Size = 12;
  /// Factor by which the letters are stretched in height; their width does not change.
  float HeightRatio = 1;
  /// Whether the text is turned by 90 degrees clockwise, so that it reads from top to bottom.
  bool Turned = false;
  /// Color of the letters; 0 is black.
  keltrun::Color Color = 0;
  /// Width of the white rim around the letters, which keeps them legible on top of lines; 0 for
  /// none. A surface may leave it out.
  float Halo = 0;
};

/// A plane with the origin in its upper left corner, x to the right and y downward, in units of its
/// own. Line widths are in the same units. Whatever lies outside the plane is not drawn.
class KELTRUN2_API DrawingSurface {
 public:
  virtual ~DrawingSurface() = default;

  /// Draws a straight line from (X1, Y1) to (X2, Y2).
  virtual void DrawLine(float X1, float Y1, float X2, float Y2, Color LineColor,
                        float DrawWidth) = 0;
  /// Draws the outline of a rectangle, or fills it; DrawWidth is used only for the outline.
  virtual void DrawBox(float Left, float Top, float Width, float Height, Color BoxColor,
                       float DrawWidth, bool Fill) = 0;
  /// Draws the outline of a circle, or fills it; DrawWidth is used only for the outline.
  virtual void DrawCircle(float X, float Y, float Radius, Color CircleColor, float DrawWidth,
                          bool Fill) = 0;
  /// Draws one line of text. (X, Y) is the upper left corner of its box; a turned text is turned
  /// about that corner.
  virtual void DrawText(std::string_view Text, float X, float Y, const TextStyle& Style) = 0;

  /// Width of a text before it is turned.
  virtual float TextWidth(std::string_view Text, const TextStyle& Style) = 0;
  /// Height of a line of text before it is turned.
  virtual float TextHeight(const TextStyle& Style) = 0;

  /// Draws only inside this rectangle from now on.
  virtual void SetClip(float Left, float Top, float Width, float Height) = 0;
  /// Draws everywhere again.
  virtual void ResetClip() = 0;
};

/// A picture that charts and page previews are drawn on: the canvas of a host's window, or
/// `CairoPicture` for files.
class KELTRUN2_API PictureBox : public DrawingSurface {
 public:
  /// The scale mode in which the unit is the pixel.
  static constexpr std::int32_t kScalePixels = 3;
  /// Chooses the unit of everything drawn; charts and previews use kScalePixels.
  virtual void SetScaleMode(std::int32_t ScaleMode) = 0;
  /// Sets the color of the empty picture; what was drawn before may be erased.
  virtual void SetBackColor(Color BackColor) = 0;
  /// Erases everything drawn: the whole picture gets its background color.
  virtual void Clear() = 0;

  /// Width of the plane that is drawn on, in its units.
  virtual float ScaleWidth() const = 0;
  /// Height of the plane that is drawn on, in its units.
  virtual float ScaleHeight() const = 0;

  /// Outer width in the units of the window or form that contains the picture.
  virtual float Width() const = 0;
  /// Changes the outer width. A chart that sizes its picture itself sets it to Width / ScaleWidth
  /// times what it needs and then reads ScaleWidth again.
  virtual void SetWidth(float Width) = 0;
};

}  // namespace keltrun
