// Gzip compression.
#pragma once

#include <string>
#include <string_view>

namespace keltrun {

/// Compresses `bytes` to one gzip member. Equal input gives equal output, since no time and no name
/// are stored. Throws std::bad_alloc if there is not enough memory.
std::string Gzip(std::string_view bytes);

}  // namespace keltrun
