// The recorded drawings of a print book.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/print/print_book.h"

namespace keltrun {

enum class PrintKind : std::int32_t { kText = 0, kBox = 1, kLine = 2, kCircle = 3 };

/// One recorded drawing. Coordinates, sizes, line width and font size are already multiplied by the
/// book's VirtualZoomRatio at the time of recording.
class clsPrintBookLine {
 public:
  PrintKind Kind = PrintKind::kText;
  float Left = 0, Top = 0;      // of a circle: its center
  float Width = 0, Height = 0;  // of a circle: Width is the radius
  keltrun::Color Color = 0;
  float DrawWidth = 0;  // dots of 1/300 inch at a zoom of 1
  bool Fill = false;

  // Only texts have these.
  bool IsLandscape = false;
  bool AutoStringCut = false;
  bool IsPageNumber = false;  // %1 and %2 in Text stand for the page and the number of pages
  PrintBookAlignConst Align = PRINTBOOK_ALIGN_LEFT;
  PrintBookValignConst Valign = PRINTBOOK_VALIGN_TOP;
  float ChrHeight = 1;
  std::shared_ptr<const Font> TextFont;  // shared by the texts that look alike, null for others
  std::string Text;
};

class PrintBookInternal {
 public:
  /// The drawings of a page, in recording order; never empty.
  using Page = std::vector<clsPrintBookLine>;

  static const std::vector<Page>& Pages(const clsPrintBook& book);

  /// Prints the number of the current page, right-aligned: the text with the page in the place of
  /// "%1" and the number of pages that the book has when it is printed or shown in that of "%2".
  static void PrintPageNumber(clsPrintBook& book, std::string_view text, const Font& font,
                              float left, float top, float width, float height);
};

}  // namespace keltrun
