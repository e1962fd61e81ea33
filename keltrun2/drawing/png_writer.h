// Encoding pixels as a PNG file.
#pragma once

#include <cstdint>
#include <string>

namespace keltrun {

/// Rows of pixels of 0x__RRGGBB each, without gaps.
struct PixelView {
  const std::uint32_t* Pixels;
  std::int32_t Width;
  std::int32_t Height;
};

/// The bytes of an opaque PNG file, with a palette if 256 colors are enough. Raises invalid
/// procedure call (5) if there is not enough memory.
std::string EncodePng(const PixelView& picture);

}  // namespace keltrun
