#include "keltrun2/codec/archive_kind.h"

#include <cstddef>

namespace keltrun {

std::string_view KindOfArchive(std::string_view bytes) {
  struct Mark {
    std::string_view kind;
    std::size_t offset;
    std::string_view bytes;
  };
  static constexpr Mark kMarks[] = {{"LZH", 2, "-lh"},
                                    {"ZIP", 0, "PK\x03\x04"},
                                    {"7z", 0, "7z\xBC\xAF\x27\x1C"},
                                    {"RAR", 0, "Rar!\x1A"},
                                    {"gzip", 0, "\x1F\x8B\x08"}};
  for (const Mark& mark : kMarks) {
    if (bytes.size() < 20) break;  // no archive is that short
    if (bytes.substr(mark.offset, mark.bytes.size()) == mark.bytes) return mark.kind;
  }
  return "";
}

}  // namespace keltrun
