// Shift-JIS as Windows has it, code page 932: the characters and their codes. They come from the C
// library or, with KELTRUN2_SHIFT_JIS_TABLE, from a table that the build made.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace keltrun {

inline constexpr std::uint16_t kNoCode = 0xFFFF;

/// The codes of the 256 characters from `first` on, which is a multiple of 256 and at most U+FF00:
/// one byte below 256, two bytes above, or kNoCode.
using Cp932Page = std::array<std::uint16_t, 256>;
void FillCp932Page(char32_t first, Cp932Page& page);

/// Decodes into UTF-8 and moves the places of both buffers. False when it stopped before the end of
/// the input: at bytes that are no character, or cut ones, unless fewer than 8 bytes are left for
/// the output.
bool DecodeCp932(const char*& in, std::size_t& in_left, char*& out, std::size_t& out_left);

}  // namespace keltrun
