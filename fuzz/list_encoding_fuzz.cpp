// The encoding of lists: the text of any bytes is valid UTF-8, and a text that is UTF-8 is
// unchanged.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "keltrun2/codec/list_encoding.h"
#include "keltrun2/codec/utf8.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keltrun;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const ListText list = DecodeList(bytes, std::nullopt);
  const std::string& text = list.Content.Text;
  if (FindInvalidUtf8(text) != std::string_view::npos) std::abort();
  if (DecodeList(text, Charset::kUtf8).Content.Text.size() > text.size()) std::abort();
  return 0;
}
