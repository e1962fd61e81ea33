#include "keltrun2/io/foreign/formats.h"

#include <algorithm>
#include <array>

namespace keltrun {
namespace {

constexpr std::array<ForeignFormat, 0> kFormats = {};

}  // namespace

std::span<const ForeignFormat> ForeignFormats() { return kFormats; }

const ForeignFormat* ForeignFormatOf(KrLapFileTypeConst type) {
  const auto found = std::find_if(kFormats.begin(), kFormats.end(),
                                  [&](const ForeignFormat& format) { return format.type == type; });
  return found == kFormats.end() ? nullptr : &*found;
}

}  // namespace keltrun
