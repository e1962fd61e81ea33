// Texts laid out in a box.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "keltrun2/print/print_book.h"

namespace keltrun {

/// A text and its box, in units of the surface.
struct TextBox {
  std::string_view Text;
  float Left = 0, Top = 0, Width = 0, Height = 0;
  /// Also the values tpatEqual and tpvtEqual: the characters of each line, or the lines, are spread
  /// over the box.
  PrintBookAlignConst Align = PRINTBOOK_ALIGN_LEFT;
  PrintBookValignConst Valign = PRINTBOOK_VALIGN_TOP;
  bool Cut = false;  // lines that are too long end in an ellipsis
};

/// Draws the text line by line. A turned text runs from the top of the box to its bottom, its first
/// line at the right.
void DrawTextInBox(DrawingSurface& surface, const TextBox& box, const TextStyle& style);

/// Ends of the characters as a reader sees them: a letter together with its combining marks, its
/// variation selectors and whatever a joiner attaches to it, or the two letters of a flag.
std::vector<std::size_t> CharacterEnds(std::string_view text);

}  // namespace keltrun
