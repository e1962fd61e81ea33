// Packed bytes.
#pragma once

#include <string>
#include <string_view>

namespace keltrun {

/// `bytes` as one gzip member. Equal bytes give an equal result: it holds no time and no name.
/// Throws std::bad_alloc when memory is short.
std::string Gzip(std::string_view bytes);

}  // namespace keltrun
