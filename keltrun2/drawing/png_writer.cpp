#include "keltrun2/drawing/png_writer.h"

#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <new>
#include <utility>
#include <vector>

namespace keltrun {
namespace {

using Bytes = std::vector<std::uint8_t>;

// The next level takes a fifth more time and saves less than a hundredth of the size.
constexpr int kLevel = 5;

constexpr std::uint8_t kIndexed = 3, kTrueColor = 2;  // color types of PNG
constexpr std::uint8_t kNone = 0, kUp = 2;            // filters: as it is, less the row above

std::uint32_t Rgb(std::uint32_t pixel) { return pixel & 0xFFFFFF; }

std::uint32_t Brightness(std::uint32_t rgb) {
  return 299 * (rgb >> 16) + 587 * (rgb >> 8 & 0xFF) + 114 * (rgb & 0xFF);
}

// The colors of a picture, numbered in the order in which they appear.
class Palette {
 public:
  static constexpr std::size_t kMost = 256;

  Palette() { slots_.fill({kFree, 0}); }

  /// The number of the color, which is added if it is new; kMost if the palette is full.
  std::size_t Find(std::uint32_t color) {
    std::size_t slot = color * 2654435761U >> (32 - kSlotBits);
    while (slots_[slot].Rgb != color) {
      if (slots_[slot].Rgb == kFree) return Add(color, slot);
      slot = (slot + 1) % slots_.size();
    }
    return slots_[slot].Number;
  }

  const std::vector<std::uint32_t>& colors() const { return colors_; }

 private:
  static constexpr std::uint32_t kFree = 0xFFFFFFFF;  // no color
  static constexpr unsigned kSlotBits = 12;
  struct Slot {
    std::uint32_t Rgb;
    std::uint32_t Number;
  };

  std::size_t Add(std::uint32_t color, std::size_t slot) {
    if (colors_.size() == kMost) return kMost;
    slots_[slot] = {color, static_cast<std::uint32_t>(colors_.size())};
    colors_.push_back(color);
    return slots_[slot].Number;
  }

  // A hash table so large that a color is nearly always in the first slot looked at.
  std::array<Slot, std::size_t{1} << kSlotBits> slots_;
  std::vector<std::uint32_t> colors_;
};

// Numbers the colors from the brightest to the darkest. Most are shades at the edges of lines, so
// the differences of neighboring pixels are then small, and repeat from line to line.
void SortByBrightness(std::vector<std::uint32_t>& colors, Bytes& numbers) {
  std::vector<std::uint32_t> sorted = colors;
  std::sort(sorted.begin(), sorted.end(), [](std::uint32_t a, std::uint32_t b) {
    return std::pair(Brightness(a), a) > std::pair(Brightness(b), b);
  });
  std::array<std::uint8_t, Palette::kMost> new_numbers{};
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    const auto found = std::find(sorted.begin(), sorted.end(), colors[i]);
    new_numbers[i] = static_cast<std::uint8_t>(found - sorted.begin());
  }
  for (std::uint8_t& number : numbers) number = new_numbers[number];
  colors = std::move(sorted);
}

// Up to eight numbers in each byte, the first in the highest bits.
void PackNumbers(const std::uint8_t* numbers, std::size_t count, std::size_t depth, Bytes& row) {
  if (depth == 8) {
    std::copy_n(numbers, count, row.begin());
    return;
  }
  std::fill(row.begin(), row.end(), std::uint8_t{0});
  for (std::size_t x = 0; x < count; ++x) {
    const std::size_t bit = x * depth;
    row[bit / 8] |= static_cast<std::uint8_t>(numbers[x] << (8 - depth - bit % 8));
  }
}

void SplitColors(const std::uint32_t* pixels, std::size_t count, Bytes& row) {
  for (std::size_t x = 0; x < count; ++x) {
    row[3 * x] = static_cast<std::uint8_t>(pixels[x] >> 16);
    row[3 * x + 1] = static_cast<std::uint8_t>(pixels[x] >> 8);
    row[3 * x + 2] = static_cast<std::uint8_t>(pixels[x]);
  }
}

std::size_t CountDifferent(const std::uint8_t* a, const std::uint8_t* b, std::size_t size) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < size; ++i) count += a[i] != b[i] ? 1 : 0;
  return count;
}

// Lines that are steep, and the space between lines, are as in the row above. Where lines lie flat,
// the row itself has fewer changes; 3/5 gave the smallest files among the ratios tried.
std::uint8_t BestFilter(const Bytes& row, const Bytes& above, std::size_t pixel_size) {
  const std::size_t up = CountDifferent(row.data(), above.data(), row.size());
  const std::size_t none =
      CountDifferent(row.data() + pixel_size, row.data(), row.size() - pixel_size);
  return 5 * up <= 3 * none ? kUp : kNone;
}

void AppendNumber(std::string& out, std::size_t number, std::size_t bytes = 4) {
  while (bytes-- > 0) out += static_cast<char>(number >> 8 * bytes & 0xFF);
}

void AppendChunk(std::string& out, std::string_view type, std::string_view data) {
  AppendNumber(out, data.size());
  const std::size_t begin = out.size();
  out.append(type).append(data);
  AppendNumber(out, libdeflate_crc32(0, out.data() + begin, out.size() - begin));
}

}  // namespace

void PngEncoder::CompressorDeleter::operator()(libdeflate_compressor* compressor) const {
  libdeflate_free_compressor(compressor);
}

// Finds the colors, and for each pixel the number of its color. No colors if there are too many.
void PngEncoder::NumberColors(const PixelView& picture) {
  Palette palette;
  const auto count =
      static_cast<std::size_t>(picture.Width) * static_cast<std::size_t>(picture.Height);
  numbers_.resize(count);
  colors_.clear();
  std::uint8_t* const numbers = numbers_.data();
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t number = palette.Find(Rgb(picture.Pixels[i]));
    if (number == Palette::kMost) return;
    numbers[i] = static_cast<std::uint8_t>(number);
  }
  colors_ = palette.colors();
  SortByBrightness(colors_, numbers_);
}

std::size_t PngEncoder::BitDepth() const {
  const std::size_t count = colors_.size();
  return count == 0 ? 8 : count <= 2 ? 1 : count <= 4 ? 2 : count <= 16 ? 4 : 8;
}

// All rows with the number of its filter in front of each.
void PngEncoder::FilterRows(const PixelView& picture) {
  const auto width = static_cast<std::size_t>(picture.Width);
  const auto height = static_cast<std::size_t>(picture.Height);
  const std::size_t depth = HasPalette() ? BitDepth() : 24;
  Bytes row((width * depth + 7) / 8), above(row.size());
  filtered_.resize((row.size() + 1) * height);
  auto out = filtered_.begin();
  for (std::size_t first = 0; first < width * height; first += width) {
    if (HasPalette()) {
      PackNumbers(numbers_.data() + first, width, depth, row);
    } else {
      SplitColors(picture.Pixels + first, width, row);
    }
    const std::uint8_t filter = BestFilter(row, above, (depth + 7) / 8);
    *out++ = filter;
    if (filter == kUp) {
      std::transform(row.begin(), row.end(), above.begin(), out, std::minus<std::uint8_t>());
    } else {
      std::copy(row.begin(), row.end(), out);
    }
    out += static_cast<std::ptrdiff_t>(row.size());
    std::swap(row, above);
  }
}

// The filtered rows as a zlib stream. Memory for the worst case is asked for, but the system gives
// only what is written to.
std::string_view PngEncoder::Compress() {
  if (!compressor_) compressor_.reset(libdeflate_alloc_compressor(kLevel));
  if (!compressor_) throw std::bad_alloc();
  const std::size_t most = libdeflate_zlib_compress_bound(compressor_.get(), filtered_.size());
  if (compressed_size_ < most) {
    compressed_size_ = 0;
    compressed_ = std::make_unique_for_overwrite<char[]>(most);
    compressed_size_ = most;
  }
  return {compressed_.get(),
          libdeflate_zlib_compress(compressor_.get(), filtered_.data(), filtered_.size(),
                                   compressed_.get(), compressed_size_)};
}

std::string PngEncoder::Encode(const PixelView& picture) {
  NumberColors(picture);
  FilterRows(picture);
  const std::string_view pixels = Compress();
  std::string header;
  AppendNumber(header, static_cast<std::size_t>(picture.Width));
  AppendNumber(header, static_cast<std::size_t>(picture.Height));
  AppendNumber(header, BitDepth(), 1);
  AppendNumber(header, HasPalette() ? kIndexed : kTrueColor, 1);
  AppendNumber(header, 0, 3);  // the only compression, the only set of filters, not interlaced
  std::string palette;
  for (const std::uint32_t color : colors_) AppendNumber(palette, color, 3);

  std::string png("\x89PNG\r\n\x1A\n");
  png.reserve(pixels.size() + 1024);
  AppendChunk(png, "IHDR", header);
  if (HasPalette()) AppendChunk(png, "PLTE", palette);
  AppendChunk(png, "IDAT", pixels);
  AppendChunk(png, "IEND", "");
  return png;
}

}  // namespace keltrun
