#include "keltrun2/codec/gzip.h"

#define ZLIB_CONST  // what is read is not written
#include <zlib.h>

#include <algorithm>
#include <array>
#include <limits>
#include <new>

namespace keltrun {
namespace {

constexpr int kGzip = 16;  // added to the bits of the window: a gzip member, not a zlib stream
constexpr int kMemoryLevel = 8;

// A compressor. Everything happens in memory, so the only way to fail is to run out of it.
class Compressor {
 public:
  Compressor() {
    if (deflateInit2(&stream_, Z_DEFAULT_COMPRESSION, Z_DEFLATED, MAX_WBITS + kGzip, kMemoryLevel,
                     Z_DEFAULT_STRATEGY) != Z_OK) {
      throw std::bad_alloc();
    }
  }
  ~Compressor() { deflateEnd(&stream_); }
  Compressor(const Compressor&) = delete;
  Compressor& operator=(const Compressor&) = delete;

  // Packs a part, of at most 4 GiB, and appends what is ready.
  void Pack(std::string_view part, bool is_last, std::string& out) {
    stream_.next_in = reinterpret_cast<const Bytef*>(part.data());
    stream_.avail_in = static_cast<uInt>(part.size());
    do {
      stream_.next_out = reinterpret_cast<Bytef*>(buffer_.data());
      stream_.avail_out = static_cast<uInt>(buffer_.size());
      if (deflate(&stream_, is_last ? Z_FINISH : Z_NO_FLUSH) == Z_STREAM_ERROR) {
        throw std::bad_alloc();
      }
      out.append(buffer_.data(), buffer_.size() - stream_.avail_out);
    } while (stream_.avail_out == 0);
  }

 private:
  z_stream stream_{};
  std::array<char, 16384> buffer_;
};

}  // namespace

std::string Gzip(std::string_view bytes) {
  constexpr std::size_t kLargestPart = std::numeric_limits<uInt>::max();
  Compressor compressor;
  std::string out;
  bool is_last = false;
  while (!is_last) {
    const std::string_view part = bytes.substr(0, kLargestPart);
    bytes.remove_prefix(part.size());
    is_last = bytes.empty();
    compressor.Pack(part, is_last, out);
  }
  return out;
}

}  // namespace keltrun
