#include "keltrun2/codec/base64.h"

#include <cstddef>
#include <cstdint>

namespace keltrun {

void AppendBase64(std::string& out, std::string_view bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  out.reserve(out.size() + bytes.size() / 3 * 4 + 4);
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::string_view group = bytes.substr(at, 3);
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 3; ++i) {
      bits = bits << 8 | (i < group.size() ? static_cast<unsigned char>(group[i]) : 0U);
    }
    for (std::size_t i = 0; i < 4; ++i) {
      out += i <= group.size() ? kDigits[bits >> (18 - 6 * i) & 63] : '=';
    }
  }
}

}  // namespace keltrun
