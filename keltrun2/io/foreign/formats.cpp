#include "keltrun2/io/foreign/formats.h"

#include <array>

namespace keltrun {
namespace {

constexpr std::array<ForeignFormat, 0> kFormats = {};

}  // namespace

std::span<const ForeignFormat> ForeignFormats() { return kFormats; }

}  // namespace keltrun
