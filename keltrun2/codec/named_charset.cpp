// Charsets that the library does not know itself: those of the C library.
#include <algorithm>
#include <array>
#include <cerrno>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/codec/iconv_converter.h"
#include "keltrun2/codec/utf8.h"

namespace keltrun {
namespace {

// Whether a text can be the name of a charset. For the C library, a "/" would begin an option.
bool IsCharsetName(std::string_view name) {
  constexpr std::size_t kLongestName = 40;
  const auto is_part = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || c == '.' || c == ':';
  };
  return !name.empty() && name.size() <= kLongestName &&
         std::all_of(name.begin(), name.end(), is_part);
}

}  // namespace

std::optional<Decoded> DecodeByName(std::string_view bytes, std::string_view name) {
  if (!IsCharsetName(name)) return std::nullopt;
  IconvConverter converter("UTF-8", std::string(name).c_str());
  if (!converter.ok()) return std::nullopt;
  Decoded decoded;
  decoded.Text.reserve(bytes.size() + bytes.size() / 4);
  std::array<char, 4096> buffer;
  while (!bytes.empty()) {
    const char* in = bytes.data();
    std::size_t in_left = bytes.size();
    char* target = buffer.data();
    std::size_t target_left = buffer.size();
    const bool whole = converter.Run(in, in_left, target, target_left);
    const bool is_full = !whole && errno == E2BIG && target_left < buffer.size();
    decoded.Text.append(buffer.data(), buffer.size() - target_left);
    bytes.remove_prefix(bytes.size() - in_left);
    if (whole || is_full || bytes.empty()) continue;
    if (decoded.FirstInvalid == std::string::npos) decoded.FirstInvalid = decoded.Text.size();
    AppendUtf8(decoded.Text, kReplacementCharacter);
    bytes.remove_prefix(1);
  }
  char* target = buffer.data();
  std::size_t target_left = buffer.size();
  converter.Flush(target, target_left);
  decoded.Text.append(buffer.data(), buffer.size() - target_left);
  return decoded;
}

}  // namespace keltrun
