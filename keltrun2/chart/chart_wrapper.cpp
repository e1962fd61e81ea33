#include "keltrun2/chart/chart_wrapper.h"

#include <cmath>
#include <utility>

#include "keltrun2/config/settings.h"
#include "keltrun2/drawing/drawing_limits.h"

namespace keltrun {
namespace {

constexpr double kUnitsPerInch = 96;

float ToBook(float units) { return units / kChartUnitsPerBookUnit; }

// Print books take font sizes in points at a zoom of 1, where their unit is a millimeter.
double BookPoints(float units) { return ToBook(units) / kMmPerInch * kPointsPerInch; }

// Hosts can measure texts, too, so a value that cannot be a size becomes 0.
float SaneSize(float size) { return std::isfinite(size) && size > 0 ? size : 0; }

}  // namespace

clsChartWrapper::clsChartWrapper(std::shared_ptr<PictureBox> picture,
                                 std::shared_ptr<clsPrintBook> book)
    : picture_(std::move(picture)), book_(std::move(book)) {
  ApplyFont(font_);
  size_ = static_cast<float>(font_.Size() * kUnitsPerInch / kPointsPerInch);
}

void clsChartWrapper::DrawLine(float X1, float Y1, float X2, float Y2) {
  if (picture_) {
    picture_->DrawLine(X1, Y1, X2, Y2, ForeColor, static_cast<float>(DrawWidth));
  } else if (book_) {
    book_->DrawLine(ToBook(X1), ToBook(Y1), ToBook(X2 - X1), ToBook(Y2 - Y1), ForeColor,
                    static_cast<float>(2 * DrawWidth));
  }
}

void clsChartWrapper::DrawBox(float X1, float Y1, float X2, float Y2) {
  for (const bool fill : {true, false}) {
    if (fill ? FillStyle != kSolid : DrawWidth <= 0) continue;
    const Color color = fill ? FillColor : ForeColor;
    if (picture_) {
      picture_->DrawBox(X1, Y1, X2 - X1, Y2 - Y1, color, static_cast<float>(DrawWidth), fill);
    } else if (book_) {
      book_->DrawBox(ToBook(X1), ToBook(Y1), ToBook(X2 - X1), ToBook(Y2 - Y1), color,
                     static_cast<float>(2 * DrawWidth), fill);
    }
  }
}

void clsChartWrapper::DrawCircle(float X, float Y, float Radius) {
  const bool fill = FillStyle == kSolid;
  const Color color = fill ? FillColor : ForeColor;
  if (picture_) {
    picture_->DrawCircle(X, Y, Radius, color, static_cast<float>(DrawWidth), fill);
  } else if (book_) {
    book_->DrawCircle(ToBook(X), ToBook(Y), ToBook(Radius), static_cast<float>(color), fill);
  }
}

void clsChartWrapper::PrintText(std::string_view Text) {
  if (picture_) {
    picture_->DrawText(Text, CurrentX, CurrentY, Style());
  } else if (book_) {
    Font font = Style().Font;
    font.SetSize(BookPoints(Style().Size));
    // The box has the size of the text, which therefore fills it with any alignment. A turned text
    // extends to the left of its corner.
    const float width = ToBook(TextWidth(Text));
    const float height = ToBook(TextHeight());
    const float left = ToBook(CurrentX) - (Turned ? height : 0);
    const float across = Turned ? height : width;
    const float down = Turned ? width : height;
    if (Halo > 0) book_->DrawBox(left, ToBook(CurrentY), across, down, kWhite, 0, true);
    book_->PrintText(Text, font, left, ToBook(CurrentY), across, down, PRINTBOOK_ALIGN_LEFT,
                     PRINTBOOK_VALIGN_TOP, Turned, 1.0F, ForeColor);
  }
}

float clsChartWrapper::TextWidth(std::string_view Text) const {
  const auto surface = Measure();
  return surface ? SaneSize(surface->TextWidth(Text, Style())) : 0;
}

float clsChartWrapper::TextHeight() const {
  const auto surface = Measure();
  return surface ? SaneSize(surface->TextHeight(Style())) : 0;
}

void clsChartWrapper::BeginDraw() {
  if (picture_) picture_->Clear();
}

void clsChartWrapper::EndDraw() {
  if (book_) book_->NewPage();
}

TextStyle clsChartWrapper::Style() const {
  TextStyle style{.Font = font_,
                  .Size = size_ * TextRatio,
                  .HeightRatio = 1,
                  .Turned = Turned,
                  .Color = ForeColor,
                  .Halo = Halo};
  style.Font.Bold |= Bold;
  return style;
}

// The size of a text is proportional to that of its letters in any unit, so the printer of a print
// book measures the chart's units as millimeters. The surface keeps its printer, which the book may
// release.
std::shared_ptr<DrawingSurface> clsChartWrapper::Measure() const {
  if (picture_ || !book_) return picture_;
  const std::shared_ptr<Printer> printer = book_->PrinterObject();
  return {printer, &printer->Measure()};
}

}  // namespace keltrun
