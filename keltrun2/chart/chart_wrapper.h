// A chart's view of its target: a picture and a print book look alike.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "keltrun2/drawing/picture.h"
#include "keltrun2/print/print_book.h"

namespace keltrun {

inline constexpr float kChartUnitsPerBookUnit = 3;

/// Draws on at most one target with a pen and a font that the caller sets, in units of the chart
/// from the target's upper left corner. On a print book every coordinate is divided by 3 and lines
/// are twice as wide. Without a target nothing is drawn and texts have no size.
class clsChartWrapper {
 public:
  enum FillStyleConst : std::int32_t { kSolid = 0, kTransparent = 1 };

  clsChartWrapper(std::shared_ptr<PictureBox> picture, std::shared_ptr<clsPrintBook> book);

  const std::shared_ptr<clsPrintBook>& PrintBookObject() const { return book_; }
  const std::shared_ptr<PictureBox>& PictureBoxObject() const { return picture_; }

  std::int32_t DrawWidth = 1;
  Color ForeColor = 0;  // of lines, outlines and texts
  Color FillColor = 0;  // of boxes and circles when they are filled
  std::int32_t FillStyle = kTransparent;
  /// The upper left corner of the box of the next text.
  float CurrentX = 0, CurrentY = 0;
  /// Whether the next texts run from top to bottom.
  bool Turned = false;
  /// How much larger than usual the next texts are, and whether they are bold.
  float TextRatio = 1;
  bool Bold = false;
  /// The white rim of the next texts. On a print book it is a white box.
  float Halo = 0;

  void DrawLine(float X1, float Y1, float X2, float Y2);
  /// Filled first when the fill style is solid; the outline is left out for a pen of width 0.
  void DrawBox(float X1, float Y1, float X2, float Y2);
  void DrawCircle(float X, float Y, float Radius);
  void PrintText(std::string_view Text);
  /// The width is measured along the line of writing, the height across it.
  float TextWidth(std::string_view Text) const;
  float TextHeight() const;
  /// Erases a picture before the first drawing.
  void BeginDraw();
  /// Ends the page of a print book.
  void EndDraw();

 private:
  TextStyle Style() const;
  std::shared_ptr<DrawingSurface> Measure() const;

  std::shared_ptr<PictureBox> picture_;
  std::shared_ptr<clsPrintBook> book_;
  Font font_;  // that of the component's windows; its size is points of 1/72 inch
  float size_ = 12;
};

}  // namespace keltrun
