#include <algorithm>
#include <iterator>
#include <string>

#include "keltrun2/codec/cp932.h"
#include "keltrun2/codec/cp932_codes.h"  // made by make_cp932_codes.py
#include "keltrun2/codec/utf8.h"

namespace keltrun {
namespace {

constexpr std::size_t kTrails = 188;  // 0x40 to 0x7E and 0x80 to 0xFC

struct Character {
  char16_t value = 0;      // 0 for none
  std::size_t length = 1;  // in bytes
};

// The place of the pair in the table; beyond the table when it is no pair.
std::size_t PlaceOf(unsigned lead, unsigned trail) {
  const bool is_lead = (lead >= 0x81 && lead <= 0x9F) || (lead >= 0xE0 && lead <= 0xFC);
  const bool is_trail = trail >= 0x40 && trail <= 0xFC && trail != 0x7F;
  if (!is_lead || !is_trail) return std::size(kCp932Pairs);
  return (lead - (lead < 0xE0 ? 0x81 : 0xC1)) * kTrails + trail - (trail < 0x7F ? 0x40 : 0x41);
}

std::uint16_t CodeAt(std::size_t place) {
  const std::size_t lead = place / kTrails;
  const std::size_t trail = place % kTrails;
  const std::size_t code =
      (lead + (lead < 0x1F ? 0x81 : 0xC1)) << 8 | (trail + (trail < 0x3F ? 0x40 : 0x41));
  return static_cast<std::uint16_t>(code);
}

Character Next(const char* in, std::size_t in_left) {
  const unsigned lead = static_cast<unsigned char>(in[0]);
  if (lead < 0x80) return {static_cast<char16_t>(lead), 1};
  if (const char16_t single = kCp932Singles[lead - 0x80]; single != 0) return {single, 1};
  if (in_left < 2) return {};
  const std::size_t place = PlaceOf(lead, static_cast<unsigned char>(in[1]));
  return place < std::size(kCp932Pairs) ? Character{kCp932Pairs[place], 2} : Character{};
}

}  // namespace

void FillCp932Page(char32_t first, Cp932Page& page) {
  page.fill(kNoCode);
  const auto set = [&](char32_t c, std::uint16_t code) {
    if (c >= first && c - first < 256 && page[c - first] == kNoCode) page[c - first] = code;
  };
  for (const auto& [c, code] : kCp932Choices) set(c, code);
  for (std::uint16_t c = 1; c < 0x80; ++c) set(c, c);
  if (first == 0) page[0] = 0;
  for (std::size_t i = 0; i < 0x80; ++i) {
    if (kCp932Singles[i] != 0) set(kCp932Singles[i], static_cast<std::uint16_t>(0x80 + i));
  }
  for (std::size_t i = 0; i < std::size(kCp932Pairs); ++i) {
    if (kCp932Pairs[i] != 0) set(kCp932Pairs[i], CodeAt(i));
  }
}

bool DecodeCp932(const char*& in, std::size_t& in_left, char*& out, std::size_t& out_left) {
  std::string utf8;
  while (in_left > 0) {
    const Character character = Next(in, in_left);
    const bool is_nul = *in == '\0';
    if (out_left < 8 || (character.value == 0 && !is_nul)) return false;
    utf8.clear();
    AppendUtf8(utf8, character.value);
    out = std::copy(utf8.begin(), utf8.end(), out);
    out_left -= utf8.size();
    in += character.length;
    in_left -= character.length;
  }
  return true;
}

}  // namespace keltrun
