// Charsets that the library does not know itself: those of the browser, in place of
// keltrun2/codec/named_charset.cpp. The C library's tables would make the page a quarter larger.
#include <emscripten.h>

#include <cstdlib>
#include <memory>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/codec/utf8.h"

// Decodes bytes into UTF-8 in memory that the caller frees; null when the browser does not know the
// charset. Bytes that are not valid become U+FFFD.
// NOLINTBEGIN
EM_JS(char*, decode_by_browser, (const char* bytes, int size, const char* name, int* length), {
  try {
    const text = new TextDecoder(UTF8ToString(name)).decode(HEAPU8.subarray(bytes, bytes + size));
    const utf8 = new TextEncoder().encode(text);
    const place = _malloc(utf8.length + 1);
    HEAPU8.set(utf8, place);
    HEAP32[length >> 2] = utf8.length;
    return place;
  } catch (error) {
    return 0;
  }
});
// NOLINTEND

namespace keltrun {

std::optional<Decoded> DecodeByName(std::string_view bytes, std::string_view name) {
  int length = 0;
  const std::unique_ptr<char, decltype(&std::free)> text(
      decode_by_browser(bytes.data(), static_cast<int>(bytes.size()), std::string(name).c_str(),
                        &length),
      std::free);
  if (text == nullptr) return std::nullopt;
  Decoded decoded;
  decoded.Text.assign(text.get(), static_cast<std::size_t>(length));
  std::string replacement;
  AppendUtf8(replacement, kReplacementCharacter);
  decoded.FirstInvalid = decoded.Text.find(replacement);
  return decoded;
}

}  // namespace keltrun
