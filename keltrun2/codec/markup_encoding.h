// The text of an XML document or web page of another program, whatever it declares.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "keltrun2/codec/encodings.h"

namespace keltrun {

/// A decoded document, and how its charset was chosen.
struct MarkupText {
  Decoded Content;            // without a byte-order mark, with U+FFFD for what cannot be decoded
  std::string Used;           // the charset: "UTF-8", "Shift-JIS", "Windows-1252", or its name
  std::string Declared;       // the charset that the document declares; may be empty
  bool Contradicted = false;  // the bytes are not in the declared charset, or nobody knows it
  bool Assumed = false;       // the charset is a guess that the bytes do not confirm
  std::size_t Blanked = 0;    // control characters that XML does not allow, read as blanks
};

/// Decodes a document. It is never refused. A byte-order mark decides; then the charset that was
/// asked for; then the declaration or the META element of a page, unless the bytes contradict it:
/// an 8-bit charset is declared, but the bytes are UTF-8 with characters beyond ASCII, or UTF-8 or
/// ASCII is declared and the bytes are not. Without a declaration that holds, UTF-8 is recognized,
/// and other bytes are read as DecodeList does. All charsets of the C library can be declared; ISO
/// 8859-1 is read as Windows-1252. UTF-16 is recognized without a mark, too.
MarkupText DecodeMarkup(std::string_view bytes, std::optional<Charset> asked_for);

}  // namespace keltrun
