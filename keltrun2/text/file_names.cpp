#include "keltrun2/text/file_names.h"

#include "keltrun2/text/utf16.h"

namespace keltrun {
namespace {

constexpr std::string_view kUnsafe = ":/|><'\"";

}  // namespace

std::string RemoveUnsafe(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (kUnsafe.find(c) == std::string_view::npos) out += c;
  }
  return out;
}

std::string CleanFileName(std::string_view path) {
  const std::size_t backslash = path.rfind('\\');
  const std::size_t colon = path.rfind(':');
  std::size_t separator = backslash;
  if (separator == std::string_view::npos) separator = path.rfind('/');
  if (separator == std::string_view::npos) separator = colon;
  const std::size_t title = separator == std::string_view::npos ? 0 : separator + 1;

  const std::size_t folder_end = backslash != std::string_view::npos ? backslash : colon;
  std::string out;
  if (folder_end != std::string_view::npos) {
    out = path.substr(0, folder_end + 1);
    if (out.back() != '\\' && out.back() != '/') out += '\\';
  }
  return out + RemoveUnsafe(path.substr(title));
}

std::string RemoveUnsafeKeepingExtension(std::string_view text) {
  const std::size_t dot = text.rfind('.');
  if (dot == std::string_view::npos || text.find_first_of(kUnsafe, dot) != std::string_view::npos) {
    return RemoveUnsafe(text);  // the text after the last dot is not an extension
  }
  return RemoveUnsafe(text.substr(0, dot)) + std::string(text.substr(dot));
}

std::string EncodeWideCharacters(std::string_view text) {
  static constexpr char kHex[] = "0123456789abcdef";
  std::string out;
  for (const char16_t unit : ToUtf16(text)) {
    if (unit <= 0xFF) {
      out += ToUtf8(std::u16string_view(&unit, 1));
      continue;
    }
    out += 'u';
    for (int shift = 12; shift >= 0; shift -= 4) out += kHex[(unit >> shift) & 15];
  }
  return out;
}

}  // namespace keltrun
