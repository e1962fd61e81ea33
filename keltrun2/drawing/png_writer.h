// Encoding pixels as a PNG file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct libdeflate_compressor;

namespace keltrun {

/// Rows of pixels of 0x__RRGGBB each, without gaps.
struct PixelView {
  const std::uint32_t* Pixels;
  std::int32_t Width;
  std::int32_t Height;
};

/// Makes PNG files. Its memory is kept for the next picture, because fresh memory of that size
/// takes a fifth of the time.
class PngEncoder {
 public:
  /// The bytes of an opaque PNG file, with a palette if 256 colors are enough. Raises bad_alloc.
  std::string Encode(const PixelView& picture);

 private:
  struct CompressorDeleter {
    void operator()(libdeflate_compressor* compressor) const;
  };

  void NumberColors(const PixelView& picture);
  void FilterRows(const PixelView& picture);
  std::string_view Compress();
  bool HasPalette() const { return !colors_.empty(); }
  std::size_t BitDepth() const;

  std::vector<std::uint32_t> colors_;  // brightest first; none if there are too many
  std::vector<std::uint8_t> numbers_;  // of each pixel's color
  std::vector<std::uint8_t> filtered_;
  std::unique_ptr<char[]> compressed_;
  std::size_t compressed_size_ = 0;
  std::unique_ptr<libdeflate_compressor, CompressorDeleter> compressor_;
};

}  // namespace keltrun
