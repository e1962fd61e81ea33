// The encoding of XML documents of other programs: the text of any bytes is valid UTF-8 that the
// XML reader opens, and a text that is UTF-8 is unchanged.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "keltrun2/codec/markup_encoding.h"
#include "keltrun2/codec/utf8.h"
#include "keltrun2/codec/xml.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keltrun;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const MarkupText xml = DecodeMarkup(bytes, std::nullopt);
  const std::string& text = xml.Content.Text;
  if (FindInvalidUtf8(text) != std::string_view::npos) std::abort();
  if (FindBadReference(text) != std::string_view::npos) std::abort();
  if (text.find('\0') != std::string::npos) std::abort();
  if (DecodeMarkup(text, Charset::kUtf8).Content.Text.size() > text.size()) std::abort();
  return 0;
}
