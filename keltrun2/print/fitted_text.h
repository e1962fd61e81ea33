// Texts that become smaller where they are too wide.
#pragma once

#include <string_view>

#include "keltrun2/drawing/font.h"
#include "keltrun2/print/print_book.h"

namespace keltrun {

/// The width of a text in the book's virtual units, measured by its printer.
float PrintedWidth(const clsPrintBook& book, std::string_view text, const Font& font);

/// The font in the largest size, at most its own, in which the text is not wider than `width`; but
/// no smaller than seven tenths, from where on a text is rather cut.
Font FittedFont(const clsPrintBook& book, std::string_view text, const Font& font, float width);

}  // namespace keltrun
