#include "keltrun2/print/fitted_text.h"

#include <algorithm>
#include <memory>

#include "keltrun2/drawing/drawing_limits.h"

namespace keltrun {
namespace {

constexpr double kSmallest = 0.7;
constexpr double kSpare = 0.995;  // so that rounding never cuts a text that fits

}  // namespace

float PrintedWidth(const clsPrintBook& book, std::string_view text, const Font& font) {
  constexpr double kMmPerPoint = kMmPerInch / kPointsPerInch;
  TextStyle style;
  style.Font = font;
  style.Size = static_cast<float>(font.Size() * kMmPerPoint);
  // The host may make the book release its printer.
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
  const std::shared_ptr<Printer> printer = book.PrinterObject();
  return printer->Measure().TextWidth(text, style);
}

Font FittedFont(const clsPrintBook& book, std::string_view text, const Font& font, float width) {
  const double needed = PrintedWidth(book, text, font);
  if (!(needed > width) || !(width > 0)) return font;
  Font fitted = font;
  fitted.SetSize(font.Size() * std::max(kSmallest, kSpare * width / needed));
  return fitted;
}

}  // namespace keltrun
