#include "keltrun2/codec/utf8.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace keltrun {
namespace {

// The character of a valid sequence and its length, or length 0 if the sequence is not valid.
struct Decoded {
  char32_t character;
  std::size_t length;
};

Decoded Decode(std::string_view text, std::size_t pos) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[pos + i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return {lead, 1};
  std::size_t length = 0;
  char32_t smallest = 0;
  char32_t c = 0;
  if ((lead & 0xE0) == 0xC0) {
    length = 2, smallest = 0x80, c = lead & 0x1F;
  } else if ((lead & 0xF0) == 0xE0) {
    length = 3, smallest = 0x800, c = lead & 0x0F;
  } else if ((lead & 0xF8) == 0xF0) {
    length = 4, smallest = 0x10000, c = lead & 0x07;
  } else {
    return {kReplacementCharacter, 0};
  }
  if (length > text.size() - pos) return {kReplacementCharacter, 0};
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return {kReplacementCharacter, 0};
    c = (c << 6) | (byte(i) & 0x3F);
  }
  const bool surrogate = c >= 0xD800 && c <= 0xDFFF;
  if (c < smallest || c > 0x10FFFF || surrogate) return {kReplacementCharacter, 0};
  return {c, length};
}

// Whether the bytes of some words are all ASCII.
template <std::size_t kWords>
bool AreAscii(const char* bytes) {
  std::array<std::uint64_t, kWords> words;
  std::memcpy(words.data(), bytes, sizeof words);
  std::uint64_t all = 0;
  for (const std::uint64_t word : words) all |= word;
  return (all & 0x8080808080808080u) == 0;
}

// The number of ASCII bytes from `pos` on. Checks many bytes at a time.
std::size_t AsciiRun(std::string_view text, std::size_t pos) {
  const std::size_t start = pos;
  while (text.size() - pos >= 64 && AreAscii<8>(text.data() + pos)) pos += 64;
  while (text.size() - pos >= 8 && AreAscii<1>(text.data() + pos)) pos += 8;
  while (pos < text.size() && static_cast<unsigned char>(text[pos]) < 0x80) ++pos;
  return pos - start;
}

}  // namespace

char32_t NextCodePoint(std::string_view text, std::size_t& pos) {
  const Decoded decoded = Decode(text, pos);
  pos += decoded.length == 0 ? 1 : decoded.length;
  return decoded.character;
}

void AppendUtf8(std::string& out, char32_t c) {
  if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) c = kReplacementCharacter;
  const auto put = [&](char32_t byte) { out.push_back(static_cast<char>(byte)); };
  if (c < 0x80) {
    put(c);
  } else if (c < 0x800) {
    put(0xC0 | (c >> 6));
    put(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    put(0xE0 | (c >> 12));
    put(0x80 | ((c >> 6) & 0x3F));
    put(0x80 | (c & 0x3F));
  } else {
    put(0xF0 | (c >> 18));
    put(0x80 | ((c >> 12) & 0x3F));
    put(0x80 | ((c >> 6) & 0x3F));
    put(0x80 | (c & 0x3F));
  }
}

std::size_t FindInvalidUtf8(std::string_view text) {
  std::size_t pos = AsciiRun(text, 0);
  while (pos < text.size()) {
    const Decoded decoded = Decode(text, pos);
    if (decoded.length == 0) return pos;
    pos += decoded.length;
    pos += AsciiRun(text, pos);
  }
  return std::string_view::npos;
}

std::string ValidUtf8(std::string_view text) {
  if (FindInvalidUtf8(text) == std::string_view::npos) return std::string(text);
  std::string out;
  for (std::size_t pos = 0; pos < text.size();) AppendUtf8(out, NextCodePoint(text, pos));
  return out;
}

bool IsAscii(std::string_view text) { return AsciiRun(text, 0) == text.size(); }

}  // namespace keltrun
