// The text of a file that is loaded, in UTF-8.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/io/remarks.h"

namespace keltrun {

/// A text, and what was noticed while it was decoded.
struct InputText {
  std::string text;
  std::vector<LoadRemark> remarks;
};

/// A text that the host gave. Its control characters are read as blanks.
InputText HostText(std::string text);

/// Decodes a list or printout, with control characters as blanks.
InputText DecodeText(std::string_view bytes, std::optional<Charset> asked_for);

/// Decodes a file of another program: XML documents and web pages as they declare, other texts like
/// lists.
InputText DecodeForeignText(std::string_view bytes, std::optional<Charset> asked_for);

}  // namespace keltrun
