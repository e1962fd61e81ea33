// Feeds every file of the given folders to the fuzz target, also truncated and with bits flipped.
// The buffers have the exact size, so that a sanitizer detects every read beyond the end.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;

void Feed(const Bytes& bytes) {
  const Bytes exact(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

// The distance between the places where a seed is cut and damaged. It grows with the size, so that
// the replay of large seeds stays short.
std::size_t Step(const Bytes& bytes) {
  constexpr std::size_t kPlaces = 400;
  return bytes.size() / kPlaces + 1;
}

void FeedDamaged(const Bytes& bytes) {
  Feed(bytes);
  for (std::size_t at = 0; at < bytes.size(); at += Step(bytes)) {
    Feed(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(at)));
    Bytes flipped = bytes;
    flipped[at] ^= static_cast<std::uint8_t>(1u << (at % 8));
    Feed(flipped);
  }
}

}  // namespace

int main(int argc, char** argv) {
  int files = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i])) {
      if (!entry.is_regular_file()) continue;
      std::ifstream stream(entry.path(), std::ios::binary);
      FeedDamaged(Bytes(std::istreambuf_iterator<char>(stream), {}));
      ++files;
    }
  }
  std::printf("%d seed files replayed\n", files);
  return files > 0 ? 0 : 1;
}
