#include <string>

#include "keltrun2/codec/cp932.h"
#include "keltrun2/codec/iconv_converter.h"
#include "keltrun2/codec/utf8.h"

namespace keltrun {
namespace {

std::uint16_t Ask(IconvConverter& converter, char32_t c) {
  if (c >= 0xD800 && c <= 0xDFFF) return kNoCode;
  std::string utf8;
  AppendUtf8(utf8, c);
  const char* in = utf8.data();
  std::size_t in_left = utf8.size();
  unsigned char bytes[8];
  char* out = reinterpret_cast<char*>(bytes);
  std::size_t out_left = sizeof bytes;
  if (!converter.Run(in, in_left, out, out_left)) return kNoCode;
  const std::size_t length = sizeof bytes - out_left;
  if (length == 1) return bytes[0];
  return length == 2 ? static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]) : kNoCode;
}

}  // namespace

void FillCp932Page(char32_t first, Cp932Page& page) {
  thread_local IconvConverter converter("CP932", "UTF-8");
  for (char32_t i = 0; i < 256; ++i) page[i] = Ask(converter, first + i);
}

bool DecodeCp932(const char*& in, std::size_t& in_left, char*& out, std::size_t& out_left) {
  thread_local IconvConverter converter("UTF-8", "CP932");
  return converter.Run(in, in_left, out, out_left);
}

}  // namespace keltrun
