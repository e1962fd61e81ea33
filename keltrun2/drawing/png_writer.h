// Pixels as the bytes of a PNG file.
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

/// An opaque PNG: with a palette when 256 colours suffice. Raises invalid procedure call (5) when
/// there is no memory for it.
std::string EncodePng(const PixelView& picture);

}  // namespace keltrun
