#include "keltrun2/drawing/png_writer.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <exception>
#include <optional>
#include <vector>

#include "keltrun2/base/automation_error.h"

namespace keltrun {
namespace {

// At level 6 a palette picture compresses well and fast. Pictures with three bytes per pixel use
// level 1: higher levels take twice the time and save only a tenth of the size.
constexpr int kPaletteLevel = 6;
constexpr int kRgbLevel = 1;
constexpr std::size_t kPiece = 65536;  // compressed bytes at a time

// The colors of a picture, numbered in the order in which they appear.
class Palette {
 public:
  static constexpr std::size_t kMost = 256;

  /// The number of the color, which is added if it is new; nullopt if the palette is full.
  std::optional<std::uint8_t> Find(std::uint32_t color) {
    std::size_t slot = color * 2654435761U >> 22;
    while (slots_[slot].Used) {
      if (slots_[slot].Rgb == color) return slots_[slot].Number;
      slot = (slot + 1) % slots_.size();
    }
    if (count_ == kMost) return std::nullopt;
    slots_[slot] = {color, static_cast<std::uint8_t>(count_), true};
    colors_[count_++] = {static_cast<png_byte>(color >> 16 & 0xFF),
                         static_cast<png_byte>(color >> 8 & 0xFF),
                         static_cast<png_byte>(color & 0xFF)};
    return slots_[slot].Number;
  }

  const png_color* colors() const { return colors_.data(); }
  int count() const { return static_cast<int>(count_); }
  int BitDepth() const { return count_ <= 2 ? 1 : count_ <= 4 ? 2 : count_ <= 16 ? 4 : 8; }

 private:
  struct Slot {
    std::uint32_t Rgb = 0;
    std::uint8_t Number = 0;
    bool Used = false;
  };
  std::array<Slot, 1024> slots_;  // a hash table, never more than a quarter full
  std::array<png_color, kMost> colors_;
  std::size_t count_ = 0;
};

std::uint32_t Rgb(std::uint32_t pixel) { return pixel & 0xFFFFFF; }

// False if there are too many colors. Neighboring pixels are mostly equal, so only changes are
// looked up.
bool CollectColors(const PixelView& picture, Palette& palette) {
  const std::uint32_t* const end =
      picture.Pixels + static_cast<std::size_t>(picture.Width) * picture.Height;
  for (const std::uint32_t* pixel = picture.Pixels; pixel != end;) {
    const std::uint32_t value = *pixel;
    if (!palette.Find(Rgb(value))) return false;
    do {
      ++pixel;
    } while (pixel != end && *pixel == value);
  }
  return true;
}

void PaletteRow(const std::uint32_t* pixels, std::int32_t width, Palette& palette, png_byte* row) {
  std::uint32_t last = 0;
  std::uint8_t number = 0;
  for (std::int32_t x = 0; x < width; ++x) {
    if (x == 0 || pixels[x] != last) {
      last = pixels[x];
      number = *palette.Find(Rgb(last));
    }
    row[x] = number;
  }
}

void RgbRow(const std::uint32_t* pixels, std::int32_t width, png_byte* row) {
  for (std::int32_t x = 0; x < width; ++x) {
    *row++ = static_cast<png_byte>(pixels[x] >> 16 & 0xFF);
    *row++ = static_cast<png_byte>(pixels[x] >> 8 & 0xFF);
    *row++ = static_cast<png_byte>(pixels[x] & 0xFF);
  }
}

// Called from C code, so no exception may leave it. png_error leaves with a jump, so it is called
// outside the handler.
void AppendBytes(png_structp png, png_bytep data, std::size_t size) {
  bool appended = true;
  try {
    static_cast<std::string*>(png_get_io_ptr(png))->append(reinterpret_cast<char*>(data), size);
  } catch (const std::exception&) {
    appended = false;
  }
  if (!appended) png_error(png, "out of memory");
}

void IgnoreWarning(png_structp /*png*/, png_const_charp /*message*/) {}

// Replaces the error handler of libpng, which would write to standard error.
[[noreturn]] void Leave(png_structp png, png_const_charp /*message*/) { png_longjmp(png, 1); }

void WriteHeader(png_structp png, png_infop info, const PixelView& picture,
                 const Palette* palette) {
  const auto width = static_cast<png_uint_32>(picture.Width);
  const auto height = static_cast<png_uint_32>(picture.Height);
  png_set_IHDR(png, info, width, height, palette != nullptr ? palette->BitDepth() : 8,
               palette != nullptr ? PNG_COLOR_TYPE_PALETTE : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (palette != nullptr) png_set_PLTE(png, info, palette->colors(), palette->count());
  png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
  png_set_compression_level(png, palette != nullptr ? kPaletteLevel : kRgbLevel);
  png_set_compression_buffer_size(png, kPiece);
  png_write_info(png, info);
  if (palette != nullptr) png_set_packing(png);
}

// False if libpng reported an error. Its errors jump back to setjmp, so no object here may have a
// destructor.
bool Write(png_structp png, png_infop info, const PixelView& picture, Palette* palette,
           png_byte* row) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;  // NOLINT: this is how libpng reports errors
  WriteHeader(png, info, picture, palette);
  const std::uint32_t* pixels = picture.Pixels;
  for (std::int32_t y = 0; y < picture.Height; ++y, pixels += picture.Width) {
    if (palette != nullptr) {
      PaletteRow(pixels, picture.Width, *palette, row);
    } else {
      RgbRow(pixels, picture.Width, row);
    }
    png_write_row(png, row);
  }
  png_write_end(png, info);
  return true;
}

}  // namespace

std::string EncodePng(const PixelView& picture) {
  Palette colors;
  Palette* const palette = CollectColors(picture, colors) ? &colors : nullptr;
  std::string bytes;
  std::vector<png_byte> row(static_cast<std::size_t>(picture.Width) * 3);
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, Leave, IgnoreWarning);
  png_infop info = png != nullptr ? png_create_info_struct(png) : nullptr;
  bool written = false;
  if (info != nullptr) {
    png_set_write_fn(png, &bytes, AppendBytes, nullptr);
    written = Write(png, info, picture, palette, row.data());
  }
  if (png != nullptr) png_destroy_write_struct(&png, &info);
  if (!written) throw AutomationError(KR_ERROR_INVALID_CALL, "cannot make the PNG: out of memory");
  return bytes;
}

}  // namespace keltrun
